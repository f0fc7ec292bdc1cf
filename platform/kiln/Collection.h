#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "platform/dovel/Ptr.h"
#include "platform/kiln/Hash.h"
#include "platform/kiln/PlaceIndex.h"
#include "platform/kiln/PlaceIterator.h"
#include "platform/kiln/PointerSet.h"
#include "platform/kiln/Text.h"
#include "platform/scree/Slab.h"

namespace Kiln {

// In all these collections the element under an iterator may be removed; the next increment reaches the next one.

/// A keyed collection of values in one array. Iteration is in the order of addition, but that a later element takes the
/// place of a removed one, and tolerates additions too.
template <class K, class V>
class HashMap {
  using Place = PlaceIndex::Place;

 public:
  using value_type = std::pair<K, V>;
  using iterator = PlaceIterator<HashMap, value_type>;
  using const_iterator = PlaceIterator<HashMap const, value_type const>;

  iterator begin() { return iterator::first(*this); }
  iterator end() { return {*this, endPlace()}; }
  const_iterator begin() const { return const_iterator::first(*this); }
  const_iterator end() const { return {*this, endPlace()}; }
  std::size_t size() const { return index_.size(); }
  bool empty() const { return size() == 0; }

  iterator find(K const& key) { return {*this, placeOrEnd(key)}; }
  const_iterator find(K const& key) const { return {*this, placeOrEnd(key)}; }
  void erase(iterator at) {
    index_.remove(static_cast<Place>(at.place()));
    at->second = V{};
  }
  std::pair<iterator, bool> try_emplace(K const& key, V const& value = {}) {
    auto const hash = hashOf(key);
    auto place = placeOf(hash, key);
    if (place != PlaceIndex::none) return {{*this, place}, false};
    place = index_.add(hash);
    if (place == array_.size()) {
      array_.emplace_back(key, value);
    } else {
      array_[place] = {key, value};
    }
    return {{*this, place}, true};
  }
  V& operator[](K const& key) { return try_emplace(key).first->second; }
  void clear() {
    index_.clear();
    array_.clear();
  }

 private:
  template <class, class>
  friend class PlaceIterator;

  value_type& elementAt(std::size_t place) { return array_[place]; }
  value_type const& elementAt(std::size_t place) const { return array_[place]; }
  bool isUsed(std::size_t place) const { return index_.isUsed(static_cast<Place>(place)); }
  std::size_t endPlace() const { return index_.end(); }
  static std::uint32_t hashOf(K const& key) { return static_cast<std::uint32_t>(Hash<K>{}(key)); }
  Place placeOf(std::uint32_t hash, K const& key) const {
    return index_.find(hash, [&](Place place) { return array_[place].first == key; });
  }

  Place placeOrEnd(K const& key) const {
    auto const place = placeOf(hashOf(key), key);
    return place < index_.end() ? place : index_.end();
  }

  PlaceIndex index_;
  std::vector<value_type> array_;
};

/// A keyed collection of values whose keys are numbers or ids that are assigned one after the other: pages of 64
/// elements, found by hash. Iteration is by pages in the order of addition.
template <class K, class V>
class IdMap {
  static constexpr std::uint32_t kPageSize = 64;
  struct Page {
    std::uint32_t number;
    std::uint32_t place;     ///< Among the pages.
    std::uint64_t used = 0;  ///< A bit for each element.
    std::array<std::pair<K, V>, kPageSize> elements{};
  };
  struct NumberOf {
    std::uint32_t operator()(Page const* page) const { return page->number; }
  };
  using Pages = PointerSet<Page*, std::uint32_t, NumberOf>;

 public:
  using value_type = std::pair<K, V>;
  using iterator = PlaceIterator<IdMap, value_type>;
  using const_iterator = PlaceIterator<IdMap const, value_type const>;

  IdMap() = default;
  IdMap(IdMap const&) = delete;
  IdMap& operator=(IdMap const&) = delete;
  ~IdMap() {
    for (auto const* page : pages_.all()) delete page;
  }

