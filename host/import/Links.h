#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/import/Address.h"
#include "host/import/Fields.h"
#include "host/notes/Warnings.h"

namespace Host::Import {

/// What a network device is for the switch.
///
/// `macvlan` is any device with addresses of its own on another one; `tunnel` any that encapsulates, or that no port of
/// a switch can be.
enum class DeviceKind { port, lag, bridge, vlan, macvlan, vxlan, tunnel, vrf, dummy, loopback };

/// A network device of the kernel.
struct Device {
  JsonIn at;
  std::string name;
  std::uint32_t ifindex = 0;
  DeviceKind kind = DeviceKind::port;
  std::string kindName;       ///< As the kernel names it, such as "gre"; empty: none, as of a physical port.
  std::string master;         ///< The bridge, bond or VRF that it belongs to; empty: none.
  std::string slaveKind;      ///< What the master is.
  std::string link;           ///< The device under it; empty: none that this switch knows.
  std::uint32_t vlanId = 0;   ///< Of a VLAN device.
  std::uint32_t vni = 0;      ///< Of a VXLAN device; 0: it carries several.
  bool filtersVlans = false;  ///< Of a bridge: whether it keeps VLANs apart.
  std::string table;          ///< Routing table of a VRF, or of the VRF that it belongs to; empty: main.
  bool up = true;             ///< Administratively up and not without carrier.
  bool otherVti = false;      ///< A VXLAN device of another tunnel interface than the switch's one.

  /// Whether the switch has what a VXLAN device has.
  bool isProgrammed() const { return up && !otherVti; }
};

/// The VXLAN tunnel interface that VXLAN devices with equal local addresses and UDP port together make up.
struct Vti {
  std::optional<IpGenAddr> srcAddr;
  std::optional<IpGenAddr> srcAddrV6;
  std::optional<std::uint32_t> udpPort;
};

/// Which VXLAN device has the tunnel interface: the one of that `name`; without a name the one with most `remotes`, of
/// those the one with the lowest ifindex, and one that is down only if all are.
struct VtiChoice {
  std::string name;
  std::map<std::string, std::size_t> remotes;  ///< Numbers of remote VTEPs, by device.
};

/// The network devices of a switch, and the VXLAN tunnel interface.
///
/// The switch has one tunnel interface. VXLAN devices whose local address (of either family) or UDP port differ from
/// those of the chosen one are no part of it; a warning names them, and those that are down.
class Links {
 public:
  /// `links` has all devices, `vxlanLinks` the VXLAN devices; one may be null. Where both have VXLAN devices the newer
  /// one counts, and both must agree if neither is (`vxlanLinksAge`: the age of `vxlanLinks` against `links`).
  /// Throws InputError where a value is of a wrong type, and for a choice that names no VXLAN device.
  Links(JsonDocument const* links, JsonDocument const* vxlanLinks, std::strong_ordering vxlanLinksAge,
        VtiChoice const& choice, Warnings& warnings);
  Links(Links const&) = delete;
  Links& operator=(Links const&) = delete;

  Vti const& vti() const { return vti_; }
  /// Those that the tunnel interface consists of and that are up, the chosen one first.
  std::vector<Device const*> const& vtiDevices() const { return vtiDevices_; }
  /// The file of the VXLAN devices.
  std::string const& source() const { return source_; }
  /// The name of the device that a VXLAN device's packets leave by; empty: any.
  std::string boundTo(Device const& device) const;

  /// Null for a device that the captures do not have.
  Device const* device(std::string const& name) const;
  /// In order of ifindex.
  std::vector<Device const*> const& devices() const { return ordered_; }
  /// Whether all devices are known, not only the VXLAN devices.
  bool complete() const { return complete_; }

  /// The kernel's name, but "VlanN" for the interface of a bridge's VLAN.
  std::string l3Name(Device const& device) const;
  /// Whether it is the interface of a VLAN of a bridge, and no sub-interface of a port.
  bool isBridgeVlan(Device const& device) const;
  /// The port or LAG that frames over this device leave by, through VLAN sub-interfaces and the like; null where there
  /// is none.
  Device const* port(Device const& device) const;
  /// The bridge that frames over this device enter, through devices over it; null where there is none.
  Device const* bridgeUnder(Device const& device) const;
  /// Whether the device can be the port of a next hop.
  bool isPort(Device const& device) const;

 private:
  /// What is under a VLAN device and the like; otherwise the device itself; null where it is unknown.
  Device const* under(Device const& device) const;
  void addDevices(JsonDocument const& file);
  void addVxlanDevices(JsonDocument const& file);
  std::vector<Device*> byPreference(VtiChoice const& choice);
  void addToVti(VtiChoice const& choice, Warnings& warnings);
  /// The first value that differs from the tunnel interface's.
  std::optional<JsonIn> disagreement(JsonIn data) const;
  void readVti();

  bool complete_;
  std::string source_;
  std::map<std::string, Device> devices_;
  std::vector<Device const*> ordered_;
  std::map<std::string, JsonIn> vxlanData_;                       ///< `info_data` of each VXLAN device.
  std::map<std::string, std::pair<JsonIn, std::string>> agreed_;  ///< By key: first value, and the device that has it.
  Vti vti_;
  std::vector<Device const*> vtiDevices_;
};

}  // namespace Host::Import
