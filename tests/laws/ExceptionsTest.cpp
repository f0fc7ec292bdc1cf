#include <gmock/gmock.h>

#include "tests/support/AgentWorld.h"

// Where an agent's state is not that of a fresh start with its last configuration, and what makes it so again.
//
// - Without a local VTEP, and with UDP port 0, the tables stay as they were: until both are there again.
// - A pass over the outer headers ends at the first tunnel whose family has no local VTEP, and a generation that was
//   replaced returns when its successor is removed: with the next pass (both in tests/tunnel/LifeTest.cpp).
// - A member tunnel that loses the unicast tunnel of its VTEP keeps that one's overlay entry, until its own next
//   change. If it loses the last other tunnel, it keeps their source address, until the next pass.
// - A flood tunnel admits its VTEP, or doesn't, as EVPN and learning are when it is created: until it returns.
// - Copies to a next hop of the same address, behind the same port, keep their remap entry, also one that the chip
//   refused: until the tunnel gets another next hop or returns.
// - The same next hops in a new list are written again where no row tells that they are the same: those of a group on a
//   chip with head-end rows, which rewrite its one row, and those of a flood tunnel on a chip without remap table,
//   where nothing holds their row.
// - Ports and layer 3 interfaces are read when a next hop is written: until the next change of its adjacency.
// - The MLAG address and the range of UDP source ports are read when headers are written: until the next pass.
// - Next hops that change while an overlay entry waits for its row: until the next change after it got one.
// - What the chip refused is written again with its next write: that of a new generation, a new local VTEP, a change
//   of learning.
// - A VTEP group of which a member has no tunnel stays as it was, and one whose member keeps its adjacency keeps that
//   one's next hops, also when none of them is resolved any more: until the group is removed and returns.
// - The record of a VTEP with several tunnels has the adjacency of the one that changed last, also when that one is
//   removed, and a group takes the member's next hops from there: until the next change of another one.
// - A local mapping that is taken out of the hardware but stays configured (action 1) is not that of a fresh start, nor
//   are congestion marks after a change of the first remarking row: both are left out of the stories
//   (tests/overlay). So are VLANs without a VFI, whose VNI keeps its row.

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

TEST_P(Exceptions, aFloodTunnelDecidesAtItsCreationWhetherItAdmitsItsVtep) {
  agent.tunnel(flood, vtep(2)).via(uplink(1));
  auto const with = [&](bool evpn, bool learning) {
    agent.together([&](AgentWorld& a) { a.evpn(evpn).learning(learning); });
    return agent.table("L2TunnelIpv4SipTable");
  };
  auto const again = [&] {
    auto const wish = agent.wish();
    agent.tunnel(flood, vtep(2)).gone();
    agent.want(wish);
    EXPECT_EQ(agent.chip(), fresh());
    return agent.table("L2TunnelIpv4SipTable");
  };
  auto const admitted = "10.255.0.2: svpHandle=VirtualPortTableMerged[10.255.0.2]\n";
  EXPECT_EQ(with(true, false), "");
  EXPECT_EQ(again(), admitted);
  EXPECT_EQ(with(true, true), admitted);
  EXPECT_EQ(again(), "");
  EXPECT_EQ(with(true, false), "");
  EXPECT_EQ(again(), admitted);
  EXPECT_EQ(with(false, false), admitted);
  EXPECT_EQ(again(), "");
}

TEST_P(Exceptions, aRemapEntryIsWrittenForAnotherNextHop) {
  bool const remaps = cascaded();
  agent.hardware().refuseTable(remaps ? "EpreCcbeNextHopRemapTable" : "HerNextHop1Table", Asic::EntryState::failed);
  agent.tunnel(flood, vtep(2)).via(uplink(1));
  agent.hardware().refuseNone();
  agent.tunnel(flood, vtep(2)).via(uplink(1), unresolved(2));
  EXPECT_EQ(agent.chip() == fresh(), !remaps);
  agent.tunnel(flood, vtep(2)).via(uplink(2)).via(uplink(1));
  EXPECT_EQ(agent.chip(), fresh());
}

