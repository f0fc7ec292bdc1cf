#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "platform/dovel/ThreadControl.h"
#include "platform/scree/Slab.h"

namespace Kiln {
class Type;
}  // namespace Kiln

namespace Dovel {

class Publisher;

/// Root of every reference-counted object: a use count and two flags in one word.
///
/// The object goes with its last user: `lastUserGone` runs while it is still whole, then it is deleted. Uses taken and
/// dropped while it goes do no harm and do not bring it back.
/// Counts are plain unless `ThreadControl::tsp_` is set. Memory comes from the slab allocator.
class Node {
 public:
  Node(Node const&) = delete;
  Node& operator=(Node const&) = delete;

  void useInc() const noexcept {
    if (ThreadControl::tsp_) [[unlikely]] {
      std::atomic_ref(word_).fetch_add(1, std::memory_order_relaxed);
    } else {
      ++word_;
    }
  }
  void useDec() const noexcept {
    std::uint32_t left;
    if (ThreadControl::tsp_) [[unlikely]] {
      left = std::atomic_ref(word_).fetch_sub(1, std::memory_order_acq_rel) - 1;
    } else {
      left = --word_;
    }
    if ((left & kCountMask) == 0) lastUserGoneImpl();
  }
  std::uint32_t useCount() const noexcept { return word_ & kCountMask; }

  /// Whether this object listens to what it watches.
  bool hasNotificationActive() const noexcept { return (word_ & kNotificationActive) != 0; }
  virtual void hasNotificationActiveIs(bool active);

  /// A zombie handles nothing any more; it waits for its last user to go.
  bool isZombie() const noexcept { return (word_ & kZombie) != 0; }
  virtual void kilnDoZombieReactors(bool zombie);

  /// Where subscribers are told of changes, or null for an object that publishes none.
  virtual Publisher* publisher() const { return nullptr; }
  /// The description of the object's class.
  virtual Kiln::Type const& typeData() const = 0;

  /// How many nodes exist in this process: a stopped agent leaves as many as there were before it started.
  static std::size_t aliveCount() noexcept { return alive_; }

  static void* operator new(std::size_t size) { return Scree::slabAllocOrStdMalloc(size); }
  static void operator delete(void* memory, std::size_t size) { Scree::slabFreeOrStdFree(memory, size); }

 protected:
  Node() noexcept { ++alive_; }
  virtual ~Node() { --alive_; }

  /// Runs once, when the last user has gone and the object is still whole.
  virtual void lastUserGone() {}
  void nodeFlagSet(std::uint32_t flag, bool on) const noexcept { word_ = on ? (word_ | flag) : (word_ & ~flag); }
  /// A class without a publisher has nobody to tell of a change.
  void kilnChanged(std::uint16_t, void const* = nullptr) const noexcept {}

  static constexpr std::uint32_t kNotificationActive = 0x20000000;
  static constexpr std::uint32_t kZombie = 0x40000000;

 private:
  static constexpr std::uint32_t kCountMask = 0x9fffffff;
  /// Stands in the count while the object goes, so that passing users can't bring it to zero again.
  static constexpr std::uint32_t kGoing = 0x10000000;

  void lastUserGoneImpl() const noexcept;

  mutable std::uint32_t word_ = 0;
  inline static std::size_t alive_ = 0;
};

}  // namespace Dovel
