#pragma once

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

/// What a table class tells its store.
struct TableSpec {
  Kiln::Type const& table;
  std::uint32_t reservedRows = 0;  ///< From row 0 on: never given to an entry that doesn't ask for them.
  std::vector<RowLayout> parts;    ///< One, or those of a merged table. `table` names the chip's table.
};

/// The entries of one table class and unit on one chip: everything about them that doesn't depend on their types.
///
/// Keeps the rows (a pool without the reserved ones), the queue of entries that found no row, and the way of a row to
/// the chip. A row that comes free goes to the oldest of the queue; who stores a handle of that one is written again.
/// Shared by all table objects of the class; lives as long as a record of it does. Once its chip has gone it writes
/// nothing. Main thread only.
class StoreBase : public Dovel::Node {
  KILN_BASE_TYPE(Asic::StoreBase)

 public:
  /// The table's name without its namespace.
  std::string_view name() const { return name_; }
  Kiln::Type const& table() const { return table_; }
  /// Rows that the profile gives, reserved ones too.
  std::uint32_t capacity() const { return capacity_; }
  /// Rows that are given out, and reserved ones that are written.
  std::uint32_t used() const { return used_; }
  /// Entries that wait for a row.
  std::size_t waiting() const { return waiting_.size(); }
  /// Keys.
  virtual std::size_t entrys() const = 0;
  /// The chip's number of a part's first row.
  std::uint32_t base(std::size_t part) const { return parts_[part].layout.base; }
  /// Shows the entries that have a key, in the order of their keys' text.
  virtual void forEachEntry(Kiln::FunctionRef<void(EntryView const&)> show) const = 0;
  /// Appends what the chip has of this store, a report for each part.
  void report(std::vector<ChipTableReport>& out) const;

  /// Drops the responses that wait for a row.
  void responsesDrop();
  /// Nothing is written any more.
  void chipGone();
  /// Whether `doPublishHwTableMountInfo` was called for it.
  bool published() const { return published_; }
  void publishedIs(bool published) { published_ = published; }
  /// Takes all keys away.
  virtual void removeAll() = 0;

  // What depends on the type of the entry; for the table library.
  virtual void keyText(RecordBase const& record, std::string& out) const = 0;
  virtual void showFields(RecordBase const& record, FieldVisitor& visitor) const = 0;

 protected:
  StoreBase(Chip& chip, TableSpec const& tableShape);
  ~StoreBase() override;

  /// Takes `length` rows for a new record, or leaves it without.
  void rowTake(RecordBase& record, std::uint32_t length);
  /// Gives the record the row `index`, taking it from one whose key was removed. Leaves it without row where the table
  /// is not that large. REQUIRES: no other entry with a key has the row.
  void rowTakeAt(RecordBase& record, Index index);
  /// Writes one row of one part of the record's rows.
  EntryState rowWrite(RecordBase const& record, std::size_t part, std::uint32_t row,
                      std::span<std::uint64_t const> words);
  /// Notes and queues the outcome of a write: an entry that found the chip full waits from now on.
  void conclude(RecordBase& record, EntryState outcome, WriteResponseFn const& response);
  /// Registers the record with each target that has no row; the reverse.
  void dependOn(RecordBase& target, RecordBase& record);
  void dependOff(RecordBase& target, RecordBase& record);
  /// Takes the key's use away, then the key. REQUIRES: the record has a key.
  void keyRemoved(RecordBase& record);
  static void recordPin(RecordBase& record);

  /// How many rows the record takes.
  virtual std::uint32_t length(RecordBase const& record) const = 0;
  /// Sends what the record's rows are to the chip, all of them.
  virtual EntryState sendAll(RecordBase& record) = 0;
  /// Sends the rows that changed since `target` had no row.
  virtual EntryState sendSince(RecordBase& record, RecordBase const& target) = 0;
  /// Takes the record out of the map.
  virtual void keyErase(RecordBase& record) = 0;
  /// Drops the handles that the record stores.
  virtual void contentsDrop(RecordBase& record) = 0;
  virtual void recordFree(RecordBase& record) = 0;

 private:
  friend class RecordBase;

  struct Part {
    RowLayout layout;
    TableId id = 0;
    std::uint64_t writes = 0;
    std::uint64_t clears = 0;
    std::uint64_t refused = 0;
  };
  struct Waiting {
    RecordBase* record;
    WriteResponseFn response;
  };

  void lastUse(RecordBase& record);
  std::optional<std::uint32_t> rowFind(std::uint32_t length) const;
  void rowGive(RecordBase& record, std::uint32_t first, std::uint32_t length);
  void rowBack(RecordBase& record);
  void waitingIs(RecordBase& record, WriteResponseFn const& response);
  void waitingDel(RecordBase& record);
  void waitingServe();
  void dependantsRewrite(RecordBase& target);

  Kiln::Type const& table_;
  std::string_view name_;
  Chip* chip_;
  std::uint32_t capacity_ = 0;
  std::uint32_t reserved_ = 0;
  std::uint32_t used_ = 0;
  std::uint32_t lastWaiting_ = 0;
  bool published_ = false;
  Anvil::HBitmap pool_;
  std::vector<Part> parts_;
  std::vector<RecordBase*> reservedHolders_;
  std::map<std::uint32_t, Waiting> waiting_;  ///< By arrival.
};

/// The part of a type's or table's name behind its last "::".
std::string_view shortName(std::string_view name);

}  // namespace Asic
