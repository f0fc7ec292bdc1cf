#pragma once

#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "host/import/Address.h"
#include "host/import/Links.h"
#include "host/import/NextHopObjects.h"

namespace Host::Import {

/// What the forwarding databases of bridges and VXLAN devices say: the remote VTEPs, and the ports behind which
/// neighbours are.
///
/// A VTEP counts as unicast when a MAC address is behind it, alone or in a group; as flooded to when an entry of the
/// all-zero address names it. Multicast groups are not VTEPs; neither are the switch's own and the unspecified address,
/// which a kernel accepts and which are passed over with a warning.
class Fdb {
 public:
  /// Throws InputError where a value is of a wrong type, an entry names a group that does not exist, or a VTEP is not a
  /// unicast address.
  Fdb(JsonDocument const& file, Links const& links, NextHopObjects const& nextHops, std::vector<std::string>& warnings);

  std::set<IpGenAddr> const& unicast() const { return unicast_; }
  std::set<IpGenAddr> const& flooded() const { return flooded_; }

  /// The bridge port behind which an address was learned or configured, in the VLAN or in no VLAN (0); empty: none.
  std::string portBehind(std::string const& bridge, std::uint32_t vlan, EthAddr const& mac) const;

 private:
  void readRemote(JsonIn entry, NextHopObjects const& nextHops);
  void addVtep(JsonIn at, bool flood);
  void readLocal(JsonIn entry);

  Vti vti_;
  std::vector<std::string>& warnings_;
  std::set<IpGenAddr> unicast_;
  std::set<IpGenAddr> flooded_;
  std::map<std::tuple<std::string, std::uint32_t, EthAddr>, std::string> ports_;  ///< By bridge, VLAN, address.
};

}  // namespace Host::Import
