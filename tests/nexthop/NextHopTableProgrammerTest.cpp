#include <gtest/gtest.h>

#include "platform/kiln/Trace.h"
#include "tests/support/TableFixture.h"

namespace {

using namespace TableTest;

/// Underlay next hops on a chip of each way of completion.
class UnderlayNextHops : public testing::TestWithParam<Asic::Completion> {
 protected:
  ChipSpec chipAsked(ChipSpec wanted = {}) const {
    wanted.completion = GetParam();
    return wanted;
  }
  Handle insert(TableWorld& world, Vane::NextHopEntry const& entry) {
    return world.nextHops->insertEntry(tunnel(vtep(2)), entry);
  }
};

INSTANTIATE_TEST_SUITE_P(Chips, UnderlayNextHops, testing::Values(Asic::Completion::direct, Asic::Completion::deferred),
                         completionName);

constexpr char const* dropRow = "ff:ff:ff:ff:ff:ff row 1: destinationHandle=#0 l3Oif2Handle=#0\n";

TEST_P(UnderlayNextHops, startWithTheFixedRowsAlone) {
  TableWorld world(chipAsked());
  EXPECT_EQ(world.show("L3NextHop2Table"),
            std::string("00:00:00:00:00:00 row 0: destinationHandle=#0 ingressViewCode=7 "
                        "l3Oif2Handle=#0 egressViewCode=9\n") +
                dropRow);
}

TEST_P(UnderlayNextHops, leaveRowZeroToAChipThatReservesItItself) {
  TableWorld world(chipAsked({.ownReservedRow = true}));
  EXPECT_EQ(world.show("L3NextHop2Table"), dropRow);
}

TEST_P(UnderlayNextHops, holdPortOrGroupAndVlan) {
  TableWorld world(chipAsked());
  TesselCentral::PortInfo subPort;
  subPort.kindIs(TesselCentral::PortKind::subPort);
  subPort.numberIs(77);
  world.fcsd->portConfigDir()->portIs(Meshal::IntfId("Ethernet4"), subPort);
  auto const port = insert(world, nextHop(3));
  auto const sub = insert(world, nextHop(4));
  auto const lag = insert(world, nextHop(9));
  world.settle();
  EXPECT_EQ(port->state(), Asic::EntryState::written);
  EXPECT_EQ(
      world.show("L3NextHop2Table", "02:"),
      "02:00:00:00:00:03 Vlan3 row 2: destinationHandle=#0 destinationKind=2 ingressViewCode=5 destination=3 vlanId=3 "
      "l3Oif2Handle=EgrL3Oif2[3] macAddr=02:00:00:00:00:03 egressViewCode=9\n"
      "02:00:00:00:00:04 Vlan4 row 3: destinationHandle=#0 destinationKind=2 ingressViewCode=5 destination=77 vlanId=4 "
      "l3Oif2Handle=EgrL3Oif2[4] macAddr=02:00:00:00:00:04 egressViewCode=9\n"
      "02:00:00:00:00:09 Vlan9 row 4: destinationHandle=#0 destinationKind=2 ingressViewCode=5 destination=9 isLag=1 "
      "vlanId=9 l3Oif2Handle=EgrL3Oif2[9] macAddr=02:00:00:00:00:09 egressViewCode=9\n");
}

TEST_P(UnderlayNextHops, ofAnInterfaceWithoutIdHaveVlanZero) {
  TableWorld world(chipAsked());
  auto entry = nextHop(3);
  entry.l3IntfIs(Meshal::IntfId("Loopback0"));
  auto const handle = insert(world, entry);
  EXPECT_EQ(world.show("L3NextHop2Table", "02:"),
            "02:00:00:00:00:03 Loopback0 row 2: destinationHandle=#0 destinationKind=2 ingressViewCode=5 destination=3 "
            "l3Oif2Handle=EgrL3Oif2[0] macAddr=02:00:00:00:00:03 egressViewCode=9\n");
}

TEST_P(UnderlayNextHops, thatStandAsWantedCostNoWrite) {
  TableWorld world(chipAsked());
  auto kept = insert(world, nextHop(3));
  world.settle();
  world.writes();
  auto const again = insert(world, nextHop(3));
  EXPECT_TRUE(Asic::sameEntry(kept, again));
  EXPECT_EQ(world.writes(), 0);
  kept = nullptr;
  EXPECT_TRUE(again->gone()) << "the second handle is no use of the row";
}

TEST_P(UnderlayNextHops, changeInPlaceWhenOnePartDiffers) {
  TableWorld world(chipAsked());
  auto const handle = insert(world, nextHop(3));
  auto const row = handle->row();
  auto other = nextHop(3);
  other.l2IntfIs(Meshal::IntfId("Ethernet4"));
  world.writes();
  auto const changed = insert(world, other);
  EXPECT_GT(world.writes(), 0);
  EXPECT_TRUE(Asic::sameEntry(handle, changed));
  EXPECT_EQ(changed->row(), row);
  EXPECT_EQ(world.nextHops->l3NextHop2Table()->ingL3NextHop2TableEntry({mac(3), Meshal::IntfId("Vlan3")}).destination,
            4);
}

TEST_P(UnderlayNextHops, withoutAPortAreNotProgrammed) {
  TableWorld world(chipAsked());
  auto entry = nextHop(3);
  entry.l2IntfIs(Meshal::IntfId("Ethernet77"));
  Kiln::TraceCapture const traces("NextHopTableProgrammer");
  EXPECT_EQ(insert(world, entry), nullptr);
  EXPECT_TRUE(traces.contains(" Invalid Dst Port"));
  EXPECT_FALSE(world.nextHops->l3NextHop2Table()->entryHas({mac(3), Meshal::IntfId("Vlan3")}));
}

TEST_P(UnderlayNextHops, floodTheirVlanWhereTheyHaveNoPort) {
  TableWorld world(chipAsked({.floods = true}));
  world.ipmc->entryCommit({1, 3}, {});
  auto flooding = nextHop(3);
  flooding.l2IntfIs({});
  auto noGroup = nextHop(4);
  noGroup.l2IntfIs({});
  auto unknownPort = nextHop(5);
  unknownPort.l2IntfIs(Meshal::IntfId("Ethernet77"));
  Handle const kept[] = {insert(world, flooding), insert(world, noGroup), insert(world, unknownPort)};
  EXPECT_EQ(
      world.show("L3NextHop2Table", "02:"),
      "02:00:00:00:00:03 Vlan3 row 2: destinationHandle=IpmcTable[1, vlanId:3] destinationKind=1 ingressViewCode=5 "
      "vlanId=3 l3Oif2Handle=EgrL3Oif2[3] macAddr=02:00:00:00:00:03 egressViewCode=9\n"
      "02:00:00:00:00:04 Vlan4 row 3: destinationKind=1 ingressViewCode=5 "
      "vlanId=4 l3Oif2Handle=EgrL3Oif2[4] macAddr=02:00:00:00:00:04 egressViewCode=9\n"
      "02:00:00:00:00:05 Vlan5 row 4: destinationHandle=#0 destinationKind=2 ingressViewCode=5 "
      "vlanId=5 l3Oif2Handle=EgrL3Oif2[5] macAddr=02:00:00:00:00:05 egressViewCode=9\n");
}

TEST_P(UnderlayNextHops, thatWereRefusedAreWrittenAgainWithoutAMessage) {
  TableWorld world(chipAsked());
  world.hardware().refuseTable("IngL3NextHop2Table", Asic::EntryState::failed);
  auto const handle = insert(world, nextHop(3));
  world.settle();
  EXPECT_EQ(handle->state(), Asic::EntryState::failed);
  EXPECT_EQ(world.messages(), "");
  world.hardware().refuseNone();
  EXPECT_TRUE(Asic::sameEntry(insert(world, nextHop(3)), handle));
  world.settle();
  EXPECT_EQ(handle->state(), Asic::EntryState::written);
}

TEST_P(UnderlayNextHops, beyondTheTableAreToldOnceAndHeal) {
  TableWorld world(chipAsked({.rows = {{"IngL3NextHop2Table", 3}, {"EgrL3NextHop2", 3}}}));
  auto first = insert(world, nextHop(3));
  auto const second = insert(world, nextHop(4));
  world.settle();
  EXPECT_EQ(second->state(), Asic::EntryState::full);
  EXPECT_EQ(world.messages(),
            "TESSEL_VXLAN_UL_NEXT_HOP_RESOURCES_FULL: Hardware resources are insufficient to program "
            "underlay for the nexthop IP 02:00:00:00:00:04.\n");
  first = nullptr;
  world.settle();
  EXPECT_EQ(second->state(), Asic::EntryState::written);
  EXPECT_EQ(world.messages(), "");
}

TEST_P(UnderlayNextHops, shareTheirOutgoingInterfaceAndTakeItAlong) {
  TableWorld world(chipAsked());
  world.hardware().refuseTable("EgrL3Oif2", Asic::EntryState::failed);
  auto first = insert(world, nextHop(3));
  world.settle();
  EXPECT_TRUE(world.hardware().row("EgrL3Oif2", 0).empty());
  world.hardware().refuseNone();
  auto other = nextHop(3);
  other.ethAddrIs(nextHop(4).ethAddr());
  auto second = insert(world, other);
  world.settle();
  EXPECT_EQ(world.hardware().field("EgrL3Oif2", 0, "vlanId"), 3U) << "what the chip refused is sent again";
  first = nullptr;
  EXPECT_EQ(world.keys("EgrL3Oif2"), "3\n");
  second = nullptr;
  EXPECT_EQ(world.keys("EgrL3Oif2"), "");
}

}  // namespace
