#include <gmock/gmock.h>

#include "tests/support/AgentWorld.h"

// Where an agent's state is not that of a fresh start with its last configuration, and what makes it so again.
//
// - Without a local VTEP, and with UDP port 0, the tables stay as they were: until both are there again.
// - A pass over the outer headers ends at the first tunnel whose family has no local VTEP, and a generation that was
//   replaced returns when its successor is removed: with the next pass (both in tests/tunnel/LifeTest.cpp).
// - A member tunnel that loses the unicast tunnel of its VTEP keeps that one's overlay entry, until its own next
//   change, and that one's source address, until the next pass.
// - Ports and layer 3 interfaces are read when a next hop is written: until the next change of its adjacency.
// - The MLAG address and the range of UDP source ports are read when headers are written: until the next pass.
// - Next hops that change while an overlay entry waits for its row: until the next change after it got one.
// - What the chip refused is written again with its next write: that of a new generation, a new local VTEP, a change
//   of learning.

namespace AgentTest {

using testing::HasSubstr;
using testing::Not;

class Exceptions : public OnChips {
 protected:
  void SetUp() override {
    agent.together([](AgentWorld& a) { a.localVtep(vtep(1)).udpPort(4789); });
  }
  std::string fresh() const {
    AgentWorld other(GetParam());
    other.want(agent.wish());
    return other.chip();
  }
};
INSTANTIATE_TEST_SUITE_P(Chips, Exceptions, testing::ValuesIn(chipKinds({"cascaded", "flat"})), kindName);

TEST_P(Exceptions, withoutLocalVtepOrUdpPortTablesStay) {
  agent.tunnel(unicast, vtep(2)).via(uplink(1));
  auto const overlay = agent.table(agent.overlayTable());
  auto const headers = agent.table("EgrL3Ipv4TunnelTable");
  for (auto const take : {+[](AgentWorld& a) { a.localVtep(""); }, +[](AgentWorld& a) { a.udpPort(0); },
                          +[](AgentWorld& a) { a.vti(false); }}) {
    auto const before = agent.wish();
    take(agent);
    EXPECT_EQ(agent.table(agent.overlayTable()), overlay);
    EXPECT_EQ(agent.table("EgrL3Ipv4TunnelTable"), headers);
    EXPECT_NE(agent.chip(), fresh());
    agent.want(before);
    EXPECT_EQ(agent.chip(), fresh());
  }
}

TEST_P(Exceptions, aMemberTunnelKeepsTheRowOfTheUnicastOneThatWent) {
  agent.tunnel(member, vtep(2)).via(uplink(1));
  agent.tunnel(unicast, vtep(2)).via(uplink(2), uplink(3));
  auto const row = agent.row(agent.overlayTable(), vtep(2));
  agent.tunnel(unicast, vtep(2)).gone();
  EXPECT_EQ(agent.row(agent.overlayTable(), vtep(2)), row);
  EXPECT_NE(agent.chip(), fresh());
  agent.tunnel(member, vtep(2)).via(uplink(4)).via(uplink(1));
  EXPECT_EQ(agent.chip(), fresh());
}

TEST_P(Exceptions, portsAreReadWithTheNextHop) {
  agent.tunnel(unicast, vtep(2)).via(uplink(1));
  auto const nextHops = agent.table("L3NextHop2Table");
  auto wish = agent.wish();
  wish.firstPort = 77;
  agent.want(wish);
  EXPECT_EQ(agent.table("L3NextHop2Table"), nextHops);
  agent.adjacency(101, {uplink(1), uplink(2)}).adjacency(101, {uplink(1)});
  EXPECT_THAT(agent.table("L3NextHop2Table"), HasSubstr("destination=77"));
}

TEST_P(Exceptions, theMlagAddressAndTheSourcePortsComeWithTheNextHeaders) {
  agent.tunnel(unicast, vtep(2)).via(uplink(1));
  auto wish = agent.wish();
  wish.mlagVtep = vtep(9);
  wish.udpSrcPort = 49152;
  wish.udpSrcPorts = 1024;
  agent.want(wish);
  EXPECT_THAT(agent.table("EgrL3Ipv4TunnelTable"), Not(HasSubstr("sip=10.255.0.9")));
  EXPECT_THAT(agent.table("EgrL3Ipv4TunnelTable"), Not(HasSubstr("udpSrcPortValid=1")));
  agent.tos(1);
  EXPECT_THAT(agent.table("EgrL3Ipv4TunnelTable"), HasSubstr("sip=10.255.0.9"));
  EXPECT_THAT(agent.table("EgrL3Ipv4TunnelTable"), HasSubstr("udpSrcPortValid=1"));
  EXPECT_EQ(agent.chip(), fresh());
}

TEST(ExceptionsOfAFullChip, nextHopsAreNotTakenUpWhileTheRowIsMissing) {
  AgentWorld agent({.profile = "tiny"});
  agent.together([](AgentWorld& a) { a.localVtep(vtep(1)).udpPort(4789); });
  for (unsigned n = 2; n <= 6; ++n) agent.tunnel(unicast, vtep(n)).via(uplink(1));
  EXPECT_THAT(agent.messages(), HasSubstr("TESSEL_VXLAN_CASCADED_NEXTHOP_RESOURCE_FULL"));
  agent.tunnel(unicast, vtep(6)).via(uplink(2));
  agent.tunnel(unicast, vtep(2)).gone();
  EXPECT_THAT(agent.row("IngL3EcmpMember0Table", vtep(6)), HasSubstr("EcmpGroup1Table[adj:101]")) << "as last written";
  agent.tunnel(unicast, vtep(6)).via(uplink(3)).via(uplink(2));
  AgentWorld fresh({.profile = "tiny"});
  fresh.want(agent.wish());
  EXPECT_EQ(agent.chip(), fresh.chip());
}

}  // namespace AgentTest
