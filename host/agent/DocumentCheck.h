#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/document/Document.h"

namespace Host {

/// Refuses state that no switch can have although each of its values is of the right type: throws `InputError` for
/// - a VTEP that is not a unicast address or is an address of this switch; a source address that is not unicast;
/// - a multicast tunnel to what is no group, or to a group that no router forwards;
/// - an adjacency id above `maxAdjId`; a resolved next hop whose Ethernet address is not unicast, but for the multicast
///   addresses of a multicast tunnel's; a next hop behind the interface of a VLAN outside 1 to 4094;
/// - flood tunnels, which follow from flood lists; more flood VTEPs and multicast tunnels than `maxFloodTunnels`;
/// - two ports with one number; a layer 3 interface with VLAN 0;
/// - what `checkOverlay` refuses.
/// REQUIRES: `document` passes `Stateway::check`.
void checkSemantics(Stateway::StateDocument const& document);

/// What takes encapsulation ids.
struct FloodTunnels {
  std::size_t vteps = 0;
  std::size_t groups = 0;
};
/// Those of a document. REQUIRES: it passes `Stateway::check`.
FloodTunnels floodTunnels(Stateway::StateDocument const& document);

/// The chip has this many encapsulation ids, one for each flood VTEP and each multicast tunnel.
inline constexpr std::size_t maxFloodTunnels = 24'576;

/// The key of an underlay group is the adjacency id with its top bit set.
inline constexpr std::uint32_t maxAdjId = 0x7fffffff;

}  // namespace Host
