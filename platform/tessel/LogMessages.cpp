#include "platform/tessel/LogMessages.h"

namespace TesselLog {

constinit LogDescriptor const TESSEL_VXLAN_TUNNEL_TABLE_RESOURCE_FULL{
    "TESSEL_VXLAN_TUNNEL_TABLE_RESOURCE_FULL",
    "Hardware resources are insufficient to program outer SIP %s.",
    "Vxlan encapsulated packets destined to the remote VTEPswill be dropped.",
    "Reconfigure your network to reduce the number of remote VTEPs.",
    3,
    0};
constinit LogDescriptor const TESSEL_VXLAN_VP_TABLE_RESOURCE_FULL{
    "TESSEL_VXLAN_VP_TABLE_RESOURCE_FULL",
    "Hardware resources are insufficient to program the virtual port for remote VTEP %s.",
    "Vxlan encapsulated packets destined to the remote VTEPswill be dropped.",
    "Reconfigure your network to reduce the number of remote VTEPs.",
    3,
    0};
constinit LogDescriptor const TESSEL_VXLAN_CASCADED_NEXTHOP_RESOURCE_FULL{
    "TESSEL_VXLAN_CASCADED_NEXTHOP_RESOURCE_FULL",
    "Hardware resources are insufficient to program a cascaded nexthop entry for remote VTEP %s.",
    "Vxlan encapsulated packets to the destined remote VTEP will be dropped.",
    "Reduce the number of remote VTEPs.",
    3,
    0};
constinit LogDescriptor const TESSEL_VXLAN_UL_NEXT_HOP_RESOURCES_FULL{
    "TESSEL_VXLAN_UL_NEXT_HOP_RESOURCES_FULL",
    "Hardware resources are insufficient to program underlay for the nexthop IP %s.",
    "Vxlan encapsulation for the packets destined to theremote Vteps will be dropped.",
    "Reconfigure your network to reduce the number of underlay nexthop entries.",
    3,
    0};
constinit LogDescriptor const TESSEL_VXLAN_IPV6_DIP_RESOURCE_FULL{
    "TESSEL_VXLAN_IPV6_DIP_RESOURCE_FULL",
    "Hardware resources are insufficient to program VXLAN destination IP for local VTEP IP %s.",
    "Vxlan decapsulation for underlay IPv6 will not happen.As a result, packets during the decapsulation will be "
    "dropped.",
    "Reduce the number of VTEPs in the network.",
    3,
    0};
constinit LogDescriptor const TESSEL_VXLAN_IPV4_DIP_RESOURCE_FULL{
    "TESSEL_VXLAN_IPV4_DIP_RESOURCE_FULL",
    "Hardware resources are insufficient to program VXLAN destination IP for local VTEP IP %s.",
    "Vxlan decapsulation for underlay IPv4 will not happen.As a result, packets during the decapsulation will be "
    "dropped.",
    "Reduce the number of VTEPs in the network.",
    3,
    0};
constinit LogDescriptor const TESSEL_VXLAN_SIP_SVP_MAPPING_RESOURCE_FULL{
    "TESSEL_VXLAN_SIP_SVP_MAPPING_RESOURCE_FULL",
    "Hardware resources are insufficient to add remote VTEP ip %s mapping to SVP %u.",
    "The switch is unable to program the remote VTEP to SVP mappingdue to insufficient hardware resources.As a result, "
    "packets from this remote VTEPwill be assigned to default SVP and copied to CPU for VTEP learning.",
    "Reduce the number of remote VTEPs in the network.",
    3,
    0};
constinit LogDescriptor const TESSEL_VXLAN_VNI_VFI_MAPPING_RESOURCE_FULL{
    "TESSEL_VXLAN_VNI_VFI_MAPPING_RESOURCE_FULL",
    "Hardware resources are insufficient to program VNI %s to VFI %s mapping.",
    "The switch is unable to program the vni to vfi mappingdue to hardware hash collision,packets will be dropped "
    "during vxlan decapsulation.",
    "Reduce the number of VNI to VFI mapping entries orreconfigure your network with different VNIto VFI mapping to "
    "reduce hash collision.",
    3,
    0};
constinit LogDescriptor const TESSEL_VXLAN_UNDERLAY_MULTICAST_PIM_SM_ENABLED{
    "TESSEL_VXLAN_UNDERLAY_MULTICAST_PIM_SM_ENABLED",
    "Hardware resources for Underlay IIF switching with VxLAN underlay multicast are now configured for the current "
    "system profile.",
    "The switch can now perform Underlay IIF switching with VxLAN underlay multicast.",
    1U,
    3,
    0};
constinit LogDescriptor const TESSEL_VXLAN_UNDERLAY_MULTICAST_PIM_SM_DISABLED{
    "TESSEL_VXLAN_UNDERLAY_MULTICAST_PIM_SM_DISABLED",
    "Hardware resources for Underlay IIF switching with VxLAN underlay multicast are not configured for the current "
    "system profile.",
    "The switch is unable to do IIF switching without having space allocated for VxLAN underlay multicast.",
    "Configure hardware resources required for VxLAN underlay multicast under 'platform tessel profile configuration "
    "<profile>' configuration mode",
    3,
    0};
constinit LogDescriptor const TESSEL_PROFILE_VXLAN_UNSUPPORTED{
    "TESSEL_PROFILE_VXLAN_UNSUPPORTED",
    "Hardware resources required for VXLAN entries are not configured for the current system profile.",
    "The switch is unable to program VXLAN entries due to missing hardware resource configuration.",
    "Please remove any VXLAN configuration or enable VXLAN support for the current system profile.",
    3,
    0};
constinit LogDescriptor const TESSEL_UNEXPECTED_RESTART{"TESSEL_UNEXPECTED_RESTART",
                                                        "Unexpected restart of Tessel agent %s occurred",
                                                        "Unexpected restart of the Tessel agent occurred.",
                                                        2U,
                                                        3,
                                                        0};
constinit LogDescriptor const TESSEL_CONFIG_CHANGE{
    "TESSEL_CONFIG_CHANGE",
    "Configuration change requires the Tessel agent %s to restart",
    "Configuration change requires the switch ASIC to be reconfigured, requiring the Tessel agent to restart.",
    1U,
    6,
    0};
constinit LogDescriptor const ETH_VXLAN_CORE_SIDE_FLOODSET_FORWARDING_DISABLED{
    "ETH_VXLAN_CORE_SIDE_FLOODSET_FORWARDING_DISABLED",
    "Traffic sent to the vxlan core side floodset in vlan %d will be discarded%s.",
    "Broadcast and unknown DA traffic sent to the vlan floodset will be discarded in this VLAN. The vxlan core side "
    "floodset could not be programmed because hardware resources are full.",
    "Remove multicast groups or vlans in order to reduce hardware usage. When hardware resources are freed, the vlan "
    "floodset will automatically be programmed",
    3,
    0};
constinit LogDescriptor const ETH_VXLAN_CORE_SIDE_FLOODSET_FORWARDING_RESUMED{
    "ETH_VXLAN_CORE_SIDE_FLOODSET_FORWARDING_RESUMED",
    "Traffic sent to the vxlan core side floodset will be forwarded normally in vlan %d",
    "Broadcast and unknown DA traffic sent to the vxlan core side floodset will be forwarded normally in this VLAN.",
    1U,
    3,
    0};
constinit LogDescriptor const ETH_VLAN_FLOODSET_FORWARDING_DISABLED{
    "ETH_VLAN_FLOODSET_FORWARDING_DISABLED",
    "Traffic sent to the vlan floodset in vlan %d will be discarded%s.",
    "Broadcast and unknown DA traffic sent to the vlan floodset will be discarded in this VLAN. The vlan floodset "
    "could not be programmed because hardware resources are full.",
    "Remove multicast groups or vlans in order to reduce hardware usage. When hardware resources are freed, the vlan "
    "floodset will automatically be programmed",
    3,
    0};
constinit LogDescriptor const ETH_VLAN_FLOODSET_FORWARDING_RESUMED{
    "ETH_VLAN_FLOODSET_FORWARDING_RESUMED",
    "Traffic sent to the vlan floodset will be forwarded normally in vlan %d",
    "Broadcast and unknown DA traffic sent to the vlan floodset will be forwarded normally in this VLAN.",
    1U,
    3,
    0};

constinit LogDescriptor const MROUTE_HW_RESOURCE_FULL{"MROUTE_HW_RESOURCE_FULL", "", "", 1U, 3, 0};
constinit LogDescriptor const MROUTE_HW_RESOURCE_NORMAL{"MROUTE_HW_RESOURCE_NORMAL", "", "", 1U, 3, 0};
constinit LogDescriptor const PREFIX_MROUTE_HW_RESOURCE_FULL{"PREFIX_MROUTE_HW_RESOURCE_FULL", "", "", 1U, 3, 0};
constinit LogDescriptor const PREFIX_MROUTE_HW_RESOURCE_NORMAL{"PREFIX_MROUTE_HW_RESOURCE_NORMAL", "", "", 1U, 3, 0};
constinit LogDescriptor const BIDIR_RPA_RESOURCE_FULL{"BIDIR_RPA_RESOURCE_FULL", "", "", 1U, 3, 0};
constinit LogDescriptor const IGMPSNOOPING_HW_RESOURCE_FULL{"IGMPSNOOPING_HW_RESOURCE_FULL", "", "", 1U, 3, 0};
constinit LogDescriptor const IGMPSNOOPING_HW_RESOURCE_NORMAL{"IGMPSNOOPING_HW_RESOURCE_NORMAL", "", "", 1U, 3, 0};
constinit LogDescriptor const MLDSNOOPING_HW_RESOURCE_FULL{"MLDSNOOPING_HW_RESOURCE_FULL", "", "", 1U, 3, 0};
constinit LogDescriptor const MLDSNOOPING_HW_RESOURCE_NORMAL{"MLDSNOOPING_HW_RESOURCE_NORMAL", "", "", 1U, 3, 0};
constinit LogDescriptor const ETH_UNKNOWN_MULTICAST_FORWARDING_DISABLED{
    "ETH_UNKNOWN_MULTICAST_FORWARDING_DISABLED", "", "", 1U, 3, 0};
constinit LogDescriptor const ETH_UNKNOWN_MULTICAST_V6_FORWARDING_DISABLED{
    "ETH_UNKNOWN_MULTICAST_V6_FORWARDING_DISABLED", "", "", 1U, 3, 0};
constinit LogDescriptor const ETH_UNKNOWN_MULTICAST_FORWARDING_RESUMED{
    "ETH_UNKNOWN_MULTICAST_FORWARDING_RESUMED", "", "", 1U, 3, 0};
constinit LogDescriptor const ETH_UNKNOWN_MULTICAST_V6_FORWARDING_RESUMED{
    "ETH_UNKNOWN_MULTICAST_V6_FORWARDING_RESUMED", "", "", 1U, 3, 0};
constinit LogDescriptor const MROUTE_FASTDROP_LIMIT_EXCEEDED{"MROUTE_FASTDROP_LIMIT_EXCEEDED", "", "", 1U, 3, 0};
constinit LogDescriptor const MROUTE_FASTDROP_LIMIT_NO_LONGER_EXCEEDED{
    "MROUTE_FASTDROP_LIMIT_NO_LONGER_EXCEEDED", "", "", 1U, 3, 0};

std::span<LogDescriptor const* const> descriptors() {
  static constexpr LogDescriptor const* all[] = {
      &TESSEL_VXLAN_TUNNEL_TABLE_RESOURCE_FULL,
      &TESSEL_VXLAN_VP_TABLE_RESOURCE_FULL,
      &TESSEL_VXLAN_CASCADED_NEXTHOP_RESOURCE_FULL,
      &TESSEL_VXLAN_UL_NEXT_HOP_RESOURCES_FULL,
      &TESSEL_VXLAN_IPV6_DIP_RESOURCE_FULL,
      &TESSEL_VXLAN_IPV4_DIP_RESOURCE_FULL,
      &TESSEL_VXLAN_SIP_SVP_MAPPING_RESOURCE_FULL,
      &TESSEL_VXLAN_VNI_VFI_MAPPING_RESOURCE_FULL,
      &TESSEL_VXLAN_UNDERLAY_MULTICAST_PIM_SM_ENABLED,
      &TESSEL_VXLAN_UNDERLAY_MULTICAST_PIM_SM_DISABLED,
      &TESSEL_PROFILE_VXLAN_UNSUPPORTED,
      &TESSEL_UNEXPECTED_RESTART,
      &TESSEL_CONFIG_CHANGE,
      &ETH_VXLAN_CORE_SIDE_FLOODSET_FORWARDING_DISABLED,
      &ETH_VXLAN_CORE_SIDE_FLOODSET_FORWARDING_RESUMED,
      &ETH_VLAN_FLOODSET_FORWARDING_DISABLED,
      &ETH_VLAN_FLOODSET_FORWARDING_RESUMED,
      &MROUTE_HW_RESOURCE_FULL,
      &MROUTE_HW_RESOURCE_NORMAL,
      &PREFIX_MROUTE_HW_RESOURCE_FULL,
      &PREFIX_MROUTE_HW_RESOURCE_NORMAL,
      &BIDIR_RPA_RESOURCE_FULL,
      &IGMPSNOOPING_HW_RESOURCE_FULL,
      &IGMPSNOOPING_HW_RESOURCE_NORMAL,
      &MLDSNOOPING_HW_RESOURCE_FULL,
      &MLDSNOOPING_HW_RESOURCE_NORMAL,
      &ETH_UNKNOWN_MULTICAST_FORWARDING_DISABLED,
      &ETH_UNKNOWN_MULTICAST_V6_FORWARDING_DISABLED,
      &ETH_UNKNOWN_MULTICAST_FORWARDING_RESUMED,
      &ETH_UNKNOWN_MULTICAST_V6_FORWARDING_RESUMED,
      &MROUTE_FASTDROP_LIMIT_EXCEEDED,
      &MROUTE_FASTDROP_LIMIT_NO_LONGER_EXCEEDED,
  };
  return all;
}

}  // namespace TesselLog
