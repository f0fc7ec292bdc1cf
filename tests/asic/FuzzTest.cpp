// Random writes, removals and refusals on small tables of every family. What must hold after each step is checked by
// looking at tables and chip alone. TESSEL_SEED repeats one seed.

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <random>
#include <set>

#include "tests/asic/TestTables.h"

namespace AsicTest {
namespace {

/// Compares the fields of one written entry with the numbers that the chip has.
class RowCheck final : public Asic::FieldVisitor {
 public:
  RowCheck(Asic::SimulatedChip const& chip, Asic::StoreBase const& store, std::uint32_t row)
      : chip_(chip), store_(store), table_(store.name()), row_(row), first_(row) {}

  void number(std::string_view name, std::uint64_t value) override {
    auto const row = row_ + base();
    ASSERT_FALSE(chip_.row(table_, row).empty()) << table_ << ' ' << row << " is written and not in the chip";
    EXPECT_EQ(chip_.field(table_, row, name), value) << table_ << ' ' << row << ' ' << name;
  }
  void text(std::string_view, std::string) override {}
  void handle(std::string_view name, Handle const& target) override {
    auto const row = target ? target->row() : std::nullopt;
    number(name, row ? row->value() : Index::none);
  }
  void groupBegin(std::string_view name) override {
    if (store_.name() == "PairTable") {
      table_ = name == "in" ? "PairIn" : "PairOut";
    } else {
      row_ = first_ + static_cast<std::uint32_t>(std::stoul(std::string(name)));
    }
  }
  void groupEnd() override {}

 private:
  std::uint32_t base() const { return store_.base(table_ == "PairOut" ? 1 : 0); }

  Asic::SimulatedChip const& chip_;
  Asic::StoreBase const& store_;
  std::string_view table_;
  std::uint32_t row_;
  std::uint32_t first_;
};

class Story {
 public:
  Story(Completion mode, std::uint64_t seed) : random_(seed), world_(mode, kRows) {}

  void run(unsigned steps) {
    for (unsigned i = 0; i < steps && !testing::Test::HasFailure(); ++i) {
      SCOPED_TRACE("step " + std::to_string(i));
      step();
      checkRows();
      if (chance(8)) settle();
    }
  }

  /// What the chip refused for want of room is sent again after the next write; then everything is removed.
  void close() {
    world_.sim->refuseNone();
    noted(world_.leaf->entryWriteAtIndex(Index(0), 4, World::leafEntry(77)), nullptr);
    noted(world_.user->entryWriteAtIndex(Index(0), 100, {}), nullptr);
    noted(world_.pair->entryCommit(0, {}), nullptr);
    noted(world_.slot->entryCommit(Index(0), {}), nullptr);
    blocks_.clear();
    world_.block({nullptr});
    settle();
    for (auto const* store : world_.chip->stores()) {
      store->forEachEntry([&](Asic::EntryView const& entry) {
        EXPECT_FALSE(entry.state() == EntryState::full && entry.row()) << store->name() << ' ' << entry.key();
      });
    }
    told_.clear();
    leaves_.clear();
    for (auto* table : {static_cast<Asic::SwTable*>(world_.user.get()), static_cast<Asic::SwTable*>(world_.pair.get()),
                        static_cast<Asic::SwTable*>(world_.slot.get()), static_cast<Asic::SwTable*>(world_.leaf.get())})
      table->store()->removeAll();
    settle();
    EXPECT_EQ(world_.sim->dump(), "");
    for (auto const* store : world_.chip->stores()) {
      EXPECT_EQ(store->used(), 0U) << store->name();
      EXPECT_EQ(store->waiting(), 0U) << store->name();
    }
  }

 private:
  static constexpr std::uint32_t kRows = 7;
  static constexpr std::uint32_t kKeys = 9;

  struct Told {
    Handle entry;  ///< Weak.
    std::shared_ptr<EntryState> state;
  };

  std::uint32_t upTo(std::uint32_t n) { return static_cast<std::uint32_t>(random_() % n); }
  bool chance(std::uint32_t oneIn) { return upTo(oneIn) == 0; }

