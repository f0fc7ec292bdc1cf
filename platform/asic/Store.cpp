#include "platform/asic/Store.h"

#include <algorithm>

#include "platform/kiln/Invariant.h"

namespace Asic {

std::string_view shortName(std::string_view name) {
  auto const at = name.rfind("::");
  return at == std::string_view::npos ? name : name.substr(at + 2);
}

RecordBase::RecordBase(StoreBase& store) : store_(&store) {
  store.useInc();
  weak().useInc();
}

RecordBase::~RecordBase() = default;

void RecordBase::operator delete(RecordBase* record, std::destroying_delete_t) {
  Dovel::Ptr<StoreBase> const store(&record->store());
  if (!record->goneBy) {
    store->lastUse(*record);
    record->weak().useDec();  // the standing entry's own; may come here again
  } else {
    store->useDec();
    store->recordFree(*record);
  }
}

StoreBase::StoreBase(Chip& chip, TableSpec const& tableShape)
    : table_(tableShape.table), name_(shortName(tableShape.table.name())), chip_(&chip), capacity_(Index::none) {
  parts_.reserve(tableShape.parts.size());
  for (auto const& layout : tableShape.parts) {
    auto& part = parts_.emplace_back(Part{.layout = layout, .id = chip.newTableId()});
    part.layout.base = chip.profile()->table(layout.table).base;
    capacity_ = std::min(capacity_, chip.driver().capacity(part.id, part.layout));
  }
  reserved_ = std::min(tableShape.reservedRows, capacity_);
  reservedHolders_.resize(reserved_);
  pool_ = Anvil::HBitmap(capacity_);
  pool_.setRange(0, reserved_);
}

StoreBase::~StoreBase() = default;

void StoreBase::report(std::vector<ChipTableReport>& out) const {
  for (auto const& part : parts_) {
    out.push_back({.name = std::string(part.layout.table),
                   .base = part.layout.base,
                   .rows = capacity_,
                   .used = used_,
                   .writes = part.writes,
                   .clears = part.clears,
                   .refused = part.refused,
                   .store = this});
  }
}

void StoreBase::responsesDrop() {
  for (auto& [number, waiting] : waiting_) waiting.response = {};
}

void StoreBase::chipGone() { chip_ = nullptr; }

std::optional<std::uint32_t> StoreBase::rowFind(std::uint32_t length) const {
  if (length == 1) return pool_.findClearBit();
  return length == 0 ? std::optional<std::uint32_t>() : pool_.findClearRange(length);
}

void StoreBase::rowTake(RecordBase& record, std::uint32_t length) {
  // Who came first is served first: a short block doesn't pass a long one that finds no room.
  if (!waiting_.empty()) [[unlikely]] {
    auto const& oldest = *waiting_.begin()->second.record;
    if (!oldest.hasRow() && !rowFind(this->length(oldest))) return;
  }
  if (auto const first = rowFind(length)) rowGive(record, *first, length);
}

void StoreBase::rowGive(RecordBase& record, std::uint32_t first, std::uint32_t length) {
  if (length == 1) {
    pool_.setBit(first);
  } else {
    pool_.setRange(first, length);
  }
  used_ += length;
  record.row = first;
}

void StoreBase::rowTakeAt(RecordBase& record, Index index) {
  record.fixedRow = true;
  if (index.value() >= capacity_) return;
  if (index.value() < reserved_) {
    auto& holder = reservedHolders_[index.value()];
    if (holder) {
      INVARIANT(!holder->keyed);
      holder->row = RecordBase::kNoRow;
      --used_;
    }
    holder = &record;
  } else {
    INVARIANT(!pool_.isSet(index.value()));
  }
  rowGive(record, index.value(), 1);
}

void StoreBase::rowBack(RecordBase& record) {
  auto const length = this->length(record);
  if (chip_) {
    for (auto& part : parts_) {
      for (auto row = record.row; row != record.row + length; ++row) {
        chip_->driver().clearRow(part.id, row + part.layout.base);
        ++part.clears;
      }
    }
  }
  if (record.row < reserved_) {
    reservedHolders_[record.row] = nullptr;
  } else if (length == 1) {
    pool_.clearBit(record.row);
  } else {
    pool_.clearRange(record.row, length);
  }
  used_ -= length;
  record.row = RecordBase::kNoRow;
}

EntryState StoreBase::rowWrite(RecordBase const& record, std::size_t part, std::uint32_t row,
                               std::span<std::uint64_t const> words) {
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

void StoreBase::conclude(RecordBase& record, EntryState outcome, WriteResponseFn const& response) {
  record.sent = outcome == EntryState::written;
  if (outcome == EntryState::full) [[unlikely]] {
    if (!record.hasRow()) {
      for (auto& part : parts_) ++part.refused;
    } else if (record.lastWrite == 0 && !record.fixedRow) {
      rowBack(record);  // nobody has stored its number yet
    }
    waitingIs(record, response);
  } else if (record.waiting) [[unlikely]] {
    waitingDel(record);
  }
  chip_->outcomeIs(record, outcome, response);
}

void StoreBase::waitingIs(RecordBase& record, WriteResponseFn const& response) {
  if (record.fixedRow && !record.hasRow()) return;
  if (!record.waiting) {
    record.waiting = true;
    record.waitingAs = ++lastWaiting_;
  }
  waiting_[record.waitingAs] = {&record, response};
}

void StoreBase::waitingDel(RecordBase& record) {
  record.waiting = false;
  waiting_.erase(record.waitingAs);
}

// A row has come free. Strictly first come, first served: the oldest that still finds no room keeps the others waiting.
void StoreBase::waitingServe() {
  while (!waiting_.empty()) {
    auto& record = *waiting_.begin()->second.record;
    auto const response = waiting_.begin()->second.response;
    auto const given = !record.hasRow();
    if (given) {
      auto const length = this->length(record);
      auto const first = rowFind(length);
      if (!first) return;
      rowGive(record, *first, length);
    }
    auto const outcome = sendAll(record);
    conclude(record, outcome, response);
    if (outcome == EntryState::full) {
      if (given) rowBack(record);
      return;
    }
    dependantsRewrite(record);
  }
}

void StoreBase::dependantsRewrite(RecordBase& target) {
  for (auto* const dependant : chip_->dependantsTake(target)) {
    if (!dependant->hasRow()) continue;
    auto& store = dependant->store();
    store.conclude(*dependant, store.sendSince(*dependant, target), {});
  }
}

void StoreBase::dependOn(RecordBase& target, RecordBase& record) {
  record.dependant = true;
  chip_->dependantIs(target, record);
}

void StoreBase::dependOff(RecordBase& target, RecordBase& record) {
  if (chip_) chip_->dependantDel(target, record);
}

void StoreBase::recordPin(RecordBase& record) {
  if (record.pinned) return;
  record.pinned = true;
  record.strong().useInc();
}

void StoreBase::keyRemoved(RecordBase& record) {
  keyErase(record);
  record.keyed = false;
  if (!record.pinned) return;
  record.pinned = false;
  record.strong().useDec();
}

void StoreBase::lastUse(RecordBase& record) {
  record.goneBy = true;
  if (record.keyed) keyErase(record);
  record.keyed = false;
  if (record.waiting) waitingDel(record);
  auto const hadRow = record.hasRow();
  if (hadRow) rowBack(record);
  record.state = EntryState::none;
  contentsDrop(record);
  if (hadRow && chip_ && !waiting_.empty()) [[unlikely]]
    waitingServe();
}

}  // namespace Asic
