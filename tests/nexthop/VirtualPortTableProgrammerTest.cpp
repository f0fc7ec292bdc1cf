#include <gtest/gtest.h>

#include "platform/kiln/Exceptions.h"
#include "platform/kiln/Trace.h"
#include "platform/tessel/tables/EgrL3Ipv4TunnelTable.h"
#include "tests/support/TableFixture.h"

namespace {

using namespace TableTest;

/// Virtual ports on a chip of each way of completion.
class VirtualPorts : public testing::TestWithParam<Asic::Completion> {
 protected:
  ChipSpec chipAsked(ChipSpec wanted = {}) const {
    wanted.completion = GetParam();
    return wanted;
  }
  static Handle insert(TableWorld& world, Meshal::IpGenAddr const& addr, Handle const& header = {},
                       bool learning = true) {
    return world.virtualPorts->insertEntry(tunnel(addr), Vane::vxlanTunnel_, addr, learning, header);
  }
  /// A header from 10.0.0.1 to VTEP 2.
  Handle headerOf(TableWorld& world) {
    headers_ = TesselVxlan::egrL3Ipv4TunnelTableFactory();
    headers_->doInit(Asic::kSharedUnit, nullptr, world.chipInfo());
    return headers_->entryRef({vtep(1), vtep(2)}, {});
  }
  static constexpr char const* table = "VirtualPortTableMerged";

