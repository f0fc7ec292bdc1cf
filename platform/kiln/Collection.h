#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "platform/dovel/Ptr.h"
#include "platform/kiln/Hash.h"
#include "platform/kiln/PlaceIndex.h"
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

  template <class Map, class Element>
  class Iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = Element;
    using difference_type = std::ptrdiff_t;
    using pointer = Element*;
    using reference = Element&;

    Iterator() = default;
    Iterator(Map& map, Place place) : map_(&map), place_(place) {}
    reference operator*() const { return map_->array_[place_]; }
    pointer operator->() const { return &**this; }
    Iterator& operator++() {
      ++place_;
      skipUnused();
      return *this;
    }
    Iterator operator++(int) { return std::exchange(*this, std::next(*this)); }
    friend bool operator==(Iterator const& a, Iterator const& b) { return a.place_ == b.place_; }

   private:
    friend class HashMap;
    void skipUnused() {
      while (place_ < map_->index_.end() && !map_->index_.isUsed(place_)) ++place_;
    }

    Map* map_ = nullptr;
    Place place_ = 0;
  };

 public:
  using value_type = std::pair<K, V>;
  using iterator = Iterator<HashMap, value_type>;
  using const_iterator = Iterator<HashMap const, value_type const>;

  iterator begin() { return first<iterator>(*this); }
  iterator end() { return {*this, index_.end()}; }
  const_iterator begin() const { return first<const_iterator>(*this); }
  const_iterator end() const { return {*this, index_.end()}; }
  std::size_t size() const { return index_.size(); }
  bool empty() const { return size() == 0; }

  iterator find(K const& key) { return {*this, placeOrEnd(key)}; }
  const_iterator find(K const& key) const { return {*this, placeOrEnd(key)}; }
  void erase(iterator at) {
    index_.remove(at.place_);
    array_[at.place_].second = V{};
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
  template <class Iterator_, class Map>
  static Iterator_ first(Map& map) {
    Iterator_ at(map, 0);
    at.skipUnused();
    return at;
  }
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

  template <class Element>
  class Iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = Element;
    using difference_type = std::ptrdiff_t;
    using pointer = Element*;
    using reference = Element&;

    Iterator() = default;
    reference operator*() const { return (*pages_)[place_ / kPageSize]->elements[place_ % kPageSize]; }
    pointer operator->() const { return &**this; }
    Iterator& operator++() {
      ++place_;
      skipUnused();
      return *this;
    }
    Iterator operator++(int) { return std::exchange(*this, std::next(*this)); }
    friend bool operator==(Iterator const& a, Iterator const& b) { return a.place_ == b.place_; }

   private:
    friend class IdMap;
    Iterator(std::vector<Page*> const& pages, std::size_t place) : pages_(&pages), place_(place) {}
    void skipUnused() {
      while (place_ < pages_->size() * kPageSize && !((*pages_)[place_ / kPageSize]->used >> place_ % kPageSize & 1)) {
        ++place_;
      }
    }

    std::vector<Page*> const* pages_ = nullptr;
    std::size_t place_ = 0;
  };

 public:
  using value_type = std::pair<K, V>;
  using iterator = Iterator<value_type>;
  using const_iterator = Iterator<value_type const>;

  IdMap() = default;
  IdMap(IdMap const&) = delete;
  IdMap& operator=(IdMap const&) = delete;
  ~IdMap() {
    for (auto const* page : pages_.all()) delete page;
  }

  iterator begin() { return first<iterator>(); }
  iterator end() { return {pages_.all(), pages_.all().size() * kPageSize}; }
  const_iterator begin() const { return first<const_iterator>(); }
  const_iterator end() const { return {pages_.all(), pages_.all().size() * kPageSize}; }
  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }

  iterator find(K const& key) {
    auto const* const page = pageOf(key);
    return page ? iterator(pages_.all(), placeIn(*page, key)) : end();
  }
  const_iterator find(K const& key) const {
    auto const* const page = pageOf(key);
    return page ? const_iterator(pages_.all(), placeIn(*page, key)) : end();
  }
  void erase(iterator at) {
    pages_.all()[at.place_ / kPageSize]->used &= ~(std::uint64_t{1} << at.place_ % kPageSize);
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
    bool const isNew = !(page.used & bitOf(key));
    if (isNew) {
      page.used |= bitOf(key);
      page.elements[numberOf(key) % kPageSize] = {key, value};
      ++size_;
    }
    return {iterator(pages_.all(), placeIn(page, key)), isNew};
  }

 private:
  static std::uint32_t numberOf(K const& key) {
    if constexpr (requires { key.value(); }) {
      return key.value();
    } else {
      return key;
    }
  }
  static std::uint64_t bitOf(K const& key) { return std::uint64_t{1} << numberOf(key) % kPageSize; }
  static std::size_t placeIn(Page const& page, K const& key) {
    return std::size_t{page.place} * kPageSize + numberOf(key) % kPageSize;
  }
  /// The page that has `key`; null if none does.
  Page const* pageOf(K const& key) const {
    auto const* const page = pages_.find(numberOf(key) / kPageSize);
    return page && page->used & bitOf(key) ? page : nullptr;
  }
  template <class Iterator_>
  Iterator_ first() const {
    Iterator_ at(pages_.all(), 0);
    at.skipUnused();
    return at;
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
  class const_iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = Dovel::Ptr<V>;
    using difference_type = std::ptrdiff_t;
    using pointer = value_type const*;
    using reference = value_type const&;

    const_iterator() = default;
    reference operator*() const { return (*objects_)[place_]; }
    pointer operator->() const { return &**this; }
    const_iterator& operator++() {
      ++place_;
      skipHoles();
      return *this;
    }
    const_iterator operator++(int) { return std::exchange(*this, std::next(*this)); }
    friend bool operator==(const_iterator const& a, const_iterator const& b) { return a.place_ == b.place_; }

   private:
    friend class EntityMap;
    const_iterator(std::vector<Dovel::Ptr<V>> const& objects, std::size_t place) : objects_(&objects), place_(place) {
      skipHoles();
    }
    void skipHoles() {
      while (place_ < objects_->size() && !(*objects_)[place_]) ++place_;
    }

    std::vector<Dovel::Ptr<V>> const* objects_ = nullptr;
    std::size_t place_ = 0;
  };

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
  const_iterator begin() const { return {objects_.all(), 0}; }
  const_iterator end() const { return {objects_.all(), objects_.all().size()}; }
  std::size_t size() const { return objects_.size(); }
  bool empty() const { return objects_.empty(); }
  void reserve(std::size_t count) { objects_.reserve(count); }
  K const keyAt(const_iterator at) const { return KeyOfObject{}(*at); }

 private:
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
