#pragma once

#include <span>

#include "platform/kiln/Log.h"

/// The operator messages of the agent. A file that raises one has a handle of its own:
///
///     Kiln::LogHandle vpTableFull(TesselLog::TESSEL_VXLAN_VP_TABLE_RESOURCE_FULL, 0, 1.0, 0, 0);
///
/// These arguments mean no rate limit. Only messages of the multicast family whose name ends in FULL have one: (30.0,
/// 1.0, 2, 0). Operators search for the texts: do not change them, missing blanks included.
namespace TesselLog {

using Kiln::LogDescriptor;

// VXLAN tables and profile.
extern LogDescriptor const TESSEL_VXLAN_TUNNEL_TABLE_RESOURCE_FULL;
extern LogDescriptor const TESSEL_VXLAN_VP_TABLE_RESOURCE_FULL;
extern LogDescriptor const TESSEL_VXLAN_CASCADED_NEXTHOP_RESOURCE_FULL;
extern LogDescriptor const TESSEL_VXLAN_UL_NEXT_HOP_RESOURCES_FULL;
extern LogDescriptor const TESSEL_VXLAN_IPV6_DIP_RESOURCE_FULL;
extern LogDescriptor const TESSEL_VXLAN_IPV4_DIP_RESOURCE_FULL;
extern LogDescriptor const TESSEL_VXLAN_SIP_SVP_MAPPING_RESOURCE_FULL;
extern LogDescriptor const TESSEL_VXLAN_VNI_VFI_MAPPING_RESOURCE_FULL;
extern LogDescriptor const TESSEL_VXLAN_UNDERLAY_MULTICAST_PIM_SM_ENABLED;
extern LogDescriptor const TESSEL_VXLAN_UNDERLAY_MULTICAST_PIM_SM_DISABLED;
extern LogDescriptor const TESSEL_PROFILE_VXLAN_UNSUPPORTED;

// The agent itself and its layer-2 side.
extern LogDescriptor const TESSEL_UNEXPECTED_RESTART;
extern LogDescriptor const TESSEL_CONFIG_CHANGE;
extern LogDescriptor const ETH_VXLAN_CORE_SIDE_FLOODSET_FORWARDING_DISABLED;
extern LogDescriptor const ETH_VXLAN_CORE_SIDE_FLOODSET_FORWARDING_RESUMED;
extern LogDescriptor const ETH_VLAN_FLOODSET_FORWARDING_DISABLED;
extern LogDescriptor const ETH_VLAN_FLOODSET_FORWARDING_RESUMED;

// Multicast. The text is made where the message is raised.
extern LogDescriptor const MROUTE_HW_RESOURCE_FULL;
extern LogDescriptor const MROUTE_HW_RESOURCE_NORMAL;
extern LogDescriptor const PREFIX_MROUTE_HW_RESOURCE_FULL;
extern LogDescriptor const PREFIX_MROUTE_HW_RESOURCE_NORMAL;
extern LogDescriptor const BIDIR_RPA_RESOURCE_FULL;
extern LogDescriptor const IGMPSNOOPING_HW_RESOURCE_FULL;
extern LogDescriptor const IGMPSNOOPING_HW_RESOURCE_NORMAL;
extern LogDescriptor const MLDSNOOPING_HW_RESOURCE_FULL;
extern LogDescriptor const MLDSNOOPING_HW_RESOURCE_NORMAL;
extern LogDescriptor const ETH_UNKNOWN_MULTICAST_FORWARDING_DISABLED;
extern LogDescriptor const ETH_UNKNOWN_MULTICAST_V6_FORWARDING_DISABLED;
extern LogDescriptor const ETH_UNKNOWN_MULTICAST_FORWARDING_RESUMED;
extern LogDescriptor const ETH_UNKNOWN_MULTICAST_V6_FORWARDING_RESUMED;
extern LogDescriptor const MROUTE_FASTDROP_LIMIT_EXCEEDED;
extern LogDescriptor const MROUTE_FASTDROP_LIMIT_NO_LONGER_EXCEEDED;

/// Every descriptor above, in that order.
std::span<LogDescriptor const* const> descriptors();

}  // namespace TesselLog
