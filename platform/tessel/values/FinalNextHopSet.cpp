#include "platform/tessel/values/FinalNextHopSet.h"

#include <algorithm>

#include "platform/kiln/Exceptions.h"

namespace TesselVxlan {

bool FinalNextHopSet::nextHopHas(Vane::NextHopEntry const& entry) const {
  return std::binary_search(nextHop_.begin(), nextHop_.end(), entry);
}

void FinalNextHopSet::nextHopIs(Vane::NextHopEntry const& entry) {
  auto const place = std::lower_bound(nextHop_.begin(), nextHop_.end(), entry);
  if (place == nextHop_.end() || *place != entry) nextHop_.insert(place, entry);
}

void FinalNextHopSet::nextHopDel(Vane::NextHopEntry const& entry) {
  auto const place = std::lower_bound(nextHop_.begin(), nextHop_.end(), entry);
  if (place != nextHop_.end() && *place == entry) nextHop_.erase(place);
}

FinalNextHopSet FinalNextHopSet::fromString(std::string_view) {
  Kiln::throwRangeException("No String constructor for FinalNextHopSet - has collection");
}

std::strong_ordering operator<=>(FinalNextHopSet const& a, FinalNextHopSet const& b) {
  return std::lexicographical_compare_three_way(a.nextHop().begin(), a.nextHop().end(), b.nextHop().begin(),
                                                b.nextHop().end());
}

std::size_t hash_value(FinalNextHopSet const& set) {
  std::uint64_t seed = 0;
  for (auto const& entry : set.nextHop()) seed = Kiln::mix(seed, hash_value(entry));
  return seed;
}

void appendText(std::string& out, FinalNextHopSet const& set) { Kiln::writeText(out, set.nextHop()); }

}  // namespace TesselVxlan
