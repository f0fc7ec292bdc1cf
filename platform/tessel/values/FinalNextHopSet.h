#pragma once

#include <boost/container/small_vector.hpp>
#include <compare>
#include <cstddef>
#include <string>
#include <string_view>

#include "platform/kiln/Text.h"
#include "platform/vane/NextHopEntry.h"

namespace TesselVxlan {

/// The next hops over which a VTEP is flooded, in the order of their values.
///
/// Built on the stack of one programming step; up to four next hops cost no allocation.
class FinalNextHopSet {
 public:
  using NextHops = boost::container::small_vector<Vane::NextHopEntry, 4>;

  /// Sorted, each entry once.
  NextHops const& nextHop() const { return nextHop_; }
  bool nextHopHas(Vane::NextHopEntry const& entry) const;
  /// Adds `entry` unless it is present.
  void nextHopIs(Vane::NextHopEntry const& entry);
  void nextHopDel(Vane::NextHopEntry const& entry);
  void nextHopDelAll() { nextHop_.clear(); }

  /// For generic code that makes values from text: always throws `RangeException`
  /// "No String constructor for FinalNextHopSet - has collection".
  [[noreturn]] static FinalNextHopSet fromString(std::string_view text);

  friend bool operator==(FinalNextHopSet const&, FinalNextHopSet const&) = default;
  friend std::strong_ordering operator<=>(FinalNextHopSet const& a, FinalNextHopSet const& b);

 private:
  NextHops nextHop_;
};

std::size_t hash_value(FinalNextHopSet const& set);
/// "[{type=…}, {type=…}]".
void appendText(std::string& out, FinalNextHopSet const& set);
KILN_VALUE_STREAM(FinalNextHopSet)

}  // namespace TesselVxlan
