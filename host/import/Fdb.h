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
/// what a kernel accepts and the switch can't do: addresses that are no remote VTEP, an unknown VLAN, a UDP port or VNI
/// in the packet that differ from the device's. Entries of VXLAN devices that are not programmed are skipped.
class Fdb {
 public:
  /// The numbers of remote VTEPs and groups of them that entries of each device name; `file` may be null. Throws
  /// InputError for values of a wrong type.
  static std::map<std::string, std::size_t> remotes(JsonDocument const* file);

  /// `file` null: there are no entries. `links` and `vlans` are kept. Throws InputError where a value is of a wrong
  /// type or no address.
  Fdb(JsonDocument const* file, Links const& links, BridgeVlans const& vlans, NextHopObjects const& nextHops,
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
  /// The devices to which entries or the VXLAN devices that name a VTEP are bound, empty for one that is not, in the
  /// order in which they occur. VTEPs that no bound device names may be missing.
  std::map<IpGenAddr, std::vector<std::string>> const& bindings() const { return bindings_; }

  /// Whether the device has any entry. One in a bridge has those of its own address at least.
  bool knows(std::string const& device) const { return devices_.contains(device); }

  /// The bridge port behind which an address was learned or configured, in the VLAN or in no VLAN (0); empty: none.
  std::string portBehind(std::string const& bridge, std::uint32_t vlan, EthAddr const& mac) const;

 private:
  void read(JsonIn entry, NextHopObjects const& nextHops);
  void readRemote(JsonIn entry, Device const* device, NextHopObjects const& nextHops);
  /// Whether its packets have the UDP port and the VNI that all of the device have; warns where not.
  bool isAsDevice(JsonIn entry, Device const* device);
  void readUnicast(JsonIn entry, JsonIn at);
  void readFlood(JsonIn entry, JsonIn at);
  void readGroup(JsonIn entry, JsonIn nhid, NextHopObjects const& nextHops);
  /// The VTEP at `at`, which `entry` refers to; nothing for one that is passed over.
  std::optional<IpGenAddr> vtep(JsonIn entry, JsonIn at);
  void bind(JsonIn entry, IpGenAddr const& vtep);
  void passOver(std::string_view kind, JsonIn entry, JsonIn at, std::string const& why);
  BridgeVlans::Result vlanOf(JsonIn entry) const;
  void readLocal(JsonIn entry);

  Links const& links_;
  BridgeVlans const& vlans_;
  Vti vti_;
  Warnings& warnings_;
  std::set<std::string> devices_;
  std::set<IpGenAddr> unicast_;
  std::map<std::uint32_t, std::set<IpGenAddr>> groups_;
  std::map<IpGenAddr, Flooded> flooded_;
  std::map<std::string, std::string> boundTo_;  ///< By VXLAN device; only those that are bound.
  std::map<IpGenAddr, std::vector<std::string>> bindings_;
  std::map<std::tuple<std::string, std::uint32_t, EthAddr>, std::string> ports_;  ///< By bridge, VLAN, address.
};

}  // namespace Host::Import
