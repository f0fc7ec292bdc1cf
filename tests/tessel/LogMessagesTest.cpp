#include <gtest/gtest.h>

#include <string>

#include "platform/tessel/LogMessages.h"

namespace {

// Operators and their tools search for these texts, missing blanks included.
TEST(LogMessages, areWorded) {
  std::string texts, ready;
  for (auto const* message : TesselLog::descriptors()) {
    auto const name = std::string(message->name) + ' ' + std::to_string(message->severity);
    auto const action = message->action.code() != 0 ? std::to_string(message->action.code()) : message->action.text();
    if (message->format[0] == 0) {
      ready += name + '\n';
    } else {
      texts += name + '\n' + message->format + '\n' + message->explanation + '\n' + action + '\n';
    }
  }
  EXPECT_EQ(texts, R"(TESSEL_VXLAN_TUNNEL_TABLE_RESOURCE_FULL 3
Hardware resources are insufficient to program outer SIP %s.
Vxlan encapsulated packets destined to the remote VTEPswill be dropped.
Reconfigure your network to reduce the number of remote VTEPs.
TESSEL_VXLAN_VP_TABLE_RESOURCE_FULL 3
Hardware resources are insufficient to program the virtual port for remote VTEP %s.
Vxlan encapsulated packets destined to the remote VTEPswill be dropped.
Reconfigure your network to reduce the number of remote VTEPs.
TESSEL_VXLAN_CASCADED_NEXTHOP_RESOURCE_FULL 3
Hardware resources are insufficient to program a cascaded nexthop entry for remote VTEP %s.
Vxlan encapsulated packets to the destined remote VTEP will be dropped.
Reduce the number of remote VTEPs.
TESSEL_VXLAN_UL_NEXT_HOP_RESOURCES_FULL 3
Hardware resources are insufficient to program underlay for the nexthop IP %s.
Vxlan encapsulation for the packets destined to theremote Vteps will be dropped.
Reconfigure your network to reduce the number of underlay nexthop entries.
TESSEL_VXLAN_IPV6_DIP_RESOURCE_FULL 3
Hardware resources are insufficient to program VXLAN destination IP for local VTEP IP %s.
Vxlan decapsulation for underlay IPv6 will not happen.As a result, packets during the decapsulation will be dropped.
Reduce the number of VTEPs in the network.
TESSEL_VXLAN_IPV4_DIP_RESOURCE_FULL 3
Hardware resources are insufficient to program VXLAN destination IP for local VTEP IP %s.
Vxlan decapsulation for underlay IPv4 will not happen.As a result, packets during the decapsulation will be dropped.
Reduce the number of VTEPs in the network.
TESSEL_VXLAN_SIP_SVP_MAPPING_RESOURCE_FULL 3
Hardware resources are insufficient to add remote VTEP ip %s mapping to SVP %u.
The switch is unable to program the remote VTEP to SVP mappingdue to insufficient hardware resources.As a result, packets from this remote VTEPwill be assigned to default SVP and copied to CPU for VTEP learning.
Reduce the number of remote VTEPs in the network.
TESSEL_VXLAN_VNI_VFI_MAPPING_RESOURCE_FULL 3
Hardware resources are insufficient to program VNI %s to VFI %s mapping.
The switch is unable to program the vni to vfi mappingdue to hardware hash collision,packets will be dropped during vxlan decapsulation.
Reduce the number of VNI to VFI mapping entries orreconfigure your network with different VNIto VFI mapping to reduce hash collision.
TESSEL_VXLAN_UNDERLAY_MULTICAST_PIM_SM_ENABLED 3
Hardware resources for Underlay IIF switching with VxLAN underlay multicast are now configured for the current system profile.
The switch can now perform Underlay IIF switching with VxLAN underlay multicast.
1
TESSEL_VXLAN_UNDERLAY_MULTICAST_PIM_SM_DISABLED 3
Hardware resources for Underlay IIF switching with VxLAN underlay multicast are not configured for the current system profile.
The switch is unable to do IIF switching without having space allocated for VxLAN underlay multicast.
Configure hardware resources required for VxLAN underlay multicast under 'platform tessel profile configuration <profile>' configuration mode
TESSEL_PROFILE_VXLAN_UNSUPPORTED 3
Hardware resources required for VXLAN entries are not configured for the current system profile.
The switch is unable to program VXLAN entries due to missing hardware resource configuration.
Please remove any VXLAN configuration or enable VXLAN support for the current system profile.
TESSEL_UNEXPECTED_RESTART 3
Unexpected restart of Tessel agent %s occurred
Unexpected restart of the Tessel agent occurred.
2
TESSEL_CONFIG_CHANGE 6
Configuration change requires the Tessel agent %s to restart
Configuration change requires the switch ASIC to be reconfigured, requiring the Tessel agent to restart.
1
ETH_VXLAN_CORE_SIDE_FLOODSET_FORWARDING_DISABLED 3
Traffic sent to the vxlan core side floodset in vlan %d will be discarded%s.
Broadcast and unknown DA traffic sent to the vlan floodset will be discarded in this VLAN. The vxlan core side floodset could not be programmed because hardware resources are full.
Remove multicast groups or vlans in order to reduce hardware usage. When hardware resources are freed, the vlan floodset will automatically be programmed
ETH_VXLAN_CORE_SIDE_FLOODSET_FORWARDING_RESUMED 3
Traffic sent to the vxlan core side floodset will be forwarded normally in vlan %d
Broadcast and unknown DA traffic sent to the vxlan core side floodset will be forwarded normally in this VLAN.
1
ETH_VLAN_FLOODSET_FORWARDING_DISABLED 3
Traffic sent to the vlan floodset in vlan %d will be discarded%s.
Broadcast and unknown DA traffic sent to the vlan floodset will be discarded in this VLAN. The vlan floodset could not be programmed because hardware resources are full.
Remove multicast groups or vlans in order to reduce hardware usage. When hardware resources are freed, the vlan floodset will automatically be programmed
ETH_VLAN_FLOODSET_FORWARDING_RESUMED 3
Traffic sent to the vlan floodset will be forwarded normally in vlan %d
Broadcast and unknown DA traffic sent to the vlan floodset will be forwarded normally in this VLAN.
1
)");
  EXPECT_EQ(ready, R"(MROUTE_HW_RESOURCE_FULL 3
MROUTE_HW_RESOURCE_NORMAL 3
PREFIX_MROUTE_HW_RESOURCE_FULL 3
PREFIX_MROUTE_HW_RESOURCE_NORMAL 3
BIDIR_RPA_RESOURCE_FULL 3
IGMPSNOOPING_HW_RESOURCE_FULL 3
IGMPSNOOPING_HW_RESOURCE_NORMAL 3
MLDSNOOPING_HW_RESOURCE_FULL 3
MLDSNOOPING_HW_RESOURCE_NORMAL 3
ETH_UNKNOWN_MULTICAST_FORWARDING_DISABLED 3
ETH_UNKNOWN_MULTICAST_V6_FORWARDING_DISABLED 3
ETH_UNKNOWN_MULTICAST_FORWARDING_RESUMED 3
ETH_UNKNOWN_MULTICAST_V6_FORWARDING_RESUMED 3
MROUTE_FASTDROP_LIMIT_EXCEEDED 3
MROUTE_FASTDROP_LIMIT_NO_LONGER_EXCEEDED 3
)") << "their text is made where they are raised";
}

}  // namespace
