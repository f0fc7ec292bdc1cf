#include "platform/asic/SimulatedChip.h"

#include <algorithm>
#include <cstdlib>

#include "platform/asic/Chip.h"
#include "platform/kiln/Invariant.h"

namespace Asic {

/// A flat array of rows, zeroed by the system when first touched.
struct SimulatedChip::Table {
  RowLayout const* layout;
  std::uint32_t rows;
  std::uint32_t base;
  std::uint32_t wordsOfRow;
  std::uint64_t* words;
  std::vector<std::uint8_t> written;  ///< 1 for each row that is; a byte, for speed.

  Table(RowLayout const& itsLayout, std::uint32_t itsRows)
      : layout(&itsLayout),
        rows(itsRows),
        base(itsLayout.base),
        wordsOfRow(itsLayout.words),
        words(static_cast<std::uint64_t*>(
            std::calloc(std::max<std::size_t>(1, std::size_t{itsRows} * itsLayout.words), sizeof(std::uint64_t)))),
        written(itsRows) {
    if (!words) throw std::bad_alloc();
  }
  ~Table() { std::free(words); }
  Table(Table const&) = delete;
  Table& operator=(Table const&) = delete;

  std::uint64_t* at(std::uint32_t row) const { return words + std::size_t{row - base} * wordsOfRow; }
};

SimulatedChip::SimulatedChip(Dovel::Ptr<ChipProfile const> profile, Completion completion)
    : profile_(std::move(profile)), completion_(completion) {}

SimulatedChip::~SimulatedChip() = default;

std::uint32_t SimulatedChip::capacity(TableId id, RowLayout const& layout) {
  auto const rows = profile_->table(layout.table).rows;
  if (tables_.size() <= id) tables_.resize(id + 1);
  tables_[id] = std::make_unique<Table>(layout, rows);
  return rows;
}

EntryState SimulatedChip::writeRow(RowWrite const& write) {
  auto& table = *tables_[write.table];
  INVARIANT(write.row - table.base < table.rows && write.words.size() == table.wordsOfRow);
  if (!refusals_.empty()) [[unlikely]] {
    if (auto const with = refusal(write); with != EntryState::written) return with;
  }
  // A row that is all key has no words.
  std::copy(write.words.begin(), write.words.end(), table.at(write.row));
  table.written[write.row - table.base] = 1;
  if (observer_) [[unlikely]]
    observer_->written(table.layout->table, write.row - table.base, write.entry);
  return EntryState::written;
}

void SimulatedChip::clearRow(TableId id, std::uint32_t row) {
  auto& table = *tables_[id];
  std::fill_n(table.at(row), table.wordsOfRow, 0);
  table.written[row - table.base] = 0;
  if (observer_) [[unlikely]]
    observer_->cleared(table.layout->table, row - table.base);
}

void SimulatedChip::refuseNth(std::uint64_t n, EntryState with) {
  refusals_.push_back({Refusal::By::nth, with, n, {}});
}
void SimulatedChip::refuseEvery(std::uint64_t k, EntryState with) {
  refusals_.push_back({Refusal::By::every, with, k, {}});
}
void SimulatedChip::refuseTable(std::string_view table, EntryState with) {
  refusals_.push_back({Refusal::By::table, with, 0, std::string(table)});
}
void SimulatedChip::refuseKey(std::string_view keyText, EntryState with) {
  refusals_.push_back({Refusal::By::key, with, 0, std::string(keyText)});
}
void SimulatedChip::refuseNone() { refusals_.clear(); }

// Every refusal counts every write, also one that another refuses.
EntryState SimulatedChip::refusal(RowWrite const& write) {
  auto outcome = EntryState::written;
  for (auto& refusal : refusals_) {
    ++refusal.seen;
    bool hit = false;
    switch (refusal.by) {
      case Refusal::By::nth:
        hit = refusal.seen == refusal.count;
        break;
      case Refusal::By::every:
        hit = refusal.seen % refusal.count == 0;
        break;
      case Refusal::By::table:
        hit = tables_[write.table]->layout->table == refusal.text;
        break;
      case Refusal::By::key:
        hit = write.entry.keyText() == refusal.text;
        break;
    }
    if (hit && outcome == EntryState::written) outcome = refusal.with;
  }
  return outcome;
}

SimulatedChip::Table const* SimulatedChip::table(std::string_view name) const {
  for (auto const& table : tables_) {
    if (table && table->layout->table == name) return table.get();
  }
  return nullptr;
}

bool SimulatedChip::isWritten(std::string_view name, std::uint32_t row) const {
  auto const* of = table(name);
  INVARIANT(of && row - of->base < of->rows);
  return of->written[row - of->base] != 0;
}

std::span<std::uint64_t const> SimulatedChip::row(std::string_view name, std::uint32_t row) const {
  if (!isWritten(name, row)) return {};
  auto const* of = table(name);
  return {of->at(row), of->layout->words};
}

std::uint64_t SimulatedChip::field(std::string_view table, std::uint32_t row, std::string_view field) const {
  return words(table, row, field).front();
}

std::span<std::uint64_t const> SimulatedChip::words(std::string_view name, std::uint32_t rowNumber,
                                                    std::string_view field) const {
  auto const words = row(name, rowNumber);
  INVARIANT(!words.empty());
  std::size_t at = 0;
  for (auto const& one : table(name)->layout->fields) {
    if (one.name == field) return words.subspan(at, one.words);
    at += one.words;
  }
  INVARIANT(false && "no such field");
  return {};
}

std::uint32_t SimulatedChip::rows(std::string_view name) const {
  auto const* of = table(name);
  return of ? static_cast<std::uint32_t>(std::count(of->written.begin(), of->written.end(), 1)) : 0;
}

namespace {

void appendHex(std::string& out, std::uint64_t value) {
  char digits[16];
  auto const end = std::to_chars(digits, digits + sizeof digits, value, 16).ptr;
  out.append("0x").append(digits, end);
}

void appendRow(std::string& out, RowLayout const& layout, std::uint64_t const* words) {
  for (auto const& field : layout.fields) {
    for (unsigned i = 0; i < field.words; ++i, ++words) {
      if (*words == 0) continue;
      out.append(" ").append(field.name);
      if (field.words > 1) out.append(".").append(Kiln::toText(i));
      out += '=';
      appendHex(out, *words);
    }
  }
  out += '\n';
}

}  // namespace

std::string SimulatedChip::dump() const {
  std::string out;
  for (auto const& table : tables_) {
    if (!table || std::count(table->written.begin(), table->written.end(), 1) == 0) continue;
    out.append(table->layout->table).append("\n");
    for (std::uint32_t i = 0; i < table->rows; ++i) {
      if (!table->written[i]) continue;
      auto const row = i + table->base;
      out.append("  ").append(Kiln::toText(row));
      appendRow(out, *table->layout, table->at(row));
    }
  }
  return out;
}

Dovel::Ptr<Chip> makeSimulatedChip(Dovel::Ptr<ChipProfile const> const& profile, Completion completion) {
  return Dovel::make<Chip>(profile, std::make_unique<SimulatedChip>(profile, completion));
}

}  // namespace Asic
