#include <algorithm>

#include "tests/support/TunnelFixture.h"
#include "tests/support/Watch.h"

namespace AgentTest {

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
  agent.udpPort(0).tunnel(unicast, vtep(6)).via(uplink(1)).via(uplink(2));
  EXPECT_EQ(overlay(vtep(6)), "absent") << "while there is no port";
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

class LocalVtep : public OnChips {
 protected:
  void tunnelsOfBothTypes() {
    agent.tunnel(unicast, vtep(2)).via(uplink(1));
    agent.tunnel(unicast, vtep(3)).via(uplink(1));
    agent.tunnel(member, vtep(3)).via(uplink(1));
    agent.tunnel(member, vtep(4)).via(uplink(1));
  }
  std::string status() {
    auto const ofUnicast = agent.status(unicast);
    return ofUnicast + agent.status(member);
  }
};
INSTANTIATE_TEST_SUITE_P(Chips, LocalVtep, testing::ValuesIn(chipKinds({"cascaded", "flat", "compact"})), kindName);

TEST_P(LocalVtep, withoutAPortNothingIsWrittenAhead) {
  agent.localVtep(vtep(1));
  auto const start = agent.table("VirtualPortTableMerged");
  agent.tunnel(unicast, vtep(2)).withoutRoute();
  agent.learning(true).learning(false);
  EXPECT_EQ(agent.table("VirtualPortTableMerged"), start);
  agent.tunnel(unicast, vtep(2)).via(uplink(1));
  agent.learning(true).learning(false);
  EXPECT_EQ(agent.status(unicast), "");
  agent.udpPort(4789);
  EXPECT_EQ(agent.status(unicast), "10.255.0.2 gen=1 tnl=#1 nh=#1 adj=101\n");
  EXPECT_THAT(agent.row(agent.overlayTable(), vtep(2)), HasSubstr("vpHandle=VirtualPortTableMerged[10.255.0.2]"));
}

TEST_P(LocalVtep, changesInPlace) {
  agent.localVtep(vtep(1)).udpPort(4789);
  tunnelsOfBothTypes();
  auto const before = status();
  agent.writes();
  agent.localVtep(vtep(9));
  EXPECT_EQ(status(), before) << "ids stay";
  EXPECT_THAT(agent.table("EgrL3Ipv4TunnelTable"), Not(HasSubstr("sip=10.255.0.1")));
  EXPECT_THAT(agent.table("EgrL3Ipv4TunnelTable"), HasSubstr("sip=10.255.0.9"));
  EXPECT_EQ(agent.table("L2TunnelIpv4DipTable"), "10.255.0.9: allowedPortsProfileIndex=1\n");
  auto const headers = GetParam().profile == "compact" ? "1" : "3";
  EXPECT_EQ(agent.writes(), std::string("VirtualPort1Table 3, VirtualPort2Table 3, L2TunnelIpv4DipTable 1, "
                                        "EgrL3Ipv4TunnelTable ") +
                                headers)
      << "one rewrite a VTEP, whatever types it has";
  agent.udpPort(8472);
  EXPECT_EQ(status(), before);
  EXPECT_THAT(agent.writes(), HasSubstr("VirtualPort1Table 4, VirtualPort2Table 4, ")) << "once for each type";
  EXPECT_THAT(agent.table("EgrL3Ipv4TunnelTable"), HasSubstr("udpDestPort=8472"));
}

class Settings : public Tunnels {};
INSTANTIATE_TEST_SUITE_P(Chips, Settings, testing::ValuesIn(chipKinds({"cascaded", "flat", "compact"})), kindName);

TEST_P(Settings, rewriteWhatTheyAreInAndNoMore) {
  agent.tunnel(unicast, vtep(2)).via(uplink(1));
  agent.tunnel(unicast, vtep(3)).via(uplink(1));
  auto const status = agent.status(unicast);
  auto const headers = GetParam().profile == "compact" ? "EgrL3Ipv4TunnelTable 1" : "EgrL3Ipv4TunnelTable 2";
  agent.writes();
  {
    Kiln::TraceCapture trace("HwTunnelProgrammerBase");
    agent.dscp(true);
    auto const passes = std::count_if(trace.lines().begin(), trace.lines().end(), [](auto const& line) {
      return line.find("programEgrL3TunnelTable:  srcIp: ") != std::string::npos;
    });
    EXPECT_EQ(passes, GetParam().profile == "compact" ? 1 : 2) << "a header that all share is built once";
  }
  EXPECT_EQ(agent.writes(), headers);
  agent.tos(7);
  EXPECT_EQ(agent.writes(), headers);
  EXPECT_THAT(agent.table("EgrL3Ipv4TunnelTable"), HasSubstr("tosBasePtr=7 outerDscpFromInner=3"));
  agent.tos(7).dscp(true);
  EXPECT_EQ(agent.writes(), "");
  agent.learning(true);
  EXPECT_EQ(agent.writes().find("Egr"), std::string::npos);
  EXPECT_THAT(agent.row("VirtualPortTableMerged", vtep(2)), HasSubstr("learnEnableA=1 learnEnableB=1"));
  EXPECT_EQ(agent.status(unicast), status);
}

TEST_P(Settings, anAddressIsRecordedWhenThePortHasItsHeader) {
  agent.tunnel(unicast, vtep(2)).via(uplink(1));
  std::string seen;
  Support::Watch const watch(*map(vtep(2)),
                             [&](Dovel::Change const&) { seen += agent.row("VirtualPortTableMerged", vtep(2)); });
  agent.localVtep(vtep(9));
  EXPECT_THAT(seen, HasSubstr("EgrL3Ipv4TunnelTable[10.255.0.9 > "));
}

TEST_P(Settings, ofLearningFollowTheObjectThatHoldsThem) {
  agent.tunnel(unicast, vtep(2)).via(uplink(1));
  auto const learns = [this] {
    return agent.row("VirtualPortTableMerged", vtep(2)).find("learnEnableA=1") != std::string::npos;
  };
  auto const info = Dovel::make<Vane::VXLAN::VaneVxlanInfo>();
  auto const status = Dovel::make<Vane::VXLAN::VaneGlobalVtiStatus>();
  status->dataPathLearningIs(true);
  wrapper().vxlanTunnelHelperSm()->vaneVxlanInfoIs(info);
  EXPECT_FALSE(learns());
  info->vaneGlobalVtiStatusIs(status);
  EXPECT_TRUE(learns());
  status->dataPathLearningIs(false);
  EXPECT_FALSE(learns());
}

}  // namespace AgentTest