TEST(ExceptionsOfRows, theSameNextHopsAreWrittenAgainWhereNoRowTellsThatTheyAre) {
  for (auto const& [profile, type, writes] :
       {std::tuple("cascaded", mcast, ""),
        {"flat", mcast, "EgrL3Oif2 2, HerNextHop1Table 2, HerNextHop2Table 2"},
        {"cascaded", flood, ""},
        {"compact", flood, "EgrL3Oif2 1, IngL3NextHop2Table 1, EgrL3NextHop2 1"}}) {
    AgentWorld agent({.profile = profile});
    agent.together([](AgentWorld& a) { a.localVtep(vtep(1)).udpPort(4789); });
    agent.tunnel(type, type == mcast ? group(1) : vtep(2)).via(uplink(1), uplink(2));
    agent.writes();
    auto const path = type == mcast ? "l3/hwMcastTunnelConfigDir" : Host::kHwTunnelConfigPath;
    auto const config = agent.agent().local<Vane::HwTunnelConfigDir>(path)->hwTunnelConfig(type);
    auto const entry = *config->hwTunnelConfigListColl().begin();
    auto const list = entry->nextHopEntryList();
    entry->nextHopEntryListIs(Dovel::make<Vane::NextHopEntryList>(list->adjId(), list->nextHopEntry()));
    agent.settle();
    EXPECT_EQ(agent.writes(), writes) << profile;
  }
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

TEST(ExceptionsOfGroups, aGroupKeepsWhatAMemberHadUntilItReturns) {
  AgentWorld agent;
  agent.together([](AgentWorld& a) { a.localVtep(vtep(1)).udpPort(4789); });
  agent.adjacency(1, {uplink(1), uplink(2)});
  for (unsigned n : {2U, 3U}) agent.tunnel(member, vtep(n)).over(1);
  auto wish = agent.wish();
  wish.groups = {{1, {2, 3}}};
  agent.want(wish);
  auto const group = agent.row("VpLagGroupTable", "1");
  EXPECT_THAT(group, HasSubstr("[10.255.0.2, adj:1, 10.255.0.3, adj:1]"));
  agent.adjacency(1, {unresolved(1)});
  EXPECT_EQ(agent.row("VpLagGroupTable", "1"), group);
  agent.tunnel(member, vtep(3)).gone();
  EXPECT_EQ(agent.row("VpLagGroupTable", "1"), group);
  wish = agent.wish();
  wish.groups = {{1, {2}}};
  agent.want(wish);
  EXPECT_THAT(agent.row("VpLagGroupTable", "1"), HasSubstr("[10.255.0.2, adj:1]"));
  auto without = wish;
  without.groups.clear();
  agent.want(without).want(wish);
  EXPECT_THAT(agent.row("VpLagGroupTable", "1"), HasSubstr("[10.255.0.2, null]"));
}

TEST(ExceptionsOfGroups, aMemberHasTheAdjacencyOfItsTunnelThatChangedLast) {
  AgentWorld agent;
  agent.together([](AgentWorld& a) { a.localVtep(vtep(1)).udpPort(4789); });
  agent.adjacency(1, {uplink(1), uplink(2)}).adjacency(2, {uplink(2), uplink(3)});
  agent.tunnel(member, vtep(2)).over(1);
  agent.tunnel(flood, vtep(2)).over(2);
  agent.tunnel(flood, vtep(2)).gone();
  auto wish = agent.wish();
  wish.groups = {{1, {2}}};
  agent.want(wish);
  EXPECT_THAT(agent.row("VpLagGroupTable", "1"), Not(HasSubstr("adj:1")));
  agent.tunnel(member, vtep(2)).over(2).over(1);
  EXPECT_THAT(agent.row("VpLagGroupTable", "1"), HasSubstr("[10.255.0.2, adj:1]"));
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
