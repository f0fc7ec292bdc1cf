#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/show/Tunnels.h"
#include "host/show/VtepRows.h"

namespace Host {

/// Why the tunnel of `report`, which is not programmed, does not carry packets, in a few words.
///
/// A tunnel is programmed when its ids are published and the chip has every row that its traffic needs in either
/// direction (`RowFinder::needed`), with all that these lead to. Otherwise the first of these that holds: a chip that
/// does not serve the type, no local address of the VTEP's family, no UDP port, no route, an adjacency that is not
/// stated, next hops that are not resolved, next hops without a port, a row that the chip does not have (the table is
/// full, the write failed, or it is still going on), a table that the chip does not have, a copy of flooded frames that
/// is not made or is sent to a former MAC address of its next hop. `wanted` are the wanted tunnels of the report's
/// type; null for the multicast types. REQUIRES: all of the report but its reason is set.
std::string whyNotProgrammed(Agent const& agent, Vane::VaneTunnelConfig const* wanted, TunnelReport const& report);

/// "1 of 2 next hops" and what is wrong with the first of the others, of a tunnel that not all of its next hops carry
/// packets of. Nothing if all do.
std::optional<std::string> halfResolved(Agent const& agent, TunnelReport const& report);

/// What is wrong with the copies of flooded frames to the VTEP of a flood tunnel, in a few words: a next hop of a
/// multicast tunnel to which none is sent, or one that is sent to another MAC address than its next hop has now.
/// Nothing if all is right.
std::optional<std::string> copyFault(Agent const& agent, RowFinder const& rows, TunnelReport const& report);

}  // namespace Host
