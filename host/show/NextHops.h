#pragma once

#include <vector>

#include "platform/vane/NextHopEntry.h"

namespace Host {

/// A next hop that takes `weight` rows of its group.
struct WeighedNextHop {
  Vane::NextHopEntry hop;
  unsigned weight = 1;
};

/// The next hops of a set, the copies of one together, in the order of the set. A set has no equal entries: copies of a
/// next hop differ in a label above the 20 bits that labels have.
template <class NextHops>
std::vector<WeighedNextHop> weighedNextHops(NextHops const& nextHops) {
  constexpr std::uint32_t noLabel = 0x100000;
  std::vector<WeighedNextHop> weighed;
  for (Vane::NextHopEntry hop : nextHops) {
    if (hop.labelValue() > noLabel) hop.labelValueIs(noLabel);
    if (!weighed.empty() && weighed.back().hop == hop) {
      ++weighed.back().weight;
    } else {
      weighed.push_back({hop, 1});
    }
  }
  return weighed;
}

}  // namespace Host
