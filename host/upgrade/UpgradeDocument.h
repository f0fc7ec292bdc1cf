#pragma once

#include <string>

#include "platform/kiln/JsonIn.h"

namespace Host {

class Agent;

/// The upgrade document: which ids the VXLAN feature had in use for which VTEPs when its process ended.
///
/// An object of up to three objects, each by ids as decimal numbers: "vxlanVpVtepMap" (virtual ports) and
/// "vxlanNhIdVtepMap" (next hops) with the VTEP's address, "mhTnlIdVtepList" (groups) with an array of addresses.

/// The document of a running agent, as JSON text. Ids of rows that the chip does not have are left out.
std::string upgradeText(Agent const& agent);

/// Throws `InputError`, with file, place and value, for a document of another shape, an id that is not a decimal number
/// from 0 to 2147483647, and an address that is no unicast address.
void checkUpgrade(Kiln::JsonIn const& document);

/// The document of a file. Throws as `checkUpgrade`, and for a file that can't be read.
Kiln::JsonDocument readUpgrade(std::string const& file);

}  // namespace Host
