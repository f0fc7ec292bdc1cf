#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "platform/scree/Slab.h"

namespace Kiln {

/// Finds the places of an array by the hashes of their keys: chains of places, one for each remainder of the hash.
///
/// Holds neither elements nor keys: the caller compares. A place keeps its number until it is removed; the place that
/// was removed last is the next one that is added. Growth reads no element.
class PlaceIndex {
 public:
  using Place = std::uint32_t;
  static constexpr Place none = 0x7fffffff;

  PlaceIndex() = default;
  PlaceIndex(PlaceIndex&& from) noexcept { *this = std::move(from); }
  PlaceIndex& operator=(PlaceIndex&& from) noexcept {
    std::swap(links_, from.links_);
    std::swap(first_, from.first_);
    std::swap(places_, from.places_);
    std::swap(end_, from.end_);
    std::swap(unused_, from.unused_);
    std::swap(size_, from.size_);
    return *this;
  }
  ~PlaceIndex() {
    if (links_) Scree::slabFreeOrStdFree(links_, bytes(places_));
  }

  std::size_t size() const { return size_; }
  /// All places in use are below it.
  Place end() const { return end_; }
  /// REQUIRES: place < end().
  bool isUsed(Place place) const { return !(links_[place].next & kUnused); }
  void reserve(std::size_t places) {
    if (places > places_) grow(places);
  }

  /// The place for which `isWanted(place)` among those of `hash`; `none` if there is none.
  template <class IsWanted>
  Place find(std::uint32_t hash, IsWanted const& isWanted) const {
    if (size_ == 0) return none;
    auto const* const links = links_;
    auto place = first_[chainOf(hash)];
    while (place != none && !(links[place].hash == hash && isWanted(place))) place = links[place].next;
    return place;
  }
  /// A place for `hash`: the one that was removed last, otherwise `end()`.
  Place add(std::uint32_t hash) {
    if (size_ == places_) [[unlikely]]
      grow(size_ + 1);
    auto const place = unused_ == none ? end_++ : std::exchange(unused_, links_[unused_].next & ~kUnused);
    link(place, hash);
    ++size_;
    return place;
  }
  void remove(Place place) {
    auto* link = &first_[chainOf(links_[place].hash)];
    while (*link != place) link = &links_[*link].next;
    unlink(*link);
  }
  /// Removes the place that `find` would find, which it returns.
  template <class IsWanted>
  Place take(std::uint32_t hash, IsWanted const& isWanted) {
    if (size_ == 0) return none;
    auto* link = &first_[chainOf(hash)];
    while (*link != none && !(links_[*link].hash == hash && isWanted(*link))) link = &links_[*link].next;
    return *link == none ? none : unlink(*link);
  }
  void clear() { PlaceIndex const former(std::move(*this)); }

 private:
  static constexpr Place kUnused = 0x80000000;
  static constexpr std::size_t kFewest = 4;

  struct Link {
    std::uint32_t hash;
    Place next;  ///< Of the chain, or of the unused places.
  };
  std::size_t chainOf(std::uint32_t hash) const { return hash & (places_ - 1); }
  /// `link` is the chain's link to the place that is removed.
  Place unlink(Place& link) {
    auto const place = link;
    link = links_[place].next;
    links_[place].next = std::exchange(unused_, place) | kUnused;
    --size_;
    return place;
  }
  void link(Place place, std::uint32_t hash) {
    auto& first = first_[chainOf(hash)];
    links_[place] = {hash, first};
    first = place;
  }
  [[gnu::noinline]] void grow(std::size_t least) {
    auto const places = std::bit_ceil(least < kFewest ? kFewest : least);
    auto* const links = static_cast<Link*>(Scree::slabAllocOrStdMalloc(bytes(places)));
    auto* const first = reinterpret_cast<Place*>(links + places);
    for (std::size_t chain = 0; chain < places; ++chain) first[chain] = none;
    for (Place place = 0; place < end_; ++place) {
      auto& link = links[place] = links_[place];
      if (!(link.next & kUnused)) link.next = std::exchange(first[link.hash & (places - 1)], place);
    }
    if (links_) Scree::slabFreeOrStdFree(links_, bytes(places_));
    links_ = links;
    first_ = first;
    places_ = places;
  }
  static std::size_t bytes(std::size_t places) { return places * (sizeof(Link) + sizeof(Place)); }

  Link* links_ = nullptr;   ///< By place; in one block with the next.
  Place* first_ = nullptr;  ///< Of each chain; as many as there are links.
  std::size_t places_ = 0;  ///< Room for so many: a power of two, or 0.
  Place end_ = 0;
  Place unused_ = none;
  std::size_t size_ = 0;
};

}  // namespace Kiln
