#include <gtest/gtest.h>

#include "TesselVxlan/nexthop/OverlayCascadedTableProgrammer.h"
#include "platform/kiln/Trace.h"
#include "tests/support/TableFixture.h"

namespace {

using namespace TableTest;

struct Kind {
  bool cascaded;
  Asic::Completion completion;
};

/// The overlay row of a VTEP, on both kinds of chip and with both ways of completion.
class OverlayRows : public testing::TestWithParam<Kind> {
 protected:
  std::string table() const { return GetParam().cascaded ? "IngL3EcmpMember0Table" : "L3NextHop1Table"; }
  /// What the first VTEP's id is called when it is published.
  std::string firstId() const { return GetParam().cascaded ? "done 0" : "done 1000"; }
  ChipSpec chipAsked(std::uint32_t rows = 64) const {
    return {.completion = GetParam().completion,
            .cascaded = GetParam().cascaded,
            .rows = {{GetParam().cascaded ? "IngL3EcmpMember0Table" : "IngL3NextHop1", rows}}};
  }

  /// The row of VTEP `n` over next hop `via`, as the tunnel programmers write it.
  static Handle insert(TableWorld& world, unsigned n, unsigned via, Vane::TunnelType type = Vane::vxlanTunnel_) {
    auto const key = tunnel(vtep(n));
    return world.overlay->insertEntry(key, type, false, world.virtualPort(vtep(n)),
                                      world.nextHops->insertEntry(key, nextHop(via)));
  }
  /// What is published of the row of VTEP `n`.
  static std::string nextHopOf(TableWorld const& world, unsigned n) {
    auto const text = world.published(vtep(n));
    return text.substr(text.find("next hop ") + 9);
  }
};

INSTANTIATE_TEST_SUITE_P(
    Chips, OverlayRows,
    testing::Values(Kind{false, Asic::Completion::direct}, Kind{false, Asic::Completion::deferred},
                    Kind{true, Asic::Completion::direct}, Kind{true, Asic::Completion::deferred}),
    [](auto const& chip) {
      return (chip.param.cascaded ? "cascaded_" : "nextHops_") + completionName({chip.param.completion, chip.index});
    });

TEST_P(OverlayRows, arePublishedWhenTheChipHasAnswered) {
  TableWorld world(chipAsked());
  world.vtepIs(vtep(2));
  auto const handle = insert(world, 2, 1);
  EXPECT_EQ(nextHopOf(world, 2), "none");
  world.settle();
  EXPECT_EQ(nextHopOf(world, 2), firstId());
  EXPECT_FALSE(world.doorbell->tunnelNhUpdateHas(vtep(2))) << "a new id is notice enough";
  std::string const port = "vpHandle=VirtualPortTableMerged[10.0.0.2]";
  std::string const underlay = "ulEntryHandle=L3NextHop2Table[02:00:00:00:00:01 Vlan1]";
  EXPECT_EQ(
      world.show(table()),
      "10.0.0.2 row 0: " +
          (GetParam().cascaded ? port + " " + underlay
                               : underlay + " " + port + " oif1Handle=VxlanEgrL3Oif1Table[overlay] nextHopValid=1") +
          "\n");
}

TEST_P(OverlayRows, thatStandAsWantedCostNothing) {
  TableWorld world(chipAsked());
  world.vtepIs(vtep(2));
  auto const handle = insert(world, 2, 1);
  world.settle();
  world.writes();
  EXPECT_TRUE(Asic::sameEntry(insert(world, 2, 1), handle));
  world.settle();
  EXPECT_EQ(world.writes(), 0);
  EXPECT_FALSE(world.doorbell->tunnelNhUpdateHas(vtep(2)));
}

TEST_P(OverlayRows, ringTheDoorbellWhenTheyChangeUnderTheirId) {
  TableWorld world(chipAsked());
  world.vtepIs(vtep(2));
  insert(world, 2, 1);
  world.settle();
  insert(world, 2, 3);
  world.settle();
  EXPECT_EQ(nextHopOf(world, 2), firstId());
  EXPECT_EQ(world.doorbell->tunnelNhUpdate(vtep(2)), 1);
  auto const key = tunnel(vtep(2));
  world.overlay->insertEntry(key, Vane::vxlanTunnel_, true, world.virtualPort(vtep(2)),
                             world.ecmp->insertEntry(config(key, 36, {nextHop(1), nextHop(3)})));
  world.settle();
  EXPECT_EQ(world.doorbell->tunnelNhUpdate(vtep(2)), 2);
  EXPECT_NE(world.show(table()).find("ulEntryHandle=EcmpGroup1Table[adj:36] ecmp=1"), std::string::npos);

  world.overlay->deleteEntry(key);
  EXPECT_EQ(world.show(table()), "");
  EXPECT_FALSE(world.doorbell->tunnelNhUpdateHas(vtep(2)));
  EXPECT_EQ(world.show("EcmpGroup1Table") + world.show("EcmpMember1Table"), "");
}

TEST_P(OverlayRows, ofAUnicastTunnelAreNotTakenByAMemberTunnel) {
  TableWorld world(chipAsked());
  world.vtepIs(vtep(2));
  auto const unicast = insert(world, 2, 1);
  EXPECT_TRUE(Asic::sameEntry(insert(world, 2, 1, Vane::vxlanMemberTunnel_), unicast)) << "nothing to change";
  auto const before = world.show(table());
  EXPECT_EQ(insert(world, 2, 3, Vane::vxlanMemberTunnel_), nullptr);
  EXPECT_EQ(world.show(table()), before);

  world.vtepIs(vtep(3), Vane::vxlanMemberTunnel_);
  EXPECT_NE(insert(world, 3, 3, Vane::vxlanMemberTunnel_), nullptr);
}

TEST_P(OverlayRows, areAnsweredInVainOnceTheVtepHasGone) {
  TableWorld world(chipAsked());
  world.vtepIs(vtep(2));
  insert(world, 2, 1);
  world.l2State->vtepIpToTnlIdNhIdMapDel(vtep(2));
  Kiln::TraceCapture const traces("OverlayTableProgrammerBase");
  world.settle();
  EXPECT_TRUE(traces.contains("tnlIdMap not found. "));
  EXPECT_FALSE(world.l2State->vtepIpToTnlIdNhIdMapHas(vtep(2)));
}

TEST_P(OverlayRows, beyondTheTableAreUnprogrammedUntilARowIsFree) {
  TableWorld world(chipAsked(1));
  world.vtepIs(vtep(2));
  world.vtepIs(vtep(3));
  insert(world, 2, 1);
  insert(world, 3, 1);
  world.settle();
  EXPECT_EQ(nextHopOf(world, 3), "failed unprogrammed");
  std::string const message =
      GetParam().cascaded
          ? "TESSEL_VXLAN_CASCADED_NEXTHOP_RESOURCE_FULL: Hardware resources are insufficient to program a "
            "cascaded nexthop entry for remote VTEP 10.0.0.3.\n"
          : "";
  EXPECT_EQ(world.messages(), message);
  insert(world, 3, 4);
  world.settle();
  EXPECT_EQ(world.messages(), message) << "told again for another write that finds no row";

  world.overlay->deleteEntry(tunnel(vtep(2)));
  world.settle();
  EXPECT_EQ(nextHopOf(world, 3), firstId());
}

TEST_P(OverlayRows, thatTheChipRefusesAreUnprogrammedWithoutAMessage) {
  TableWorld world(chipAsked());
  world.vtepIs(vtep(2));
  world.virtualPort(vtep(2));
  world.hardware().refuseTable(GetParam().cascaded ? table() : "EgrL3NextHop1", Asic::EntryState::failed);
  insert(world, 2, 1);
  world.settle();
  EXPECT_EQ(nextHopOf(world, 2), "failed unprogrammed");
  world.hardware().refuseNone();
  insert(world, 2, 1);
  world.settle();
  EXPECT_EQ(nextHopOf(world, 2), firstId()) << "the same again is written again";
}

TEST_P(OverlayRows, keepNobodyAliveAfterTheStop) {
  auto const before = Dovel::Node::aliveCount();
  {
    TableWorld world(chipAsked(1));
    for (unsigned n = 2; n <= 4; ++n) {
      world.vtepIs(vtep(n));
      insert(world, n, 1);
    }
    world.chip().deliverOne();
  }
  EXPECT_EQ(Dovel::Node::aliveCount(), before);
}

TEST(OverlayRowsDeathTest, needTheirOwnKindOfChip) {
  TableWorld world({});
  auto const cascaded =
      TesselVxlan::overlayCascadedTableProgrammerFactory(nullptr, world.fcsd, world.l2State, world.doorbell);
  EXPECT_DEATH(cascaded->initTables(world.chipInfo()), "vxlanAttr->vxlanCascadedForwardingSupport\\(\\)");
}

}  // namespace
