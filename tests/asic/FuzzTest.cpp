// Random writes, removals and refusals on small tables of every family. What must hold after each step is checked by
// looking at tables and chip alone. TESSEL_SEED repeats one seed.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <random>
#include <set>
#include <sstream>

#include "tests/asic/TestTables.h"
#include "tests/support/AgentText.h"

namespace AsicTest {

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
    forEachEntry([&](Asic::StoreBase const& store, Asic::EntryView const& entry) {
      EXPECT_FALSE(entry.state() == EntryState::full && entry.row()) << store.name() << ' ' << entry.key();
    });
    told_.clear();
    leaves_.clear();
    for (auto* table :
         std::initializer_list<Asic::SwTable*>{&*world_.user, &*world_.pair, &*world_.slot, &*world_.leaf})
      table->store()->removeAll();
    settle();
    EXPECT_EQ(world_.sim->dump(), "");
    for (auto const* store : world_.chip->stores()) EXPECT_EQ(store->used() + store->waiting(), 0U) << store->name();
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
    auto& leaf = *world_.leaf;
    auto const which = upTo(16);
    if (which < 2) {
      leaves_[upTo(6)] = writeLeaf([&](auto key, auto const& entry) { return leaf.entryRef(key, entry); });
    } else if (which == 2) {
      leaves_[upTo(6)] = nullptr;
    } else if (which == 3) {
      writeLeaf([&](auto key, auto const& entry) { return leaf.entryCommit(key, entry); });
    } else if (which == 4) {
      writeLeaf([&](auto, auto const& entry) { return leaf.entryWriteAtIndex(Index(0), 4, entry); });
    } else if (which < 7) {
      writeUser();
    } else if (which < 10) {
      which == 7 ? writeGroup() : which == 8 ? writePair() : writeSlot();
    } else if (which < 12) {
      remove(upTo(4));
    } else if (which < 14) {
      blocks_[upTo(3)] = which == 12 ? block(nullptr) : nullptr;
    } else {
      which == 14 ? refuse() : deliver();
    }
  }

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
    auto const which = upTo(6);
    if (which == 0 || (which == 2 && usersBelow == 0)) return nullptr;
    if (which == 1) return Asic::SwTableWorkaround::dontCareHandle(Index(3));
    if (which == 2) return world_.user->entryWeakRef(upTo(usersBelow));
    if (which == 3) return world_.slot->entryWeakRef(Index(upTo(3)));
    return world_.leaf->entryWeakRef(upTo(kKeys));
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
      auto const number = world_.user->entry(key).number;
      noted(world_.user->entryCommit(key, world_.user->entry(key)), nullptr);
      EXPECT_EQ(world_.user->entry(key).number, number) << "its own contents";
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
    if (table == 0) return world_.leaf->store()->remove(key);
    if (table == 1) return world_.user->entryRemove(chance(2) ? key : 200 + upTo(4));
    if (table == 2) return world_.pair->entryRemove(key);
    world_.slot->entryRemove(Index(upTo(kRows)));
  }
  void refuse() {
    auto const with = chance(2) ? EntryState::full : EntryState::failed;
    static constexpr std::string_view tables[] = {"LeafTable", "UserTable", "PairOut", "SlotTable", "MemberTable"};
    auto const how = upTo(6);
    if (how == 0) return world_.sim->refuseTable(tables[upTo(5)], with);
    if (how == 1) return world_.sim->refuseKey(std::to_string(upTo(kKeys)), with);
    how < 4 ? world_.sim->refuseNth(1 + upTo(4), with) : world_.sim->refuseNone();
  }
  void deliver() {
    auto const how = upTo(5);
    if (how == 0) return world_.chip->hold(chance(2) ? "UserTable" : "LeafTable");
    if (how == 1) return world_.chip->release();
    how == 2 ? void(world_.chip->deliver()) : void(world_.chip->deliverOne());
  }

  template <class Call>
  void forEachEntry(Call const& call) const {
    for (auto const* store : world_.chip->stores()) {
      store->forEachEntry([&](Asic::EntryView const& entry) { call(*store, entry); });
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
    std::istringstream lines(AgentTest::chipText(*world_.chip, *world_.sim));
    for (std::string line; std::getline(lines, line);) {
      auto const has = [&line](char const* text) { return line.find(text) != line.npos; };
      // A removed entry may have left its row to another.
      if (line.starts_with("  (") || has(" STATE ")) continue;
      EXPECT_FALSE(has("CHIP HAS") || has("NOT WRITTEN")) << line;
    }
  }

  /// No row has two owners, none is used beside an entry, and nothing waits that could have a row.
  void checkRows() {
    for (auto const* store : world_.chip->stores()) {
      std::set<std::uint32_t> taken;
      bool rowless = false;
      bool const blocks = store->name() == "MemberTable";
      store->forEachEntry([&](Asic::EntryView const& entry) {
        auto const row = entry.row();
        rowless |= !row && entry.state() == EntryState::full;
        if (!row) return;
        auto const key = entry.key();
        auto const rows = blocks ? 1 + std::count(key.begin(), key.end(), ',') : 1;
        for (std::uint32_t i = 0; i < rows; ++i) {
          EXPECT_TRUE(taken.insert(row->value() + i).second) << store->name() << " row " << row->value() + i;
        }
      });
      EXPECT_LE(world_.sim->rows(store->name() == "PairTable" ? "PairIn" : store->name()), store->used())
          << store->name();
      EXPECT_GE(store->used(), taken.size()) << store->name();
      auto const pooled = !blocks && store->name() != "SlotTable";
      EXPECT_FALSE(pooled && rowless && store->used() < kRows - 2) << store->name() << ": one waits beside a free row";
      EXPECT_FALSE(store->used() == 0 && store->waiting() > 0) << store->name();
    }
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

}  // namespace AsicTest
