#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/import/Address.h"

namespace Host::Frr {

/// A next hop: the gateway, or the interface alone of a connected network.
struct NextHop {
  std::optional<Import::IpGenAddr> gateway;
  std::string interface;
};

/// A route that the routing suite has selected.
struct Route {
  Import::Prefix prefix;
  std::string text;      ///< "10.255.0.2/32"
  std::string protocol;  ///< "bgp"
  std::vector<NextHop> nextHops;
};

/// The selected routes of the default VRF, as `vtysh -c "show ip route vrf all json"` and its IPv6 form print them: an
/// object of arrays of routes by prefix, or one such object for each VRF.
class Routes {
 public:
  /// Adds those of a file. Throws InputError where a value is of a wrong type.
  void add(Import::JsonDocument const& file);
  /// The longest one that has the address; null if none does.
  Route const* lookup(Import::IpGenAddr const& address) const;

 private:
  void addRoutes(Import::JsonIn list);

  std::map<std::pair<Import::IpGenAddr, unsigned>, Route> routes_;  ///< By network and length.
};

}  // namespace Host::Frr
