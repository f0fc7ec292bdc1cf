#pragma once

#include <algorithm>
#include <boost/unordered/unordered_flat_map.hpp>
#include <boost/unordered/unordered_flat_set.hpp>
#include <utility>
#include <vector>

#include "platform/dovel/Ptr.h"
#include "platform/kiln/Hash.h"
#include "platform/kiln/Text.h"
#include "platform/scree/Slab.h"

namespace Kiln {

/// A keyed collection of values. The order of iteration is not specified.
template <class K, class V>
using HashMap = boost::unordered_flat_map<K, V, Hash<K>>;

/// A keyed collection of a handful of values in one sorted array; an empty one is three words and owns no memory.
template <class K, class V>
class SmallMap {
 public:
  using value_type = std::pair<K, V>;
  using Array = std::vector<value_type, Scree::SlabAllocator<value_type>>;
  using iterator = typename Array::iterator;
  using const_iterator = typename Array::const_iterator;

  iterator begin() { return array_.begin(); }
  iterator end() { return array_.end(); }
  const_iterator begin() const { return array_.begin(); }
  const_iterator end() const { return array_.end(); }
  std::size_t size() const { return array_.size(); }
  bool empty() const { return array_.empty(); }

  iterator find(K const& key) {
    auto const at = lower(array_, key);
    return at != end() && at->first == key ? at : end();
  }
  const_iterator find(K const& key) const { return const_cast<SmallMap*>(this)->find(key); }
  void erase(iterator at) { array_.erase(at); }
  std::pair<iterator, bool> emplace(K const& key, V const& value) {
    if (array_.empty()) array_.reserve(1);  // before `at`, which it would invalidate
    auto const at = lower(array_, key);
    if (at != end() && at->first == key) return {at, false};
    return {array_.emplace(at, key, value), true};
  }

 private:
  static iterator lower(Array& array, K const& key) {
    return std::lower_bound(array.begin(), array.end(), key, [](auto const& a, K const& b) { return a.first < b; });
  }

  Array array_;
};

/// Objects found by a key that they hold themselves: the table keeps a pointer an element and no copy of the key.
template <class K, class V, auto Key>
class EntityMap {
  struct KeyHash {
    using is_transparent = void;
    using is_avalanching = void;
    std::size_t operator()(K const& key) const { return Hash<K>{}(key); }
    std::size_t operator()(Dovel::Ptr<V> const& value) const { return Hash<K>{}((value.get()->*Key)()); }
  };
  struct KeyEqual {
    using is_transparent = void;
    bool operator()(Dovel::Ptr<V> const& a, Dovel::Ptr<V> const& b) const {
      return (a.get()->*Key)() == (b.get()->*Key)();
    }
    bool operator()(K const& a, Dovel::Ptr<V> const& b) const { return a == (b.get()->*Key)(); }
    bool operator()(Dovel::Ptr<V> const& a, K const& b) const { return b == (a.get()->*Key)(); }
  };

 public:
  using Set = boost::unordered_flat_set<Dovel::Ptr<V>, KeyHash, KeyEqual>;
  using const_iterator = typename Set::const_iterator;

  EntityMap() = default;
  EntityMap(EntityMap const&) = delete;
  EntityMap& operator=(EntityMap const&) = delete;

  /// Null if there is none.
  Dovel::Ptr<V> const& at(K const& key) const {
    static Dovel::Ptr<V> const none;
    if (last_ && (last_->get()->*Key)() == key) return *last_;
    auto const found = set_.find(key);
    if (found == set_.end()) return none;
    last_ = &*found;
    return *last_;
  }
  /// False if just this object stood there already.
  bool assign(Dovel::Ptr<V> const& value) {
    auto [at, inserted] = set_.insert(value);
    if (!inserted) {
      if (*at == value) return false;
      // Goes when the map is whole again: its end may lead back here.
      Dovel::Ptr<V> const former = *at;
      last_ = nullptr;
      set_.erase(at);
      at = set_.insert(value).first;
    }
    last_ = &*at;
    return true;
  }
  Dovel::Ptr<V> take(K const& key) {
    auto const found = set_.find(key);
    if (found == set_.end()) return {};
    Dovel::Ptr<V> const taken = *found;
    last_ = nullptr;
    set_.erase(found);
    return taken;
  }
  const_iterator begin() const { return set_.begin(); }
  const_iterator end() const { return set_.end(); }
  std::size_t size() const { return set_.size(); }
  bool empty() const { return set_.empty(); }
  void reserve(std::size_t count) {
    last_ = nullptr;
    set_.reserve(count);
  }
  K const keyAt(const_iterator at) const { return ((*at).get()->*Key)(); }

 private:
  Set set_;
  mutable Dovel::Ptr<V> const* last_ = nullptr;  ///< Found last: what works on one object asks for it again and again.
};

template <class Map>
auto keysOf(Map const& map) {
  using Key = std::remove_cvref_t<decltype(map.begin()->first)>;
  std::vector<Key> keys;
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

/// Calls `handle(key, object)` for each object that stands in `map` when its turn comes: handlers may add and remove.
/// An object that goes before its turn is passed over, one that comes during the walk is not visited.
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

/// False if the value stood there already.
template <class Map, class K, class V>
bool assign(Map& map, K const& key, V const& value) {
  auto const [at, inserted] = map.emplace(key, value);
  if (inserted) return true;
  if (at->second == value) return false;
  at->second = value;
  return true;
}

}  // namespace Impl

}  // namespace Kiln
