// References, handles of handles, and rows that move through several tables.

#include <gtest/gtest.h>

#include "tests/asic/TestTables.h"

namespace AsicTest {

class Handles : public InBothModes {};
INSTANTIATE_TEST_SUITE_P(Modes, Handles, kModes, modeName);

TEST_P(Handles, EntryExistsWhileItIsReferredToOrPinned) {
  auto strong = world.leafRef(1, 11);
  auto const weak = world.leaf->entryWeakRef(1);
  EXPECT_TRUE(sameEntry(strong, weak));
  EXPECT_FALSE(strong == weak);
  auto second = world.leafRef(1, 11);
  strong = nullptr;
  EXPECT_FALSE(weak->gone());
  second = nullptr;
  EXPECT_TRUE(weak->gone());
  EXPECT_EQ(weak->keyText(), "1");
  EXPECT_FALSE(sameEntry(weak, world.leafRef(1))) << "a later entry of the key is another";
  world.leaf->entryCommit(1, World::leafEntry(1));
  world.leaf->entryWriteAtIndex(Index(0), 2, World::leafEntry(2));
  world.leafRef(1, 1);
  world.userOf(5, world.leaf->entryWeakRef(2));
  world.user->entryRemove(5);
  EXPECT_EQ(world.leaf->entrys(), 2U);
  world.leaf->entryRemoveAll();
  EXPECT_EQ(world.leaf->store()->used(), 0U);
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

TEST_P(Handles, MayOutliveTheChipAndBeWrittenInVain) {
  auto const nodes = Dovel::Node::aliveCount();
  auto kept = world.leafRef(1, 11);
  world.userOf(5, world.leafRef(2));
  auto const weak = world.user->entryWeakRef(5);
  world.chip = nullptr;
  EXPECT_TRUE(weak->gone());
  EXPECT_FALSE(kept->gone());
  EXPECT_EQ(kept->keyText(), "1");
  kept = nullptr;
  {
    auto const strong = world.leafRef(1, 11);
    EXPECT_EQ(strong->state(), EntryState::failed);
    EXPECT_TRUE(world.userOf(5, strong)->gone());
    EXPECT_TRUE(world.leaf->entryCommit(1, World::leafEntry(12)));
    EXPECT_EQ(world.block({strong})->state(), EntryState::failed);
    world.slot->entryCommit(Index(3), {});
    std::vector<Handle> more;
    for (std::uint32_t n = 0; n < 15; ++n) more.push_back(world.leafRef(100 + n));
    EXPECT_TRUE(world.userOf(6, more.back())->gone()) << "of one that finds no row";
  }
  EXPECT_EQ(world.leaf->entrys() + world.user->entrys() + world.slot->entrys(), 0U);
  EXPECT_LT(Dovel::Node::aliveCount(), nodes);
}

TEST_P(Handles, RewriteKeepsRowAndHandlesAndSendsChangesOnly) {
  auto const write = [this](std::uint32_t number, std::string const& name) {
    UserEntry entry;
    entry.number = number;
    entry.writeResponse = world.note(name);
    return world.user->entryCommit(2, entry);
  };
  auto const handle = write(7, "a");
  auto const row = handle->row();
  EXPECT_EQ(world.log, "") << "a response never runs inside a write";
  EXPECT_EQ(world.take(), "a:3 ");
  auto const first = world.chip->writes();
  write(7, "same");
  EXPECT_EQ(world.chip->writes(), first);
  write(8, "other");
  EXPECT_EQ(world.chip->writes(), first + 1);
  EXPECT_EQ(world.take(), "same:3 other:3 ");
  EXPECT_TRUE(row && handle->row() == row && sameEntry(handle, world.user->entryWeakRef(2)));
  world.sim->refuseNth(1, EntryState::failed);
  write(9, "b");
  EXPECT_EQ(world.take(), "b:4 ");
  write(9, "c");
  EXPECT_EQ(world.take(), "c:3 ") << "what was refused is sent again";
}

TEST_P(Handles, FixedRowIsBesideTheOrdinaryEntryOfItsKey) {
  auto& table = *world.user;
  auto const ordinary = table.entryCommit(51, {});
  EXPECT_GE(ordinary->row(), Index(UserTable::reservedRows));
  auto const fixed = table.entryWriteAtIndex(Index(0), 51, {});
  EXPECT_FALSE(sameEntry(ordinary, fixed));
  table.entryRemove(51);
  EXPECT_TRUE(ordinary->gone());
  EXPECT_NE(table.entryCommit(51, {})->row(), Index(0)) << "an ordinary write has a row of its own";
  table.entryCommit(52, table.entry(52));
  EXPECT_TRUE(isEq(table.entry(52), UserEntry())) << "what a missing entry reads as is an entry once it is written";
  table.entryRemove(51);
  // Again while the former is still used: it keeps the number, the new entry has the row.
  world.userOf(9, fixed);
  table.entryRemove(51);
  EXPECT_EQ(table.entryWriteAtIndex(Index(0), 51, {})->row(), Index(0));
  EXPECT_EQ(fixed->row(), Index(0));
  table.entryRemove(9);
  EXPECT_TRUE(fixed->gone());
  EXPECT_EQ(table.index(51), Index(0));
}

TEST_P(Handles, TextsNameTables) {
  auto const leaf = world.leafRef(1, 11);
  auto const four = Asic::SwTableWorkaround::dontCareHandle(Index(4));
  UserEntry entry;
  entry.target = leaf;
  entry.other = Asic::SwTableWorkaround::dontCareHandle(Index(4));
  EXPECT_EQ(Kiln::toText(entry), "{target=LeafTable[1],other=#4,number=0}");
  EXPECT_EQ(Kiln::toText(world.user->entry(9)), "absent");
  EXPECT_TRUE(sameEntry(entry.other, four));
  EXPECT_FALSE(sameEntry(Asic::SwTableWorkaround::dontCareHandle(Index(5)), four));
  EXPECT_FALSE(sameEntry(leaf, four) || sameEntry(leaf, nullptr));
  EXPECT_EQ(four->state(), EntryState::written);
  EXPECT_EQ(four->tableName(), "");
}

}  // namespace AsicTest
