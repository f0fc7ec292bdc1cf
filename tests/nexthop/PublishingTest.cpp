// What is published of virtual ports and overlay entries, and tables that run out.

#include "tests/support/TunnelFixture.h"
#include "tests/support/Watch.h"

namespace AgentTest {

using Meshal::IpGenAddr;
using Record = TesselCentral::VtepIpToTnlIdNhIdMap;

class Publishing : public Tunnels {};
INSTANTIATE_TEST_SUITE_P(Chips, Publishing, testing::ValuesIn(chipKinds({"cascaded", "flat"})), kindName);

TEST_P(Publishing, writesTheStatusOfAnIdBeforeTheId) {
  configure(unicast, key(vtep(2), 1), list(7, {1}));
  auto const record = map(vtep(2));
  std::string seen;
  Support::Watch const watch(*record, [&](Dovel::Change const& change) {
    if (change.id == Record::tnlIdId) seen += "port " + Kiln::toText(record->tnlIdEntryStatus()) + ' ';
    if (change.id == Record::nhIdId) seen += "overlay " + Kiln::toText(record->nhIdEntryStatus()) + ' ';
  });
  agent.hardware().refuseTable("VirtualPort2Table", Asic::EntryState::failed);
  agent.learning(true).hardware().refuseNone();
  agent.learning(false);
  agent.hardware().refuseTable(cascaded() ? "IngL3EcmpMember0Table" : "IngL3NextHop1", Asic::EntryState::failed);
  config(unicast).hwTunnelConfigList(key(vtep(2), 1))->nextHopEntryListIs(list(8, {2}));
  agent.settle().hardware().refuseNone();
  configure(unicast, key(vtep(2), 2), list(9, {3}));
  EXPECT_EQ(seen, "port entryWriteFailed port entryWriteDone overlay entryWriteFailed overlay entryWriteDone ");
}

TEST_P(Publishing, countsWritesThatKeepTheId) {
  auto const& counts = *programmer(unicast).tnlNhUpdateConfig();
  IpGenAddr const remote(vtep(2));
  configure(unicast, key(vtep(2), 1), list(7, {1}));
  EXPECT_FALSE(counts.tunnelNhUpdateHas(remote)) << "a new id notifies by itself";
  for (int const adjId : {8, 8, 9}) {
    config(unicast).hwTunnelConfigList(key(vtep(2), 1))->nextHopEntryListIs(list(adjId, {2}));
    agent.settle();
    EXPECT_EQ(counts.tunnelNhUpdate(remote), adjId - 7);
  }
  dismiss(unicast, key(vtep(2), 1));
  EXPECT_FALSE(counts.tunnelNhUpdateHas(remote));
}

TEST_P(Publishing, mapsRowsToTheirVteps) {
  auto const& ports = *wrapper().dvpToVtepMapping();
  auto const& headers = *wrapper().tunnelIndexToVtepMapping();
  agent.tunnel(unicast, vtep(2)).via(uplink(1));
  agent.tunnel(unicast, vtep(3)).via(uplink(1));
  EXPECT_EQ(ports.dvpToVtepMap(1), IpGenAddr("0.0.0.0"));
  for (unsigned const n : {2, 3}) {
    EXPECT_EQ(ports.dvpToVtepMap(n), IpGenAddr(vtep(n)));
    EXPECT_EQ(headers.tunnelIndexToVtepMap(n - 1), IpGenAddr(vtep(n)));
  }
  for (unsigned const n : {0, 1}) {
    EXPECT_EQ(agent.hardware().field("L2TunnelIpv4SipTable", n, "svp"), n + 2);
    if (cascaded()) {
      EXPECT_EQ(agent.hardware().field("RL2TunnelDefaultNetworkSvp", n, "svp"), 1U);
    }
  }
  agent.tunnel(unicast, vtep(3)).gone();
  EXPECT_FALSE(ports.dvpToVtepMapHas(3));
  EXPECT_TRUE(headers.tunnelIndexToVtepMapHas(2)) << "kept on purpose";
  agent.localVtep(vtep6(1)).tunnel(unicast, vtep6(2)).via(uplink(1));
  EXPECT_TRUE(wrapper().egrL3TunnelTablesProgrammer()->entryWeakRef(IpGenAddr(vtep6(1)), IpGenAddr(vtep6(2))));
  wrapper().virtualPortTableProgrammer()->deleteDefaultEntry();
  EXPECT_EQ(agent.row("VirtualPortTableMerged", ""), "absent");
  EXPECT_EQ(agent.table("RL2TunnelDefaultNetworkSvp"), "");
}

TEST_P(Publishing, admitsNoVtepWhosePortHasGoneAndNoneWithoutAFamily) {
  auto& termination = *wrapper().tunnelTermTableProgrammer();
  configure(unicast, key(vtep(2), 1), list(7, {1}));
  auto const port = wrapper().virtualPortTableProgrammer()->getEntry(IpGenAddr(vtep(2)));
  EXPECT_DEATH(termination.insertSipEntry(IpGenAddr(), port, TesselVxlan::SipHolder::nextHop),
               "SIP is not a valid ipv4/6 address");
  dismiss(unicast, key(vtep(2), 1));
  termination.insertSipEntry(IpGenAddr(vtep(2)), port, TesselVxlan::SipHolder::nextHop);
  EXPECT_EQ(agent.table("L2TunnelIpv4SipTable"), "");
}

class FullTables : public testing::TestWithParam<Asic::Completion> {};
INSTANTIATE_TEST_SUITE_P(Modes, FullTables, testing::Values(Asic::Completion::direct, Asic::Completion::deferred));

TEST_P(FullTables, areReportedOnceAndHeal) {
  std::string const full = "Hardware resources are insufficient to ";
  std::string const header = "TESSEL_VXLAN_TUNNEL_TABLE_RESOURCE_FULL " + full + "program outer SIP ";
  std::string const port = "TESSEL_VXLAN_SIP_SVP_MAPPING_RESOURCE_FULL " + full + "add remote VTEP ip ";
  struct {
    char const* profile;
    char const* table;
    char const* rows;  ///< Enough for those of one tunnel.
    bool v6;
    std::string message;
  } const tables[] = {
      {"cascaded", "VirtualPort1Table", "3", false,
       "TESSEL_VXLAN_VP_TABLE_RESOURCE_FULL " + full + "program the virtual port for remote VTEP 10.255.0.3.\n"},
      {"cascaded", "IngL3EcmpMember0Table", "1", false,
       "TESSEL_VXLAN_CASCADED_NEXTHOP_RESOURCE_FULL " + full +
           "program a cascaded nexthop entry for remote VTEP 10.255.0.3.\n"},
      {"flat", "IngL3NextHop1", "1", false, ""},
      {"cascaded", "IngL3NextHop2Table", "3", false,
       "TESSEL_VXLAN_UL_NEXT_HOP_RESOURCES_FULL " + full + "program underlay for the nexthop IP 02:00:00:00:00:02.\n"},
      {"cascaded", "EgrL3Ipv4TunnelTable", "2", false, header + "10.255.0.1.\n"},
      {"cascaded", "EgrL3Ipv6TunnelTable", "1", true, header + "fd00::1.\n"},
      {"cascaded", "L2TunnelIpv4SipTable", "1", false, port + "10.255.0.3 mapping to SVP 3.\n"},
      {"cascaded", "L2TunnelIpv6SipTable", "1", true, port + "fd00::3 mapping to SVP 3.\n"},
      {"flat", "EcmpGroup1Table", "1", false, ""}};
  for (auto const& [profile, table, rows, v6, message] : tables) {
    SCOPED_TRACE(table);
    ChipKind const kind{profile, GetParam(), {{table, rows}}};
    std::string const second = v6 ? vtep6(2) : vtep(2), third = v6 ? vtep6(3) : vtep(3);
    AgentWorld agent(kind);
    agent.together([](AgentWorld& a) { a.localVtep(vtep(1)).localVtep(vtep6(1)).udpPort(4789); });
    agent.tunnel(unicast, second).via(uplink(1));
    EXPECT_EQ(agent.messages(), "");
    agent.tunnel(unicast, third).via(uplink(2));
    EXPECT_EQ(agent.messages(), message);
    agent.tunnel(unicast, second).gone();
    AgentWorld fresh(kind);
    fresh.want(agent.wish());
    EXPECT_EQ(agent.whole(), fresh.whole());
  }
}

}  // namespace AgentTest
