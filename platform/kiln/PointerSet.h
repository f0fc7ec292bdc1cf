#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "platform/kiln/Hash.h"

namespace Kiln {

/// Finds places in an array by the hash of what lies there: eight bytes a slot, open addressing, linear probing.
///
/// Holds neither elements nor keys: the caller compares. Growth reads no element, and a removal leaves no mark behind.
class PlaceIndex {
 public:
  using Place = std::uint32_t;
  static constexpr Place none = ~Place{0};

  /// Where a key is, or would be added. Valid until the index changes.
  struct Spot {
    Place place = none;
    std::size_t slot = 0;
  };

  std::size_t size() const { return size_; }
  void reserve(std::size_t places) {
    while (slots_.size() < slotsFor(places)) grow();
  }
  void clear() {
    slots_.clear();
    size_ = 0;
  }

  /// The place for which `isWanted(place)` among those of `hash`; `none` if there is none.
  template <class IsWanted>
  Place find(std::uint32_t hash, IsWanted const& isWanted) const {
    return slots_.empty() ? none : probe(hash, isWanted).place;
  }
  /// The same with room for an addition.
  template <class IsWanted>
  Spot findOrRoom(std::uint32_t hash, IsWanted const& isWanted) {
    if (slots_.size() < slotsFor(size_ + 1)) [[unlikely]]
      grow();
    return probe(hash, isWanted);
  }
  /// REQUIRES: nothing was found at `spot`, and the index has not changed since.
  void add(Spot spot, std::uint32_t hash, Place place) {
    slots_[spot.slot] = {hash, place};
    ++size_;
  }
  /// REQUIRES: `place` was added with `hash`.
  void remove(std::uint32_t hash, Place place) {
    auto gap = probe(hash, [place](Place one) { return one == place; }).slot;
    // Closes the gap: an element may move to it unless it would then lie before the slot of its hash.
    for (auto at = next(gap); slots_[at].place != none; at = next(at)) {
      if (distance(slots_[at].hash, at) < distance(gap, at)) continue;
      slots_[gap] = slots_[at];
      gap = at;
    }
    slots_[gap].place = none;
    --size_;
  }

 private:
  struct Slot {
    std::uint32_t hash = 0;
    Place place = none;
  };
  static constexpr std::size_t kFirstSlots = 4;

  /// At most two thirds of the slots are used.
  static std::size_t slotsFor(std::size_t places) { return places + places / 2; }
  std::size_t mask() const { return slots_.size() - 1; }
  std::size_t next(std::size_t slot) const { return (slot + 1) & mask(); }
  std::size_t distance(std::size_t from, std::size_t to) const { return (to - from) & mask(); }

  template <class IsWanted>
  Spot probe(std::uint32_t hash, IsWanted const& isWanted) const {
    auto const* const slots = slots_.data();
    for (auto at = hash & mask();; at = next(at)) {
      auto const& slot = slots[at];
      if (slot.place == none || (slot.hash == hash && isWanted(slot.place))) return {slot.place, at};
    }
  }
  [[gnu::noinline]] void grow() {
    auto const former = std::exchange(slots_, std::vector<Slot>(slots_.empty() ? kFirstSlots : slots_.size() * 2));
    for (auto const& slot : former) {
      if (slot.place != none) slots_[probe(slot.hash, [](Place) { return false; }).slot] = slot;
    }
  }

  std::vector<Slot> slots_;  ///< A power of two, or none.
  std::size_t size_ = 0;
};

/// Pointers to objects that hold their keys themselves, found by key.
///
/// They are in one array in the order in which they were added, where a removed one leaves a null that a later one
/// replaces. `KeyOf` returns the key of a pointer that is not null.
template <class Pointer, class Key, class KeyOf, class Hash = Kiln::Hash<Key>, class Equal = std::equal_to<Key>>
class PointerSet {
 public:
  std::size_t size() const { return index_.size(); }
  bool empty() const { return size() == 0; }
  void reserve(std::size_t count) {
    index_.reserve(count);
    pointers_.reserve(count);
  }
  /// In order of addition, with nulls.
  std::vector<Pointer> const& all() const { return pointers_; }

  /// Null if there is none.
  Pointer const& find(Key const& key) const {
    static constexpr Pointer null{};
    if (isLast(key)) return pointers_[last_];
    auto const place = index_.find(hashOf(key), [&](Place one) { return isAt(one, key); });
    if (place == PlaceIndex::none) return null;
    last_ = place;
    return pointers_[place];
  }
  /// The pointer of `key`, otherwise the one that `make()` returns, in one look-up; true if it was made. REQUIRES:
  /// `make` doesn't change this set. The reference is valid until the next change.
  template <class Make>
  std::pair<Pointer&, bool> findOrMake(Key const& key, Make const& make) {
    if (isLast(key)) return {pointers_[last_], false};
    auto const hash = hashOf(key);
    auto const spot = index_.findOrRoom(hash, [&](Place one) { return isAt(one, key); });
    if (spot.place != PlaceIndex::none) {
      last_ = spot.place;
      return {pointers_[last_], false};
    }
    last_ = put(make());
    index_.add(spot, hash, last_);
    return {pointers_[last_], true};
  }
  /// Removes the pointer of `key` and returns it; null if there is none.
  Pointer take(Key const& key) {
    auto const hash = hashOf(key);
    auto const place = isLast(key) ? last_ : index_.find(hash, [&](Place one) { return isAt(one, key); });
    if (place == PlaceIndex::none) return Pointer{};
    index_.remove(hash, place);
    holes_.push_back(place);
    last_ = PlaceIndex::none;
    return std::exchange(pointers_[place], Pointer{});
  }
  /// Finds nothing any more; returns the pointers.
  std::vector<Pointer> takeAll() {
    last_ = PlaceIndex::none;
    index_.clear();
    holes_.clear();
    return std::exchange(pointers_, {});
  }

 private:
  using Place = PlaceIndex::Place;

  static std::uint32_t hashOf(Key const& key) { return static_cast<std::uint32_t>(Hash{}(key)); }
  bool isAt(Place place, Key const& key) const { return Equal{}(KeyOf{}(pointers_[place]), key); }
  bool isLast(Key const& key) const { return last_ != PlaceIndex::none && isAt(last_, key); }
  Place put(Pointer&& pointer) {
    if (holes_.empty()) {
      pointers_.push_back(std::move(pointer));
      return static_cast<Place>(pointers_.size() - 1);
    }
    auto const place = holes_.back();
    holes_.pop_back();
    pointers_[place] = std::move(pointer);
    return place;
  }

  PlaceIndex index_;
  std::vector<Pointer> pointers_;
  std::vector<Place> holes_;
  mutable Place last_ = PlaceIndex::none;  ///< Found or added last: work on one object looks it up again and again.
};

}  // namespace Kiln