  iterator begin() { return iterator::first(*this); }
  iterator end() { return {*this, endPlace()}; }
  const_iterator begin() const { return const_iterator::first(*this); }
  const_iterator end() const { return {*this, endPlace()}; }
  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }

  iterator find(K const& key) { return {*this, placeOrEnd(key)}; }
  const_iterator find(K const& key) const { return {*this, placeOrEnd(key)}; }
  void erase(iterator at) {
    pageAt(at.place()).used &= ~bitAt(at.place());
    *at = {};
    --size_;
  }
  std::pair<iterator, bool> try_emplace(K const& key, V const& value = {}) {
    auto const number = numberOf(key) / kPageSize;
    auto& page =
        *pages_
             .findOrMake(number,
                         [&] { return new Page{.number = number, .place = static_cast<std::uint32_t>(pages_.size())}; })
             .first;
    bool const isNew = !(page.used & bitAt(numberOf(key)));
    if (isNew) {
      page.used |= bitAt(numberOf(key));
      page.elements[numberOf(key) % kPageSize] = {key, value};
      ++size_;
    }
    return {iterator(*this, placeIn(page, key)), isNew};
  }

 private:
  template <class, class>
  friend class PlaceIterator;

  value_type& elementAt(std::size_t place) const { return pageAt(place).elements[place % kPageSize]; }
  bool isUsed(std::size_t place) const { return pageAt(place).used & bitAt(place); }
  std::size_t endPlace() const { return pages_.all().size() * kPageSize; }

  static std::uint32_t numberOf(K const& key) {
    if constexpr (requires { key.value(); }) {
      return key.value();
    } else {
      return key;
    }
  }
  static std::uint64_t bitAt(std::size_t place) { return std::uint64_t{1} << place % kPageSize; }
  Page& pageAt(std::size_t place) const { return *pages_.all()[place / kPageSize]; }
  static std::size_t placeIn(Page const& page, K const& key) {
    return std::size_t{page.place} * kPageSize + numberOf(key) % kPageSize;
  }
  std::size_t placeOrEnd(K const& key) const {
    auto const* const page = pages_.find(numberOf(key) / kPageSize);
    return page && page->used & bitAt(numberOf(key)) ? placeIn(*page, key) : endPlace();
  }

  Pages pages_;
  std::size_t size_ = 0;
};

/// A keyed collection of a handful of values in one sorted array; an empty one is three words and owns no memory.
///
/// The array descends and is iterated from its end: removing the element under an iterator moves only those before it.
template <class K, class V>
class SmallMap {
 public:
  using value_type = std::pair<K, V>;
  using iterator = std::reverse_iterator<value_type*>;
  using const_iterator = std::reverse_iterator<value_type const*>;

  iterator begin() { return iterator(array_.data() + array_.size()); }
  iterator end() { return iterator(array_.data()); }
  const_iterator begin() const { return const_iterator(array_.data() + array_.size()); }
  const_iterator end() const { return const_iterator(array_.data()); }
  std::size_t size() const { return array_.size(); }
  bool empty() const { return array_.empty(); }

  iterator find(K const& key) { return found(begin(), end(), key); }
  const_iterator find(K const& key) const { return found(begin(), end(), key); }
  void erase(iterator at) { array_.erase(array_.begin() + (std::to_address(at.base()) - 1 - array_.data())); }
  std::pair<iterator, bool> try_emplace(K const& key, V const& value) {
    if (auto const found = find(key); found != end()) return {found, false};
    if (array_.empty()) array_.reserve(1);
    auto after = array_.begin();
    while (after != array_.end() && !(after->first < key)) ++after;
    return {iterator(std::to_address(array_.emplace(after, key, value)) + 1), true};
  }

 private:
  // By hand: for one or two elements the unrolled search of the standard library costs several times as much.
  template <class Iterator>
  static Iterator found(Iterator at, Iterator end, K const& key) {
    while (at != end && !(at->first == key)) ++at;
    return at;
  }

  std::vector<value_type, Scree::SlabAllocator<value_type>> array_;
};

