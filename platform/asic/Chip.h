#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/asic/ChipDriver.h"
#include "platform/asic/ChipProfile.h"
#include "platform/asic/WriteResponse.h"

namespace Asic {

class StoreBase;

/// Counters of one chip table, for show and for tests.
struct ChipTableReport {
  std::string name;  ///< Of the chip's table: each part of a merged table has a report.
  std::uint32_t base = 0;
  std::uint32_t rows = 0;
  std::uint32_t used = 0;  ///< Allocated rows.
  std::uint64_t writes = 0;
  std::uint64_t clears = 0;
  std::uint64_t refused = 0;  ///< Writes that the chip refused, and entries that found no row.
  StoreBase const* store = nullptr;
};

/// A chip with its software tables: the stores by table class and unit, the driver, and the outcomes to be delivered.
///
/// Outcomes of writes are queued in the order of the writes; the host's loop delivers them, and responses run then and
/// never inside a write, unless the writer asks for `Report::atOnce`. With direct completion an entry's state is final
/// when the write returns and only responses are queued; with deferred completion the state changes when the outcome is
/// delivered. The last state that an entry's response is called with is the entry's state, also where the table wrote
/// the entry again on its own. After `stop` entries exist until they are removed or the chip is destroyed. Main thread
/// only. What a response writes is queued behind; a response may also deliver, stop the chip and release the last
/// reference to it.
class Chip final : public Dovel::Node {
  KILN_BASE_TYPE(Asic::Chip)

 public:
  /// REQUIRES: neither is null.
  Chip(Dovel::Ptr<ChipProfile const> profile, std::unique_ptr<ChipDriver> driver);
  ~Chip() override;

  Dovel::Ptr<ChipProfile const> const& profile() const { return profile_; }
  ChipDriver& driver() const { return *driver_; }
  Completion completion() const { return completion_; }

  /// Delivers what is queued now, in order; returns how many. What these cause is left for the next call.
  std::size_t deliver();
  /// Delivers the oldest; false if there was none that is not held.
  bool deliverOne();
  /// Outcomes not delivered yet, held ones too.
  std::size_t pending() const { return queue_.size() - head_ + held_.size(); }

  /// Holds back the outcomes of a table, by its name without namespace, until the release. Others overtake them.
  void hold(std::string_view table);
  void release(std::string_view table);
  /// Of all tables.
  void release();

  /// Drops every response: after this no pending response keeps a programmer alive.
  void stop();

  /// Takes a table's space away or back, by its name without namespace, as another profile of the switch does. No
  /// effect for a table that was not brought up.
  void hasSpaceIs(std::string_view table, bool hasSpace);

  /// The stores in order of bring-up.
  std::vector<StoreBase const*> stores() const;
  /// The store of that name, without namespace; null if none was brought up. The shared unit's if there are several.
  StoreBase const* store(std::string_view name) const;
  /// The chip's own tables, in order of bring-up.
  std::vector<ChipTableReport> tables() const;
  /// Rows written since the start, over all tables.
  std::uint64_t writes() const;

  // For the table library.
  using MakeStore = Dovel::Ptr<StoreBase> (*)(Chip& chip, UnitId unit);
  /// The store of a table class and unit; created by the first call.
  Dovel::Ptr<StoreBase> const& storeOf(Kiln::Type const& table, UnitId unit, MakeStore make);
  TableId newTableId() { return nextTable_++; }
  /// Takes the outcome of a write of `record`. An outcome that is final and reported at once is not queued.
  void outcomeIs(RecordBase& record, EntryState outcome, WriteResponseFn&& response, Report report);
  /// `dependant` stores a handle of `target`, which has no row.
  void dependantIs(RecordBase& target, RecordBase& dependant);
  void dependantDel(RecordBase& target, RecordBase& dependant);
  /// The dependants of `target` in order of registration, which are unregistered.
  std::vector<RecordBase*> dependantsTake(RecordBase& target);

 private:
  struct Outcome {
    EntryHandle::PtrConst entry;  ///< Weak: an outcome keeps no entry.
    WriteResponseFn response;
    std::uint32_t number = 0;
    EntryState state = EntryState::none;
  };

  static constexpr std::size_t kCompactAt = 256;

  /// Whether write `a` was made after write `b`, the numbers of which may have wrapped.
  static bool isLater(std::uint32_t a, std::uint32_t b) { return static_cast<std::int32_t>(a - b) > 0; }
  /// False if the front of the queue is held.
  bool deliverFront();
  /// Removes what was delivered from the queue.
  void compact();
  static void settle(Outcome const& outcome);
  bool isHeld(Outcome const& outcome) const;

  Dovel::Ptr<ChipProfile const> profile_;
  std::unique_ptr<ChipDriver> driver_;
  Completion completion_;
  std::vector<std::pair<std::pair<Kiln::Type const*, std::uint32_t>, Dovel::Ptr<StoreBase>>> stores_;
  TableId nextTable_ = 0;
  std::vector<Outcome> queue_;  ///< From `head_` on.
  std::size_t head_ = 0;
  std::vector<Outcome> held_;
  std::vector<std::string> holds_;
  std::uint32_t lastWrite_ = 0;
  std::map<std::pair<RecordBase*, RecordBase*>, std::uint64_t> dependants_;  ///< Target and dependant; by age.
  std::uint64_t lastDependant_ = 0;
};

inline void Chip::outcomeIs(RecordBase& record, EntryState outcome, WriteResponseFn&& response, Report report) {
  record.lastWrite = ++lastWrite_;
  if (completion_ == Completion::direct) {
    record.state = outcome;
    if (!response || report == Report::atOnce) return;
  } else {
    record.state = EntryState::inProgress;
  }
  queue_.push_back({EntryHandle::PtrConst(&record.weak()), std::move(response), lastWrite_, outcome});
}

}  // namespace Asic
