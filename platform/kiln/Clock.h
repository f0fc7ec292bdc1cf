#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "platform/kiln/Seconds.h"

namespace Kiln {

/// The time base of timed work, in seconds since an arbitrary start; monotonic.
class Clock {
 public:
  virtual ~Clock() = default;
  virtual Seconds now() const = 0;
};

/// Time of the machine since the construction of the clock.
class RealClock final : public Clock {
 public:
  RealClock();
  Seconds now() const override;

 private:
  Seconds start_;
};

/// Time that passes only by `advance`.
class VirtualClock final : public Clock {
 public:
  Seconds now() const override { return now_; }
  /// REQUIRES: by >= 0.
  void advance(Seconds by);

 private:
  Seconds now_ = 0;
};

/// Configuration of an activity manager.
class ActivityManagerConfig {
 public:
  /// Never null; a real clock until another is set. Owned by the caller that set it.
  Clock* clock() const { return clock_; }
  /// Null: the real clock. REQUIRES: nothing is scheduled; the clock outlives its use here.
  void clockIs(Clock* clock);

 protected:
  ActivityManagerConfig();
  ~ActivityManagerConfig() = default;

 private:
  Clock* clock_;
};

/// Keeps work for a later time; the host's loop runs what is due.
///
/// Reads the clock. Work of equal time runs in the order in which it was scheduled. Main thread only. Work may schedule
/// and cancel; what it schedules runs at the earliest in the next `runDue`, so that a turn of the loop ends.
/// Owns the callables; each is released when it has run or was cancelled. Steady use allocates nothing.
class ActivityManager : public ActivityManagerConfig {
 public:
  /// Names one piece of scheduled work; never 0, not used again for another.
  using Id = std::uint64_t;

  ActivityManager() = default;
  ActivityManager(ActivityManager const&) = delete;
  ActivityManager& operator=(ActivityManager const&) = delete;

  /// Runs `work` once, `delay` seconds from now or as soon as the loop turns if that is not positive.
  Id schedule(Seconds delay, std::function<void()> work);
  /// Whether the work was still waiting; then it will not run.
  bool cancel(Id id);
  /// Runs what is due now in order of time, then of scheduling. Returns how many ran.
  std::size_t runDue();
  /// The clock's time at which the next work is due (it may be past); nothing if none is scheduled.
  std::optional<Seconds> nextDue() const;
  /// The number of pieces of work that are scheduled.
  std::size_t waiting() const { return slots_.size() - freeSlots_.size(); }

 private:
  struct Turn {
    Seconds due;
    Id id;
  };
  struct Slot {
    Id id = 0;  ///< 0: free.
    std::function<void()> work;
  };
  static bool later(Turn const& a, Turn const& b) { return a.due != b.due ? a.due > b.due : a.id > b.id; }
  Slot& slotOf(Id id);
  std::function<void()> release(Slot& slot);
  void dropCancelled();

  std::vector<Turn> turns_;  ///< A heap, the next on top. Cancelled work leaves its turn behind, but never on top.
  std::vector<Slot> slots_;
  std::vector<std::size_t> freeSlots_;
  std::uint64_t scheduled_ = 0;
};

/// The process's activity manager; never null, lives until the process ends.
ActivityManager* activityManager();

/// Puts a clock into the process's activity manager and the former back at its end.
class ClockScope {
 public:
  explicit ClockScope(Clock& clock) : former_(activityManager()->clock()) { activityManager()->clockIs(&clock); }
  ~ClockScope() { activityManager()->clockIs(former_); }
  ClockScope(ClockScope const&) = delete;
  ClockScope& operator=(ClockScope const&) = delete;

 private:
  Clock* former_;
};

}  // namespace Kiln
