#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/import/Address.h"
#include "host/import/Fields.h"
#include "host/import/L3Numbers.h"
#include "host/import/Links.h"
#include "host/import/NextHopObjects.h"

namespace Host::Import {

/// A neighbour that packets are sent to, and the device that leads to it.
struct Hop {
  IpGenAddr address;
  std::string device;

  auto operator<=>(Hop const&) const = default;
};

/// How a VTEP is reached.
struct Path {
  std::set<Hop> hops;  ///< Empty: the VTEP cannot be reached.
  /// The kernel's id of these next hops. Nothing where it has none or one that is no adjacency id, or where the VTEP is
  /// itself the next hop: then one id means another neighbour for every destination.
  std::optional<std::uint32_t> id;
};

/// The routing table of the underlay.
///
/// Looks up by longest prefix, then least metric; skips routes whose next hops are all out of service. A route of
/// another type than unicast ends the lookup without a next hop.
class Underlay {
 public:
  /// Reads the routes of `table`. `routes` null: nothing can be reached. `links` and `numbers` are kept; they say which
  /// devices can carry the underlay. Throws InputError where a value is of a wrong type.
  Underlay(JsonDocument const* routes, std::string const& table, NextHopObjects const& nextHops, Links const& links,
           L3Numbers const& numbers);

  /// Throws InputError where routes loop or lead over a device that the captures do not have.
  Path path(IpGenAddr const& vtep) const;

 private:
  struct Route {
    JsonIn at;
    std::uint32_t metric = 0;
    bool unicast = true;
    std::optional<std::uint32_t> nhid;
    std::vector<RouteHop> hops;
  };
  /// The same length together, by network.
  using Networks = std::map<IpGenAddr, std::vector<Route>>;

  void add(JsonIn at, NextHopObjects const& nextHops);
  Route const* lookup(IpGenAddr const& address) const;
  /// Adds the neighbours toward `address`; `chain` holds the addresses on the way from the VTEP.
  void resolve(IpGenAddr const& address, std::vector<IpGenAddr>& chain, std::set<IpGenAddr>& seen,
               std::set<Hop>& into) const;
  void addHop(Route const& route, RouteHop const& hop, IpGenAddr const& address, std::set<Hop>& into) const;

  Links const& links_;
  L3Numbers const& numbers_;
  std::map<bool, std::map<unsigned, Networks, std::greater<>>> routes_;  ///< By family, then length, longest first.
};

}  // namespace Host::Import
