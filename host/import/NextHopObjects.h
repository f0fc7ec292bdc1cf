#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/import/Address.h"
#include "host/import/Fields.h"
#include "host/notes/Warnings.h"

namespace Host::Import {

/// Where a route sends a packet next: to a gateway, to the destination itself on a device, or to a gateway that is
/// looked up in turn (no device).
struct RouteHop {
  JsonIn at;
  std::optional<IpGenAddr> gateway;
  std::string device;
  std::uint32_t weight = 1;
  bool dead = false;
  bool linkdown = false;
  bool blackhole = false;
  bool encap = false;  ///< Packets are put into another header on the way.
};

/// The next hop that an object describes by `gateway` or `via`, and `dev`.
RouteHop routeHop(JsonIn at);

/// The kernel's next-hop objects by id, groups among them.
///
/// A reference to an object that the file does not have is passed over with a warning; without a file it is refused.
class NextHopObjects {
 public:
  /// REQUIRES: `file` and `warnings` outlive this. `file` null: there is none. Throws InputError on wrong types.
  NextHopObjects(JsonDocument const* file, std::string const& missingFile, Warnings& warnings);

  /// The members of the object that is referred to at `nhid`, groups unfolded, with their weights.
  /// Throws InputError where a group contains itself.
  std::vector<RouteHop> members(JsonIn nhid) const;
  /// Whether the object has members.
  bool isGroup(JsonIn nhid) const;
  /// The addresses of the VTEPs of an object for forwarding databases. Throws InputError as `members`, and where it is
  /// another object.
  std::vector<JsonIn> vteps(JsonIn nhid) const;

 private:
  struct Object {
    JsonIn at;
    std::vector<std::pair<JsonIn, std::uint32_t>> group;  ///< The members' ids and weights.
  };
  struct Walk {
    std::vector<std::uint32_t> chain;  ///< The groups on the way to where the walk is.
    std::set<std::uint32_t> seen;
    std::uint32_t weight = 1;  ///< Of all that is unfolded now.
    std::vector<std::pair<JsonIn, std::uint32_t>> leaves;
  };
  Object const* object(JsonIn id) const;  ///< Null where there is none.
  void unfold(JsonIn id, Walk& walk) const;
  std::vector<std::pair<JsonIn, std::uint32_t>> leaves(JsonIn id) const;

  bool complete_;
  std::string file_;
  Warnings& warnings_;
  std::map<std::uint32_t, Object> objects_;
};

}  // namespace Host::Import
