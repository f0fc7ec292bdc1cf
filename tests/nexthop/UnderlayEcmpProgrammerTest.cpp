#include <gmock/gmock.h>

#include "tests/support/TableFixture.h"

namespace {

using namespace TableTest;

/// Groups of underlay next hops on a chip of each way of completion.
class UnderlayGroups : public testing::TestWithParam<Asic::Completion> {
 protected:
  Handle insert(unsigned remote, std::uint32_t adjId, Vane::NextHopEntrySet const& nextHops) {
    return world.ecmp->insertEntry(config(tunnel(vtep(remote)), adjId, nextHops));
  }
  std::string groups() const { return world.show("EcmpGroup1Table") + world.show("EcmpMember1Table"); }

  TableWorld world{{.completion = GetParam()}};
};

INSTANTIATE_TEST_SUITE_P(Chips, UnderlayGroups, testing::Values(Asic::Completion::direct, Asic::Completion::deferred),
                         completionName);

TEST_P(UnderlayGroups, countTheirResolvedMembersAlone) {
  Vane::NextHopEntrySet nextHops{nextHop(1), nextHop(3)};
  for (unsigned const type : {0, 1, 3, 12}) {
    auto other = nextHop(type + 4);
    other.typeIs(static_cast<Vane::NextHopEntryType>(type));
    nextHops.insert(other);
  }
  auto const group = insert(2, 36, nextHops);
  world.settle();
  EXPECT_EQ(groups(),
            "adj:36 row 0: memberBlockHandle=EcmpMember1Table[[02:00:00:00:00:01 Vlan1, 02:00:00:00:00:03 Vlan3]] "
            "lastMemberIndex=1\n"
            "[02:00:00:00:00:01 Vlan1, 02:00:00:00:00:03 Vlan3] row 0: nextHopHandle=L3NextHop2Table[02:00:00:00:00:01 "
            "Vlan1] "
            "nextHopHandle=L3NextHop2Table[02:00:00:00:00:03 Vlan3]\n");
}

TEST_P(UnderlayGroups, areSharedByTheTunnelsOverAnAdjacency) {
  auto kept = insert(2, 36, {nextHop(1), nextHop(2)});
  world.settle();
  world.writes();
  auto const second = insert(3, 36, {nextHop(1), nextHop(2)});
  EXPECT_TRUE(Asic::sameEntry(kept, second));
  EXPECT_EQ(world.writes(), 0);
  kept = nullptr;
  EXPECT_TRUE(second->gone());
  EXPECT_EQ(groups(), "") << "group, block and next hops go with the last holder";
  EXPECT_EQ(world.keys("L3NextHop2Table"), "00:00:00:00:00:00\nff:ff:ff:ff:ff:ff\n");
}

TEST_P(UnderlayGroups, standOrFallWithEachMember) {
  auto const group = insert(2, 36, {nextHop(1), nextHop(2)});
  auto const before = groups();
  auto lost = nextHop(3);
  lost.l2IntfIs(Meshal::IntfId("Ethernet77"));
  for (unsigned n = 0; n < 2; ++n) {
    EXPECT_EQ(insert(2, 36, {nextHop(1), nextHop(2), lost}), nullptr);
    EXPECT_EQ(insert(3, 37, {nextHop(4), lost}), nullptr);
  }
  EXPECT_EQ(groups(), before);
  EXPECT_EQ(world.keys("L3NextHop2Table").find("02:00:00:00:00:04"), std::string::npos)
      << "what was written for the lost group goes again";
}

TEST_P(UnderlayGroups, changeInPlace) {
  auto const group = insert(2, 36, {nextHop(1), nextHop(2), nextHop(3)});
  auto const row = group->row();
  auto const smaller = insert(2, 36, {nextHop(1), nextHop(3)});
  world.settle();
  EXPECT_TRUE(Asic::sameEntry(group, smaller));
  EXPECT_EQ(smaller->row(), row);
  EXPECT_EQ(groups(),
            "adj:36 row 0: memberBlockHandle=EcmpMember1Table[[02:00:00:00:00:01 Vlan1, 02:00:00:00:00:03 Vlan3]] "
            "lastMemberIndex=1\n"
            "[02:00:00:00:00:01 Vlan1, 02:00:00:00:00:03 Vlan3] row 0: nextHopHandle=L3NextHop2Table[02:00:00:00:00:01 "
            "Vlan1] "
            "nextHopHandle=L3NextHop2Table[02:00:00:00:00:03 Vlan3]\n");
  EXPECT_EQ(world.keys("L3NextHop2Table").find("02:00:00:00:00:02"), std::string::npos);
}

TEST_P(UnderlayGroups, keepTheirRowsWhileOthersWait) {
  TableWorld full({.completion = GetParam(), .rows = {{"EcmpMember1Table", 4}}});
  std::vector<Handle> kept;
  auto const insertFull = [&](std::uint32_t adjId, Vane::NextHopEntrySet const& nextHops) {
    kept.push_back(full.ecmp->insertEntry(config(tunnel(vtep(2)), adjId, nextHops)));
    full.settle();
  };
  insertFull(36, {nextHop(1), nextHop(2)});
  insertFull(37, {nextHop(3), nextHop(4)});
  insertFull(38, {nextHop(5)});
  auto const members = [&](unsigned row) { return full.hardware().row("EcmpMember1Table", row); };
  auto const nextHopRow = [&](unsigned n) {
    return full.nextHops->l3NextHop2Table()->index({nextHop(n).ethAddr(), nextHop(n).l3Intf()}).value();
  };
  insertFull(36, {nextHop(1), nextHop(6)});
  EXPECT_EQ(members(1)[0], nextHopRow(6)) << "one member was exchanged";
  insertFull(36, {nextHop(6)});
  EXPECT_EQ(members(0)[0], nextHopRow(6)) << "the group became smaller";
  EXPECT_EQ(members(1)[0], nextHopRow(5)) << "the one that waited has what was left over";
  EXPECT_EQ(full.hardware().field("EcmpGroup1Table", 2, "memberBlockHandle"), 1U);
}

TEST_P(UnderlayGroups, followWhatTheirNextHopsAreReadFrom) {
  auto const group = insert(2, 36, {nextHop(1)});
  auto const rowNow = [&] {
    auto const again = insert(3, 36, {nextHop(1)});
    EXPECT_TRUE(Asic::sameEntry(group, again));
    auto const rows = world.show("L3NextHop2Table");
    return rows.substr(rows.find("02:00:00:00:00:01"));
  };
  EXPECT_THAT(rowNow(), testing::HasSubstr("destination=1 vlanId=1 "));
  TesselCentral::PortInfo info;
  info.numberIs(55);
  world.fcsd->portConfigDir()->portIs(Meshal::IntfId("Ethernet1"), info);
  EXPECT_THAT(rowNow(), testing::HasSubstr("destination=55 vlanId=1 ")) << "another port";
  world.l3Intfs->l3IntfIs(Meshal::IntfId("Vlan1"), Bridging::VlanIdOrNone(99));
  EXPECT_THAT(rowNow(), testing::HasSubstr("destination=55 vlanId=99 ")) << "another VLAN";
  auto elsewhere = nextHop(1);
  elsewhere.l2IntfIs(Meshal::IntfId("Ethernet2"));
  auto const other = insert(4, 37, {elsewhere});
  EXPECT_THAT(rowNow(), testing::HasSubstr("destination=55 vlanId=99 ")) << "the last who asks has the row";
}

TEST_P(UnderlayGroups, followAnotherPortConfiguration) {
  auto const group = insert(2, 36, {nextHop(1)});
  auto const former = world.fcsd->portConfigDir();
  // As often changed as the former one: its own count alone does not tell them apart.
  auto const ports = Dovel::make<TesselCentral::PortConfigDir>();
  for (unsigned n = 0; ports->revision() < former->revision(); ++n) {
    TesselCentral::PortInfo info;
    info.numberIs(static_cast<std::uint16_t>(55 + n));
    ports->portIs(Meshal::IntfId("Ethernet1"), info);
  }
  world.fcsd->portConfigDirIs(ports);
  auto const again = insert(3, 36, {nextHop(1)});
  EXPECT_EQ(world.show("L3NextHop2Table", "02:").find("destination=1 "), std::string::npos);
}

TEST_P(UnderlayGroups, ofTheTopHalfOfIdsAreGroupsOfTheirOwn) {
  auto const group = insert(2, 36, {nextHop(1)});
  auto const other = insert(3, 36 + 0x80000000u, {nextHop(2)});
  EXPECT_FALSE(Asic::sameEntry(group, other));
  EXPECT_THAT(groups(),
              testing::HasSubstr("adj:2147483684 row 1: memberBlockHandle=EcmpMember1Table[[02:00:00:00:00:02"));
  EXPECT_THAT(groups(), testing::HasSubstr("adj:36 row 0: memberBlockHandle=EcmpMember1Table[[02:00:00:00:00:01"));
}

TEST_P(UnderlayGroups, areWrittenAgainWhereTheyOrTheirNextHopsWereRefused) {
  for (auto const* table : {"EcmpGroup1Table", "EgrL3NextHop2"}) {
    world.hardware().refuseTable(table, Asic::EntryState::failed);
    auto const group = insert(2, 36, {nextHop(1), nextHop(2)});
    world.settle();
    world.hardware().refuseNone();
    auto const again = insert(3, 36, {nextHop(1), nextHop(2)});
    world.settle();
    EXPECT_EQ(group->state(), Asic::EntryState::written);
    EXPECT_EQ(world.nextHops->l3NextHop2Table()->entryWeakRef({mac(1), Meshal::IntfId("Vlan1")})->state(),
              Asic::EntryState::written)
        << table;
  }
}

TEST(UnderlayGroupsOfAFloodingChip, followTheMulticastGroup) {
  TableWorld world({.floods = true});
  auto flooding = nextHop(3);
  flooding.l2IntfIs({});
  auto const kept = world.ecmp->insertEntry(config(tunnel(vtep(2)), 36, {flooding}));
  EXPECT_EQ(world.show("L3NextHop2Table", "02:").find("IpmcTable"), std::string::npos);
  world.ipmc->entryCommit({1, 3}, {});
  auto const again = world.ecmp->insertEntry(config(tunnel(vtep(3)), 36, {flooding}));
  EXPECT_NE(world.show("L3NextHop2Table", "02:").find("destinationHandle=IpmcTable[1, vlanId:3]"), std::string::npos);
}

TEST(UnderlayGroupsOfAChipWithoutMembers, areNull) {
  TableWorld world({.ecmp = false});
  EXPECT_EQ(world.ecmp->insertEntry(config(tunnel(vtep(2)), 36, {nextHop(1), nextHop(2)})), nullptr);
}

}  // namespace
