#include "tests/support/TunnelFixture.h"

namespace AgentTest {

namespace {

using testing::HasSubstr;
using testing::Not;

constexpr char const* defaultNextHop = "ulEntryHandle=L3NextHop2Table[ff:ff:ff:ff:ff:ff]";

class TunnelUnderlay : public Tunnels {};
INSTANTIATE_TEST_SUITE_P(Chips, TunnelUnderlay, testing::ValuesIn(chipKinds({"cascaded", "flat"})), kindName);

TEST_P(TunnelUnderlay, withoutAResolvedNextHopIsTheDefaultOne) {
  agent.tunnel(unicast, vtep(2)).via(unresolved(1));
  agent.tunnel(unicast, vtep(3)).withoutRoute();
  agent.tunnel(unicast, vtep(4)).via(uplink(10));  // has no port
  agent.tunnel(member, vtep(5)).via(unresolved(1), unresolved(2));
  for (unsigned n = 2; n <= 5; ++n) EXPECT_THAT(overlay(vtep(n)), HasSubstr(defaultNextHop)) << n;
  EXPECT_THAT(overlay(vtep(2)), HasSubstr("ecmp=1"));
  EXPECT_THAT(overlay(vtep(5)), Not(HasSubstr("ecmp=1")));
  EXPECT_EQ(agent.table("EcmpGroup1Table"), "");
  EXPECT_THAT(agent.status(unicast), HasSubstr("10.255.0.3 gen=1 tnl=#2 nh=#2\n")) << "programmed all the same";
  auto const before = agent.status(unicast);
  agent.adjacency(101, {uplink(1)});
  EXPECT_THAT(overlay(vtep(2)), HasSubstr("ulEntryHandle=EcmpGroup1Table[adj:101] ecmp=1"));
  agent.adjacency(101, {unresolved(1)});
  EXPECT_THAT(overlay(vtep(2)), HasSubstr(defaultNextHop));
  EXPECT_EQ(agent.table("EcmpGroup1Table"), "");
  EXPECT_EQ(agent.status(unicast), before) << "ids stay";
}

TEST_P(TunnelUnderlay, changesInPlaceForAllTunnelsOverAnAdjacency) {
  agent.adjacency(36, {uplink(1), uplink(2)});
  for (unsigned n = 2; n <= 4; ++n) agent.tunnel(unicast, vtep(n)).over(36);
  auto const status = agent.status(unicast);
  agent.writes();
  agent.adjacency(36, {uplink(2)});
  EXPECT_EQ(agent.writes(), "EcmpGroup1Table 1, EcmpMember1Table 1") << "once, whoever shares it";
  EXPECT_EQ(agent.status(unicast), status);
  EXPECT_EQ(agent.row("EcmpGroup1Table", "adj:36"), "memberBlockHandle=EcmpMember1Table[[02:00:00:00:00:02 Vlan102]]");
  EXPECT_EQ(agent.table("L3NextHop2Table").find("02:00:00:00:00:01"), std::string::npos);
}

TEST_P(TunnelUnderlay, isNotTriedAgainWhileTheStatusTellsAFailure) {
  agent.hardware().refuseKey(vtep(2), Asic::EntryState::failed);
  agent.tunnel(member, vtep(2)).via(uplink(1));  // virtual port and overlay entry alike
  EXPECT_THAT(agent.status(member), HasSubstr("tnl=unprogrammed nh=unprogrammed"));
  agent.hardware().refuseNone();
  auto const refused = overlay(vtep(2));
  Kiln::TraceCapture trace("HwTunnelProgrammerBase");
  agent.tunnel(member, vtep(2)).via(uplink(2));
  EXPECT_TRUE(trace.contains("skip further programming as nextHopId is unprogrammed"));
  EXPECT_EQ(overlay(vtep(2)), refused);
  trace.clear();
  agent.tunnel(member, vtep(2)).generation(9);
  EXPECT_FALSE(trace.contains("skip further programming")) << "a new generation has no status yet";
  EXPECT_THAT(agent.status(member), HasSubstr("gen=9 tnl=#1 nh=#1"));
}

TEST(TunnelUnderlayOfOtherChips, groupsOfOneNeedACascadedChipThatWantsThem) {
  std::pair<std::string, std::string> const testChip{"supportsVxlan", "true, \"testChip\": true"};
  struct {
    std::string profile;
    ChipKind::Values values;
    bool group;
  } const chips[] = {{"cascaded", {{"memberSingleHopEcmp", "false"}}, false},
                     {"cascaded", {{"memberSingleHopEcmp", "false"}, testChip}, true},
                     {"cascaded", {}, true},
                     {"flat", {{"memberSingleHopEcmp", "true"}, testChip}, false}};
  for (auto const& [profile, values, group] : chips) {
    AgentWorld agent({.profile = profile, .values = values});
    auto const underlay = [&agent] { return agent.row(agent.overlayTable(), vtep(2)); };
    agent.together([](AgentWorld& a) { a.localVtep(vtep(1)).udpPort(4789); });
    agent.tunnel(member, vtep(2)).via(unresolved(1), uplink(2));
    EXPECT_THAT(underlay(), HasSubstr(group ? "EcmpGroup1Table[adj:101] ecmp=1" : "[02:00:00:00:00:02 Vlan102]"));
    agent.tunnel(member, vtep(2)).via(uplink(1), uplink(2));
    EXPECT_THAT(underlay(), HasSubstr("EcmpGroup1Table[adj:102] ecmp=1"));
  }
}

TEST(TunnelUnderlayOfOtherChips, anIpv4HeaderForAllLeavesThoseOfIpv6) {
  AgentWorld agent({.profile = "oneHeader"});
  agent.together([](AgentWorld& a) { a.localVtep(vtep(1)).localVtep(vtep6(1)).udpPort(4789); });
  for (unsigned n = 2; n <= 5; ++n) {
    agent.tunnel(unicast, vtep(n)).via(uplink(1));
    agent.tunnel(unicast, vtep6(n)).via(uplink(1));
  }
  agent.writes();
  agent.tos(3);
  EXPECT_EQ(agent.writes(), "EgrL3Ipv4TunnelTable 1, EgrL3Ipv6TunnelTable 4");
}

class ActiveNextHop : public Tunnels {};
INSTANTIATE_TEST_SUITE_P(Chips, ActiveNextHop, testing::ValuesIn(chipKinds({"cascaded", "flat"})), kindName);

TEST_P(ActiveNextHop, keepsThePortThatItsPacketsGoTo) {
  auto const active = agent.agent().hwTunnelConfig(unicast);
  auto const nhId = [this] {
    return agent.agent().hwTunnelStatus(unicast)->tunnelStatus(key(vtep(2), 1))->hwNextHopStatusEntry().hwNextHopId();
  };
  configure(unicast, key(vtep(2), 1));
  auto const first = nhId();
  active->activeNextHopIdListIs(first, true);
  dismiss(unicast, key(vtep(2), 1));
  EXPECT_THAT(agent.table("VirtualPortTableMerged"), HasSubstr("(10.255.0.2):"));
  configure(unicast, key(vtep(2), 1));
  auto const second = nhId();
  active->activeNextHopIdListDel(first);
  active->activeNextHopIdListIs(second, true);
  EXPECT_THAT(agent.table("VirtualPortTableMerged"), Not(HasSubstr("(10.255.0.2):")));
  EXPECT_THAT(agent.table("L2TunnelIpv4SipTable"), HasSubstr("svpHandle=VirtualPortTableMerged[10.255.0.2]"));
  active->activeNextHopIdListDel(second);
  dismiss(unicast, key(vtep(2), 1));
  agent.settle();
  EXPECT_EQ(agent.chip(), start);
}

TEST_P(ActiveNextHop, ofNoTunnelChangesNothing) {
  agent.agent().hwTunnelConfig(unicast)->activeNextHopIdListIs(Vane::VaneNextHopId(77), true);
  agent.agent().hwTunnelConfig(member)->activeNextHopIdListIs(Vane::VaneNextHopId(2), true);
  agent.agent().hwTunnelConfig(unicast)->activeNextHopIdListDel(Vane::VaneNextHopId(77));
  agent.settle();
  EXPECT_EQ(agent.chip(), start);
}

}  // namespace

}  // namespace AgentTest
