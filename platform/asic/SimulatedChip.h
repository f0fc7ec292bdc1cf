#pragma once

#include <memory>
#include <string>

#include "platform/asic/ChipDriver.h"
#include "platform/asic/ChipProfile.h"

namespace Asic {

/// Sees what a simulated chip accepts, after each change of a row. It may read tables, and must not write.
class RowObserver {
 public:
  /// `row` counts from the first row of the table.
  virtual void written(std::string_view table, std::uint32_t row, EntryHandle const& entry) = 0;
  virtual void cleared(std::string_view table, std::uint32_t row) = 0;

 protected:
  ~RowObserver() = default;
};

/// A chip in memory: each row as numbers by field name.
///
/// Its tables are as large as the profile says. Can be set to refuse writes, with `failed` or `full`; the row is then
/// unchanged. Main thread only.
class SimulatedChip final : public ChipDriver {
 public:
  explicit SimulatedChip(Dovel::Ptr<ChipProfile const> profile, Completion completion = Completion::direct);
  ~SimulatedChip() override;

  std::uint32_t capacity(TableId id, RowLayout const& layout) override;
  EntryState writeRow(RowWrite const& write) override;
  void clearRow(TableId table, std::uint32_t row) override;
  Completion completion() const override { return completion_; }

  // Refusals. `with` is `failed` or `full`; several may be set, each counts or matches on its own.
  /// The `n`-th write from now on, 1 being the next; once.
  void refuseNth(std::uint64_t n, EntryState with);
  /// Every `k`-th write from now on.
  void refuseEvery(std::uint64_t k, EntryState with);
  /// Every write to a chip table, by its name; parts of merged tables have names of their own.
  void refuseTable(std::string_view table, EntryState with);
  /// Every write for an entry with that key, in whatever table.
  void refuseKey(std::string_view keyText, EntryState with);
  /// Ends all refusals.
  void refuseNone();

  /// Null for none. It outlives its use.
  void observerIs(RowObserver* observer) { observer_ = observer; }

  /// Whether a row is written. REQUIRES: the table exists.
  bool isWritten(std::string_view table, std::uint32_t row) const;
  /// A row's words, empty if the row is clear. REQUIRES: the table exists.
  std::span<std::uint64_t const> row(std::string_view table, std::uint32_t row) const;
  /// The words of one field of a row, by the field's name. REQUIRES: the row is written.
  std::span<std::uint64_t const> words(std::string_view table, std::uint32_t row, std::string_view field) const;
  /// The number in a field of one word, or the first of several words. REQUIRES: as `words`.
  std::uint64_t field(std::string_view table, std::uint32_t row, std::string_view field) const;
  /// How many rows of the table are written.
  std::uint32_t rows(std::string_view table) const;
  /// All written rows, a heading per table and a line per row: "3 macAddr=0x20000000001 vlanId=0x5". Fields that are 0
  /// are left out.
  std::string dump() const;

 private:
  struct Table;
  struct Refusal {
    enum class By : std::uint8_t { nth, every, table, key } by;
    EntryState with;
    std::uint64_t count;  ///< Writes still to pass, or the distance.
    std::string text;
    std::uint64_t seen = 0;
  };

  EntryState refusal(RowWrite const& write);
  Table const* table(std::string_view name) const;

  Dovel::Ptr<ChipProfile const> profile_;
  Completion completion_;
  std::vector<std::unique_ptr<Table>> tables_;
  std::vector<Refusal> refusals_;
  RowObserver* observer_ = nullptr;
};

/// A chip of a profile, simulated.
Dovel::Ptr<class Chip> makeSimulatedChip(Dovel::Ptr<ChipProfile const> const& profile,
                                         Completion completion = Completion::direct);

}  // namespace Asic
