#pragma once

#include <algorithm>
#include <array>
#include <map>
#include <span>
#include <vector>

#include "platform/anvil/HBitmap.h"
#include "platform/asic/Chip.h"
#include "platform/asic/FieldVisitor.h"
#include "platform/asic/Record.h"
#include "platform/kiln/FunctionRef.h"

namespace Asic {

/// Properties of a table class that its store depends on.
struct TableSpec {
  Kiln::Type const& table;
  std::uint32_t reservedRows = 0;  ///< Rows from 0 on that only fixed-row writes use.
  std::vector<RowLayout> parts;    ///< One, or those of a merged table. `table` names the chip's table.
};

/// The entries of one table class and unit on one chip: everything about them that doesn't depend on their types.
///
/// Allocates rows, keeps the queue of entries that wait, and writes rows to the chip.
///
/// The queue. An entry that finds no row waits (state 5) until rows are released; one that could not fit even into the
/// empty table gets state 5 and does not wait. First come, first served: the oldest that finds no room holds back the
/// younger, and a new entry never passes one that waits. A write that replaces an entry with rows is not a new entry:
/// it may use any free row at once, and waits before the new ones. An entry whose row the chip itself refuses with
/// `full` keeps its row and is sent again when a row is released or the chip accepts another write.
/// The queue is retried whenever rows are released or an entry without a row leaves it. When a waiting entry gets its
/// row, the entries that refer to it are rewritten.
///
/// Fixed rows. A row that is written at a given index belongs to an entry of its own, beside the entry that an ordinary
/// write of the same key makes: neither overwrites the other. Reads and removal by key find the ordinary entry first.
///
/// Shared by all table objects of the class; lives as long as a record of it does. After `chipGone` nothing is written:
/// entries get state 4, and a committed one is dropped at once. Main thread only.
class StoreBase : public Dovel::Node {
  KILN_BASE_TYPE(Asic::StoreBase)

 public:
  /// The table's name without its namespace.
  std::string_view name() const { return name_; }
  Kiln::Type const& table() const { return table_; }
  /// Rows of the table in the profile, reserved ones too; 0 without space.
  std::uint32_t capacity() const { return hasSpace_ ? capacity_ : 0; }
  /// Whether the switch's profile in force has space for the table. Without it, entries keep the rows that they have,
  /// and others wait.
  void hasSpaceIs(bool hasSpace);
  /// Allocated rows, and reserved ones that are written.
  std::uint32_t used() const { return used_; }
  /// The most rows that were allocated at any moment.
  std::uint32_t mostUsed() const { return std::max(mostUsed_, used_); }
  /// Writes that the chip refused, and entries that found no row.
  std::uint64_t refused() const { return rowless_ + refusedWrites(); }
  /// Entries in the queue.
  std::size_t waiting() const { return queue_.size(); }
  /// Keys.
  virtual std::size_t entrys() const = 0;
  /// The chip's number of a part's first row.
  std::uint32_t base(std::size_t part) const { return parts_[part].layout.base; }
  /// Shows the entries that have a key, in the order of their keys' text, numbers in it by value.
  void forEachEntry(Kiln::FunctionRef<void(EntryView const&)> show) const;
  /// Appends a report for each part.
  void report(std::vector<ChipTableReport>& out) const;

  /// Moves the responses that are kept for later writes to `out`. The caller destroys them when it is ready for what
  /// their destructors do.
  void takeResponses(std::vector<WriteResponseFn>& out);
  /// Nothing is written after this.
  void chipGone();
  /// Whether `doPublishHwTableMountInfo` was called for it.
  bool published() const { return published_; }
  void publishedIs(bool published) { published_ = published; }
  /// Removes all keys.
  void removeAll();

  // What depends on the type of the entry; for the table library.
  virtual void keyText(RecordBase const& record, std::string& out) const = 0;
  virtual void showFields(RecordBase const& record, FieldVisitor& visitor) const = 0;

 protected:
  struct RowRange {
    std::uint32_t first = 0;
    std::uint32_t count = 0;
  };

  StoreBase(Chip& chip, TableSpec const& described);
  ~StoreBase() override;

  bool hasChip() const { return chip_ != nullptr; }
  /// Allocates the rows of a new record. It has none afterwards if there are none, or if others wait for them.
  void allocateRows(RecordBase& record);
  /// The same for a record of one row.
  void allocateRow(RecordBase& record);
  /// Makes the record the owner of the row `index`, if the table is that large. An entry that has the row is displaced.
  /// REQUIRES: that entry has no key.
  void allocateFixedRow(RecordBase& record, Index index);
  /// Takes the key away from the record, which owns its row no longer but for `surplusRows`.
  void displace(RecordBase& record);
  /// Moves the place of `former` in the queue, if it waits, to `record`.
  void inheritPlace(RecordBase& record, RecordBase& former);
  /// Sends refused entries again, until the chip refuses one; then allocates rows for those that have none, oldest
  /// first.
  void retryWaiting();
  /// Writes one row of one part of the record's rows.
  EntryState writeRow(RecordBase const& record, std::size_t part, std::uint32_t row,
                      std::span<std::uint64_t const> words);
  /// Reports the outcome of the writer's own write, and queues the entry if the chip is full. With `Report::atOnce` the
  /// caller calls the response, and an outcome that is final is not queued. `response` may hold the response of a
  /// former write afterwards; destroying that may run anything, so it is left to the caller.
  void finishWrite(RecordBase& record, EntryState outcome, WriteResponseFn& response, Report report = Report::later);
  /// Registers the record to be rewritten when `target` gets a row; the reverse.
  void addDependant(RecordBase& target, RecordBase& record);
  void removeDependant(RecordBase& target, RecordBase& record);
  /// Removes the key and its reference to the entry. REQUIRES: the record has a key.
  void removeKey(RecordBase& record);
  static void pin(RecordBase& record);

