#include "platform/asic/Store.h"

#include <algorithm>
#include <cstring>

#include "platform/kiln/Invariant.h"

namespace Asic {

std::string_view shortName(std::string_view name) {
  auto const at = name.rfind("::");
  return at == std::string_view::npos ? name : name.substr(at + 2);
}

RecordBase::~RecordBase() = default;

void RecordBase::operator delete(RecordBase* record, std::destroying_delete_t) {
  auto& store = record->store();
  if (!record->expired) {
    store.expire(*record);
    record->weak().useDec();  // the existing entry's own reference; may enter here again
  } else {
    store.freeRecord(*record);
    store.useDec();  // the record's reference, which has kept the store up to here
  }
}

StoreBase::StoreBase(Chip& chip, TableSpec const& described)
    : table_(described.table), name_(shortName(described.table.name())), chip_(&chip), capacity_(Index::none) {
  parts_.reserve(described.parts.size());
  for (auto const& layout : described.parts) {
    auto& part = parts_.emplace_back(Part{.layout = layout, .id = chip.newTableId()});
    part.layout.base = chip.profile()->table(layout.table).base;
    capacity_ = std::min(capacity_, chip.driver().capacity(part.id, part.layout));
  }
  reserved_ = std::min(described.reservedRows, capacity_);
  pool_ = Anvil::HBitmap(capacity_);
  pool_.setRange(0, reserved_);
}

StoreBase::~StoreBase() = default;

void StoreBase::report(std::vector<ChipTableReport>& out) const {
  for (auto const& part : parts_) {
    out.push_back({.name = std::string(part.layout.table),
                   .base = part.layout.base,
                   .rows = capacity(),
                   .used = used_,
                   .writes = part.writes,
                   .clears = part.clears,
                   .refused = rowless_ + part.refused,
                   .store = this});
  }
}

std::uint64_t StoreBase::refusedWrites() const {
  std::uint64_t sum = 0;
  for (auto const& part : parts_) sum += part.refused;
  return sum;
}

void StoreBase::forEachEntry(Kiln::FunctionRef<void(EntryView const&)> show) const {
  // Numbers within keys, such as those of addresses, by their value.
  std::vector<std::pair<std::string, RecordBase const*>> order;
  for (auto const* record : all()) order.emplace_back(EntryView(*record).key(), record);
  std::stable_sort(order.begin(), order.end(),
                   [](auto const& a, auto const& b) { return strverscmp(a.first.c_str(), b.first.c_str()) < 0; });
  for (auto const& [key, record] : order) show(EntryView(*record));
}

// Weak handles: removing one entry may be the end of another.
void StoreBase::removeAll() {
  auto order = all();
  auto const byRow = [](auto const* a, auto const* b) { return a->row < b->row; };
  if (!std::is_sorted(order.begin(), order.end(), byRow)) std::sort(order.begin(), order.end(), byRow);
  std::vector<EntryHandle::PtrConst> handles;
  handles.reserve(order.size());
  for (auto const* record : order) handles.emplace_back(&record->weak());
  for (auto const& handle : handles) {
    if (handle->record()->keyed) removeKey(*handle->record());
  }
}

void StoreBase::chipGone() { chip_ = nullptr; }

void StoreBase::hasSpaceIs(bool hasSpace) {
  hasSpace_ = hasSpace;
  retryWaiting();
}

// Rows.

void StoreBase::allocateRows(RecordBase& record) {
  if (!record.replaces && rowlessWait()) return;
  if (auto const first = findRows(length(record))) assignRows(record, *first);
}

std::optional<std::uint32_t> StoreBase::findRows(std::uint32_t length) const {
  if (!hasSpace_) return {};
  if (length == 1) return pool_.findClearBit();
  return length == 0 ? std::optional<std::uint32_t>() : pool_.findClearRange(length);
}

bool StoreBase::fits(RecordBase const& record) const {
  auto const length = this->length(record);
  return !record.fixedRow && length != 0 && length <= capacity_ - reserved_;
}

void StoreBase::assignRows(RecordBase& record, std::uint32_t first) {
  auto const length = this->length(record);
  pool_.setRange(first, length);
  used_ += length;
  record.row = first;
}

void StoreBase::allocateFixedRow(RecordBase& record, Index index) {
  record.fixedRow = true;
  if (index.value() >= capacity()) return;
  auto& owner = fixedRows_[index.value()];
  if (owner) {
    INVARIANT(!owner->keyed);
    displace(*owner);
  } else {
    INVARIANT(index.value() < reserved_ || !pool_.isSet(index.value()));
    pool_.setBit(index.value());
    ++used_;
  }
  owner = &record;
  record.row = index.value();
}

void StoreBase::displace(RecordBase& record) {
  if (record.keyed) eraseKey(record);
  record.keyed = false;
  if (record.waiting) dequeue(record);
  record.displaced = true;
}

bool StoreBase::releaseRows(RecordBase& record) {
  if (!record.hasRow()) return false;
  auto const [first, count] = record.displaced ? surplusRows(record) : RowRange{record.row, length(record)};
  record.row = RecordBase::kNoRow;
  if (count == 0) return false;
  if (chip_) {
    for (auto& part : parts_) {
      for (std::uint32_t i = 0; i < count; ++i) chip_->driver().clearRow(part.id, first + i + part.layout.base);
      part.clears += count;
    }
  }
  if (record.fixedRow) fixedRows_.erase(first);
  if (first >= reserved_) count == 1 ? pool_.clearBit(first) : pool_.clearRange(first, count);
  mostUsed_ = mostUsed();
  used_ -= count;
  return true;
}

// Outcomes and the responses that are kept.

void StoreBase::finishUnusual(RecordBase& record, EntryState outcome, WriteResponseFn& response, Report report) {
  if (!chip_) {
    record.state = EntryState::failed;
    return;
  }
  reportOutcome(record, outcome, response, report);
  keepResponse(record, response);
  if (outcome == EntryState::written) retryWaiting();
}

void StoreBase::reportOutcome(RecordBase& record, EntryState outcome, WriteResponseFn const& response, Report report) {
  record.sent = outcome == EntryState::written;
  if (outcome == EntryState::full) {
    refusedForRoom(record);
  } else if (record.waiting) {
    dequeue(record);
  }
  chip_->outcomeIs(record, outcome, WriteResponseFn(response), report);
}

void StoreBase::finishRewrite(RecordBase& record, EntryState outcome) {
  auto response = takeResponse(record);
  reportOutcome(record, outcome, response);
  keepResponse(record, response);
}

void StoreBase::refusedForRoom(RecordBase& record) {
  if (!record.hasRow()) {
    ++rowless_;
    if (!fits(record)) {
      if (record.waiting) dequeue(record);
      return;
    }
  }
  if (!record.waiting)
    enqueue(record, record.hasRow() ? Rank::refused : record.replaces ? Rank::replacing : Rank::arriving);
}

void StoreBase::keepResponse(RecordBase& record, WriteResponseFn& response) {
  if (record.waiting || record.dependant) {
    record.kept = true;
    std::swap(pending_[&record].response, response);
  } else {
    response = takeResponse(record);
  }
}

WriteResponseFn StoreBase::takeResponse(RecordBase& record) {
  auto const found = pending_.find(&record);
  if (found == pending_.end()) return {};
  auto response = std::move(found->second.response);
  if (!record.waiting && !record.dependant) {
    pending_.erase(found);
    record.kept = false;
  }
  return response;
}

void StoreBase::takeResponses(std::vector<WriteResponseFn>& out) {
  for (auto& [record, pending] : pending_) out.push_back(std::move(pending.response));
}

// The queue.

void StoreBase::enqueue(RecordBase& record, Rank rank) {
  record.waiting = true;
  record.kept = true;
  auto const place = firstPlace(rank) + ++lastPlace_;
  pending_[&record].place = place;
  queue_.emplace(place, &record);
}

void StoreBase::dequeue(RecordBase& record) {
  record.waiting = false;
  queue_.erase(pending_.at(&record).place);
}

void StoreBase::inheritPlace(RecordBase& record, RecordBase& former) {
  if (!former.waiting || former.hasRow()) return;
  auto const place = pending_.at(&former).place;
  dequeue(former);
  record.waiting = true;
  record.kept = true;
  record.replaces = former.replaces;
  pending_[&record].place = place;
  queue_.emplace(place, &record);
}

void StoreBase::retryWaiting() {
  if (!chip_) return;
  retryRefused();
  for (;;) {
    auto const oldest = queue_.lower_bound(firstPlace(Rank::replacing));
    if (oldest == queue_.end()) return;
    auto& record = *oldest->second;
    auto const first = findRows(length(record));
    if (!first) return;
    dequeue(record);
    assignRows(record, *first);
    finishRewrite(record, sendAll(record));
    rewriteDependants(record);
  }
}

// One that the chip refuses again is queued behind the others: it waits for something else, and must not block them.
void StoreBase::retryRefused() {
  while (!queue_.empty() && queue_.begin()->first < firstPlace(Rank::replacing)) {
    auto& record = *queue_.begin()->second;
    auto const outcome = sendAll(record);
    if (outcome == EntryState::full) {
      dequeue(record);
      enqueue(record, Rank::refused);
      return;
    }
    finishRewrite(record, outcome);
  }
}

void StoreBase::rewriteDependants(RecordBase& target) {
  for (auto* const dependant : chip_->dependantsTake(target)) {
    auto& store = dependant->store();
    dependant->dependant = store.refersToRowless(*dependant);
    if (dependant->hasRow() && !dependant->displaced)
      store.finishRewrite(*dependant, store.sendSince(*dependant, target));
  }
}

void StoreBase::addDependant(RecordBase& target, RecordBase& record) {
  if (!chip_) return;
  record.dependant = true;
  chip_->dependantIs(target, record);
}

void StoreBase::removeDependant(RecordBase& target, RecordBase& record) {
  if (chip_) chip_->dependantDel(target, record);
}

// Life and end of a record.

void StoreBase::pin(RecordBase& record) {
  if (record.pinned) return;
  record.pinned = true;
  record.strong().useInc();
}

void StoreBase::removeKey(RecordBase& record) {
  eraseKey(record);
  record.keyed = false;
  auto const response = record.kept ? takeResponse(record) : WriteResponseFn();
  if (!record.pinned) return;
  record.pinned = false;
  record.strong().useDec();
}

void StoreBase::expire(RecordBase& record) {
  record.expired = true;
  if (record.keyed) eraseKey(record);
  record.keyed = false;
  auto const left = record.waiting;
  if (left) dequeue(record);
  auto const released = releaseRows(record);
  record.state = EntryState::none;
  dropContents(record);
  auto const response = record.kept ? takeResponse(record) : WriteResponseFn();
  if ((left || released) && !queue_.empty()) retryWaiting();
}

}  // namespace Asic
