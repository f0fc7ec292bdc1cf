#pragma once

#include <iosfwd>

#include "host/show/Tunnels.h"
#include "platform/kiln/JsonOut.h"

namespace Host {

using Kiln::JsonWriter;

/// Prints the way of packets to and from one VTEP or group: what is wanted and why it is not all there if it isn't,
/// each next hop as wanted and as in the chip, then row by row what the chip has of it: the overlay entry down to the
/// ports, the copies of flooded frames by port, and the rows that let packets in; at the end one verdict with the first
/// gap. `tunnels` are the reports of the VTEP's tunnels.
void printExplanation(std::ostream& out, Agent const& agent, Meshal::IpGenAddr const& vtep,
                      std::vector<TunnelReport> const& tunnels);
/// The same as members of a JSON object: "vtep", "tunnels", "hops", "verdict", "gap", "chain" with "overlay",
/// "virtualPort", "encapId", "copies", "source" and "destination". Each row holds its "links" by field. REQUIRES:
/// inside an object.
void writeExplanation(JsonWriter& json, Agent const& agent, Meshal::IpGenAddr const& vtep,
                      std::vector<TunnelReport> const& tunnels);

}  // namespace Host
