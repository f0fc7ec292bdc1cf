#include <fmt/format.h>

#include <map>
#include <set>
#include <sstream>
#include <vector>

#include "platform/anvil/PerUnitBitmap.h"
#include "platform/asic/Chip.h"
#include "platform/asic/FieldVisitor.h"
#include "platform/asic/Record.h"
#include "platform/asic/Store.h"
#include "platform/meshal/EthAddr.h"
#include "platform/meshal/IpGenAddr.h"
#include "tests/support/AgentText.h"

namespace AgentTest {

namespace {

using Asic::EntryHandle;
using Asic::EntryView;
using Asic::RecordBase;
using Asic::SimulatedChip;
using Asic::StoreBase;

bool isCount(std::string_view field) { return field == "vp1UpdateCount" || field == "vp2UpdateCount"; }
/// Fields that a table fills with the row of the handle that stands before them.
bool isRowOfHandle(std::string_view field) { return field == "tunnelIndex" || field == "svp"; }

/// What the words of a field say, as a text of the kind of `like`.
std::string textOf(std::span<std::uint64_t const> words, std::string_view like) {
  if (words.size() == 1) {
    if (like.find(':') != like.npos) return Kiln::toText(Meshal::EthAddr(words[0]));
    if (like.find('.') != like.npos) return Kiln::toText(Meshal::IpAddr(static_cast<std::uint32_t>(words[0])));
    return Kiln::toText(words[0]);
  }
  if (words.size() == 3) {
    Meshal::Ip6Addr::Bytes bytes;
    for (unsigned i = 0; i < 16; ++i) bytes[i] = static_cast<std::uint8_t>(words[1 + i / 8] >> (56 - i % 8 * 8));
    switch (words[0]) {
      case 1:
        return Kiln::toText(Meshal::IpGenAddr(Meshal::IpAddr(static_cast<std::uint32_t>(words[1] >> 32))));
      case 2:
        return Kiln::toText(Meshal::IpGenAddr(Meshal::Ip6Addr(bytes)));
      default:
        return "";
    }
  }
  Anvil::PerUnitBitmap bitmap;
  for (std::size_t i = 0; i < Anvil::PerUnitBitmap::kWords; ++i) {
    bitmap.bitListIs(i, static_cast<std::uint32_t>(words[i / 2] >> (i % 2 * 32)));
  }
  return Kiln::toText(bitmap);
}

std::string nameOf(EntryHandle const& target) {
  auto const* record = target.record();
  if (!record) return fmt::format("row {}", target.dontCareIndex().value());
  return fmt::format("{}{}[{}]", record->expired ? "gone " : "", target.tableName(), target.keyText());
}

/// Rows of the chip's tables that entries account for.
using Accounted = std::map<std::string, std::set<std::uint32_t>, std::less<>>;

/// Puts one entry into a line, and holds it against the chip.
class EntryText final : public Asic::FieldVisitor {
 public:
  EntryText(SimulatedChip const& hardware, std::vector<Asic::ChipTableReport> const& parts, EntryView const& entry,
            Accounted& accounted, std::vector<RecordBase const*>& keyless)
      : hardware_(hardware), parts_(parts), accounted_(accounted), keyless_(keyless) {
    if (entry.row()) row_ = entry.row()->value();
    text_ = entry.removed() ? '(' + entry.key() + "):" : entry.key() + ':';
    if (!row_) text_ += " NO ROW";
    if (entry.state() != Asic::EntryState::written) {
      text_ += " STATE " + Kiln::toText(entry.state());
    }
    rowIs(0, 0);
    entry.fields(*this);
  }
  std::string const& text() const { return text_; }

  void number(std::string_view name, std::uint64_t value) override {
    compare(name, value);
    if (isRowOfHandle(name) && lastTarget_) {
      auto const wanted = lastTarget_->hasRow() ? lastTarget_->row & 0xffffU : 0;
      if (value != wanted) text_ += fmt::format(" {}={} (ROW IS {})", name, value, wanted);
    } else if (value != 0 && !isCount(name)) {
      text_ += fmt::format(" {}={}", name, value);
    }
  }
  void text(std::string_view name, std::string value) override {
    if (!value.empty()) text_ += fmt::format(" {}={}", name, value);
    if (!row_ || !written_) return;
    auto const has = textOf(hardware_.words(part_->name, chipRow_, name), value);
    if (has != value) text_ += fmt::format(" {}={} (CHIP HAS {})", name, value, has);
  }
  void handle(std::string_view name, EntryHandle::PtrConst const& target) override {
    lastTarget_ = target ? target->record() : nullptr;
    auto const row = target ? target->row() : std::nullopt;
    compare(name, row ? row->value() : Asic::Index::none);
    if (!target || (!lastTarget_ && target->dontCareIndex().value() == 0)) return;
    text_ += fmt::format(" {}={}", name, nameOf(*target));
    if (lastTarget_ && !lastTarget_->keyed) keyless_.push_back(lastTarget_);
  }
  void groupBegin(std::string_view) override {
    if (parts_.size() > 1) {
      rowIs(groups_++, 0);
    } else {
      rowIs(0, groups_++);
      text_ += " |";
    }
  }
  void groupEnd() override {}

