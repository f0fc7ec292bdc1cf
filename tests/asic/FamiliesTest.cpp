// What all families of tables with a key promise alike, and each in both ways of completion.

#include <gtest/gtest.h>

#include "tests/asic/TestTables.h"

namespace AsicTest {
namespace {

template <class Table_, Completion Mode_>
struct Case {
  using Table = Table_;
  static constexpr Completion mode = Mode_;
};

template <class Case>
class Family : public testing::Test {
 protected:
  using Table = typename Case::Table;
  using Entry = typename Table::Entry;

  static constexpr std::uint32_t kRows = 6;

  Table& table() {
    if constexpr (std::is_same_v<Table, LeafTable>) return *world.leaf;
    if constexpr (std::is_same_v<Table, UserTable>) return *world.user;
    if constexpr (std::is_same_v<Table, PairTable>) return *world.pair;
    if constexpr (std::is_same_v<Table, SlotTable>) return *world.slot;
  }
  static typename Table::Key key(std::uint32_t n) { return typename Table::Key(n); }
  Entry entry(std::uint32_t number, std::string const& name = {}) {
    Entry made;
    if constexpr (std::is_same_v<Table, PairTable>) {
      made.out.number = number;
    } else {
      made.number = number;
    }
    if (!name.empty()) made.writeResponse = world.note(name);
    return made;
  }
  Handle write(std::uint32_t n, Entry const& contents) { return table().entryCommit(key(n), contents); }
  /// Takes the key away; a table whose entries stand by use has no operation for one key.
  void remove(std::uint32_t n) {
    if constexpr (std::is_same_v<Table, LeafTable>) {
      this->table().store()->remove(key(n));
    } else {
      this->table().entryRemove(key(n));
    }
  }
  static std::string_view chipTable() {
    return std::is_same_v<Table, PairTable> ? "PairIn" : Asic::shortName(Table::kilnType().name());
  }
  std::uint64_t writes() const { return world.chip->writes(); }
  EntryState stateOf(std::uint32_t n) { return table().entryWeakRef(key(n))->state(); }

