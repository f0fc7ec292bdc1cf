#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <string>

#include "platform/asic/Chip.h"
#include "platform/asic/ProfileLoader.h"
#include "platform/asic/SimulatedChip.h"
#include "platform/kiln/Dir.h"
#include "platform/kiln/Json.h"
#include "platform/tessel/central/CommonData.h"
#include "platform/tessel/central/VxlanToL2State.h"
#include "platform/tessel/l3/EgrL3OifHelper.h"
#include "platform/tessel/l3/L3Intf.h"
#include "platform/tessel/l3common/DstPort.h"
#include "platform/tessel/l3common/VxlanDirs.h"
#include "platform/tessel/qos/TrustStatus.h"
#include "platform/vane/HwTunnel.h"
#include "platform/vane/VaneTunnel.h"
#include "platform/vxlan/VxlanConfig.h"
#include "tests/support/Watch.h"

namespace {

using Meshal::IntfId;
using Meshal::IpGenAddr;

void apply(Kiln::Entity& entity, std::string const& json) {
  auto const document = Kiln::JsonDocument::parse(json, "");
  Kiln::entityCheck(entity, document.root());
  Kiln::entityFromJson(entity, document.root());
}

Vane::NextHopEntry nextHop(std::uint8_t n) {
  Vane::NextHopEntry entry;
  entry.addrIs(IpGenAddr(Meshal::IpAddr(0x0a000000U + n)));
  entry.l3IntfIs(IntfId("Ethernet" + std::to_string(n)));
  return entry;
}

/// Counts the changes of an object.
struct Counter {
  int count = 0;
  Support::Watch watch;
  explicit Counter(Dovel::Node const& node) : watch(node, [this](Dovel::Change const&) { ++count; }) {}
};

TEST(Records, wantedTunnelsAreReadFromADocument) {
  auto const config = Dovel::make<Vane::VaneTunnelConfig>();
  apply(*config, R"({"adjacency":{"36":{"nextHops":[{"addr":"10.0.0.2"},{"addr":"10.0.0.1"}]}},
                     "tunnel":{"10.255.0.2":{"adjId":36},"2001:db8::2":{"adjId":null,"intfId":"Vxlan2"}}})");
  EXPECT_EQ(config->adjacency(36)->nextHops().begin()->addr(), IpGenAddr("10.0.0.1"));
  auto const tunnel = config->tunnel(IpGenAddr("10.255.0.2"));
  EXPECT_EQ(tunnel->adjId(), Vane::AdjIdOrNone(36));
  EXPECT_EQ(tunnel->intfId(), IntfId("Vxlan1"));
  EXPECT_EQ(config->tunnel(IpGenAddr("2001:db8::2"))->intfId(), IntfId("Vxlan2"));
  // Leaving the route out takes it away and keeps the tunnel.
  Counter changes(*tunnel);
  apply(*config, R"({"tunnel":{"10.255.0.2":{"adjId":36}}})");
  EXPECT_EQ(changes.count, 0);
  apply(*config, R"({"tunnel":{"10.255.0.2":{"adjId":null}}})");
  EXPECT_EQ(changes.count, 1);
  EXPECT_EQ(tunnel->adjId(), Vane::AdjIdOrNone());
}

TEST(Records, nextHopSetsAreEqualInAnyOrder) {
  Vane::NextHopEntrySet const a{nextHop(1), nextHop(2), nextHop(3)};
  Vane::NextHopEntrySet b{nextHop(3), nextHop(1), nextHop(2), nextHop(1)};
  EXPECT_EQ(a, b);
  EXPECT_TRUE(b.erase(nextHop(2)) && !b.erase(nextHop(2)));
  EXPECT_NE(a, b);
  EXPECT_TRUE(b.contains(nextHop(3)) && !b.contains(nextHop(2)));
  EXPECT_TRUE(b.insert(nextHop(2)) && !b.insert(nextHop(2)));
}

TEST(Records, theStatusOfANextHopIsOneUnit) {
  auto const status = Dovel::make<Vane::HwTunnelStatusEntry>(Vane::TunnelKey{});
  auto const one = Dovel::make<Vane::NextHopEntryList>(1, Vane::NextHopEntrySet{nextHop(1)});
  auto const same = Dovel::make<Vane::NextHopEntryList>(1, Vane::NextHopEntrySet{nextHop(1)});
  Counter changes(*status);
  status->hwNextHopStatusEntryIs({Vane::VaneNextHopId(5), one});
  status->hwNextHopStatusEntryIs({Vane::VaneNextHopId(5), one});
  EXPECT_EQ(changes.count, 1);
  // Another list is another status even if it reads the same: the id stands for the list itself.
  status->hwNextHopStatusEntryIs({Vane::VaneNextHopId(5), same});
  EXPECT_EQ(changes.count, 2);
  EXPECT_EQ(Kiln::toText(status->hwNextHopStatusEntry()), "{hwNextHopId=5,adjId=1}");
  auto const json = Kiln::jsonText([&](Kiln::JsonOut out) { Kiln::entityToJson(*status, out); });
  EXPECT_THAT(json, testing::HasSubstr(R"("hwNextHopStatusEntry":{"hwNextHopId":5)"));
  EXPECT_THROW(apply(*status, R"({"hwNextHopStatusEntry":{}})"), Kiln::InputError);
}

