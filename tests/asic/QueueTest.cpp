// Who waits for a row, who gets it, and what the writers learn of it.

#include <gtest/gtest.h>

#include "tests/asic/TestTables.h"

namespace AsicTest {

class Queue : public InBothModes {
 protected:
  Handle leaf(std::uint32_t key, std::string const& name) {
    auto entry = World::leafEntry(key);
    entry.writeResponse = world.note(name);
    return world.leaf->entryRef(key, entry);
  }
  /// A block of `length` members, which the contents `first` on tell from others.
  Handle block(std::uint32_t length, std::uint32_t first, Handle const& former = nullptr) {
    MemberTable::EntryBlock made;
    for (std::uint32_t n = 0; n < length; ++n) {
      MemberEntry member;
      member.weight = first + n;
      made.entryIs(n, member);
    }
    return world.members->entryBlockRef(made, former);
  }
  /// The group `key` with a block as its only user.
  Handle group(std::uint32_t key, std::uint32_t length, std::uint32_t first) {
    UserEntry entry;
    entry.target = block(length, first, world.user->entry(key).target);
    entry.number = length;
    world.user->entryCommit(key, entry);
    world.take();
    return world.user->entry(key).target->row() ? world.user->entryWeakRef(key) : nullptr;
  }
  /// "first row+length", or "none".
  std::string rowsOf(std::uint32_t key) {
    auto const& entry = world.user->entry(key);
    auto const row = entry.target->row();
    return row ? std::to_string(row->value()) + '+' + std::to_string(entry.number) : "none";
  }
  std::uint32_t groupRow(std::uint32_t key) {
    return static_cast<std::uint32_t>(world.sim->field("UserTable", world.user->index(key).value(), "target"));
  }
};
INSTANTIATE_TEST_SUITE_P(Modes, Queue, kModes, modeName);

TEST_P(Queue, WhatCanNeverFitDoesNotWait) {
  for (auto const length : {17U, 0U}) {
    auto const never = block(length, 100);
    world.take();
    EXPECT_EQ(never->state(), EntryState::full);
    EXPECT_EQ(world.members->store()->waiting(), 0U);
    EXPECT_TRUE(block(16, 200)->row()) << "nothing waits before it";
  }
  SlotEntry entry;
  entry.writeResponse = world.note("slot");
  EXPECT_FALSE(world.slot->entryCommit(Index(16), entry)->row());
  EXPECT_EQ(world.take(), "slot:5 ");
  EXPECT_EQ(world.slot->store()->waiting(), 0U);
  for (auto const& report : world.chip->tables()) {
    EXPECT_EQ(report.refused, report.name == "MemberTable" ? 2U : report.name == "SlotTable" ? 1U : 0U) << report.name;
    EXPECT_EQ(report.writes, report.clears) << report.name;
  }
}

TEST_P(Queue, FirstComeFirstServed) {
  auto nine = block(9, 10);
  auto eight = block(8, 20);
  auto six = block(6, 30);
  auto one = block(1, 40);
  EXPECT_FALSE(eight->row());
  EXPECT_FALSE(six->row()) << "what would fit waits behind what came first";
  eight = nullptr;
  EXPECT_TRUE(six->row()) << "an entry that held back others has left without ever having a row";
  EXPECT_TRUE(one->row());
  auto const fifteen = block(15, 50);
  auto const two = block(2, 60);
  nine = six = nullptr;
  EXPECT_TRUE(fifteen->row());
  EXPECT_FALSE(two->row());
  one = nullptr;
  world.take();
  EXPECT_EQ(fifteen->state(), EntryState::written);
  EXPECT_EQ(two->state(), EntryState::full);
}

TEST_P(Queue, ATableThatLosesItsSpaceKeepsItsRows) {
  auto const rows = world.leaf->numEntries();
  auto const first = leaf(1, "first");
  world.take();
  world.chip->hasSpaceIs("LeafTable", false);
  EXPECT_EQ(world.leaf->numEntries(), 0U);
  auto const second = leaf(2, "second");
  leaf(1, "again");
  world.take();
  EXPECT_TRUE(first->row());
  EXPECT_EQ(first->state(), EntryState::written);
  EXPECT_EQ(second->state(), EntryState::full);
  world.chip->hasSpaceIs("LeafTable", true);
  EXPECT_EQ(world.leaf->numEntries(), rows);
  EXPECT_TRUE(second->row());
  world.take();
  EXPECT_EQ(second->state(), EntryState::written);
}

TEST_P(Queue, GroupThatChangesKeepsItsPlace) {
  group(1, 8, 100);
  group(2, 8, 200);
  EXPECT_FALSE(group(3, 4, 300));
  EXPECT_FALSE(group(4, 1, 400));
  EXPECT_FALSE(group(3, 4, 301)) << "one that has never had rows has its place, too";
  auto writes = world.chip->writes();

  EXPECT_TRUE(group(1, 8, 101)) << "each member but one moves";
  EXPECT_EQ(rowsOf(1), "0+8");
  EXPECT_EQ(world.chip->writes(), writes + 8) << "the group's own row says the same as before";
  group(1, 7, 101);
  EXPECT_EQ(rowsOf(1), "0+7");
  EXPECT_EQ(rowsOf(3), "none") << "one row came free";
  group(1, 5, 101);
  EXPECT_EQ(rowsOf(1), "0+5");
  EXPECT_EQ(rowsOf(3), "none");
  EXPECT_EQ(rowsOf(4), "none") << "in turn";
  group(1, 4, 101);
  EXPECT_EQ(rowsOf(3), "4+4") << "what the group gave up went to the first that waited";
  EXPECT_EQ(groupRow(3), 4U);
  EXPECT_EQ(world.sim->rows("MemberTable"), 16U);

  // Growing needs what is not there: the group waits, before those that never had rows.
  EXPECT_FALSE(group(1, 6, 101));
  EXPECT_EQ(groupRow(1), Index::none);
  EXPECT_EQ(rowsOf(4), "none");
  group(2, 5, 200);
  EXPECT_EQ(rowsOf(2), "8+5");
  world.user->entryRemove(3);
  EXPECT_EQ(rowsOf(1), "0+6");
  EXPECT_EQ(groupRow(1), 0U);
  EXPECT_EQ(rowsOf(4), "6+1");
}

TEST_P(Queue, BlockThatTheChipRefusedIsSentAgainWithTheNextReference) {
  world.sim->refuseNth(2, EntryState::failed);
  auto const first = block(3, 10);
  world.take();
  EXPECT_EQ(first->state(), EntryState::failed);
  auto const writes = world.chip->writes();
  auto const again = block(3, 10);
  world.take();
  EXPECT_EQ(again->state(), EntryState::written);
  block(3, 10);
  EXPECT_EQ(world.chip->writes(), writes + 3);
}

TEST_P(Queue, SharedBlockStaysWithItsOtherUser) {
  group(1, 8, 100);
  group(2, 8, 100);
  EXPECT_EQ(rowsOf(2), "0+8");
  group(3, 8, 300);
  EXPECT_FALSE(group(1, 8, 101)) << "the rows are the other's as well";
  EXPECT_EQ(rowsOf(2), "0+8");
  EXPECT_EQ(world.sim->field("MemberTable", 0, "weight"), 100U);
}

TEST_P(Queue, DependantIsWrittenAfterItsTarget) {
  for (std::uint32_t n = 0; n < 15; ++n) world.leaf->entryCommit(n, {});
  UserEntry dependant;
  dependant.target = leaf(50, "target");
  dependant.writeResponse = world.note("dependant");
  world.user->entryCommit(5, dependant);
  world.take();
  world.sim->refuseKey("5", EntryState::failed);
  world.leaf->store()->remove(3);
  EXPECT_EQ(world.take(), "target:3 dependant:4 ");
  world.sim->refuseNone();
  world.user->entryCommit(5, dependant);
  EXPECT_EQ(groupRow(5), dependant.target->row()->value());
}

TEST_P(Queue, RemovedKeyDropsItsResponse) {
  auto const held = std::make_shared<int>(0);
  for (std::uint32_t n = 0; n < 15; ++n) world.leaf->entryCommit(n, {});
  LeafEntry entry;
  entry.writeResponse = [held](EntryState) {};
  auto const waits = world.leaf->entryRef(50, entry);
  UserEntry dependant;
  dependant.target = waits;
  dependant.writeResponse = [held](EntryState) {};
  world.user->entryCommit(5, dependant);
  entry = {};
  dependant = {};
  world.take();
  EXPECT_EQ(held.use_count(), 3);
  world.user->entryRemove(5);
  EXPECT_EQ(held.use_count(), 2);
  world.leaf->store()->remove(50);
  EXPECT_EQ(held.use_count(), 1);
  world.leaf->store()->remove(3);
  EXPECT_TRUE(waits->row()) << "it waits for those that refer to it";
}

/// Does something when it is destroyed, as the last reference to an object may.
struct AtEnd {
  explicit AtEnd(std::function<void()> what) : action(std::move(what)) {}
  AtEnd(AtEnd const&) = delete;
  ~AtEnd() { action(); }
  std::function<void()> action;
};

TEST_P(Queue, ResponsesMayDoAnythingWhenTheyAreDropped) {
  for (std::uint32_t n = 0; n < 15; ++n) world.leaf->entryCommit(n, {});
  for (std::uint32_t n = 50; n < 54; ++n) {
    LeafEntry entry;
    auto const end = std::make_shared<AtEnd>([this, n] {
      for (std::uint32_t other = 50; other < 54; ++other) world.leaf->store()->remove(n == 50 ? other : n);
      world.leaf->entryCommit(60 + n, {});
    });
    entry.writeResponse = [end](EntryState) {};
    world.leaf->entryCommit(n, entry);
  }
  world.leaf->entryCommit(51, World::leafEntry(1));  // removes the entry that is being written
  world.take();
  world.chip->stop();
  EXPECT_EQ(world.leaf->entryHas(50), false);
  EXPECT_EQ(world.leaf->store()->waiting(), 4U);
}

TEST_P(Queue, ResponsesMayDoAnythingWhenTheyRun) {
  auto const commit = [&](std::uint32_t key, std::function<void()> action) {
    UserEntry entry;
    entry.writeResponse = [this, key, action = std::move(action)](EntryState) {
      world.log += std::to_string(key) + ' ';
      action();
    };
    world.user->entryCommit(key, entry);
  };
  commit(1, [&] { world.chip->deliver(); });
  commit(2, [&] { world.chip->deliverOne(); });
  commit(3, [&] {
    world.user->entryRemove(8);
    commit(9, [] {});
  });
  commit(8, [] {});
  EXPECT_EQ(world.chip->deliver(), 1U) << "the others were delivered inside";
  EXPECT_EQ(world.log, "1 2 3 ");
  commit(4, [&] { world.chip->stop(); });
  commit(5, [] {});
  EXPECT_EQ(world.chip->deliver(), 2U);
  EXPECT_EQ(world.log, "1 2 3 9 4 ");
  commit(6, [&] { world.chip = nullptr; });
  commit(7, [] {});
  EXPECT_EQ(world.chip->deliver(), 2U);
  EXPECT_FALSE(world.chip);
}

}  // namespace AsicTest
