#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/import/Fields.h"
#include "host/import/Links.h"

namespace Host::Import {

/// The VLAN of the switch that the frames of a VXLAN device belong to.
///
/// - A device that carries several VNIs: the VLAN that the bridge maps the VNI to.
/// - In a bridge that filters VLANs: the device's PVID.
/// - In another bridge, which is one VLAN of the switch: the bridge's number as layer 3 interface.
class BridgeVlans {
 public:
  /// `portVlans` is what `bridge vlan` prints, `tunnels` what `bridge vlan tunnelshow` prints; both may be null.
  /// `links` is kept. Throws InputError where a value is of a wrong type or a VLAN is outside 1 to 4094.
  BridgeVlans(JsonDocument const* portVlans, JsonDocument const* tunnels, Links const& links);

  /// The VLAN of a device or, with `vni`, of one of its VNIs. `vlan` is 0 where none is known, for the reason `why`.
  struct Result {
    std::uint32_t vlan = 0;
    std::string why;
  };
  Result vlanOf(std::string const& device, std::optional<std::uint32_t> vni) const;

 private:
  /// VLANs and VNIs that increase together.
  struct Range {
    std::uint32_t firstVni = 0;
    std::uint32_t lastVni = 0;
    std::uint32_t firstVlan = 0;
  };
  void addTunnel(std::string const& device, JsonIn at);
  Result mappedVlan(std::string const& device, std::uint32_t vni) const;

  Links const& links_;
  std::map<std::string, std::uint32_t> pvids_;
  std::map<std::string, std::vector<Range>> tunnels_;
};

}  // namespace Host::Import