TEST(Records, aVtepKeepsOneLocalAddressPerFamily) {
  auto const map = Dovel::make<TesselCentral::VtepIpToTnlIdNhIdMap>(IpGenAddr("10.255.0.2"));
  map->setLocalVtep(IpGenAddr("10.255.0.1"));
  map->setLocalVtep(IpGenAddr("2001:db8::1"));
  EXPECT_EQ(map->getLocalVtep(Meshal::AddressFamily::ipv4), IpGenAddr("10.255.0.1"));
  EXPECT_EQ(map->getLocalVtep(Meshal::AddressFamily::ipv6), IpGenAddr("2001:db8::1"));
  EXPECT_DEATH(map->setLocalVtep(IpGenAddr()), "Invalid AddressFamily type");
  EXPECT_DEATH(map->getLocalVtep(Meshal::AddressFamily::unknown), "Invalid AddressFamily type");
}

TEST(Records, floodVtepsArePublishedWhole) {
  auto const dir = Dovel::make<TesselL3Common::TesselVxlanBumVtepConfigDir>();
  auto const config = dir->bumVtepConfigIs(IpGenAddr("10.255.0.2"), TesselL3Common::EncapId(4097));
  EXPECT_EQ(dir->bumVtepConfigIs(IpGenAddr("10.255.0.2"), TesselL3Common::EncapId(4098)), config);
  EXPECT_EQ(config->encapId(), TesselL3Common::EncapId(4097));

  Counter changes(*config);
  Meshal::EthAddr const mac(0x020000000001);
  auto const hop = config->nextHopsIs(IntfId("Ethernet1"), IpGenAddr("10.0.0.1"), mac);
  EXPECT_EQ(config->nextHopsIs(IntfId("Ethernet1"), IpGenAddr("10.0.0.2"), mac), hop);
  EXPECT_EQ(changes.count, 1);
  EXPECT_EQ(hop->addr(), IpGenAddr("10.0.0.2"));
}

TEST(Records, portsOfTheChip) {
  auto const ports = Dovel::make<TesselCentral::PortConfigDir>();
  auto const fcsd = Dovel::make<TesselCentral::FeatureAgentCommonSmData>();
  auto const text = [&](char const* intf) {
    auto const port = TesselL3Common::getDstPort(fcsd, IntfId(intf), Vane::nextHopResolved, true);
    return (port.isInvalid() ? "invalid " : "") + std::to_string(port.kind()) + ":" + std::to_string(port.first()) +
           "/" + std::to_string(port.second()) + "/" + std::to_string(port.third());
  };
  EXPECT_EQ(text("Ethernet1"), "invalid 0:0/0/0");
  fcsd->portConfigDirIs(ports);
  apply(*ports, R"({"port":{"Ethernet1":{"number":3},"Ethernet2":{"kind":"subPort","number":4},
                            "Port-Channel1":{"kind":"lag","number":5}}})");
  EXPECT_EQ(text("Ethernet1"), "0:3/0/0");
  EXPECT_EQ(text("Ethernet2"), "1:0/4/0");
  EXPECT_EQ(text("Port-Channel1"), "2:0/0/5");
  EXPECT_EQ(text("Ethernet3"), "invalid 0:0/0/0");
}

TEST(Records, layer3IdsAreVlanNumbers) {
  auto const table = Dovel::make<VaneL3Intf::Table>();
  table->l3IntfIs(IntfId("Vlan10"), Bridging::VlanIdOrNone(10));
  EXPECT_EQ(L3Id::l3IdToVlanId(table->intfIdToL3Id(IntfId("Vlan10"))), Bridging::VlanIdOrNone(10));
  EXPECT_EQ(table->intfIdToL3Id(IntfId("Vlan11")), 0U);
  EXPECT_THROW(L3Id::l3IdToVlanId(4095), Kiln::RangeException);
  EXPECT_THROW(L3Id::l3IdToVlanId(65537), Kiln::RangeException);
}

TEST(Records, oneOutgoingInterfacePerVlan) {
  auto const chip = Asic::makeSimulatedChip(Asic::loadProfile("flat"));
  auto const modInfo = Dovel::make<TesselCentral::LogicalModInfo>(Asic::ChipInfo(chip));
  auto const helper = Dovel::make<TesselL3Tunnel::L3TunnelEgrL3OifHelper>(nullptr);
  EXPECT_FALSE(helper->initialized());
  helper->initTables(TesselCentral::ChipInfo(*modInfo));
  auto const vlan10 = helper->getEgrL3OifHandle(Bridging::VlanIdOrNone(10));
  helper->initTables(TesselCentral::ChipInfo(*modInfo));
  EXPECT_TRUE(Asic::sameEntry(helper->getEgrL3OifHandle(Bridging::VlanIdOrNone(10)), vlan10));
  EXPECT_FALSE(Asic::sameEntry(helper->getEgrL3OifHandle(Bridging::VlanIdOrNone()), vlan10));
  EXPECT_EQ(chip->writes(), 2U);
}

TEST(Records, theLocalTrustStatusFollowsTheFirstOfTheDirectory) {
  using TesselCommon::Qos::TrustStatus;
  auto const dir = Dovel::make<Kiln::Dir>("slice");
  auto const local = TesselCommon::Qos::trustStatusFactory("trustStatusLocal");
  auto sm = Dovel::make<TesselCommon::Qos::TrustStatusSm>(dir, local);
  auto const a = Dovel::make<TrustStatus>("a"), b = Dovel::make<TrustStatus>("b");
  b->tosBasePtrIs(2);
  dir->childIs("b", b);
  EXPECT_EQ(local->tosBasePtr(), 2);
  dir->childIs("a", a);
  a->tosBasePtrIs(1);
  a->remarkBasePtrIs(200);
  b->tosBasePtrIs(3);
  EXPECT_EQ(local->tosBasePtr(), 1);
  EXPECT_EQ(local->remarkBasePtr(), 200);
  dir->childDel("a");
  EXPECT_EQ(local->tosBasePtr(), 3);
  sm = nullptr;
  b->tosBasePtrIs(4);
  EXPECT_EQ(local->tosBasePtr(), 3);
}

}  // namespace