  /// The records that have a key.
  virtual std::vector<RecordBase*> all() const = 0;
  /// How many rows the record takes.
  virtual std::uint32_t length(RecordBase const& record) const = 0;
  /// What a displaced record still owns.
  virtual RowRange surplusRows(RecordBase const&) const { return {}; }
  virtual bool refersToRowless(RecordBase const& record) const = 0;
  /// Sends all rows of the record to the chip.
  virtual EntryState sendAll(RecordBase& record) = 0;
  /// Sends the rows that changed since `target` had no row.
  virtual EntryState sendSince(RecordBase& record, RecordBase const& target) = 0;
  /// Removes the record from the map.
  virtual void eraseKey(RecordBase& record) = 0;
  /// Drops the handles that the record stores.
  virtual void dropContents(RecordBase& record) = 0;
  virtual void freeRecord(RecordBase& record) = 0;

 private:
  friend class RecordBase;

  struct Part {
    RowLayout layout;
    TableId id = 0;
    std::uint64_t writes = 0;
    std::uint64_t clears = 0;
    std::uint64_t refused = 0;
  };
  /// Kept for a record that the store may write later on its own: it waits, or is a dependant.
  struct Pending {
    std::uint64_t place = 0;  ///< In the queue. REQUIRES: the record waits.
    WriteResponseFn response;
  };
  /// The queue's order, above the order of arrival.
  enum class Rank : std::uint8_t {
    refused,    ///< Has its row, which the chip refused.
    replacing,  ///< Has no row; see `RecordBase::replaces`.
    arriving,   ///< Has no row, and is new.
  };
  static constexpr unsigned kRankShift = 62;
  static constexpr std::uint64_t firstPlace(Rank rank) { return static_cast<std::uint64_t>(rank) << kRankShift; }

  std::uint64_t refusedWrites() const;
  void expire(RecordBase& record);
  std::optional<std::uint32_t> findRows(std::uint32_t length) const;
  void assignRows(RecordBase& record, std::uint32_t first);
  /// False if the record owns none.
  bool releaseRows(RecordBase& record);
  /// Whether the table could hold the record if it were empty.
  bool fits(RecordBase const& record) const;
  bool rowlessWait() const { return !queue_.empty() && queue_.rbegin()->first >= firstPlace(Rank::replacing); }
  void refusedForRoom(RecordBase& record);
  void enqueue(RecordBase& record, Rank rank);
  void dequeue(RecordBase& record);
  void retryRefused();
  void rewriteDependants(RecordBase& target);
  /// The rest of `finishWrite` where something waits, or may be written again, or the write was not accepted.
  void finishUnusual(RecordBase& record, EntryState outcome, WriteResponseFn& response, Report report);
  void reportOutcome(RecordBase& record, EntryState outcome, WriteResponseFn const& response,
                     Report report = Report::later);
  /// As `finishWrite`, for a write of the store's own: with the response that is kept.
  void finishRewrite(RecordBase& record, EntryState outcome);
  /// Keeps `response` if the store may write the record again. Leaves the response kept before in `response`.
  void keepResponse(RecordBase& record, WriteResponseFn& response);
  WriteResponseFn takeResponse(RecordBase& record);

  Kiln::Type const& table_;
  std::string_view name_;
  Chip* chip_;
  std::uint32_t capacity_ = 0;
  std::uint32_t reserved_ = 0;
  std::uint32_t used_ = 0;
  std::uint32_t mostUsed_ = 0;  ///< Before rows were last released.
  std::uint64_t rowless_ = 0;   ///< How often an entry found no row.
  bool published_ = false;
  bool hasSpace_ = true;
  Anvil::HBitmap pool_;
  std::vector<Part> parts_;
  std::map<std::uint32_t, RecordBase*> fixedRows_;  ///< Their owners.
  std::map<std::uint64_t, RecordBase*> queue_;      ///< By rank and arrival.
  std::uint64_t lastPlace_ = 0;
  std::map<RecordBase const*, Pending> pending_;
};

/// The part of a type's or table's name behind its last "::".
std::string_view shortName(std::string_view name);

inline void StoreBase::allocateRow(RecordBase& record) {
  if (!queue_.empty() || !hasSpace_) [[unlikely]]
    return allocateRows(record);
  if (auto const row = pool_.takeClearBit()) [[likely]] {
    ++used_;
    record.row = *row;
  }
}

inline EntryState StoreBase::writeRow(RecordBase const& record, std::size_t part, std::uint32_t row,
                                      std::span<std::uint64_t const> words) {
  if (!chip_) [[unlikely]]
    return EntryState::failed;
  auto& to = parts_[part];
  auto const outcome =
      chip_->driver().writeRow({.table = to.id, .row = row + to.layout.base, .words = words, .entry = record.strong()});
  if (outcome == EntryState::written) [[likely]] {
    ++to.writes;
  } else {
    ++to.refused;
  }
  return outcome;
}

inline void StoreBase::finishWrite(RecordBase& record, EntryState outcome, WriteResponseFn& response, Report report) {
  auto const usual = outcome == EntryState::written && queue_.empty() && !record.dependant && !record.kept;
  if (!usual) [[unlikely]]
    return finishUnusual(record, outcome, response, report);
  record.sent = true;
  chip_->outcomeIs(record, outcome, std::move(response), report);
}

}  // namespace Asic
