#include "platform/vane/NextHopEntrySet.h"

#include <algorithm>

#include "platform/kiln/Json.h"

namespace Vane {

NextHopEntrySet::NextHopEntrySet(std::initializer_list<NextHopEntry> entries) {
  for (auto const& entry : entries) insert(entry);
}

bool NextHopEntrySet::contains(NextHopEntry const& entry) const {
  return std::binary_search(entries_.begin(), entries_.end(), entry);
}

bool NextHopEntrySet::insert(NextHopEntry const& entry) {
  auto const at = std::lower_bound(entries_.begin(), entries_.end(), entry);
  if (at != entries_.end() && *at == entry) return false;
  entries_.insert(at, entry);
  return true;
}

bool NextHopEntrySet::erase(NextHopEntry const& entry) {
  auto const at = std::lower_bound(entries_.begin(), entries_.end(), entry);
  if (at == entries_.end() || *at != entry) return false;
  entries_.erase(at);
  return true;
}

void appendText(std::string& out, NextHopEntrySet const& set) { Kiln::writeText(out, set.entries()); }

}  // namespace Vane

KILN_VALUE_CODEC(Vane::NextHopEntrySet, "Vane::NextHopEntrySet")
