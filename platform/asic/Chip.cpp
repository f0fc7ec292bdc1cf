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
  // Stores refer to each other's entries: none may write for another that has been emptied already.
  for (auto& [key, store] : stores_) store->chipGone();
  for (auto& [key, store] : stores_) store->removeAll();
}

// A response may do anything: write, deliver, stop the chip, release the last reference to it.
std::size_t Chip::deliver() {
  Dovel::Ptr<Chip> const alive(this);
  auto const last = lastWrite_;
  std::size_t delivered = 0;
  while (head_ < queue_.size() && !isLater(queue_[head_].number, last)) delivered += deliverFront() ? 1 : 0;
  compact();
  return delivered;
}

bool Chip::deliverOne() {
  Dovel::Ptr<Chip> const alive(this);
  bool delivered = false;
  while (!delivered && head_ < queue_.size()) delivered = deliverFront();
  compact();
  return delivered;
}

void Chip::compact() {
  if (head_ == queue_.size()) {
    queue_.clear();
    head_ = 0;
  } else if (head_ >= kCompactAt && head_ * 2 > queue_.size()) {
    queue_.erase(queue_.begin(), queue_.begin() + static_cast<std::ptrdiff_t>(head_));
    head_ = 0;
  }
}

// The outcome is taken out first: the queue may change while it is delivered.
bool Chip::deliverFront() {
  auto outcome = std::move(queue_[head_++]);
  if (!holds_.empty() && isHeld(outcome)) {
    held_.push_back(std::move(outcome));
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

// Destroying a response may do what calling one may: all are taken out before the first is destroyed.
void Chip::stop() {
  auto const queue = std::exchange(queue_, {});
  auto const held = std::exchange(held_, {});
  for (auto at = std::exchange(head_, 0); at < queue.size(); ++at) settle(queue[at]);
  for (auto const& outcome : held) settle(outcome);
  std::vector<WriteResponseFn> responses;
  for (auto& [key, store] : stores_) store->takeResponses(responses);
}

void Chip::settle(Outcome const& outcome) {
  auto& record = *outcome.entry->record();
  if (record.lastWrite == outcome.number && !record.expired) record.state = outcome.state;
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

void Chip::hasSpaceIs(std::string_view table, bool hasSpace) {
  for (auto const& [key, store] : stores_) {
    if (store->name() == table) store->hasSpaceIs(hasSpace);
  }
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

void Chip::dependantIs(RecordBase& target, RecordBase& dependant) {
  dependants_.try_emplace({&target, &dependant}, ++lastDependant_);
}

void Chip::dependantDel(RecordBase& target, RecordBase& dependant) { dependants_.erase({&target, &dependant}); }

std::vector<RecordBase*> Chip::dependantsTake(RecordBase& target) {
  auto const first = dependants_.lower_bound({&target, nullptr});
  auto last = first;
  std::vector<std::pair<std::uint64_t, RecordBase*>> byAge;
  for (; last != dependants_.end() && last->first.first == &target; ++last)
    byAge.emplace_back(last->second, last->first.second);
  dependants_.erase(first, last);
  std::sort(byAge.begin(), byAge.end());
  std::vector<RecordBase*> taken;
  for (auto const& [age, dependant] : byAge) taken.push_back(dependant);
  return taken;
}

}  // namespace Asic
