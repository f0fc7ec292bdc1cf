#pragma once

#include <iosfwd>

#include "host/show/Tunnels.h"
#include "platform/kiln/JsonOut.h"

namespace Host {

using Kiln::JsonWriter;

/// Prints the way of packets to one VTEP: what is wanted, then row by row what the chip has of it, from the overlay
/// entry to the ports; and why it is not all there if it isn't. `tunnels` are the reports of the VTEP's tunnels.
void printExplanation(std::ostream& out, Agent const& agent, Meshal::IpGenAddr const& vtep,
                      std::vector<TunnelReport> const& tunnels);
/// The same as members of a JSON object: "vtep", "tunnels", "chain"; each row of the chain holds its "links" by field.
/// REQUIRES: inside an object.
void writeExplanation(JsonWriter& json, Agent const& agent, Meshal::IpGenAddr const& vtep,
                      std::vector<TunnelReport> const& tunnels);

}  // namespace Host
