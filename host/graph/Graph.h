#pragma once

#include <vector>

#include "host/graph/Drawing.h"
#include "host/show/Mappings.h"
#include "host/show/Tunnels.h"

namespace Host {

/// The way of packets to and from a VTEP: its tunnels, their next hops, the chip's rows down to the ports, the rows
/// that let packets in, and what is missing. `tunnels` are the reports of the VTEP's tunnels.
Drawing vtepGraph(Agent const& agent, Meshal::IpGenAddr const& vtep, std::vector<TunnelReport> const& tunnels);
/// The same of a VNI: its mappings, the rows in both directions, and the VTEPs that it is flooded to.
Drawing vniGraph(Agent const& agent, Vxlan::VniExt vni, std::vector<MappingReport> const& mappings);

}  // namespace Host