/// Objects found by a key that they hold themselves.
///
/// Iteration is in the order of addition, but that a later object takes the place of a removed one, and tolerates
/// additions too.
template <class K, class V, auto Key>
class EntityMap {
  struct KeyOfObject {
    decltype(auto) operator()(Dovel::Ptr<V> const& object) const { return (object.get()->*Key)(); }
  };

 public:
  using const_iterator = PlaceIterator<EntityMap const, Dovel::Ptr<V> const>;

  EntityMap() = default;
  EntityMap(EntityMap const&) = delete;
  EntityMap& operator=(EntityMap const&) = delete;
  /// What is looked up here while the objects are deleted is not found.
  ~EntityMap() { objects_.takeAll(); }

  /// Null if there is none.
  Dovel::Ptr<V> const& at(K const& key) const { return objects_.find(key); }
  /// The object of `key`, otherwise the one that `make()` returns; true if it was made. REQUIRES: `make` changes
  /// nothing here. The reference is valid until the next change.
  template <class Make>
  std::pair<Dovel::Ptr<V> const&, bool> findOrMake(K const& key, Make const& make) {
    return objects_.findOrMake(key, make);
  }
  /// Adds `value` in place of the object with its key. Returns that object: null if there was none, `value` itself if
  /// it was here already.
  Dovel::Ptr<V> assign(Dovel::Ptr<V> const& value) {
    auto const [object, isNew] = objects_.findOrMake(KeyOfObject{}(value), [&] { return value; });
    return isNew ? nullptr : std::exchange(object, value);
  }
  Dovel::Ptr<V> take(K const& key) { return objects_.take(key); }
  const_iterator begin() const { return const_iterator::first(*this); }
  const_iterator end() const { return {*this, endPlace()}; }
  std::size_t size() const { return objects_.size(); }
  bool empty() const { return objects_.empty(); }
  void reserve(std::size_t count) { objects_.reserve(count); }
  K const keyAt(const_iterator at) const { return KeyOfObject{}(*at); }

 private:
  template <class, class>
  friend class PlaceIterator;

  Dovel::Ptr<V> const& elementAt(std::size_t place) const { return objects_.all()[place]; }
  bool isUsed(std::size_t place) const { return elementAt(place) != nullptr; }
  std::size_t endPlace() const { return objects_.all().size(); }

  PointerSet<Dovel::Ptr<V>, K, KeyOfObject> objects_;
};

template <class Map>
using KeyOf = std::remove_cvref_t<decltype(std::declval<Map const&>().begin()->first)>;

template <class Map>
std::vector<KeyOf<Map>> keysOf(Map const& map) {
  std::vector<KeyOf<Map>> keys;
  keys.reserve(map.size());
  for (auto const& element : map) keys.push_back(element.first);
  return keys;
}
template <class K, class V, auto Key>
std::vector<K> keysOf(EntityMap<K, V, Key> const& map) {
  std::vector<K> keys;
  keys.reserve(map.size());
  for (auto const& value : map) keys.push_back((value.get()->*Key)());
  return keys;
}

/// Calls `handle(key, object)` for each object of `map`; handlers may add and remove. An object that is removed before
/// its turn is passed over, one that is added during the walk is not visited.
template <class K, class V, auto Key, class F>
void forEachKey(EntityMap<K, V, Key> const& map, F&& handle) {
  for (auto const& key : keysOf(map)) {
    if (Dovel::Ptr<V> const object = map.at(key)) handle(key, object);
  }
}

namespace Impl {

template <class Map, class K>
auto const& valueOrDefault(Map const& map, K const& key) {
  static std::remove_cvref_t<decltype(map.begin()->second)> const none{};
  auto const found = map.find(key);
  return found == map.end() ? none : found->second;
}

/// Makes `value` the value of `key` and puts the one that it replaces into `former`. False if it is the value already.
template <class Map, class K, class V>
bool assign(Map& map, K const& key, V const& value, V& former) {
  auto const [at, inserted] = map.try_emplace(key, value);
  if (inserted) return true;
  if (at->second == value) return false;
  former = std::exchange(at->second, value);
  return true;
}

}  // namespace Impl

}  // namespace Kiln