  void step() {
    switch (upTo(16)) {
      case 0:
      case 1:
        return hold(leaves_[upTo(6)],
                    writeLeaf([&](auto key, auto const& entry) { return world_.leaf->entryRef(key, entry); }));
      case 2:
        leaves_[upTo(6)] = nullptr;
        return;
      case 3:
        writeLeaf([&](auto key, auto const& entry) { return world_.leaf->entryCommit(key, entry); });
        return;
      case 4:
        writeLeaf([&](auto, auto const& entry) { return world_.leaf->entryWriteAtIndex(Index(0), 4, entry); });
        return;
      case 5:
      case 6:
        return writeUser();
      case 7:
        return writeGroup();
      case 8:
        return writePair();
      case 9:
        return writeSlot();
      case 10:
      case 11:
        return remove(upTo(4));
      case 12:
        blocks_[upTo(3)] = block(nullptr);
        return;
      case 13:
        blocks_[upTo(3)] = nullptr;
        return;
      case 14:
        return refuse();
      default:
        return deliver();
    }
  }

  static void hold(Handle& at, Handle const& handle) { at = handle; }

  template <class Entry>
  std::shared_ptr<EntryState> respond(Entry& entry) {
    auto state = std::make_shared<EntryState>(EntryState::none);
    if (!chance(4)) entry.writeResponse = [state](EntryState now) { *state = now; };
    return entry.writeResponse ? state : nullptr;
  }
  Handle noted(Handle const& handle, std::shared_ptr<EntryState> const& state) {
    auto const* record = handle->record();
    if (state && chance(3)) *state = handle->state();  // as a writer that doesn't wait for the loop
    told_[record] = {Handle(&record->weak()), state};
    return handle;
  }
  /// Of users only those below a key, so that no entries refer to each other in a circle.
  Handle someTarget(std::uint32_t usersBelow = kKeys) {
    switch (upTo(6)) {
      case 0:
        return nullptr;
      case 1:
        return Asic::SwTableWorkaround::dontCareHandle(Index(3));
      case 2:
        return usersBelow == 0 ? nullptr : world_.user->entryWeakRef(upTo(usersBelow));
      case 3:
        return world_.slot->entryWeakRef(Index(upTo(3)));
      default:
        return world_.leaf->entryWeakRef(upTo(kKeys));
    }
  }

  template <class Write>
  Handle writeLeaf(Write const& write) {
    auto const key = upTo(kKeys);
    LeafEntry entry = chance(3) ? world_.leaf->entry(key) : LeafEntry();
    entry.number = upTo(3);
    auto const state = respond(entry);
    return noted(write(key, entry), state);
  }
  void writeUser() {
    auto const key = upTo(kKeys);
    if (chance(6) && world_.user->entryHas(key)) {
      noted(world_.user->entryCommit(key, world_.user->entry(key)), nullptr);
      return;
    }
    UserEntry entry;
    entry.target = someTarget(key);
    entry.other = someTarget(key);
    entry.number = upTo(3);
    auto const state = respond(entry);
    noted(chance(5) ? world_.user->entryWriteAtIndex(Index(key % 2), 100 + key % 2, entry)
                    : world_.user->entryCommit(key, entry),
          state);
  }
  Handle block(Handle const& former) {
    MemberTable::EntryBlock made;
    for (auto left = 1 + upTo(chance(9) ? 9 : 4); left > 0; --left) {
      MemberEntry member;
      member.target = someTarget();
      member.weight = upTo(2);
      made.entryIs(made.size(), member);
    }
    return world_.members->entryBlockRef(made, former);
  }
  void writeGroup() {
    auto const key = 200 + upTo(4);
    UserEntry entry;
    entry.target = block(world_.user->entry(key).target);
    auto const state = respond(entry);
    noted(world_.user->entryCommit(key, entry), state);
  }
  void writePair() {
    PairEntry entry = chance(3) ? world_.pair->entry(upTo(kKeys)) : PairEntry();
    entry.in.target = someTarget();
    entry.out.number = upTo(3);
    auto const state = respond(entry);
    noted(world_.pair->entryCommit(upTo(kKeys), entry), state);
  }
  void writeSlot() {
    SlotEntry entry;
    entry.number = upTo(3);
    auto const state = respond(entry);
    noted(world_.slot->entryCommit(Index(upTo(kRows + 1)), entry), state);
  }
  void remove(std::uint32_t table) {
    auto const key = upTo(kKeys);
    switch (table) {
      case 0:
        return world_.leaf->store()->remove(key);
      case 1:
        return world_.user->entryRemove(chance(2) ? key : 200 + upTo(4));
      case 2:
        return world_.pair->entryRemove(key);
      default:
        return world_.slot->entryRemove(Index(upTo(kRows)));
    }
  }
  void refuse() {
    auto const with = chance(2) ? EntryState::full : EntryState::failed;
    static constexpr std::string_view tables[] = {"LeafTable", "UserTable", "PairOut", "SlotTable", "MemberTable"};
    switch (upTo(6)) {
      case 0:
        return world_.sim->refuseTable(tables[upTo(5)], with);
      case 1:
        return world_.sim->refuseKey(std::to_string(upTo(kKeys)), with);
      case 2:
      case 3:
        return world_.sim->refuseNth(1 + upTo(4), with);
      default:
        return world_.sim->refuseNone();
    }
  }
  void deliver() {
    switch (upTo(5)) {
      case 0:
        return world_.chip->hold(chance(2) ? "UserTable" : "LeafTable");
      case 1:
        return world_.chip->release();
      case 2:
        world_.chip->deliver();
        return;
      default:
        world_.chip->deliverOne();
    }
  }

