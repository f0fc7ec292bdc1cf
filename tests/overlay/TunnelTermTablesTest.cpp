#include <gtest/gtest.h>

#include <algorithm>
#include <bit>

#include "OverlayWorld.h"
#include "platform/kiln/Trace.h"

namespace {

using namespace OverlayTest;

/// What differs between the tables of the two families.
struct Family {
  char const* name;
  char const* dipTable;
  char const* sipTable;
  char const* dipFull;
  std::vector<char const*> addrs;
};
Family const ipv4{"ipv4",
                  "L2TunnelIpv4DipTable",
                  "L2TunnelIpv4SipTable",
                  "TESSEL_VXLAN_IPV4_DIP_RESOURCE_FULL",
                  {"10.0.0.1", "10.0.0.2", "10.0.0.3"}};
Family const ipv6{"ipv6",
                  "L2TunnelIpv6DipTable",
                  "L2TunnelIpv6SipTable",
                  "TESSEL_VXLAN_IPV6_DIP_RESOURCE_FULL",
                  {"2001:db8::1", "2001:db8::2", "2001:db8::3"}};

/// The ends of tunnels of each family, on a chip of each way of completion.
class TunnelEnds : public testing::TestWithParam<std::tuple<Family, Asic::Completion>> {
 protected:
  Family const& family() const { return std::get<0>(GetParam()); }
  Meshal::IpGenAddr addr(unsigned n) const { return ip(family().addrs[n]); }
  ChipSpec chip(std::map<std::string, std::uint32_t> rows = {}) const {
    return {.completion = std::get<1>(GetParam()), .rows = std::move(rows)};
  }
};
INSTANTIATE_TEST_SUITE_P(Chips, TunnelEnds,
                         testing::Combine(testing::Values(ipv4, ipv6),
                                          testing::Values(Asic::Completion::direct, Asic::Completion::deferred)),
                         [](auto const& of) {
                           return std::string(std::get<0>(of.param).name) +
                                  (std::get<1>(of.param) == Asic::Completion::direct ? "Direct" : "Deferred");
                         });

TEST_P(TunnelEnds, takeTheSettingOfTheirLastInsert) {
  OverlayWorld world(chip());
  world.term->insertOrUpdateDipEntry(addr(0));
  EXPECT_EQ(world.ends(), family().addrs[0]);
  world.config->outerHeaderPhbIs(true);
  world.term->insertOrUpdateDipEntry(addr(0));
  EXPECT_EQ(world.show(family().dipTable),
            std::string(family().addrs[0]) + " row 0: allowedPortsProfileIndex=1 useOuterHeaderPhb=1\n");
  world.writes();
  world.term->insertOrUpdateDipEntry(addr(0));
  EXPECT_EQ(world.writes(), 0) << "the chip has it already";
  EXPECT_TRUE(world.term->dipEntryHas(addr(0)));
  world.term->deleteDipEntry(addr(0));
  EXPECT_EQ(world.ends(), "");
  EXPECT_FALSE(world.term->dipEntryHas(addr(0)));
}

TEST_P(TunnelEnds, thatFindNoRoomAreToldOncePerWriteAndHeal) {
  OverlayWorld world(chip({{family().dipTable, 1}}));
  std::string const full = std::string(family().dipFull) +
                           ": Hardware resources are insufficient to program VXLAN destination IP for local VTEP IP " +
                           family().addrs[1] + ".\n";
  world.term->insertOrUpdateDipEntry(addr(0));
  world.term->insertOrUpdateDipEntry(addr(1));
  EXPECT_EQ(world.messages(), full);
  world.term->insertOrUpdateDipEntry(addr(1));
  EXPECT_EQ(world.messages(), full);
  world.term->deleteDipEntry(addr(0));
  world.settle();
  EXPECT_EQ(world.show(family().dipTable), std::string(family().addrs[1]) + " row 0: allowedPortsProfileIndex=1\n");
}

TEST_P(TunnelEnds, ofRemoteVtepsHoldTheirVirtualPort) {
  OverlayWorld world(chip());
  auto const port = world.virtualPortIs(addr(0));
  auto const row = Kiln::toText(*port->row());
  world.term->insertSipEntry(addr(0), port);
  EXPECT_EQ(world.show(family().sipTable), std::string(family().addrs[0]) +
                                               " row 0: svpHandle=VirtualPortTableMerged[" + family().addrs[0] +
                                               "] svp=" + row + "\n");
  world.virtualPorts->entryRemove(addr(0));
  EXPECT_FALSE(port->gone()) << "the packets of the VTEP still come in by it";
  EXPECT_NE(world.virtualPortIs(addr(1))->row(), port->row());
  world.term->deleteSipEntry(addr(0));
  EXPECT_TRUE(port->gone());
  EXPECT_EQ(world.show(family().sipTable), "");
}

TEST_P(TunnelEnds, ofRemoteVtepsMoveToTheirLastVirtualPort) {
  OverlayWorld world(chip());
  auto const former = world.virtualPortIs(addr(0));
  world.term->insertSipEntry(addr(0), former);
  world.virtualPorts->entryRemove(addr(0));
  auto const port = world.virtualPortIs(addr(0));
  world.term->insertSipEntry(addr(0), port);
  EXPECT_TRUE(former->gone());
  EXPECT_EQ(world.hardware().field(family().sipTable, 0, "svp"), port->row()->value());
}

TEST_P(TunnelEnds, ofRemoteVtepsWithoutAVirtualPortAreNotWritten) {
  OverlayWorld world(chip());
  auto const port = world.virtualPortIs(addr(0));
  world.virtualPorts->entryRemove(addr(0));
  ASSERT_TRUE(port->gone());
  world.term->insertSipEntry(addr(0), nullptr);
  world.term->insertSipEntry(addr(0), port);
  EXPECT_EQ(world.show(family().sipTable), "");
}

TEST_P(TunnelEnds, ofRemoteVtepsThatFindNoRoomAreToldWithTheirPort) {
  OverlayWorld world(chip({{family().sipTable, 1}}));
  world.term->insertSipEntry(addr(0), world.virtualPortIs(addr(0)));
  EXPECT_EQ(world.messages(), "");
  auto const port = world.virtualPortIs(addr(1));
  world.term->insertSipEntry(addr(1), port);
  EXPECT_EQ(world.messages(), std::string("TESSEL_VXLAN_SIP_SVP_MAPPING_RESOURCE_FULL: Hardware resources are "
                                          "insufficient to add remote VTEP ip ") +
                                  family().addrs[1] + " mapping to SVP " + Kiln::toText(*port->row()) + ".\n");
  world.term->deleteSipEntry(addr(0));
  world.settle();
  EXPECT_EQ(world.hardware().field(family().sipTable, 0, "svp"), port->row()->value());
}

TEST_P(TunnelEnds, thatWereRefusedRaiseNoMessageOfAFullTable) {
  OverlayWorld world(chip());
  for (auto const* table : {family().dipTable, family().sipTable}) {
    world.hardware().refuseTable(table, Asic::EntryState::failed);
  }
  world.term->insertOrUpdateDipEntry(addr(0));
  world.term->insertSipEntry(addr(0), world.virtualPortIs(addr(0)));
  EXPECT_EQ(world.messages(), "");
  world.hardware().refuseNone();
  world.writes();
  world.term->insertOrUpdateDipEntry(addr(0));
  world.term->insertSipEntry(addr(0), world.virtualPorts->entryWeakRef(addr(0)));
  EXPECT_EQ(world.writes(), 2) << "the same again is written again";
}

TEST_P(TunnelEnds, ofRemoteVtepsThatAreAbsentMayBeDeleted) {
  OverlayWorld world(chip());
  world.term->insertSipEntry(addr(0), world.virtualPortIs(addr(0)));
  auto const before = world.show(family().sipTable);
  Kiln::TraceCapture traces("TesselVxlanTunnelTermTableProgrammer");
  world.term->deleteSipEntry(addr(1));
  EXPECT_TRUE(
      traces.contains(std::string("deleteSipEntry:  Address missing in l2_tunnel_") + family().name + "_sip table"));
  EXPECT_EQ(world.show(family().sipTable), before);
}

TEST(TunnelTermTables, beginWithTheSetOfAllPortsAlone) {
  OverlayWorld world({});
  EXPECT_EQ(world.ends(), "");
  EXPECT_EQ(world.term->allowedPortBitmapProfile()->entrys(), 1);
  EXPECT_FALSE(world.term->allowedPortBitmapProfile()->entryHas(Asic::Index(0)));
  auto const& ports = world.term->allowedPortBitmapProfile()->entry(Asic::Index(1)).ports;
  int bits = 0;
  for (std::size_t word = 0; word < Anvil::PerUnitBitmap::kWords; ++word) bits += std::popcount(ports.bitList(word));
  EXPECT_EQ(bits, 352);
}

TEST(TunnelTermTables, keepFamiliesApartWhoseBytesAreAlike) {
  OverlayWorld world({});
  for (auto const* addr : {"10.0.0.1", "a00:1::"}) {
    world.term->insertOrUpdateDipEntry(ip(addr));
    world.term->insertSipEntry(ip(addr), world.virtualPortIs(ip(addr)));
  }
  EXPECT_EQ(world.ends(), "10.0.0.1 a00:1::");
  world.term->deleteDipEntry(ip("10.0.0.1"));
  world.term->deleteSipEntry(ip("a00:1::"));
  EXPECT_EQ(world.ends(), "a00:1::");
  EXPECT_EQ(world.term->l2TunnelIpv4SipTable()->entrys(), 1);
  EXPECT_EQ(world.term->l2TunnelIpv6SipTable()->entrys(), 0);
}

TEST(TunnelTermTables, doWithoutAFamilyThatTheChipLacks) {
  OverlayWorld world({.ipv6Ends = false});
  auto const addr = ip("2001:db8::1");
  Kiln::TraceCapture traces("TesselVxlanTunnelTermTableProgrammer");
  world.term->insertOrUpdateDipEntry(addr);
  EXPECT_FALSE(world.term->dipEntryHas(addr));
  world.term->deleteDipEntry(addr);
  world.term->insertSipEntry(addr, world.virtualPortIs(addr));
  world.term->deleteSipEntry(addr);
  EXPECT_EQ(std::count_if(traces.lines().begin(), traces.lines().end(),
                          [](auto const& line) { return line.find("no table for address") != std::string::npos; }),
            5);
}

TEST(TunnelTermTablesDeathTest, aCallerDeletesOnlyWhatItInserted) {
  OverlayWorld world({});
  EXPECT_DEATH(world.term->deleteDipEntry(ip("10.0.0.1")), "addr missing in l2_tunnel_ipv4_dip table: 10.0.0.1");
  EXPECT_DEATH(world.term->insertOrUpdateDipEntry({}), "DIP is not a valid ipv4/6 address");
}

}  // namespace