 private:
  void rowIs(std::size_t part, std::uint32_t offset) {
    part_ = &parts_[part];
    chipRow_ = row_.value_or(0) + part_->base + offset;
    if (!row_) return;
    accounted_[part_->name].insert(chipRow_);
    written_ = hardware_.isWritten(part_->name, chipRow_);
    if (!written_) text_ += " ROW NOT WRITTEN";
  }
  void compare(std::string_view name, std::uint64_t value) {
    if (!row_ || !written_) return;
    auto const has = hardware_.field(part_->name, chipRow_, name);
    if (has != value) text_ += fmt::format(" {}={} (CHIP HAS {})", name, value, has);
  }

  SimulatedChip const& hardware_;
  std::vector<Asic::ChipTableReport> const& parts_;
  Accounted& accounted_;
  std::vector<RecordBase const*>& keyless_;
  std::optional<std::uint32_t> row_;
  Asic::ChipTableReport const* part_ = nullptr;
  std::uint32_t chipRow_ = 0;
  bool written_ = false;
  std::uint32_t groups_ = 0;
  RecordBase const* lastTarget_ = nullptr;
  std::string text_;
};

class ChipText {
 public:
  ChipText(Asic::Chip const& chip, SimulatedChip const& hardware) : hardware_(hardware) {
    for (auto const& report : chip.tables()) {
      parts_[report.store].push_back(report);
      accounted_[report.name];
    }
    for (auto const& [store, parts] : parts_) {
      lines_[std::string(store->name())];
      store->forEachEntry([&, store = store](EntryView const& entry) { add(*store, entry); });
    }
    // These may hold others of their kind.
    for (std::size_t i = 0; i < keyless_.size(); ++i) {
      if (seen_.insert(keyless_[i]).second) add(keyless_[i]->store(), EntryView(*keyless_[i]));
    }
    for (auto const& [name, rows] : accounted_) addStrayRows(name, rows.size());
  }

  std::string text() const {
    std::string text;
    for (auto const& [table, lines] : lines_) {
      if (lines.empty()) continue;
      text += table + '\n';
      for (auto const& line : lines) text += "  " + line + '\n';
    }
    return text;
  }

 private:
  void add(StoreBase const& store, EntryView const& entry) {
    lines_[std::string(store.name())].insert(EntryText(hardware_, parts_[&store], entry, accounted_, keyless_).text());
  }
  void addStrayRows(std::string const& table, std::size_t known) {
    auto const rows = hardware_.rows(table);
    if (rows != known) lines_[table].insert(fmt::format("{} ROWS WRITTEN, {} ACCOUNTED FOR", rows, known));
  }

  SimulatedChip const& hardware_;
  std::map<StoreBase const*, std::vector<Asic::ChipTableReport>> parts_;
  Accounted accounted_;
  std::vector<RecordBase const*> keyless_;
  std::set<RecordBase const*> seen_;
  std::map<std::string, std::multiset<std::string>> lines_;
};

}  // namespace

std::string chipText(Asic::Chip const& chip, SimulatedChip const& hardware) { return ChipText(chip, hardware).text(); }

std::string difference(std::string const& first, std::string const& second) {
  std::map<std::string, int> lines;
  for (auto const& [text, count] : {std::pair(&first, 1), {&second, -1}}) {
    std::istringstream in(*text);
    for (std::string line; std::getline(in, line);) lines[line] += count;
  }
  std::string found;
  for (auto const& [line, count] : lines) {
    if (count != 0) found += (count > 0 ? "- " : "+ ") + line + '\n';
  }
  return found;
}

std::string tableOf(std::string const& chipText, std::string_view table) {
  auto const heading = '\n' + std::string(table) + '\n';
  auto const text = '\n' + chipText;
  auto const at = text.find(heading);
  if (at == std::string::npos) return "";
  std::string lines;
  for (auto from = at + heading.size(); text.compare(from, 2, "  ") == 0;) {
    auto const end = text.find('\n', from);
    lines += text.substr(from + 2, end - from - 1);
    from = end + 1;
  }
  return lines;
}

}  // namespace AgentTest
