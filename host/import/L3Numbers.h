#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "host/import/BridgeVlans.h"
#include "host/import/Links.h"

namespace Host::Import {

/// The VLANs, or internal VLANs, of devices as layer 3 interfaces.
///
/// Every device that could be a layer 3 interface has a number, in order of ifindex, so that a number does not depend
/// on its users: that of its VLAN for a VLAN of a bridge and for a bridge that is one, for any other the highest that
/// is no VLAN in use.
class L3Numbers {
 public:
  L3Numbers(Links const& links, BridgeVlans const& vlans);

  static constexpr std::uint32_t none = 0;

  /// Nothing for a device that cannot be a layer 3 interface, `none` where the VLAN ids did not suffice.
  std::optional<std::uint32_t> of(Device const& device) const;

 private:
  std::map<std::string, std::uint32_t> numbers_;
};

}  // namespace Host::Import
