#pragma once

#include <fmt/format.h>

#include <string>

#include "host/import/Links.h"

namespace Host::Import {

/// Why no frame to a next hop over the device leaves by a port of the switch, whatever the neighbour: "over the tunnel
/// device gre1". Empty where it may leave by one.
inline std::string whyNoPort(Device const& device, Links const& links) {
  auto const over = [&](std::string_view what) { return fmt::format("over the {} {}", what, device.name); };
  switch (device.kind) {
    case DeviceKind::tunnel:
      return over("tunnel device");
    case DeviceKind::vxlan:
      return over("VXLAN device");
    case DeviceKind::dummy:
      return over("dummy device");
    case DeviceKind::vrf:
      return over("VRF");
    case DeviceKind::loopback:
      return over("loopback device");
    case DeviceKind::macvlan:
    case DeviceKind::vlan:
      return links.port(device) || links.bridgeUnder(device)
                 ? ""
                 : over("device") + (device.link.empty() ? ", whose own device is unknown" : " of " + device.link);
    case DeviceKind::port:
    case DeviceKind::lag:
      return links.isPort(device) ? "" : fmt::format("over {}, a member of {}", device.name, device.master);
    case DeviceKind::bridge:
      return "";
  }
  return "";
}

}  // namespace Host::Import
