#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/import/Fields.h"
#include "host/import/Links.h"
#include "host/import/VlanChoices.h"
#include "host/notes/Warnings.h"

namespace Host::Import {

/// The VLANs of the switch and the VNIs that they have.
///
/// - A device that carries several VNIs: the VLAN that the bridge maps each VNI to.
/// - A device in a bridge that filters VLANs: the device's PVID.
/// - A device in another bridge, which is one VLAN of the switch: the chosen VLAN of its VNI. The kernel has none, so
///   that without a choice the VLANs from 2 up that have no other use are assigned in the order of the VNIs.
///
/// A VNI has one VLAN and a VLAN one VNI: a further one is passed over with a warning, as is a VNI without a VLAN. VNIs
/// of devices that are no part of the tunnel interface are not read; those of devices that are down keep their VLANs.
class BridgeVlans {
 public:
  /// What is read; each may be null.
  struct Files {
    JsonDocument const* portVlans = nullptr;  ///< What `bridge vlan` prints.
    JsonDocument const* tunnels = nullptr;    ///< What `bridge vlan tunnelshow` prints.
    std::string directory;                    ///< Where a missing one is expected; ends with a separator.
  };
  /// `links` is kept. Ports' VLANs outside 1 to 4094 are skipped. Throws InputError where a value is of a wrong type or
  /// a VNI's VLAN is outside that range, and for a choice of a VLAN that has another use or for a VNI to which the
  /// kernel has assigned another VLAN.
  BridgeVlans(Files const& files, Links const& links, VlanChoices& choices, Warnings& warnings);

  /// The VLAN of a device or, with `vni`, of one of its VNIs. `vlan` is 0 where it has none, for the reason `why`.
  struct Result {
    std::uint32_t vlan = 0;
    std::string why;
  };
  Result vlanOf(std::string const& device, std::optional<std::uint32_t> vni) const;

  struct Vni {
    std::uint32_t vlan = 0;
    std::string device;
    bool assigned = false;  ///< The kernel has no VLAN for it.
  };
  /// By number. The only place that VLANs of VNIs are taken from.
  std::map<std::uint32_t, Vni> const& vnis() const { return vnis_; }
  /// The VLAN that a bridge without VLANs is; 0 for one that is none.
  std::uint32_t vlanOfBridge(std::string const& bridge) const;
  /// All VLANs in use, with or without a VNI.
  std::set<std::uint32_t> const& used() const { return used_; }

 private:
  /// A VNI in a bridge without VLANs.
  struct Unnumbered {
    JsonIn at;
    Device const* device = nullptr;
  };
  void readPortVlans(JsonDocument const* file);
  void readTunnels(JsonDocument const* file, VlanChoices& choices);
  void addTunnels(std::string const& device, JsonIn at, VlanChoices& choices);
  void readDevices(VlanChoices& choices);
  void addFiltered(Device const& device, VlanChoices& choices);
  void addKernelVlan(JsonIn at, std::uint32_t vni, Vni const& entry, VlanChoices& choices);
  void assign(VlanChoices& choices);
  /// Above `highestVlan` where no VLAN is left.
  std::uint32_t vlanFor(std::uint32_t vni, VlanChoices& choices);
  bool add(JsonIn at, std::uint32_t vni, Vni const& entry);
  bool isOtherVti(std::string const& device) const;
  void passOver(JsonIn at, std::uint32_t vni, std::string const& device, std::string const& why);
  void warnMissing(std::string const& file, std::string const& consequence);

  Links const& links_;
  Warnings& warnings_;
  Files files_;
  std::map<std::string, std::uint32_t> pvids_;
  std::map<std::uint32_t, Vni> vnis_;
  std::map<std::uint32_t, std::uint32_t> vniOfVlan_;
  std::map<std::uint32_t, Unnumbered> unnumbered_;    ///< By VNI.
  std::map<std::string, std::uint32_t> bridgeVlans_;  ///< Of bridges without VLANs.
  std::map<std::string, std::string> passedOver_;     ///< Why a device has no VLAN.
  std::set<std::uint32_t> used_;
  std::uint32_t next_;  ///< VLANs below it are assigned.
};

}  // namespace Host::Import
