#pragma once

#include <iosfwd>
#include <vector>

#include "host/show/Mappings.h"
#include "platform/kiln/JsonOut.h"

namespace Host {

/// Prints the mappings of one VNI: what is wanted and its status, the chip's row of the VNI, those of its VLANs, the
/// packet driver's VLAN, the VTEPs that it is flooded to, and at the end one verdict with the first thing that is
/// missing. `mappings` are its reports.
void printVniExplanation(std::ostream& out, Agent const& agent, Vxlan::VniExt vni,
                         std::vector<MappingReport> const& mappings);
/// The same as members of a JSON object: "vni", "mappings", "chain" with "ingress", "egress" by VLAN and
/// "packetDriver", "floods", "verdict", "gap". REQUIRES: inside an object.
void writeVniExplanation(Kiln::JsonWriter& json, Agent const& agent, Vxlan::VniExt vni,
                         std::vector<MappingReport> const& mappings);

}  // namespace Host
