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
#include "host/import/Rules.h"
#include "host/import/Settings.h"

namespace Host::Import {

/// A neighbour that packets are sent to, and the device that leads to it.
struct Hop {
  IpGenAddr address;
  std::string device;

  auto operator<=>(Hop const&) const = default;
};
/// Next hops with their weights, which have no common divisor.
using Hops = std::map<Hop, std::uint32_t>;

/// How a VTEP is reached.
struct Path {
  Hops hops;        ///< Empty: the VTEP cannot be reached.
  std::string why;  ///< Why not.
  /// The kernel's id of these next hops. Nothing where it has none or one that is no adjacency id, or where the VTEP is
  /// itself the next hop: then one id means another neighbour for every destination.
  std::optional<std::uint32_t> id;
};

/// The most rows of a group of underlay next hops. Weights whose sum is larger are approximated.
inline constexpr std::uint32_t maxGroupRows = 128;

/// The routing tables of the underlay, looked up as the host's kernel does.
///
/// The policy rules name the tables. In a table the longest prefix counts, then the least metric, of routes without a
/// TOS and with a next hop in service; a route that rejects packets ends the search, a throw route ends it in its
/// table. A packet that is bound to a device: IPv4 uses the first next hop over it, and takes the destination for a
/// neighbour on it where there is none; IPv6 prefers routes over it among equal ones.
class Underlay {
 public:
  /// What is read; each may be null.
  struct Files {
    JsonDocument const* routes = nullptr;
    JsonDocument const* settings = nullptr;
  };
  /// The references are kept. Throws InputError where a value of a table that is looked up is of a wrong type.
  Underlay(Files const& files, Rules const& rules, NextHopObjects const& nextHops, Links const& links,
           L3Numbers const& numbers, Warnings& warnings);

  /// Throws InputError where routes loop.
  Path path(Query const& query) const;

 private:
  struct Route {
    JsonIn at;
    std::uint32_t metric = 0;
    std::string type;
    std::optional<std::uint32_t> nhid;
    std::optional<Prefix> from;
    std::vector<RouteHop> hops;
  };
  /// By network, then in the order in which they are tried.
  using Networks = std::map<IpGenAddr, std::vector<Route>>;
  /// By length, longest first.
  using Table = std::map<unsigned, Networks, std::greater<>>;

  /// What a search found: a route with the next hops that it uses, or the reason why there is none.
  struct Found {
    Route const* route = nullptr;
    std::vector<RouteHop const*> hops;
    std::string why;
  };
  /// A search for one VTEP.
  struct Walk {
    std::vector<IpGenAddr> chain;  ///< From the VTEP through gateways that are looked up in turn.
    std::set<IpGenAddr> seen;
    std::string why;               ///< Of what was passed over first.
    Route const* route = nullptr;  ///< To the VTEP itself.
    Hops hops;
  };

  void add(JsonIn at, std::vector<Route>& routes, NextHopObjects const& nextHops);
  Found find(Query const& query, Walk& walk) const;
  std::optional<Found> findIn(Table const& table, Query const& query, Walk& walk) const;
  std::optional<Found> firstOf(std::vector<Route> const& routes, Query const& query, Walk& walk) const;
  std::vector<RouteHop const*> usable(Route const& route, Query const& query, Walk& walk) const;
  bool isInService(RouteHop const& hop, bool v6, Walk& walk) const;
  static bool isEqual(Route const& a, Route const& b);
  bool isSuppressed(Rules::Step const& step, Found const& found) const;
  void resolve(Query const& query, Walk& walk) const;
  void addHop(RouteHop const& hop, IpGenAddr const& address, Walk& walk) const;
  /// Empty where the device can carry the underlay.
  std::string whyNot(RouteHop const& hop) const;
  void onLink(Query const& query, Walk& walk) const;
  void fit(Walk& walk) const;

  Rules const& rules_;
  Settings settings_;
  Links const& links_;
  L3Numbers const& numbers_;
  Warnings& warnings_;
  std::string routesFile_;                               ///< Empty: missing.
  std::map<bool, std::map<std::string, Table>> tables_;  ///< By family, then name.
};

}  // namespace Host::Import