  World world{Case::mode, kRows};
};

using Families = testing::Types<Case<LeafTable, Completion::direct>, Case<LeafTable, Completion::deferred>,
                                Case<UserTable, Completion::direct>, Case<UserTable, Completion::deferred>,
                                Case<PairTable, Completion::direct>, Case<PairTable, Completion::deferred>,
                                Case<SlotTable, Completion::direct>, Case<SlotTable, Completion::deferred>>;
TYPED_TEST_SUITE(Family, Families);

TYPED_TEST(Family, MissingKeyReadsAsZerosAndEqualsNothing) {
  auto const& table = this->table();
  EXPECT_TRUE(table.entry(this->key(3)).absent);
  EXPECT_FALSE(isEq(table.entry(this->key(3)), typename TypeParam::Table::Entry{}));
  EXPECT_FALSE(isEq(table.entry(this->key(3)), table.entry(this->key(3))));
  EXPECT_FALSE(table.entryWeakRef(this->key(3)));
  EXPECT_EQ(table.index(this->key(3)), Index(Index::none));
  this->remove(3);  // nothing happens
  EXPECT_EQ(table.entrys(), 0U);
}

TYPED_TEST(Family, EntryThatWasReadMayBeWritten) {
  auto& table = this->table();
  auto entry = table.entry(this->key(2));
  entry.writeResponse = this->world.note("a");
  this->write(2, entry);
  EXPECT_TRUE(isEq(table.entry(this->key(2)), this->entry(0))) << "it is not absent any more";
  if constexpr (requires { entry.target; }) {
    auto const writes = this->writes();
    entry.target = this->world.leafRef(1);
    this->write(2, entry);
    this->write(2, table.entry(this->key(2)));
    EXPECT_TRUE(sameEntry(table.entry(this->key(2)).target, this->world.leaf->entryWeakRef(1)));
    EXPECT_EQ(this->writes(), writes + 2) << "the target and its number";
  }
}

TYPED_TEST(Family, CommitShowsItsStateAndDeliversOnce) {
  auto const handle = this->write(2, this->entry(7, "a"));
  auto const direct = TypeParam::mode == Completion::direct;
  EXPECT_EQ(handle->state(), direct ? EntryState::written : EntryState::inProgress);
  EXPECT_TRUE(handle->row());
  EXPECT_EQ(this->world.log, "") << "a response never runs inside a write";
  EXPECT_EQ(this->world.take(), "a:3 ");
  EXPECT_EQ(handle->state(), EntryState::written);
  EXPECT_TRUE(isEq(this->table().entry(this->key(2)), this->entry(7)));
  EXPECT_EQ(this->world.take(), "");
}

TYPED_TEST(Family, RewriteKeepsRowAndHandlesAndSendsChangesOnly) {
  auto const handle = this->write(2, this->entry(7));
  auto const row = handle->row();
  auto const first = this->writes();
  this->write(2, this->entry(7, "same"));
  EXPECT_EQ(this->writes(), first);
  this->write(2, this->entry(8, "other"));
  EXPECT_EQ(this->writes(), first + 1);
  EXPECT_EQ(this->world.take(), "same:3 other:3 ");
  EXPECT_EQ(handle->row(), row);
  EXPECT_TRUE(sameEntry(handle, this->table().entryWeakRef(this->key(2))));
  EXPECT_EQ(this->table().entrys(), 1U);
}

TYPED_TEST(Family, RemovalLeavesTheChipAsItWasFound) {
  auto const before = this->world.sim->dump();
  auto const nodes = Dovel::Node::aliveCount();
  {
    auto const handle = this->write(2, this->entry(7, "a"));
    this->write(3, this->entry(8));
    EXPECT_NE(this->world.sim->dump(), before);
    this->remove(2);
    EXPECT_TRUE(handle->gone());
    EXPECT_EQ(handle->state(), EntryState::none);
    EXPECT_FALSE(handle->row());
    EXPECT_FALSE(this->table().entryHas(this->key(2)));
    this->table().entryRemoveAll();
  }
  EXPECT_EQ(this->world.take(), "") << "nobody is told of a key that has gone";
  EXPECT_EQ(this->world.sim->dump(), before);
  EXPECT_EQ(this->table().store()->used(), 0U);
  EXPECT_EQ(Dovel::Node::aliveCount(), nodes);
}

TYPED_TEST(Family, EntryInUseOutlivesItsKey) {
  auto const handle = this->write(2, this->entry(7));
  this->world.userOf(900, handle);
  auto const row = handle->row();
  this->remove(2);
  EXPECT_EQ(this->table().entrys(), this->table().entryHas(this->key(900)) ? 1U : 0U);
  EXPECT_FALSE(handle->gone());
  EXPECT_EQ(handle->row(), row);
  auto const writes = this->writes();
  auto const again = this->write(2, this->entry(7));
  EXPECT_EQ(again->row() == row, (std::is_same_v<typename TypeParam::Table, SlotTable>)) << "where the key is the row";
  EXPECT_FALSE(sameEntry(again, handle));
  EXPECT_GT(this->writes(), writes);
  this->remove(2);
  this->world.user->entryRemove(900);
  EXPECT_TRUE(handle->gone());
  EXPECT_EQ(this->table().store()->used(), 0U);
}

TYPED_TEST(Family, RefusedWriteIsReportedAndSentAgainByTheNextCommit) {
  this->world.sim->refuseNth(1, EntryState::failed);
  auto const handle = this->write(2, this->entry(7, "a"));
  EXPECT_EQ(this->world.take(), "a:4 ");
  EXPECT_EQ(handle->state(), EntryState::failed);
  this->write(2, this->entry(7, "b"));
  EXPECT_EQ(this->world.take(), "b:3 ");
  EXPECT_EQ(handle->state(), EntryState::written);
}

TYPED_TEST(Family, ResponseRunsOncePerStateOfAWrite) {
  auto const direct = TypeParam::mode == Completion::direct;
  auto entry = this->entry(7, "a");
  auto const handle = this->write(2, entry);
  entry.writeResponse(handle->state());
  EXPECT_EQ(this->world.take(), direct ? "a:3 " : "a:1 a:3 ");
  if constexpr (!std::is_same_v<typename TypeParam::Table, SlotTable>) {
    this->table().entryCommit(this->key(2), this->entry(8, "b"), Asic::Report::atOnce);
    EXPECT_EQ(this->world.log, direct ? "b:3 " : "b:1 ");
    EXPECT_EQ(this->world.chip->pending(), direct ? 0U : 1U) << "nothing is left to tell";
    EXPECT_EQ(this->world.take(), direct ? "b:3 " : "b:1 b:3 ");
  }
}

TYPED_TEST(Family, StopDropsResponses) {
  auto const held = std::make_shared<int>(0);
  auto entry = this->entry(7);
  entry.writeResponse = [held](EntryState) {};
  this->write(2, entry);
  this->world.sim->refuseTable("LeafTable", EntryState::full);
  entry.writeResponse = {};
  EXPECT_GT(held.use_count(), 1);
  this->world.chip->stop();
  EXPECT_EQ(held.use_count(), 1);
  EXPECT_EQ(this->stateOf(2), EntryState::written);
  EXPECT_EQ(this->world.chip->deliver(), 0U);
}

// A table whose rows are its keys has no queue.
template <class Case>
class Pooled : public Family<Case> {};
using PooledFamilies = testing::Types<Case<LeafTable, Completion::direct>, Case<LeafTable, Completion::deferred>,
                                      Case<UserTable, Completion::direct>, Case<UserTable, Completion::deferred>,
                                      Case<PairTable, Completion::direct>, Case<PairTable, Completion::deferred>>;
TYPED_TEST_SUITE(Pooled, PooledFamilies);

TYPED_TEST(Pooled, FullTableHealsOldestFirst) {
  auto constexpr reserved = TypeParam::Table::reservedRows;
  auto const room = this->kRows - reserved;
  for (std::uint32_t n = 0; n < room + 2; ++n) this->write(n, this->entry(n, std::to_string(n)));
  auto const waitingA = room;
  auto const waitingB = room + 1;
  auto const a = std::to_string(waitingA);
  auto const b = std::to_string(waitingB);
  auto const log = this->world.take();
  EXPECT_NE(log.find(a + ":5 " + b + ":5 "), std::string::npos) << log;
  EXPECT_EQ(this->table().store()->waiting(), 2U);
  EXPECT_FALSE(this->table().entryWeakRef(this->key(waitingA))->row());
  EXPECT_TRUE(isEq(this->table().entry(this->key(waitingA)), this->entry(waitingA)));

  this->remove(1);
  EXPECT_EQ(this->world.take(), a + ":3 ");
  EXPECT_EQ(this->stateOf(waitingA), EntryState::written);
  EXPECT_EQ(this->stateOf(waitingB), EntryState::full);

  this->write(waitingB, this->entry(99, "new"));
  EXPECT_EQ(this->world.take(), "new:5 ") << "a rewrite waits in the place of its entry";
  this->remove(0);
  EXPECT_EQ(this->world.take(), "new:3 ");
  EXPECT_EQ(this->table().store()->waiting(), 0U);
  EXPECT_EQ(this->table().store()->used(), room);
}

TYPED_TEST(Pooled, WaitingEntryMayGoBeforeItIsServed) {
  auto const room = this->kRows - TypeParam::Table::reservedRows;
  for (std::uint32_t n = 0; n < room + 3; ++n) this->write(n, this->entry(n, std::to_string(n)));
  this->world.take();
  this->remove(room);
  this->remove(0);
  EXPECT_EQ(this->world.take(), std::to_string(room + 1) + ":3 ");
}

TYPED_TEST(Pooled, ReservedRowsAreNeverGivenOut) {
  for (std::uint32_t n = 0; n < this->kRows; ++n) {
    auto const row = this->write(n, this->entry(n))->row();
    EXPECT_GE(row.value_or(Index(99)).value(), TypeParam::Table::reservedRows);
  }
  if constexpr (TypeParam::Table::reservedRows > 0) {
    auto const handle = this->table().entryWriteAtIndex(Index(0), this->key(50), this->entry(5));
    EXPECT_EQ(handle->row(), Index(0));
    EXPECT_EQ(this->stateOf(50), handle->state());
    this->remove(50);
    EXPECT_TRUE(handle->gone());
    // Again while the former is still used: it keeps the number, the new entry has the row.
    auto const former = this->table().entryWriteAtIndex(Index(0), this->key(51), this->entry(5));
    this->world.userOf(900, former);
    this->remove(51);
    EXPECT_EQ(this->table().entryWriteAtIndex(Index(0), this->key(51), this->entry(6))->row(), Index(0));
    EXPECT_EQ(former->row(), Index(0));
    this->world.user->entryRemove(900);
    EXPECT_TRUE(former->gone());
    EXPECT_EQ(this->table().index(this->key(51)), Index(0));
    EXPECT_EQ(this->world.sim->rows(this->chipTable()), this->table().store()->used());
    EXPECT_TRUE(isEq(this->table().entry(this->key(51)), this->entry(6)));
  }
}

TYPED_TEST(Pooled, FixedRowIsBesideTheOrdinaryEntryOfItsKey) {
  if constexpr (TypeParam::Table::reservedRows > 0) {
    auto& table = this->table();
    auto const chipAtFirst = this->world.sim->dump();
    auto const ordinaryFirst = this->write(51, this->entry(3));
    auto const fixed = table.entryWriteAtIndex(Index(0), this->key(51), this->entry(5));
    EXPECT_FALSE(sameEntry(ordinaryFirst, fixed));
    this->remove(51);
    auto const chip = this->world.sim->dump();
    auto const row = this->write(51, this->entry(7))->row();
    EXPECT_GE(row, Index(TypeParam::Table::reservedRows));
    EXPECT_TRUE(isEq(table.entry(this->key(51)), this->entry(7)));
    EXPECT_EQ(table.entrys(), 2U);
    table.entryWriteAtIndex(Index(0), this->key(51), this->entry(5));
    this->remove(51);
    EXPECT_EQ(this->world.sim->dump(), chip) << "the fixed row is as it was";
    EXPECT_TRUE(isEq(table.entry(this->key(51)), this->entry(5)));
    this->remove(51);
    EXPECT_EQ(this->world.sim->dump(), chipAtFirst);
  }
}

TYPED_TEST(Pooled, RefusedForRoomByTheChipIsSentAgainWhenARowIsReleased) {
  this->write(1, this->entry(1));
  this->world.sim->refuseNth(1, EntryState::full);
  auto const handle = this->write(2, this->entry(2, "b"));
  EXPECT_EQ(this->world.take(), "b:5 ");
  auto const row = handle->row();
  EXPECT_TRUE(row);
  this->world.sim->refuseNth(1, EntryState::full);
  this->write(2, this->entry(3, "c"));
  this->remove(1);
  EXPECT_EQ(this->world.take(), "c:5 c:3 ");
  EXPECT_EQ(handle->row(), row);
}

}  // namespace
}  // namespace AsicTest
