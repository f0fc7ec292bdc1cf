#pragma once

#include <initializer_list>
#include <vector>

#include "platform/scree/Slab.h"
#include "platform/vane/NextHopEntry.h"

namespace Vane {

/// The next hops of an adjacency: each once, in the three-way order of the entries.
///
/// One sorted array: an adjacency has a handful of next hops, and they are walked far more often than searched.
class NextHopEntrySet {
 public:
  using value_type = NextHopEntry;
  using Array = std::vector<NextHopEntry, Scree::SlabAllocator<NextHopEntry>>;
  using const_iterator = Array::const_iterator;

  NextHopEntrySet() = default;
  NextHopEntrySet(std::initializer_list<NextHopEntry> entries);

  Array const& entries() const { return entries_; }
  const_iterator begin() const { return entries_.begin(); }
  const_iterator end() const { return entries_.end(); }
  std::size_t size() const { return entries_.size(); }
  bool empty() const { return entries_.empty(); }
  bool contains(NextHopEntry const& entry) const;

  /// False if it is there already.
  bool insert(NextHopEntry const& entry);
  /// The form that sequences have; the place is this set's own business.
  void insert(const_iterator, NextHopEntry const& entry) { insert(entry); }
  /// False if it is not there.
  bool erase(NextHopEntry const& entry);
  void clear() { entries_.clear(); }

  friend bool operator==(NextHopEntrySet const&, NextHopEntrySet const&) = default;
  friend std::strong_ordering operator<=>(NextHopEntrySet const&, NextHopEntrySet const&) = default;

 private:
  Array entries_;
};

/// "[entry, entry]".
void appendText(std::string& out, NextHopEntrySet const& set);
KILN_VALUE_STREAM(NextHopEntrySet)

}  // namespace Vane

KILN_DECLARE_CODEC(Vane::NextHopEntrySet);
