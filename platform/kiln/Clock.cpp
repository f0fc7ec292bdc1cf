#include "platform/kiln/Clock.h"

#include <algorithm>
#include <chrono>

#include "platform/kiln/Invariant.h"

namespace Kiln {

namespace {

Seconds machineTime() {
  return std::chrono::duration<Seconds>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

Clock* realClock() {
  static auto* const clock = new RealClock;
  return clock;
}

// An id is the slot in its low bits and the number of the scheduling above: unique, and in the order of scheduling.
constexpr unsigned slotBits = 24;
constexpr ActivityManager::Id slotMask = (ActivityManager::Id{1} << slotBits) - 1;

}  // namespace

RealClock::RealClock() : start_(machineTime()) {}

Seconds RealClock::now() const { return machineTime() - start_; }

void VirtualClock::advance(Seconds by) {
  INVARIANT(by >= 0);
  now_ += by;
}

ActivityManagerConfig::ActivityManagerConfig() : clock_(realClock()) {}

void ActivityManagerConfig::clockIs(Clock* clock) { clock_ = clock ? clock : realClock(); }

ActivityManager::Slot& ActivityManager::slotOf(Id id) { return slots_[id & slotMask]; }

ActivityManager::Id ActivityManager::schedule(Seconds delay, std::function<void()> work) {
  if (freeSlots_.empty()) {
    freeSlots_.push_back(slots_.size());
    slots_.emplace_back();
  }
  std::size_t const index = freeSlots_.back();
  INVARIANT(index <= slotMask);
  Id const id = ++scheduled_ << slotBits | index;
  turns_.push_back({clock()->now() + std::max(delay, Seconds{0}), id});
  std::push_heap(turns_.begin(), turns_.end(), later);
  freeSlots_.pop_back();
  slots_[index] = {id, std::move(work)};
  return id;
}

std::function<void()> ActivityManager::release(Slot& slot) {
  freeSlots_.push_back(slot.id & slotMask);
  slot.id = 0;
  // Returned, not destroyed here: destructors of what the callable owns may call this object.
  return std::exchange(slot.work, nullptr);
}

void ActivityManager::dropCancelled() {
  auto const isCancelled = [this](Turn const& turn) { return slotOf(turn.id).id != turn.id; };
  if (turns_.size() > 2 * waiting() + 64) {
    std::erase_if(turns_, isCancelled);
    std::make_heap(turns_.begin(), turns_.end(), later);
  }
  while (!turns_.empty() && isCancelled(turns_.front())) {
    std::pop_heap(turns_.begin(), turns_.end(), later);
    turns_.pop_back();
  }
}

bool ActivityManager::cancel(Id id) {
  if ((id & slotMask) >= slots_.size() || slotOf(id).id != id || id == 0) return false;
  auto const work = release(slotOf(id));
  dropCancelled();
  return true;
}

std::size_t ActivityManager::runDue() {
  Seconds const now = clock()->now();
  Id const afterLast = (scheduled_ + 1) << slotBits;
  std::size_t ran = 0;
  // Work that is scheduled below is due at `now` at the earliest and is left to the next call.
  while (!turns_.empty() && turns_.front().due <= now && turns_.front().id < afterLast) {
    auto const work = release(slotOf(turns_.front().id));
    dropCancelled();
    ++ran;
    work();
  }
  return ran;
}

std::optional<Seconds> ActivityManager::nextDue() const {
  if (turns_.empty()) return std::nullopt;
  return turns_.front().due;
}

ActivityManager* activityManager() {
  // Never destroyed: callables may refer to objects that are destroyed before it when the process ends.
  static auto* const manager = new ActivityManager;
  return manager;
}

}  // namespace Kiln
