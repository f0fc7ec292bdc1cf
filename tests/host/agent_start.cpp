#include "host/agent/Agent.h"
#include "platform/tessel/l3common/TesselVxlanState.h"
#include "tests/host/command_world.h"
#include "tests/support/AgentShow.h"

namespace Host::Test {

namespace {

std::string chipOf(Agent const& agent) { return AgentTest::chipText(agent.chip(), agent.driver()); }

}  // namespace

TEST(AgentStart, whoeverIsReadyFirstTheChipIsTheSame) {
  std::string expected;
  for (auto const ready : {Agent::Ready::fromLoop, Agent::Ready::atOnce}) {
    Agent::Options options;
    options.ready = ready;
    Agent agent(options);
    EXPECT_TRUE(agent.local<TesselL3Common::TesselVxlanBootStatus>(kBootStatusPath)->vaneTunnelSmReady());
    EXPECT_TRUE(agent.apply(wishTo(4).document()));
    if (expected.empty()) expected = chipOf(agent);
    EXPECT_EQ(chipOf(agent), expected);
    EXPECT_NE(expected.find("10.255.0.4"), std::string::npos);
    EXPECT_EQ(agent.stop(), 0U);
  }
}

TEST(AgentStart, aRestartBuildsTheSameChipFromTheStateThatStayed) {
  for (auto const completion : {Asic::Completion::direct, Asic::Completion::deferred}) {
    Agent::Options options;
    options.completion = completion;
    Agent agent(options);
    agent.apply(wishTo(5).document());
    auto const before = chipOf(agent);
    agent.stopFeature();
    EXPECT_EQ(agent.mounter(), nullptr);
    agent.startFeature();
    EXPECT_EQ(chipOf(agent), before);
    EXPECT_EQ(agent.stop(), 0U);
  }
}

TEST(AgentStart, anAgentThatStopsWithAnswersOutstandingLeavesNothing) {
  Agent::Options options;
  options.completion = Asic::Completion::deferred;
  Agent agent(options);
  agent.chip().hold("VirtualPortTableMerged");
  EXPECT_FALSE(agent.apply(wishTo(3).document()));
  EXPECT_FALSE(agent.settled());
  EXPECT_EQ(agent.stop(), 0U);
}

TEST(AgentStart, aDocumentThatCannotBeUsedChangesNothing) {
  Agent agent;
  agent.apply(wishTo(3).document());
  auto const before = chipOf(agent);
  auto const writes = agent.chip().writes();
  // The first path is good, the second is not.
  EXPECT_THROW(agent.apply(R"({"stateway":{"vxlan/config":{"dscpPropagation":true},"vxlan/cfg":{}}})"),
               Kiln::InputError);
  EXPECT_EQ(chipOf(agent), before);
  EXPECT_EQ(agent.chip().writes(), writes);
}

TEST(AgentStart, whatALaterDocumentDoesNotNameGoesBack) {
  Agent agent;
  auto const empty = chipOf(agent);
  agent.apply(wishTo(3).document());
  agent.apply("{}");
  EXPECT_EQ(chipOf(agent), empty);
}

}  // namespace Host::Test
