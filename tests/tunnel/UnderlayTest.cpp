#include <filesystem>
#include <fstream>

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

TEST_P(TunnelUnderlay, ofAMemberTunnelNeedsNoGroupForOneNextHop) {
  agent.tunnel(member, vtep(2)).via(uplink(1));
  auto const single = overlay(vtep(2));
  if (cascaded()) {
    EXPECT_THAT(single, HasSubstr("ulEntryHandle=EcmpGroup1Table[adj:101] ecmp=1")) << "this chip wants one";
  } else {
    EXPECT_THAT(single, HasSubstr("ulEntryHandle=L3NextHop2Table[02:00:00:00:00:01 Vlan101]"));
    EXPECT_THAT(single, Not(HasSubstr("ecmp=1")));
  }
  agent.tunnel(member, vtep(2)).via(unresolved(1), uplink(2));
  EXPECT_THAT(overlay(vtep(2)), HasSubstr(cascaded() ? "EcmpGroup1Table[adj:102]" : "[02:00:00:00:00:02 Vlan102]"));
  agent.tunnel(member, vtep(2)).via(uplink(1), uplink(2));
  EXPECT_THAT(overlay(vtep(2)), HasSubstr("ulEntryHandle=EcmpGroup1Table[adj:103] ecmp=1"));
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

TEST_P(TunnelUnderlay, thatTunnelsLeaveGoes) {
  agent.tunnel(unicast, vtep(2)).via(uplink(1), uplink(2));
  agent.tunnel(unicast, vtep(3)).via(uplink(1), uplink(2));
  agent.tunnel(unicast, vtep(2)).via(uplink(3));
  EXPECT_THAT(agent.table("EcmpGroup1Table"), HasSubstr("adj:101"));
  agent.tunnel(unicast, vtep(3)).via(uplink(3));
  EXPECT_THAT(agent.table("EcmpGroup1Table"), Not(HasSubstr("adj:101")));
  EXPECT_THAT(agent.table("EcmpMember1Table"), Not(HasSubstr("02:00:00:00:00:01")));
}

TEST_P(TunnelUnderlay, isNotTriedAgainWhileTheStatusTellsAFailure) {
  agent.hardware().refuseKey(vtep(2), Asic::EntryState::failed);
  agent.tunnel(member, vtep(2)).via(uplink(1));  // virtual port and overlay entry alike
  EXPECT_THAT(agent.status(member), HasSubstr("tnl=unprogrammed nh=unprogrammed"));
  agent.hardware().refuseNone();
  Kiln::TraceCapture trace("HwTunnelProgrammerBase");
  agent.tunnel(member, vtep(2)).via(uplink(2));
  EXPECT_TRUE(trace.contains("skip further programming as nextHopId is unprogrammed"));
  trace.clear();
  agent.tunnel(member, vtep(2)).generation(9);
  EXPECT_FALSE(trace.contains("skip further programming")) << "a new generation has no status yet";
  EXPECT_THAT(agent.status(member), HasSubstr("gen=9 tnl=#1 nh=#1"));
}

/// Chips like those of the built-in profiles, with a property changed: the file of such a profile.
std::string variant(std::string const& profile, std::vector<std::pair<std::string, std::string>> const& changes) {
  std::ifstream in(std::string(TESSEL_SOURCE_DIR) + "/profiles/" + profile + ".json");
  std::string text{std::istreambuf_iterator<char>(in), {}};
  for (auto const& [before, after] : changes) {
    auto const at = text.find(before);
    EXPECT_NE(at, std::string::npos) << before;
    if (at != std::string::npos) text.replace(at, before.size(), after);
  }
  auto const file = testing::TempDir() + "tessel-variant-" + std::to_string(std::hash<std::string>{}(text)) + ".json";
  std::ofstream(file) << text;
  return file;
}

TEST(TunnelUnderlayOfOtherChips, groupsOfOneNeedACascadedChipThatWantsThem) {
  std::pair<std::string, std::string> const testChip{"\"supportsVxlan\": true",
                                                     "\"supportsVxlan\": true, \"testChip\": true"};
  std::pair<std::string, std::string> const wanted{"\"memberSingleHopEcmp\": false", "\"memberSingleHopEcmp\": true"};
  std::pair<std::string, std::string> const unwanted{wanted.second, wanted.first};
  struct {
    std::string file;
    bool group;
  } const chips[] = {{variant("cascaded", {unwanted}), false},
                     {variant("cascaded", {unwanted, testChip}), true},
                     {variant("cascaded", {}), true},
                     {variant("flat", {testChip, wanted}), false}};
  for (auto const& [file, group] : chips) {
    AgentWorld agent({.profile = file});
    agent.together([](AgentWorld& a) { a.localVtep(vtep(1)).udpPort(4789); });
    agent.tunnel(member, vtep(2)).via(uplink(1));
    EXPECT_EQ(agent.row(agent.overlayTable(), vtep(2)).find("EcmpGroup1Table") != std::string::npos, group);
    std::filesystem::remove(file);
  }
}

TEST(TunnelUnderlayOfOtherChips, anIpv4HeaderForAllLeavesThoseOfIpv6) {
  auto const file = variant("cascaded", {{"\"ipv4DipInKey\": true", "\"ipv4DipInKey\": false"}});
  AgentWorld agent({.profile = file});
  std::filesystem::remove(file);
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

TEST_P(ActiveNextHop, assignsTheVtepsPacketsToItsPort) {
  agent.tunnel(unicast, vtep(2)).via(uplink(1));
  agent.tunnel(member, vtep(3)).via(uplink(1));
  EXPECT_EQ(agent.table("L2TunnelIpv4SipTable"), "10.255.0.2: svpHandle=VirtualPortTableMerged[10.255.0.2]\n");
  agent.tunnel(unicast, vtep(2)).gone();
  EXPECT_EQ(agent.table("L2TunnelIpv4SipTable"), "");
}

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
