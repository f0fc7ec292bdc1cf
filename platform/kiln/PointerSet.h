#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "platform/kiln/Hash.h"
#include "platform/kiln/PlaceIndex.h"

namespace Kiln {

/// Pointers to objects that hold their keys themselves, found by key.
///
/// They are in one array in the order in which they were added, where a removed one leaves a null that a later one
/// replaces. `KeyOf` returns the key of a pointer that is not null.
template <class Pointer, class Key, class KeyOf, class Hash = Kiln::Hash<Key>, class Equal = Kiln::Equal<Key>>
class PointerSet {
 public:
  using Pointers = std::vector<Pointer, Scree::SlabAllocator<Pointer>>;

  std::size_t size() const { return index_.size(); }
  bool empty() const { return size() == 0; }
  void reserve(std::size_t count) {
    index_.reserve(count);
    pointers_.reserve(count);
  }
  /// In order of addition, with nulls.
  Pointers const& all() const { return pointers_; }

  /// Null if there is none.
  Pointer const& find(Key const& key) const {
    static constexpr Pointer null{};
    auto const place = placeOf(key);
    if (place == PlaceIndex::none) return null;
    last_ = place;
    return pointers_[place];
  }
  /// The pointer of `key`, otherwise the one that `make()` returns; true if it was made. REQUIRES: `make` doesn't
  /// change this set. The reference is valid until the next change.
  template <class Make>
  std::pair<Pointer&, bool> findOrMake(Key const& key, Make const& make) {
    if (isLast(key)) return {pointers_[last_], false};
    auto const hash = hashOf(key);
    auto const found = placeOf(hash, key);
    bool const isNew = found == PlaceIndex::none;
    last_ = isNew ? put(hash, make()) : found;
    return {pointers_[last_], isNew};
  }
  /// Removes the pointer of `key` and returns it; null if there is none.
  Pointer take(Key const& key) {
    auto place = last_;
    if (isLast(key)) {
      index_.remove(place);
    } else {
      place = index_.take(hashOf(key), [&](Place at) { return isAt(at, key); });
      if (place == PlaceIndex::none) return Pointer{};
    }
    last_ = PlaceIndex::none;
    return std::exchange(pointers_[place], Pointer{});
  }
  /// Finds nothing any more; returns the pointers.
  Pointers takeAll() {
    last_ = PlaceIndex::none;
    index_.clear();
    return std::exchange(pointers_, {});
  }

 private:
  using Place = PlaceIndex::Place;

  static std::uint32_t hashOf(Key const& key) { return static_cast<std::uint32_t>(Hash{}(key)); }
  bool isAt(Place place, Key const& key) const { return Equal{}(KeyOf{}(pointers_[place]), key); }
  bool isLast(Key const& key) const { return last_ != PlaceIndex::none && isAt(last_, key); }
  Place placeOf(std::uint32_t hash, Key const& key) const {
    return index_.find(hash, [&](Place place) { return isAt(place, key); });
  }
  Place placeOf(Key const& key) const { return isLast(key) ? last_ : placeOf(hashOf(key), key); }
  Place put(std::uint32_t hash, Pointer&& pointer) {
    auto const place = index_.add(hash);
    if (place == pointers_.size()) {
      pointers_.push_back(std::move(pointer));
    } else {
      pointers_[place] = std::move(pointer);
    }
    return place;
  }

  PlaceIndex index_;
  Pointers pointers_;
  mutable Place last_ = PlaceIndex::none;  ///< Found or added last: work on one object looks it up again and again.
};

}  // namespace Kiln
