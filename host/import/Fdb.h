#pragma once

#include <map>
#include <set>
#include <string>
#include <tuple>

#include "host/import/Address.h"
#include "host/import/Fields.h"
#include "host/import/Links.h"
#include "host/import/NextHopObjects.h"

namespace Host::Import {

/// What the forwarding databases of bridges and VXLAN devices say: the remote VTEPs, and the ports behind which
/// neighbours stand.
///
/// A VTEP counts as unicast when an address stands behind it, alone or in a group; as flooded to when an entry of the
/// all-zero address names it. The switch's own address and multicast groups are no VTEPs.
class Fdb {
 public:
  /// Throws InputError where a value is of a wrong type, or an entry names a group that does not exist.
  Fdb(JsonDocument const& file, Links const& links, NextHopObjects const& nextHops);

  std::set<IpAddr> const& unicast() const { return unicast_; }
  std::set<IpAddr> const& flooded() const { return flooded_; }

  /// The bridge port behind which an address was learned or set, in the VLAN or in no VLAN (0); empty: none.
  std::string portBehind(std::string const& bridge, std::uint32_t vlan, std::string const& mac) const;

 private:
  void readRemote(JsonIn entry, std::string const& mac, NextHopObjects const& nextHops);
  void readLocal(JsonIn entry, std::string const& mac);
  bool isRemote(IpAddr const& address) const;

  Vti vti_;
  std::set<IpAddr> unicast_;
  std::set<IpAddr> flooded_;
  std::map<std::tuple<std::string, std::uint32_t, std::string>, std::string> ports_;  ///< By bridge, VLAN, address.
};

}  // namespace Host::Import
