#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "host/import/Address.h"
#include "host/import/BridgeVlans.h"
#include "host/import/Links.h"
#include "host/import/Neighbours.h"

namespace Host::Import {

/// Why packets can't be sent to a router behind a layer 3 VNI, by VNI and by the router's VTEP.
///
/// Such a router is the gateway of a unicast route over the interface of a VNI's VLAN: packets to it need its MAC
/// address from the neighbours, and an entry of that address toward its VTEP from the forwarding database. `routes` and
/// `fdb` may be null: without routes nothing is missing.
std::map<std::uint32_t, std::map<IpGenAddr, std::string>> missingRouters(JsonDocument const* routes,
                                                                         JsonDocument const* fdb,
                                                                         Neighbours const& neighbours,
                                                                         Links const& links, BridgeVlans const& vlans);

}  // namespace Host::Import
