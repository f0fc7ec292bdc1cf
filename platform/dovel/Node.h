#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/dovel/ThreadControl.h"
#include "platform/scree/Slab.h"

namespace Kiln {
class Type;
}  // namespace Kiln

namespace Dovel {

class Publisher;

/// Root of every reference-counted object: a reference count and two flags in one word.
///
/// created by `Dovel::make` (one reference, held by the creator) → referenced → last reference released: `lastUserGone`
/// runs while the object is still whole, then it is deleted. References that a constructor takes to its own object, and
/// those taken during deletion, are harmless: the former do not delete it, the latter do not revive it.
///
/// Threads: with `ThreadControl::tsp_` set, counts and flags may be read and changed on any thread. All else belongs to
/// the main thread: construction, deletion (a thread must not release the last reference), memory, which comes from the
/// slab allocator, and notification. Without `tsp_` everything is main thread only.
class Node {
 public:
  Node(Node const&) = delete;
  Node& operator=(Node const&) = delete;

  void useInc() const noexcept {
    if (ThreadControl::tsp_) [[unlikely]] {
      useIncShared();
    } else {
      ++word_;
    }
  }
  /// Releases a reference; the last one deletes the object.
  void useDec() const noexcept {
    auto const left = ThreadControl::tsp_ ? useDecShared() : --word_;
    if ((left & kCountMask) == 0) lastUserGoneImpl();
  }
  std::uint32_t useCount() const noexcept { return word() & kCountMask; }

  /// Whether this object is subscribed to what it watches.
  bool hasNotificationActive() const noexcept { return (word() & kNotificationActive) != 0; }
  virtual void hasNotificationActiveIs(bool active);

  /// A zombie handles no change; it waits for the release of its last reference.
  bool isZombie() const noexcept { return (word() & kZombie) != 0; }
  virtual void kilnDoZombieReactors(bool zombie);

  /// The publisher of this object's changes; null for an object that publishes none.
  virtual Publisher* publisher() const { return nullptr; }
  /// The description of the object's class.
  virtual Kiln::Type const& typeData() const = 0;

  /// How many nodes exist in this process: a stopped agent leaves as many as there were before it started.
  static std::size_t aliveCount() noexcept { return alive_; }

  static void* operator new(std::size_t size) { return Scree::slabAllocOrStdMalloc(size); }
  static void operator delete(void* memory, std::size_t size) { Scree::slabFreeOrStdFree(memory, size); }

 protected:
  Node() noexcept : Node(1) {}
  /// For a node that is part of another object: that object has no reference to it, so `references` is 0.
  explicit Node(std::uint32_t references) noexcept : word_(references) { ++alive_; }
  virtual ~Node() { --alive_; }

  /// Runs once, when the last reference was released and the object is still whole.
  virtual void lastUserGone() {}
  void nodeFlagSet(std::uint32_t flag, bool on) const noexcept;
  /// A class without a publisher reports no change.
  void kilnChanged(std::uint16_t, void const* = nullptr) const noexcept {}

  static constexpr std::uint32_t kNotificationActive = 0x20000000;
  static constexpr std::uint32_t kZombie = 0x40000000;

 private:
  static constexpr std::uint32_t kCountMask = 0x9fffffff;
  /// Added to the count during deletion, so that temporary references do not bring it to zero again.
  static constexpr std::uint32_t kDeleting = 0x10000000;

  void lastUserGoneImpl() const noexcept;
  // What other threads share, out of line: every source counts references, and few need <atomic>.
  [[gnu::cold]] void useIncShared() const noexcept;
  /// The word that is left.
  [[gnu::cold]] std::uint32_t useDecShared() const noexcept;
  /// A relaxed load: what `std::atomic_ref` does, without its header.
  std::uint32_t word() const noexcept { return __atomic_load_n(&word_, __ATOMIC_RELAXED); }

  mutable std::uint32_t word_;
  inline static std::size_t alive_ = 0;
};

}  // namespace Dovel
