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
#include "host/import/Links.h"
#include "host/import/NextHopObjects.h"

namespace Host::Import {

/// A neighbour that packets are sent to, and the device on which it stands.
struct Hop {
  IpAddr address;
  std::string device;

  auto operator<=>(Hop const&) const = default;
};

/// How a VTEP is reached.
struct Path {
  std::set<Hop> hops;  ///< Empty: the VTEP cannot be reached.
  /// The kernel's id of these next hops. Nothing where it gave none, or where the VTEP is itself the next hop: then an
  /// id stands for other neighbours with every destination.
  std::optional<std::uint32_t> id;
};

/// The routing table of the underlay.
///
/// Looks up by longest prefix, then least metric; passes over routes whose next hops are all out of service. A route of
/// another type than unicast ends the lookup without a next hop.
class Underlay {
 public:
  /// Reads the routes of `table`. `routes` null: nothing can be reached. `links` is kept; it says which devices can
  /// carry the underlay. Throws InputError where a value is of a wrong type.
  Underlay(JsonDocument const* routes, std::string const& table, NextHopObjects const& nextHops, Links const& links);

  /// Throws InputError where routes loop or lead over a device that the captures do not have.
  Path path(IpAddr const& vtep) const;

 private:
  struct Route {
    JsonIn at;
    std::uint32_t metric = 0;
    bool unicast = true;
    std::optional<std::uint32_t> nhid;
    std::vector<RouteHop> hops;
  };
  /// The same length together, by network.
  using Networks = std::map<IpAddr, std::vector<Route>>;

  void add(JsonIn at, NextHopObjects const& nextHops);
  Route const* lookup(IpAddr const& address) const;
  /// Adds the neighbours toward `address`; `chain` holds the addresses on the way from the VTEP.
  void resolve(IpAddr const& address, std::vector<IpAddr>& chain, std::set<IpAddr>& seen, std::set<Hop>& into) const;
  void addHop(Route const& route, RouteHop const& hop, IpAddr const& address, std::set<Hop>& into) const;

  Links const& links_;
  std::map<bool, std::map<unsigned, Networks, std::greater<>>> routes_;  ///< By family, then length, longest first.
};

}  // namespace Host::Import