  /// Delivers everything; then writers know what the handles say, and the chip has what is written.
  void settle() {
    world_.chip->release();
    world_.take();
    std::erase_if(told_, [](auto const& one) { return !one.second.state || !one.first->keyed; });
    for (auto const& [record, told] : told_) {
      EXPECT_EQ(*told.state, told.entry->state()) << told.entry->tableName() << ' ' << told.entry->keyText();
    }
    for (auto const* store : world_.chip->stores()) {
      store->forEachEntry([&](Asic::EntryView const& entry) {
        if (entry.state() != EntryState::written) return;
        RowCheck check(*world_.sim, *store, entry.row()->value());
        entry.fields(check);
      });
    }
  }

  /// No row has two owners, none is used beside an entry, and nothing waits that could have a row.
  void checkRows() {
    for (auto const* store : world_.chip->stores()) {
      std::set<std::uint32_t> taken;
      bool rowless = false;
      store->forEachEntry([&](Asic::EntryView const& entry) {
        auto const row = entry.row();
        rowless |= !row && entry.state() == EntryState::full;
        if (!row) return;
        for (std::uint32_t i = 0; i < lengthOf(*store, entry); ++i) {
          EXPECT_TRUE(taken.insert(row->value() + i).second) << store->name() << " row " << row->value() + i;
        }
      });
      auto const* chipTable = store->name() == "PairTable" ? "PairIn" : store->name().data();
      EXPECT_LE(world_.sim->rows(chipTable), store->used()) << store->name();
      EXPECT_GE(store->used(), taken.size()) << store->name();
      auto const pooled = store->name() != "MemberTable" && store->name() != "SlotTable";
      EXPECT_FALSE(pooled && rowless && store->used() < kRows - 2) << store->name() << ": one waits beside a free row";
      EXPECT_FALSE(store->used() == 0 && store->waiting() > 0) << store->name();
    }
  }
  static std::uint32_t lengthOf(Asic::StoreBase const& store, Asic::EntryView const& entry) {
    if (store.name() != "MemberTable") return 1;
    struct Groups final : Asic::FieldVisitor {
      void number(std::string_view, std::uint64_t) override {}
      void text(std::string_view, std::string) override {}
      void handle(std::string_view, Handle const&) override {}
      void groupBegin(std::string_view) override { ++count; }
      void groupEnd() override {}
      std::uint32_t count = 0;
    } groups;
    entry.fields(groups);
    return groups.count;
  }

  std::mt19937_64 random_;
  World world_;
  std::map<std::uint32_t, Handle> leaves_;
  std::map<std::uint32_t, Handle> blocks_;
  std::map<Asic::RecordBase const*, Told> told_;
};

class Fuzz : public testing::TestWithParam<Completion> {};
INSTANTIATE_TEST_SUITE_P(Modes, Fuzz, kModes, modeName);

TEST_P(Fuzz, WritersKnowTheStatesAndTheChipHasTheRows) {
  auto const* const repeat = std::getenv("TESSEL_SEED");
  auto const first = repeat ? std::strtoull(repeat, nullptr, 10) : 1;
  auto const alive = Dovel::Node::aliveCount();
  for (auto seed = first; seed < first + (repeat ? 1 : 4) && !HasFailure(); ++seed) {
    SCOPED_TRACE("TESSEL_SEED=" + std::to_string(seed));
    {
      Story story(GetParam(), seed);
      story.run(1000);
      if (!HasFailure()) story.close();
    }
    EXPECT_EQ(Dovel::Node::aliveCount(), alive);
  }
}

}  // namespace
}  // namespace AsicTest
