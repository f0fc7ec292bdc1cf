#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/asic/SimulatedChip.h"
#include "platform/asic/SwTable.h"
#include "platform/stateway/EntityManager.h"

/// Tables of every family, as small as can be, and a chip for them.
namespace AsicTest {

using Handle = Asic::EntryHandle::PtrConst;
using Asic::Completion;
using Asic::EntryState;
using Asic::Index;

struct LeafEntry : Asic::EntryBase {
  std::uint32_t number = 0;
  Meshal::IpGenAddr addr;
  Asic::WriteResponseFn writeResponse;
  ASIC_ENTRY(LeafEntry, number, addr, writeResponse)
};
class LeafTable final : public Asic::RefCountedTable<LeafTable, std::uint32_t, LeafEntry> {
  ASIC_TABLE(AsicTest::LeafTable)

 public:
  using RefCountedTable::entryCommit;
  using RefCountedTable::entryWriteAtIndex;
  using RefCountedTable::RefCountedTable;
  static constexpr std::uint32_t reservedRows = 1;
};

struct UserEntry : Asic::EntryBase {
  Handle target;
  Handle other;
  std::uint32_t number = 0;
  Asic::WriteResponseFn writeResponse;
  ASIC_ENTRY(UserEntry, target, other, number, writeResponse)
};
class UserTable final : public Asic::CommittedTable<UserTable, std::uint32_t, UserEntry> {
  ASIC_TABLE(AsicTest::UserTable)

 public:
  using CommittedTable::CommittedTable;
  static constexpr std::uint32_t reservedRows = 2;
};

class PairIn final : public Asic::PartTable<PairIn> {
  ASIC_TABLE(AsicTest::PairIn)

 public:
  using PartTable::PartTable;
  struct Entry : Asic::EntryBase {
    Handle target;
    Asic::FilledByTable<std::uint16_t> targetRow;
    ASIC_ENTRY(Entry, target, targetRow)
  };
};
class PairOut final : public Asic::PartTable<PairOut> {
  ASIC_TABLE(AsicTest::PairOut)

 public:
  using PartTable::PartTable;
  struct Entry : Asic::EntryBase {
    std::uint32_t number = 0;
    ASIC_ENTRY(Entry, number)
  };
};
struct PairEntry : Asic::EntryBase {
  PairIn::Entry in;
  PairOut::Entry out;
  Asic::WriteResponseFn writeResponse;
  ASIC_ENTRY(PairEntry, in, out, writeResponse)
};
class PairTable final : public Asic::CommittedTable<PairTable, std::uint32_t, PairEntry> {
  ASIC_TABLE(AsicTest::PairTable)

 public:
  using CommittedTable::CommittedTable;
  using Parts = boost::mp11::mp_list<PairIn, PairOut>;
  static void fill(Entry& entry) { entry.in.targetRow = Asic::rowNumber16(entry.in.target); }
};

struct SlotEntry : Asic::EntryBase {
  std::uint32_t number = 0;
  Anvil::PerUnitBitmap ports;
  Asic::WriteResponseFn writeResponse;
  ASIC_ENTRY(SlotEntry, number, ports, writeResponse)
};
class SlotTable final : public Asic::IndexTable<SlotTable, SlotEntry> {
  ASIC_TABLE(AsicTest::SlotTable)

 public:
  using IndexTable::IndexTable;
};

struct MemberEntry : Asic::EntryBase {
  Handle target;
  std::uint32_t weight = 0;
  ASIC_ENTRY(MemberEntry, target, weight)
};
class MemberTable final : public Asic::BlockTable<MemberTable, MemberEntry> {
  ASIC_TABLE(AsicTest::MemberTable)

 public:
  using BlockTable::BlockTable;
};

inline Dovel::Ptr<Asic::ChipProfile const> testProfile(std::uint32_t rows) {
  auto profile = Dovel::make<Asic::ChipProfile>("test");
  for (auto const* name : {"LeafTable", "UserTable", "SlotTable", "MemberTable"}) profile->tableIs(name, {rows, 0});
  profile->tableIs("PairIn", {rows, 100});
  profile->tableIs("PairOut", {rows, 200});
  return profile;
}

/// One chip with one table of each family on it.
struct World {
  explicit World(Completion mode, std::uint32_t rows = 16) {
    auto driver = std::make_unique<Asic::SimulatedChip>(testProfile(rows), mode);
    sim = driver.get();
    chip = Dovel::make<Asic::Chip>(testProfile(rows), std::move(driver));
    Asic::ChipInfo const info(chip);
    for (Asic::SwTable* table : std::initializer_list<Asic::SwTable*>{&*leaf, &*user, &*pair, &*slot, &*members}) {
      table->doInit(Asic::kSharedUnit, nullptr, info);
    }
  }

  Handle leafRef(std::uint32_t key, std::uint32_t number = 0) { return leaf->entryRef(key, leafEntry(number)); }
  static LeafEntry leafEntry(std::uint32_t number) {
    LeafEntry entry;
    entry.number = number;
    return entry;
  }
  Handle userOf(std::uint32_t key, Handle const& target, Handle const& other = nullptr) {
    UserEntry entry;
    entry.target = target;
    entry.other = other;
    return user->entryCommit(key, entry);
  }
  Handle block(std::vector<Handle> const& targets) {
    MemberTable::EntryBlock made;
    for (auto const& target : targets) {
      MemberEntry entry;
      entry.target = target;
      made.entryIs(made.size(), entry);
    }
    return members->entryBlockRef(made);
  }
  /// A response that notes "name:state ".
  Asic::WriteResponseFn note(std::string name) {
    return [this, name = std::move(name)](EntryState state) {
      log += name + ":" + std::to_string(static_cast<int>(state)) + " ";
    };
  }
  std::string take() {
    while (chip->deliver() > 0) {
    }
    return std::exchange(log, {});
  }

  std::string log;
  Asic::SimulatedChip* sim = nullptr;
  Dovel::Ptr<Asic::Chip> chip;
  Dovel::Ptr<LeafTable> leaf = Dovel::make<LeafTable>();
  Dovel::Ptr<UserTable> user = Dovel::make<UserTable>();
  Dovel::Ptr<PairTable> pair = Dovel::make<PairTable>();
  Dovel::Ptr<SlotTable> slot = Dovel::make<SlotTable>();
  Dovel::Ptr<MemberTable> members = Dovel::make<MemberTable>();
};

/// A fixture over both ways of completion.
class InBothModes : public testing::TestWithParam<Completion> {
 protected:
  explicit InBothModes(std::uint32_t rows = 16) : world(GetParam(), rows) {}
  World world;
};
inline auto const kModes = testing::Values(Completion::direct, Completion::deferred);
inline auto const modeName = [](auto const& info) { return info.param == Completion::direct ? "direct" : "deferred"; };

}  // namespace AsicTest
