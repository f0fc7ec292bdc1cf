#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "host/import/Address.h"
#include "host/import/BridgeVlans.h"
#include "host/import/Links.h"
#include "host/import/NextHopObjects.h"
#include "host/notes/Warnings.h"

namespace Host::Import {

/// What the forwarding databases of bridges and VXLAN devices say: the remote VTEPs, and the ports behind which
/// neighbours are.
///
/// A VTEP counts as unicast when a MAC address is behind it, alone or in a group; as flooded to in a VLAN when an entry
/// of the all-zero address names it and the VLAN of the entry's device or VNI is known. Passed over with a warning is
/// what a kernel accepts: the switch's own and the unspecified address, floods to a multicast group, and those of an
/// unknown VLAN.
class Fdb {
 public:
  /// Throws InputError where a value is of a wrong type, an entry names a group that does not exist, or a VTEP is not a
  /// unicast address.
  Fdb(JsonDocument const& file, Links const& links, BridgeVlans const& vlans, NextHopObjects const& nextHops,
      Warnings& warnings);

  /// A VTEP that is flooded to.
  struct Flooded {
    JsonIn at;  ///< Where it was first named.
    std::set<std::uint32_t> vlans;
  };
  std::set<IpGenAddr> const& unicast() const { return unicast_; }
  /// The groups of VTEPs that MAC addresses are behind, by the kernel's id. None is empty.
  std::map<std::uint32_t, std::set<IpGenAddr>> const& groups() const { return groups_; }
  std::map<IpGenAddr, Flooded> const& flooded() const { return flooded_; }

  /// Whether the device has any entry. One in a bridge has those of its own address at least.
  bool knows(std::string const& device) const { return devices_.contains(device); }

  /// The bridge port behind which an address was learned or configured, in the VLAN or in no VLAN (0); empty: none.
  std::string portBehind(std::string const& bridge, std::uint32_t vlan, EthAddr const& mac) const;

 private:
  void readRemote(JsonIn entry, BridgeVlans const& vlans, NextHopObjects const& nextHops);
  void readFlood(JsonIn entry, JsonIn at, BridgeVlans const& vlans);
  void readGroup(JsonIn nhid, NextHopObjects const& nextHops);
  /// The VTEP there; nothing for one that is passed over.
  std::optional<IpGenAddr> vtep(JsonIn at);
  void addFlooded(JsonIn at, IpGenAddr const& vtep, BridgeVlans::Result const& vlan);
  void passOver(JsonIn at, std::string const& why) { warnings_.add("fdb", at, "ignored: " + why); }
  void readLocal(JsonIn entry);

  Vti vti_;
  Warnings& warnings_;
  std::set<std::string> devices_;
  std::set<IpGenAddr> unicast_;
  std::map<std::uint32_t, std::set<IpGenAddr>> groups_;
  std::map<IpGenAddr, Flooded> flooded_;
  std::map<std::tuple<std::string, std::uint32_t, EthAddr>, std::string> ports_;  ///< By bridge, VLAN, address.
};

}  // namespace Host::Import
