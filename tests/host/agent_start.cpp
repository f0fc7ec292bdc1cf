#include "host/agent/Agent.h"
#include "tests/host/command_world.h"
#include "tests/support/AgentShow.h"

namespace Host::Test {

TEST(Agent, isNotSettledWhileACompletionIsHeldBack) {
  Agent::Options options;
  options.completion = Asic::Completion::deferred;
  Agent agent(options);
  agent.chip().hold("VirtualPortTableMerged");
  EXPECT_FALSE(agent.apply(wishTo(3).document()));
  EXPECT_FALSE(agent.settled());
  EXPECT_EQ(agent.stop(), 0U);
}

TEST(Agent, aRefusedDocumentChangesNothing) {
  Agent agent;
  agent.apply(wishTo(3).document());
  auto const chip = [&] { return AgentTest::chipText(agent.chip(), agent.driver()); };
  auto const before = chip();
  auto const writes = agent.chip().writes();
  // Their first path is good, the second is not.
  for (auto const* second : {R"("vxlan/cfg":{})", R"("vane/l3IntfTable":{"l3Intf":{"up1":0}})"}) {
    auto const document = std::string(R"({"stateway":{"vxlan/config":{"dscpPropagation":true},)") + second + "}}";
    EXPECT_THROW(agent.apply(document), Kiln::InputError);
    EXPECT_EQ(chip(), before);
    EXPECT_EQ(agent.chip().writes(), writes);
  }
}

}  // namespace Host::Test