 private:
  Dovel::Ptr<TesselVxlan::EgrL3Ipv4TunnelTable> headers_;
};

INSTANTIATE_TEST_SUITE_P(Chips, VirtualPorts, testing::Values(Asic::Completion::direct, Asic::Completion::deferred),
                         completionName);

TEST_P(VirtualPorts, haveTwoDefaultRowsBelowThem) {
  TableWorld world(chipAsked());
  auto const header = headerOf(world);
  for (bool const learning : {true, false}) {
    world.virtualPorts->insertDefaultEntries(learning, header);
    world.settle();
    std::string const learn = learning ? "defaultLearnEnable=1 " : "";
    std::string const held = "egrL3TunnelTableHandle=EgrL3Ipv4TunnelTable[10.0.0.1 > 10.0.0.2] tunnelIndex=1 ";
    EXPECT_EQ(world.show(table), " row 1: vp1FlagA=1 vp1FlagB=1 vp1FlagC=7 vp1FlagD=1 " + learn +
                                     "vpClassCode=3 capabilityFlag=1 " + held +
                                     "sbrCodeB=100 vp2FlagA=1\n"
                                     "127.0.0.1 row 0: vp1FlagA=1 vp1FlagB=1 vp1FlagD=1 " +
                                     learn + "vpClassCode=1 sbrCodeA=118 " + held + "sbrCodeB=100 sbrCodeC=118\n");
  }
  EXPECT_EQ(world.show("RL2TunnelDefaultNetworkSvp"), "0 row 0: svp=1\n1 row 1: svp=1\n");
  EXPECT_EQ(world.dvpMap->dvpToVtepMap(1), Meshal::IpGenAddr("0.0.0.0"));

  world.virtualPorts->deleteDefaultEntry();
  EXPECT_EQ(world.keys(table), "127.0.0.1\n");
  EXPECT_EQ(world.keys("RL2TunnelDefaultNetworkSvp"), "");
  EXPECT_TRUE(world.dvpMap->dvpToVtepMapHas(1));
}

TEST_P(VirtualPorts, doWithoutWhatTheirChipLacks) {
  TableWorld world(chipAsked({.defaultSvp = false, .capabilities = false}));
  EXPECT_EQ(world.virtualPorts->rL2TunnelDefaultNetworkSvp(), nullptr);
  world.virtualPorts->insertDefaultEntries(true, nullptr);
  world.vtepIs(vtep(2));
  insert(world, vtep(2));
  EXPECT_EQ(world.show(table).find("capabilityFlag"), std::string::npos);
  world.virtualPorts->deleteDefaultEntry();
  EXPECT_EQ(world.keys(table), "10.0.0.2\n127.0.0.1\n");
}

TEST_P(VirtualPorts, holdTheirVtepAndItsHeader) {
  TableWorld world(chipAsked());
  auto const header = headerOf(world);
  world.vtepIs(vtep(2));
  world.vtepIs(vtep6(2));
  insert(world, vtep(2), header);
  insert(world, vtep6(2));
  std::string const vp1 =
      " vp1FlagA=1 vp1FlagB=1 learnEnableA=1 learnEnableB=1 vp1FlagC=1 vp1FlagD=1 vp1UpdateCount=1 vpClassCode=3 "
      "capabilityFlag=1 vp1FlagF=1 sbrCodeA=119";
  std::string const vp2 =
      " sbrCodeB=101 vp2FlagA=1 vp2FlagC=1 vp2FlagD=1 vp2FlagE=1 vp2UpdateCount=1 vp2CodeA=16 vp2FlagF=1 "
      "sbrCodeC=119\n";
  EXPECT_EQ(world.show(table),
            "10.0.0.2 row 2:" + vp1 +
                " egrL3TunnelTableHandle=EgrL3Ipv4TunnelTable[10.0.0.1 > 10.0.0.2] tunnelIndex=1 vtepIpBits=167772162" +
                vp2 + "2001:db8::2 row 3:" + vp1 + " vtepIpBits=2" + vp2);
  EXPECT_EQ(world.tunnelIndexMap->tunnelIndexToVtepMap(header->row()->value()), vtep(2));
  EXPECT_TRUE(Asic::sameEntry(world.virtualPorts->egrL3TunnelTableHandle(vtep(2)), header));
  EXPECT_EQ(world.virtualPorts->egrL3TunnelTableHandle(vtep(3)), nullptr);
  insert(world, vtep(2), header, false);
  EXPECT_EQ(world.show(table, "10.0.0.2").find("learn"), std::string::npos);
}

TEST_P(VirtualPorts, areWrittenByEachInsert) {
  TableWorld world(chipAsked());
  world.vtepIs(vtep(2));
  auto const row = insert(world, vtep(2))->row();
  world.settle();
  world.writes();
  EXPECT_EQ(insert(world, vtep(2))->row(), row);
  EXPECT_EQ(world.writes(), 2) << "both parts";
  auto const& ports = *world.virtualPorts->virtualPortTable();
  EXPECT_EQ(ports.virtualPort1TableEntry(vtep(2)).vp1UpdateCount, 2);
  EXPECT_EQ(ports.virtualPort2TableEntry(vtep(2)).vp2UpdateCount, 2);
}

/// Notes what a VTEP's map says at the moment when its tunnel id changes.
struct IdWatch : Dovel::Subscriber {
  IdWatch(TableWorld& watched, TesselCentral::VtepIpToTnlIdNhIdMap& map)
      : Subscriber(&onChange), world(watched), vtep(map.vtepIp()) {
    map.publisher()->subscriberAdd(*this);
  }
  static void onChange(Dovel::Subscriber& subscriber, Dovel::Change const& change) {
    auto& self = static_cast<IdWatch&>(subscriber);
    if (change.id == TesselCentral::VtepIpToTnlIdNhIdMap::tnlIdId) self.seen += self.world.published(self.vtep) + "\n";
  }
  TableWorld& world;
  Meshal::IpGenAddr vtep;
  std::string seen;
};

TEST_P(VirtualPorts, arePublishedOnceWithTheStatusBeforeTheId) {
  TableWorld world(chipAsked());
  IdWatch const watch(world, world.vtepIs(vtep(2)));
  insert(world, vtep(2));
  EXPECT_EQ(watch.seen.empty(), GetParam() == Asic::Completion::deferred);
  world.settle();
  EXPECT_EQ(watch.seen, "port done 2, next hop none\n");
  EXPECT_EQ(world.dvpMap->dvpToVtepMap(2), vtep(2));
}

TEST_P(VirtualPorts, takeTheirMappingWithThem) {
  TableWorld world(chipAsked());
  world.vtepIs(vtep(2));
  insert(world, vtep(2));
  world.virtualPorts->deleteEntry(tunnel(vtep(2)), vtep(2));
  world.l2State->vtepIpToTnlIdNhIdMapDel(vtep(2));
  world.settle();
  EXPECT_EQ(world.keys(table), "");
  EXPECT_EQ(world.virtualPorts->getEntry(vtep(2)), nullptr);
  EXPECT_FALSE(world.dvpMap->dvpToVtepMapHas(2));
  EXPECT_EQ(world.tunnelIndexMap->tunnelIndexToVtepMap(0), vtep(2)) << "kept on purpose";
}

TEST_P(VirtualPorts, beyondTheTableAreToldOnceAndHeal) {
  TableWorld world(chipAsked({.rows = {{"VirtualPort1Table", 3}}}));
  world.vtepIs(vtep(2));
  world.vtepIs(vtep(3));
  insert(world, vtep(2));
  insert(world, vtep(3));
  world.settle();
  EXPECT_EQ(world.published(vtep(3)), "port failed unprogrammed, next hop none");
  EXPECT_EQ(world.messages(),
            "TESSEL_VXLAN_VP_TABLE_RESOURCE_FULL: Hardware resources are insufficient to program the "
            "virtual port for remote VTEP 10.0.0.3.\n");
  EXPECT_EQ(world.dvpMap->dvpToVtepMapColl().size(), 1) << "no number, no mapping";

  world.virtualPorts->deleteEntry(tunnel(vtep(2)), vtep(2));
  world.settle();
  EXPECT_EQ(world.published(vtep(3)), "port done 2, next hop none");
  EXPECT_EQ(world.dvpMap->dvpToVtepMap(2), vtep(3));
}

TEST_P(VirtualPorts, areAnsweredInVainOnceTheVtepHasGone) {
  TableWorld world(chipAsked());
  world.vtepIs(vtep(2));
  world.hardware().refuseTable("VirtualPort2Table", Asic::EntryState::failed);
  insert(world, vtep(2));
  world.l2State->vtepIpToTnlIdNhIdMapDel(vtep(2));
  world.settle();
  EXPECT_FALSE(world.l2State->vtepIpToTnlIdNhIdMapHas(vtep(2)));
}

TEST(VirtualPortsOfAFaultyProfile, areRefused) {
  TableWorld world({.vpClassCode = 16});
  world.vtepIs(vtep(2));
  try {
    world.virtualPort(vtep(2));
    FAIL();
  } catch (Kiln::RangeException const& fault) {
    EXPECT_STREQ(fault.what(), "U4::value < 0 or > 0x0f not allowed");
  }
}

}  // namespace
