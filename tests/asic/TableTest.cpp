// What a table promises to those that write it, in both ways of completion.

#include <gtest/gtest.h>

#include "tests/asic/TestTables.h"

namespace AsicTest {
namespace {

class Tables : public InBothModes {
 protected:
  static constexpr std::uint32_t kRows = 6;
  Tables() : InBothModes(kRows) {}

  UserEntry entry(std::uint32_t number, std::string const& name = {}) {
    UserEntry made;
    made.number = number;
    if (!name.empty()) made.writeResponse = world.note(name);
    return made;
  }
  Handle write(std::uint32_t key, UserEntry const& contents) { return world.user->entryCommit(key, contents); }
  bool direct() const { return GetParam() == Completion::direct; }
  std::uint64_t writes() const { return world.chip->writes(); }
  UserTable& table = *world.user;
};
INSTANTIATE_TEST_SUITE_P(Modes, Tables, kModes, modeName);

TEST_P(Tables, EntryThatWasReadMayBeWritten) {
  EXPECT_FALSE(isEq(table.entry(2), UserEntry{}));
  EXPECT_FALSE(isEq(table.entry(2), table.entry(2))) << "what is absent equals nothing";
  EXPECT_EQ(table.index(2), Index(Index::none));
  table.entryRemove(2);  // nothing happens
  write(2, table.entry(2));
  EXPECT_TRUE(isEq(table.entry(2), entry(0))) << "it is not absent any more";
  auto read = table.entry(2);
  read.target = world.leafRef(1);
  auto const before = writes();
  write(2, read);
  write(2, table.entry(2));
  EXPECT_TRUE(sameEntry(table.entry(2).target, world.leaf->entryWeakRef(1)));
  EXPECT_EQ(writes(), before + 1);
}

TEST_P(Tables, RewriteKeepsRowAndHandlesAndSendsChangesOnly) {
  auto const handle = write(2, entry(7, "a"));
  auto const row = handle->row();
  EXPECT_TRUE(row);
  EXPECT_EQ(handle->state(), direct() ? EntryState::written : EntryState::inProgress);
  EXPECT_EQ(world.log, "") << "a response never runs inside a write";
  EXPECT_EQ(world.take(), "a:3 ");
  auto const first = writes();
  write(2, entry(7, "same"));
  EXPECT_EQ(writes(), first);
  write(2, entry(8, "other"));
  EXPECT_EQ(writes(), first + 1);
  EXPECT_EQ(world.take(), "same:3 other:3 ");
  EXPECT_EQ(handle->row(), row);
  EXPECT_TRUE(sameEntry(handle, table.entryWeakRef(2)));
  world.sim->refuseNth(1, EntryState::failed);
  write(2, entry(9, "b"));
  EXPECT_EQ(world.take(), "b:4 ");
  write(2, entry(9, "c"));
  EXPECT_EQ(world.take(), "c:3 ") << "what was refused is sent again";
}

TEST_P(Tables, EntryInUseOutlivesItsKey) {
  auto const handle = write(2, entry(7));
  auto const slot = world.slot->entryCommit(Index(3), {});
  world.userOf(9, handle, slot);
  auto const row = handle->row();
  table.entryRemove(2);
  world.slot->entryRemove(Index(3));
  EXPECT_EQ(table.entrys(), 1U);
  EXPECT_FALSE(handle->gone() || slot->gone());
  EXPECT_EQ(handle->row(), row);
  auto const again = write(2, entry(7));
  EXPECT_NE(again->row(), row);
  EXPECT_FALSE(sameEntry(again, handle));
  EXPECT_EQ(world.slot->entryCommit(Index(3), {})->row(), slot->row()) << "where the key is the row";
  table.entryRemove(9);
  EXPECT_TRUE(handle->gone() && slot->gone());
  EXPECT_EQ(table.store()->used() + world.slot->store()->used(), 2U);
}

TEST_P(Tables, ResponseRunsOncePerStateOfAWrite) {
  auto contents = entry(7, "a");
  auto const handle = write(2, contents);
  contents.writeResponse(handle->state());
  EXPECT_EQ(world.take(), direct() ? "a:3 " : "a:1 a:3 ");
  table.entryCommit(2, entry(8, "b"), Asic::Report::atOnce);
  EXPECT_EQ(world.log, direct() ? "b:3 " : "b:1 ");
  EXPECT_EQ(world.chip->pending(), direct() ? 0U : 1U) << "nothing is left to report";
  EXPECT_EQ(world.take(), direct() ? "b:3 " : "b:1 b:3 ");
}

TEST_P(Tables, FixedRowIsBesideTheOrdinaryEntryOfItsKey) {
  auto const empty = world.sim->dump();
  auto const ordinary = write(51, entry(3));
  EXPECT_GE(ordinary->row(), Index(UserTable::reservedRows));
  auto const fixed = table.entryWriteAtIndex(Index(0), 51, entry(5));
  EXPECT_FALSE(sameEntry(ordinary, fixed));
  EXPECT_EQ(fixed->row(), Index(0));
  table.entryRemove(51);
  auto const chip = world.sim->dump();
  write(51, entry(7));
  EXPECT_TRUE(isEq(table.entry(51), entry(7)));
  EXPECT_EQ(table.entrys(), 2U);
  table.entryWriteAtIndex(Index(0), 51, entry(5));
  table.entryRemove(51);
  EXPECT_EQ(world.sim->dump(), chip) << "the fixed row is as it was";
  EXPECT_TRUE(isEq(table.entry(51), entry(5)));
  // Again while the former is still used: it keeps the number, the new entry has the row.
  world.userOf(9, fixed);
  table.entryRemove(51);
  EXPECT_EQ(table.entryWriteAtIndex(Index(0), 51, entry(6))->row(), Index(0));
  EXPECT_EQ(fixed->row(), Index(0));
  table.entryRemove(9);
  EXPECT_TRUE(fixed->gone());
  EXPECT_EQ(table.index(51), Index(0));
  EXPECT_TRUE(isEq(table.entry(51), entry(6)));
  table.entryRemove(51);
  EXPECT_EQ(world.sim->dump(), empty);
}

TEST_P(Tables, FullTableHealsOldestFirst) {
  auto constexpr room = kRows - UserTable::reservedRows;
  for (std::uint32_t n = 0; n < room + 3; ++n) write(n, entry(n, std::to_string(n)));
  EXPECT_NE(world.take().find("4:5 5:5 6:5 "), std::string::npos);
  EXPECT_EQ(table.store()->waiting(), 3U);
  EXPECT_TRUE(isEq(table.entry(4), entry(4)));
  table.entryRemove(4);
  table.entryRemove(1);
  EXPECT_EQ(world.take(), "5:3 ") << "the first was removed before it was served";
  write(6, entry(99, "new"));
  EXPECT_EQ(world.take(), "new:5 ") << "a rewrite waits in the place of its entry";
  table.entryRemove(0);
  EXPECT_EQ(world.take(), "new:3 ");
  world.sim->refuseNth(1, EntryState::full);
  write(6, entry(3, "c"));
  EXPECT_EQ(table.store()->waiting(), 1U);
  table.entryRemove(2);
  EXPECT_EQ(world.take(), "c:5 c:3 ") << "what the chip refused for room is sent again when a row is released";
}

}  // namespace
}  // namespace AsicTest
