#pragma once

#include <cstddef>
#include <vector>  // has what is needed of <iterator>, which brings the streams into every source

namespace Kiln {

/// Walks the places of a collection's array that are in use.
///
/// The collection offers `elementAt(place)`, `isUsed(place)` and `endPlace()`, which is above all places. The element
/// under the iterator may be removed; the next increment reaches the next one. Elements that are added in places still
/// ahead are reached too.
template <class Collection, class Element>
class PlaceIterator {
 public:
  using iterator_category = std::forward_iterator_tag;
  using value_type = Element;
  using difference_type = std::ptrdiff_t;
  using pointer = Element*;
  using reference = Element&;

  PlaceIterator() = default;
  PlaceIterator(Collection& collection, std::size_t place) : collection_(&collection), place_(place) {}
  /// At the first place in use, or at the end.
  static PlaceIterator first(Collection& collection) {
    PlaceIterator at(collection, 0);
    at.skipUnused();
    return at;
  }

  std::size_t place() const { return place_; }
  reference operator*() const { return collection_->elementAt(place_); }
  pointer operator->() const { return &**this; }
  PlaceIterator& operator++() {
    ++place_;
    skipUnused();
    return *this;
  }
  PlaceIterator operator++(int) {
    auto const before = *this;
    ++*this;
    return before;
  }
  friend bool operator==(PlaceIterator const& a, PlaceIterator const& b) { return a.place_ == b.place_; }

 private:
  void skipUnused() {
    while (place_ < collection_->endPlace() && !collection_->isUsed(place_)) ++place_;
  }

  Collection* collection_ = nullptr;
  std::size_t place_ = 0;
};

}  // namespace Kiln
