#include "tests/support/AgentWorld.h"

namespace AgentTest {

namespace {

/// Each test ends in the world's own check that no object is alive after the stop.
class Stop : public testing::TestWithParam<ChipKind> {};
INSTANTIATE_TEST_SUITE_P(Chips, Stop, testing::ValuesIn(chipKinds({"cascaded", "flat", "compact", "tiny"})), kindName);

TEST_P(Stop, withAnswersUnderWayLeavesNoObject) {
  for (unsigned turns = 0; turns < 8; ++turns) {
    AgentWorld agent(GetParam());
    agent.hold("VirtualPortTableMerged").hold(agent.overlayTable()).hold("L3NextHop2Table");
    agent.together([](AgentWorld& a) { a.localVtep(vtep(1)).udpPort(4789); });
    agent.tunnel(unicast, vtep(2)).via(uplink(1), uplink(2));
    agent.tunnel(member, vtep(3)).via(uplink(1));
    agent.agent().chip().release();
    // Answers, reviews and new writes are all half done when the agent stops.
    auto const& wanted = agent.agent().wantedTunnels(unicast);
    wanted->tunnelDel(Meshal::IpGenAddr(vtep(2)));
    wanted->tunnelIs(Meshal::IpGenAddr(vtep(4)))->adjIdIs(Vane::AdjIdOrNone(101));
    for (unsigned turn = 0; turn < turns; ++turn) agent.agent().turn();
    agent.messages();
  }
}

TEST_P(Stop, ofTheFeatureAloneLeavesTheChipAsItWas) {
  AgentWorld agent(GetParam());
  agent.together([](AgentWorld& a) { a.localVtep(vtep(1)).udpPort(4789); });
  agent.tunnel(unicast, vtep(2)).via(uplink(1), uplink(2));
  auto const before = agent.chip();
  auto const alive = Dovel::Node::aliveCount();
  agent.agent().stopFeature();
  EXPECT_EQ(agent.chip(), before);
  EXPECT_LT(Dovel::Node::aliveCount(), alive);
  agent.agent().startFeature();
  EXPECT_EQ(agent.chip(), before);
  EXPECT_EQ(Dovel::Node::aliveCount(), alive);
}

}  // namespace

}  // namespace AgentTest
