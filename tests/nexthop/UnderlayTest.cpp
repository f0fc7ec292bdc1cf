// Underlay next hops, their groups and their outgoing interfaces, written by the test itself.

#include "tests/support/TunnelFixture.h"

namespace AgentTest {

using Meshal::IntfId;
using testing::HasSubstr;
using testing::Not;

class Underlay : public Tunnels {
 protected:
  using Handle = Asic::EntryHandle::PtrConst;

  Handle insert(Vane::NextHopEntry const& entry) {
    auto const handle = wrapper().nextHopTableProgrammer()->insertEntry(key(vtep(2), 1), entry);
    agent.settle();
    return handle;
  }
  Handle group(std::uint32_t adjId, Vane::NextHopEntrySet const& nextHops) {
    auto const config = Dovel::make<Vane::HwTunnelConfigEntry>(key(vtep(2), 1));
    config->nextHopEntryListIs(Dovel::make<Vane::NextHopEntryList>(adjId, nextHops));
    auto const handle = wrapper().underlayEcmpProgrammer()->insertEntry(config);
    agent.settle();
    return handle;
  }
  std::string nextHops() const { return agent.table("L3NextHop2Table"); }
  std::string row(std::string const& key) const { return agent.row("L3NextHop2Table", key); }
  static Vane::NextHopEntry hop(unsigned n, std::string_view l2Intf, std::string_view l3Intf = {}) {
    auto entry = Tunnels::hop(n);
    entry.l2IntfIs(IntfId(l2Intf));
    if (!l3Intf.empty()) entry.l3IntfIs(IntfId(l3Intf));
    return entry;
  }
  using Tunnels::hop;
  void portIs(std::string_view intf, std::uint16_t number, TesselCentral::PortKind kind = {}) {
    TesselCentral::PortInfo info;
    info.kindIs(kind);
    info.numberIs(number);
    agent.agent().world().fcsd->portConfigDir()->portIs(IntfId(intf), info);
  }
};
INSTANTIATE_TEST_SUITE_P(Chips, Underlay, testing::ValuesIn(chipKinds({"cascaded", "flat"})), kindName);

TEST_P(Underlay, nextHopsHoldTheirPortAndVlan) {
  portIs("Ethernet4", 77, TesselCentral::PortKind::subPort);
  auto const sub = insert(hop(4));
  auto const lag = insert(hop(9));
  EXPECT_THAT(row("02:00:00:00:00:09 Vlan109"), HasSubstr("destination=9 isLag=1 vlanId=109 "));
  auto const withoutVlan = insert(hop(3, "Ethernet3", "Loopback0"));
  EXPECT_THAT(row("02:00:00:00:00:04 Vlan104"), HasSubstr("destination=77 vlanId=104 l3Oif2Handle=EgrL3Oif2[104]"));
  EXPECT_THAT(row("02:00:00:00:00:03 Loopback0"), HasSubstr("destination=3 l3Oif2Handle=EgrL3Oif2[0]"));
  auto const writes = agent.agent().chip().writes();
  wrapper().l3Oif2TableHelper()->initTables(wrapper().chipInfo());
  EXPECT_TRUE(Asic::sameEntry(insert(hop(4)), sub));
  EXPECT_EQ(agent.agent().chip().writes(), writes) << "a table is made once";
  Kiln::TraceCapture const trace("NextHopTableProgrammer");
  EXPECT_EQ(insert(hop(5, "Ethernet77")), nullptr);
  EXPECT_TRUE(trace.contains(" Invalid Dst Port"));
  EXPECT_EQ(row("02:00:00:00:00:05 Vlan105"), "absent");
}

TEST_P(Underlay, groupsAreOfTheirResolvedMembersAndOfAllOrNone) {
  Vane::NextHopEntrySet some{hop(1), hop(3)};
  for (unsigned const type : {0, 1, 3, 12}) {
    auto other = hop(type + 4);
    other.typeIs(static_cast<Vane::NextHopEntryType>(type));
    some.insert(other);
  }
  auto const both = group(36, some);
  auto const before = agent.chip();
  EXPECT_THAT(agent.row("EcmpGroup1Table", "adj:36"),
              HasSubstr("[[02:00:00:00:00:01 Vlan101, 02:00:00:00:00:03 Vlan103]] lastMemberIndex=1"));
  for (unsigned n = 0; n < 2; ++n) {
    EXPECT_EQ(group(36, {hop(1), hop(2), hop(3, "Ethernet77")}), nullptr);
    EXPECT_EQ(group(37, {hop(4), hop(5, "Ethernet77")}), nullptr);
  }
  EXPECT_EQ(agent.chip(), before) << "what was written for the lost group is removed";
  auto const top = group(36 + 0x80000000u, {hop(2)});
  EXPECT_FALSE(Asic::sameEntry(both, top));
  EXPECT_THAT(agent.row("EcmpGroup1Table", "adj:2147483684"), HasSubstr("[[02:00:00:00:00:02 Vlan102]]"));
}

TEST_P(Underlay, groupsFollowWhatTheirNextHopsAreReadFrom) {
  auto const kept = group(36, {hop(1)});
  auto const rowNow = [this] {
    auto const again = group(36, {hop(1)});
    return row("02:00:00:00:00:01 Vlan101");
  };
  EXPECT_THAT(rowNow(), HasSubstr("destination=1 vlanId=101 "));
  portIs("Ethernet1", 55);
  EXPECT_THAT(rowNow(), HasSubstr("destination=55 vlanId=101 ")) << "another port";
  agent.agent().state<VaneL3Intf::Table>("vane/l3IntfTable")->l3IntfIs(IntfId("Vlan101"), Bridging::VlanIdOrNone(99));
  EXPECT_THAT(rowNow(), HasSubstr("destination=55 vlanId=99 ")) << "another VLAN";
  auto const other = group(37, {hop(1, "Ethernet2")});
  EXPECT_THAT(rowNow(), HasSubstr("destination=55 vlanId=99 ")) << "the last caller has the row";
  // Another port configuration, changed as often as the former: its own count does not tell them apart.
  auto const& fcsd = agent.agent().world().fcsd;
  auto const former = fcsd->portConfigDir();
  fcsd->portConfigDirIs(Dovel::make<TesselCentral::PortConfigDir>());
  for (std::uint16_t n = 0; fcsd->portConfigDir()->revision() < former->revision(); ++n) {
    portIs("Ethernet1", static_cast<std::uint16_t>(100 + n));
  }
  EXPECT_THAT(rowNow(), Not(HasSubstr("destination=55 ")));
  fcsd->portConfigDirIs(former);
}

class FloodingUnderlay : public Underlay {};
INSTANTIATE_TEST_SUITE_P(Chips, FloodingUnderlay, testing::ValuesIn(chipKinds({"flatFlooding"})), kindName);

TEST_P(FloodingUnderlay, sendsToTheMulticastGroupOfItsVlanWhereThereIsNoPort) {
  auto const ipmc = agent.agent().local<TesselMcast::IpmcTable>("mcast/swTable/shared/destination/ipmc/511");
  Asic::bringUp(*ipmc, wrapper().statewayEm(), wrapper().chipInfo());
  auto const kept = group(36, {hop(3, "")});
  std::string const base = "destinationKind=1 ingressViewCode=5 vlanId=103 ";
  EXPECT_THAT(row("02:00:00:00:00:03 Vlan103"), testing::StartsWith(base));
  ipmc->entryCommit({1, 103}, {});
  auto const again = group(36, {hop(3, "")});
  EXPECT_THAT(row("02:00:00:00:00:03 Vlan103"),
              testing::StartsWith("destinationHandle=IpmcTable[1, vlanId:103] " + base));
  auto const unknownPort = insert(hop(5, "Ethernet77"));
  EXPECT_THAT(row("02:00:00:00:00:05 Vlan105"), testing::StartsWith("destinationKind=2 ingressViewCode=5 vlanId=105 "));
}

TEST_P(FloodingUnderlay, hasOneRecordPerEncapsulation) {
  auto first = wrapper().l3Oif1TableProgrammer()->insertEntry(TesselVxlan::TunnelType::her);
  auto const second = wrapper().l3Oif1TableProgrammer()->insertEntry(TesselVxlan::TunnelType::her);
  EXPECT_TRUE(Asic::sameEntry(first, second));
  agent.settle();
  EXPECT_EQ(agent.table("VxlanEgrL3Oif1Table"), "her: herEncap=1\n");
}

TEST(ReservedRow, isLeftToAChipThatReservesItItself) {
  AgentWorld agent({.values = {{"ownReservedRow", "true"}}});
  EXPECT_EQ(agent.table("L3NextHop2Table"), "ff:ff:ff:ff:ff:ff: macAddr=00:00:00:00:00:00\n");
  auto const dropRow = agent.agent().chip().store("L3NextHop2Table")->base(1) + 1;
  EXPECT_EQ(agent.hardware().field("EgrL3NextHop2", dropRow, "l3Oif2Handle"), 0U);
}

}  // namespace AgentTest
