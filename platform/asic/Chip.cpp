#include "platform/asic/Chip.h"

#include <algorithm>

#include "platform/asic/Store.h"
#include "platform/kiln/Invariant.h"

namespace Asic {

Chip::Chip(Dovel::Ptr<ChipProfile const> profile, std::unique_ptr<ChipDriver> driver)
    : profile_(std::move(profile)), driver_(std::move(driver)), completion_(driver_->completion()) {
  INVARIANT(profile_);
}

Chip::~Chip() {
  stop();
  // Stores hold uses of each other's entries: all learn that the chip has gone before the first gives up an entry's
  // row.
  for (auto& [key, store] : stores_) store->chipGone();
  for (auto& [key, store] : stores_) store->removeAll();
}

std::size_t Chip::deliver() {
  std::size_t delivered = 0;
  for (auto left = queue_.size() - head_; left > 0; --left) delivered += deliverFront() ? 1 : 0;
  return delivered;
}

bool Chip::deliverOne() {
  while (head_ < queue_.size()) {
    if (deliverFront()) return true;
  }
  return false;
}

// A response may write, and so the queue may grow while an outcome is delivered: it is taken out first.
bool Chip::deliverFront() {
  auto const outcome = std::move(queue_[head_]);
  if (++head_ == queue_.size()) {
    queue_.clear();
    head_ = 0;
  } else if (head_ >= kCompactAt && head_ * 2 > queue_.size()) {
    queue_.erase(queue_.begin(), queue_.begin() + static_cast<std::ptrdiff_t>(head_));
    head_ = 0;
  }
  if (!holds_.empty() && isHeld(outcome)) {
    held_.push_back(outcome);
    return false;
  }
  settle(outcome);
  if (outcome.entry->record()->keyed) outcome.response(outcome.state);
  return true;
}

bool Chip::isHeld(Outcome const& outcome) const {
  return std::find(holds_.begin(), holds_.end(), outcome.entry->tableName()) != holds_.end();
}

void Chip::hold(std::string_view table) { holds_.emplace_back(table); }

void Chip::release(std::string_view table) {
  std::erase(holds_, table);
  // What was held is older than what is queued.
  auto const free = std::stable_partition(held_.begin(), held_.end(), [&](auto const& o) { return isHeld(o); });
  queue_.erase(queue_.begin(), queue_.begin() + static_cast<std::ptrdiff_t>(head_));
  head_ = 0;
  queue_.insert(queue_.begin(), std::make_move_iterator(free), std::make_move_iterator(held_.end()));
  held_.erase(free, held_.end());
}

void Chip::release() {
  holds_.clear();
  release(std::string_view());
}

void Chip::stop() {
  // Destroying a response may destroy an object that drops entries, which may not find the queue half gone.
  auto const queue = std::exchange(queue_, {});
  auto const held = std::exchange(held_, {});
  for (auto at = std::exchange(head_, 0); at < queue.size(); ++at) settle(queue[at]);
  for (auto const& outcome : held) settle(outcome);
  for (auto& [key, store] : stores_) store->responsesDrop();
}

void Chip::settle(Outcome const& outcome) {
  auto& record = *outcome.entry->record();
  if (record.lastWrite == outcome.number && !record.goneBy) record.state = outcome.state;
}

std::vector<StoreBase const*> Chip::stores() const {
  std::vector<StoreBase const*> all;
  for (auto const& [key, store] : stores_) all.push_back(store.get());
  return all;
}

StoreBase const* Chip::store(std::string_view name) const {
  for (auto const& [key, store] : stores_) {
    if (store->name() == name) return store.get();
  }
  return nullptr;
}

std::vector<ChipTableReport> Chip::tables() const {
  std::vector<ChipTableReport> all;
  for (auto const& [key, store] : stores_) store->report(all);
  return all;
}

std::uint64_t Chip::writes() const {
  std::uint64_t sum = 0;
  for (auto const& report : tables()) sum += report.writes;
  return sum;
}

Dovel::Ptr<StoreBase> const& Chip::storeOf(Kiln::Type const& table, UnitId unit, MakeStore make) {
  std::pair const key(&table, unit.value());
  for (auto const& [present, store] : stores_) {
    if (present == key) return store;
  }
  return stores_.emplace_back(key, make(*this, unit)).second;
}

void Chip::outcomeIs(RecordBase& record, EntryState outcome, WriteResponseFn const& response) {
  record.lastWrite = ++lastWrite_;
  if (completion_ == Completion::direct) {
    record.state = outcome;
    if (!response) return;
  } else {
    record.state = EntryState::inProgress;
  }
  queue_.push_back({EntryHandle::PtrConst(&record.weak()), response, lastWrite_, outcome});
}

void Chip::dependantIs(RecordBase& target, RecordBase& dependant) {
  auto& all = dependants_[&target];
  if (std::find(all.begin(), all.end(), &dependant) == all.end()) all.push_back(&dependant);
}

void Chip::dependantDel(RecordBase& target, RecordBase& dependant) {
  auto const found = dependants_.find(&target);
  if (found == dependants_.end()) return;
  std::erase(found->second, &dependant);
  if (found->second.empty()) dependants_.erase(found);
}

std::vector<RecordBase*> Chip::dependantsTake(RecordBase& target) {
  auto const found = dependants_.find(&target);
  if (found == dependants_.end()) return {};
  auto taken = std::move(found->second);
  dependants_.erase(found);
  return taken;
}

}  // namespace Asic
