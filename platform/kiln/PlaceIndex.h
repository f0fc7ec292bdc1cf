#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace Kiln {

/// Finds the places of an array by the hashes of their keys: chains of places, one for each remainder of the hash.
///
/// Holds neither elements nor keys: the caller compares. A place keeps its number until it is removed; the place that
/// was removed last is the next one that is added. Growth reads no element.
class PlaceIndex {
 public:
  using Place = std::uint32_t;
  static constexpr Place none = 0x7fffffff;

  std::size_t size() const { return size_; }
  /// All places in use are below it.
  Place end() const { return end_; }
  /// REQUIRES: place < end().
  bool isUsed(Place place) const { return !(links_[place].next & kUnused); }
  void reserve(std::size_t places) {
    if (places > links_.size()) grow(places);
  }

  /// The place for which `isWanted(place)` among those of `hash`; `none` if there is none.
  template <class IsWanted>
  Place find(std::uint32_t hash, IsWanted const& isWanted) const {
    if (size_ == 0) return none;
    auto const* const links = links_.data();
    auto place = first_[chainOf(hash)];
    while (place != none && !(links[place].hash == hash && isWanted(place))) place = links[place].next;
    return place;
  }
  /// A place for `hash`: the one that was removed last, otherwise `end()`.
  Place add(std::uint32_t hash) {
    if (size_ == links_.size()) [[unlikely]]
      grow(size_ + 1);
    auto const place = unused_ == none ? end_++ : std::exchange(unused_, links_[unused_].next & ~kUnused);
    link(place, hash);
    ++size_;
    return place;
  }
  void remove(Place place) {
    auto* link = &first_[chainOf(links_[place].hash)];
    while (*link != place) link = &links_[*link].next;
    *link = links_[place].next;
    links_[place].next = std::exchange(unused_, place) | kUnused;
    --size_;
  }
  void clear() { *this = {}; }

 private:
  static constexpr Place kUnused = 0x80000000;
  static constexpr std::size_t kFewest = 4;

  struct Link {
    std::uint32_t hash = 0;
    Place next = none;  ///< Of the chain, or of the unused places.
  };

  std::size_t chainOf(std::uint32_t hash) const { return hash & (first_.size() - 1); }
  void link(Place place, std::uint32_t hash) {
    auto& first = first_[chainOf(hash)];
    links_[place] = {hash, first};
    first = place;
  }
  [[gnu::noinline]] void grow(std::size_t least) {
    auto places = kFewest;
    while (places < least) places *= 2;
    links_.resize(places);
    first_.assign(places, none);
    for (Place place = 0; place < end_; ++place) {
      if (isUsed(place)) link(place, links_[place].hash);
    }
  }

  std::vector<Place> first_;  ///< Of each chain: as many as there are links, a power of two, or none.
  std::vector<Link> links_;   ///< By place.
  Place end_ = 0;
  Place unused_ = none;
  std::size_t size_ = 0;
};

}  // namespace Kiln
