// Uses, handles of handles, and rows that move through several tables.

#include <gtest/gtest.h>

#include "tests/asic/TestTables.h"

namespace AsicTest {
namespace {

class Handles : public testing::TestWithParam<Completion> {
 protected:
  World world{GetParam()};
};
INSTANTIATE_TEST_SUITE_P(Modes, Handles, testing::Values(Completion::direct, Completion::deferred),
                         [](auto const& p) { return p.param == Completion::direct ? "direct" : "deferred"; });

TEST_P(Handles, EntryStandsWhileItIsUsed) {
  auto strong = world.leafRef(1, 11);
  auto const weak = world.leaf->entryWeakRef(1);
  EXPECT_TRUE(sameEntry(strong, weak));
  EXPECT_FALSE(strong == weak);
  auto second = world.leafRef(1, 11);
  strong = nullptr;
  EXPECT_FALSE(weak->gone());
  second = nullptr;
  EXPECT_TRUE(weak->gone());
  EXPECT_FALSE(world.leaf->entryHas(1));
  EXPECT_EQ(weak->keyText(), "1");
  EXPECT_FALSE(sameEntry(weak, world.leafRef(1))) << "a later entry of the key is another";
}

TEST_P(Handles, StoredHandleIsAUseWhicheverKindItWas) {
  auto strong = world.leafRef(1);
  world.userOf(5, world.leaf->entryWeakRef(1));
  strong = nullptr;
  EXPECT_TRUE(world.leaf->entryHas(1));
  EXPECT_EQ(world.sim->field("UserTable", 2, "target"), world.leaf->index(1).value());
  world.user->entryRemove(5);
  EXPECT_FALSE(world.leaf->entryHas(1));
}

TEST_P(Handles, NewUsesAreTakenBeforeOldOnesGo) {
  world.userOf(5, world.leafRef(1));
  // The only use of 1 is the one that the rewrite replaces by itself.
  world.userOf(5, world.leaf->entryWeakRef(1), world.leafRef(2));
  EXPECT_TRUE(world.leaf->entryHas(1));
  EXPECT_TRUE(world.leaf->entryHas(2));
  world.userOf(5, world.leaf->entryWeakRef(2));
  EXPECT_FALSE(world.leaf->entryHas(1));
  EXPECT_TRUE(world.leaf->entryHas(2));
}

TEST_P(Handles, PinnedEntryOutlivesItsUsers) {
  world.leaf->entryCommit(1, World::leafEntry(1));
  world.leaf->entryWriteAtIndex(Index(0), 2, World::leafEntry(2));
  { auto const handle = world.leafRef(1, 1); }
  world.userOf(5, world.leaf->entryWeakRef(2));
  world.user->entryRemove(5);
  EXPECT_EQ(world.leaf->entrys(), 2U);
  world.leaf->entryRemoveAll();
  EXPECT_EQ(world.leaf->store()->used(), 0U);
}

TEST_P(Handles, ChainGoesWithItsFirstLink) {
  auto const before = Dovel::Node::aliveCount();
  {
    auto const block = world.block({world.leafRef(1), world.leafRef(2)});
    world.userOf(5, block);
  }
  EXPECT_EQ(world.leaf->entrys(), 2U);
  EXPECT_EQ(world.members->entryBlocks(), 1U);
  world.user->entryRemove(5);
  EXPECT_EQ(world.members->entryBlocks(), 0U);
  EXPECT_EQ(world.leaf->entrys(), 0U);
  world.take();
  EXPECT_EQ(Dovel::Node::aliveCount(), before);
}

TEST_P(Handles, BlockIsKnownByItsContents) {
  auto const one = world.leafRef(1);
  auto const two = world.leafRef(2);
  auto const block = world.block({one, two});
  auto const writes = world.chip->writes();
  EXPECT_TRUE(sameEntry(block, world.block({world.leaf->entryWeakRef(1), two})));
  EXPECT_EQ(world.chip->writes(), writes);
  EXPECT_FALSE(sameEntry(block, world.block({two, one})));
  EXPECT_FALSE(sameEntry(block, world.block({one})));
  EXPECT_EQ(world.members->entryBlocks(), 1U) << "blocks that nobody keeps go";
  EXPECT_EQ(world.sim->field("MemberTable", block->row()->value() + 1, "target"), two->row()->value());
  EXPECT_EQ(block->keyText(), "[1, 2]");
}

TEST_P(Handles, DependantsAreWrittenAgainWhenTheirTargetGetsARow) {
  std::vector<Handle> fillers;
  for (std::uint32_t n = 0; n < 15; ++n) fillers.push_back(world.leafRef(n));
  auto const late = world.leafRef(99, 9);
  world.userOf(5, late, late);
  PairEntry pair;
  pair.in.target = late;
  pair.out.number = 3;
  world.pair->entryCommit(6, pair);
  auto const block = world.block({fillers[0], late});
  world.userOf(7, late);
  world.user->entryRemove(7);
  world.take();
  auto const userRow = world.user->index(5).value();
  EXPECT_EQ(world.sim->field("UserTable", userRow, "target"), Index::none);
  EXPECT_EQ(world.sim->field("PairIn", 100, "targetRow"), 0U);
  auto const writes = world.chip->writes();

  fillers[4] = nullptr;
  world.take();
  auto const row = late->row();
  ASSERT_TRUE(row);
  EXPECT_EQ(world.sim->field("UserTable", userRow, "target"), row->value());
  EXPECT_EQ(world.sim->field("PairIn", 100, "target"), row->value());
  EXPECT_EQ(world.sim->field("PairIn", 100, "targetRow"), row->value());
  EXPECT_EQ(world.pair->entry(6).in.targetRow, row->value());
  EXPECT_EQ(world.sim->field("MemberTable", block->row()->value() + 1, "target"), row->value());
  EXPECT_EQ(world.chip->writes(), writes + 4) << "the target and the three rows that hold its number";
  EXPECT_EQ(world.user->entryWeakRef(5)->state(), EntryState::written);
}

TEST_P(Handles, PartsHaveRowsOfTheirOwn) {
  PairEntry entry;
  entry.in.target = Asic::SwTableWorkaround::dontCareHandle(Index(7));
  entry.out.number = 5;
  auto const row = world.pair->entryCommit(1, entry)->row()->value();
  EXPECT_EQ(world.sim->field("PairIn", row + 100, "target"), 7U);
  EXPECT_EQ(world.sim->field("PairOut", row + 200, "number"), 5U);
  PairOut out;
  out.baseIs(200);
  EXPECT_EQ(out.hwIndexOnlyForCrossAgentCommunication(Index(row)), row + 200);
  auto const writes = world.chip->writes();
  entry.in.target = Asic::SwTableWorkaround::dontCareHandle(Index(7));
  EXPECT_TRUE(isEq(entry.in, world.pair->entry(1).in));
  entry.out.number = 6;
  world.pair->entryCommit(1, entry);
  EXPECT_EQ(world.chip->writes(), writes + 1) << "the other part's numbers are the same";
}

TEST_P(Handles, TablesOfOneClassAndUnitShareTheirEntries) {
  auto const other = Dovel::make<LeafTable>("other");
  other->doInit(Asic::kSharedUnit, nullptr, Asic::ChipInfo(world.chip));
  auto const handle = world.leafRef(1, 11);
  EXPECT_EQ(other->entry(1).number, 11U);
  auto const fap = Dovel::make<LeafTable>("fap");
  EXPECT_FALSE(fap->initialized());
  fap->doInit(3, nullptr, Asic::ChipInfo(world.chip));
  EXPECT_EQ(fap->entrys(), 0U);
  EXPECT_EQ(fap->numEntries(), 16U);
  EXPECT_EQ(world.chip->stores().size(), 6U);
  EXPECT_EQ(world.chip->store("LeafTable"), world.leaf->store()) << "the shared one";
  EXPECT_EQ(world.chip->store("Leaf"), nullptr);
  Asic::bringUp(*other, nullptr, Asic::ChipInfo(world.chip));
  EXPECT_EQ(world.leaf->entrys(), 0U);
  EXPECT_TRUE(world.leaf->store()->published());
}

TEST_P(Handles, HandleMayOutliveTheChip) {
  auto const strong = world.leafRef(1, 11);
  world.userOf(5, world.leafRef(2));
  auto const weak = world.user->entryWeakRef(5);
  world.chip = nullptr;
  EXPECT_TRUE(weak->gone());
  EXPECT_FALSE(strong->gone());
  EXPECT_EQ(strong->keyText(), "1");
}

TEST_P(Handles, WhatIsWrittenAfterTheChipIsRefused) {
  auto const nodes = Dovel::Node::aliveCount();
  world.chip = nullptr;
  {
    auto const strong = world.leafRef(1, 11);
    EXPECT_EQ(strong->state(), EntryState::failed);
    EXPECT_TRUE(world.userOf(5, strong)->gone());
    EXPECT_TRUE(world.leaf->entryCommit(1, World::leafEntry(12)));
    auto const block = world.block({strong});
    EXPECT_EQ(block->state(), EntryState::failed);
    world.slot->entryCommit(Index(3), {});
  }
  EXPECT_EQ(world.leaf->entrys() + world.user->entrys() + world.slot->entrys(), 0U);
  EXPECT_LT(Dovel::Node::aliveCount(), nodes);
}

TEST_P(Handles, NothingIsAliveAfterTheChipHasGone) {
  auto const before = Dovel::Node::aliveCount();
  {
    World small{GetParam(), 4};
    auto const keep = Dovel::make<LeafTable>();
    std::vector<Handle> handles;
    for (std::uint32_t n = 0; n < 8; ++n) {
      LeafEntry entry;
      entry.writeResponse = [keep](EntryState) {};
      handles.push_back(small.leaf->entryRef(n, entry));
      small.userOf(n, handles.back());
    }
    small.chip->deliverOne();
    small.chip->stop();
  }
  EXPECT_EQ(Dovel::Node::aliveCount(), before);
}

TEST_P(Handles, TextsNameTables) {
  auto const leaf = world.leafRef(1, 11);
  UserEntry entry;
  entry.target = leaf;
  entry.other = Asic::SwTableWorkaround::dontCareHandle(Index(4));
  EXPECT_EQ(Kiln::toText(entry), "{target=LeafTable[1],other=#4,number=0}");
  EXPECT_EQ(Kiln::toText(world.user->entry(9)), "absent");
  auto const four = Asic::SwTableWorkaround::dontCareHandle(Index(4));
  EXPECT_TRUE(sameEntry(entry.other, four));
  EXPECT_FALSE(sameEntry(Asic::SwTableWorkaround::dontCareHandle(Index(5)), four));
  EXPECT_FALSE(sameEntry(leaf, four));
  EXPECT_FALSE(sameEntry(leaf, nullptr));
  EXPECT_EQ(four->state(), EntryState::written);
  EXPECT_EQ(four->tableName(), "");
}

}  // namespace
}  // namespace AsicTest
