#include "platform/kiln/AttributeDefinitions.h"
#include "platform/vane/FloodLists.h"
#include "platform/vane/HerVtep.h"
#include "platform/vane/HwTunnel.h"
#include "platform/vane/McastTunnel.h"
#include "platform/vane/PktDrv.h"
#include "platform/vane/VaneHelperTunnelSm.h"
#include "platform/vane/VaneHelperVni.h"
#include "platform/vane/VaneHelperVniSm.h"
#include "platform/vane/VaneTunnel.h"
#include "platform/vane/VaneVxlanHwHerSm.h"
#include "platform/vane/VaneVxlanMcastSm.h"
#include "platform/vane/VtepGroup.h"
#include "platform/vane/VtiStatusDirSm.h"
#include "platform/vane/VxlanInfo.h"

KILN_DESCRIBE(Vane::VXLAN::VaneVxlanHwHerVtepConfig)
KILN_DESCRIBE(Vane::VXLAN::VaneVxlanHwHerVtepConfigDir)
KILN_DESCRIBE(Vane::VXLAN::VaneVxlanHwHerVtepStatus)
KILN_DESCRIBE(Vane::VXLAN::VaneVxlanHwHerVtepStatusDir)
KILN_DESCRIBE(Vane::NextHopEntryList)
KILN_DESCRIBE(Vane::HwTunnelConfigEntry)
KILN_DESCRIBE(Vane::HwTunnelConfig)
KILN_DESCRIBE(Vane::HwTunnelConfigDir)
KILN_DESCRIBE(Vane::HwTunnelStatusEntry)
KILN_DESCRIBE(Vane::HwTunnelStatus)
KILN_DESCRIBE(Vane::HwTunnelStatusDir)
KILN_DESCRIBE(VaneHelper::VaneHelperTunnelSm)
KILN_DESCRIBE(VaneHelper::VaneHelperVniConfig)
KILN_DESCRIBE(VaneHelper::VaneHelperVniStatus)
KILN_DESCRIBE(VaneHelper::VaneHelperVni)
KILN_DESCRIBE(VaneHelper::VaneHelperVniSm)
KILN_DESCRIBE(Vane::PktDrv)
KILN_DESCRIBE(Vane::VaneAdjacency)
KILN_DESCRIBE(Vane::VaneTunnelConfigEntry)
KILN_DESCRIBE(Vane::VaneTunnelConfig)
KILN_DESCRIBE(Vane::VaneTunnelStatusEntry)
KILN_DESCRIBE(Vane::VaneTunnelStatus)
KILN_DESCRIBE(Vane::VaneTunnelConfigDir)
KILN_DESCRIBE(Vane::VaneTunnelStatusDir)
KILN_DESCRIBE(Vane::VaneCommonSmData)
KILN_DESCRIBE(Vane::VXLAN::VaneVtepGroupConfig)
KILN_DESCRIBE(Vane::VXLAN::VaneVtepGroupConfigDir)
KILN_DESCRIBE(Vane::VXLAN::VaneVtepGroupStatus)
KILN_DESCRIBE(Vane::VXLAN::VaneVtepGroupStatusDir)
KILN_DESCRIBE(Vane::VXLAN::VtepGroupConfigDir)
KILN_DESCRIBE(Vane::VXLAN::VtepGroupStatusDir)
KILN_DESCRIBE(Vane::VXLAN::VtiStatusDirSm)
KILN_DESCRIBE(Vane::VXLAN::VaneGlobalVtiStatus)
KILN_DESCRIBE(Vane::VXLAN::VaneVxlanActivedVti)
KILN_DESCRIBE(Vane::VXLAN::VaneVniSmState)
KILN_DESCRIBE(Vane::VXLAN::VaneVxlanInfo)
KILN_DESCRIBE(Vane::VXLAN::VtiStatusDirSm::NestedSm_VtiStatus)
KILN_DESCRIBE(VaneHelper::VaneHelperTunnelSm::NestedSm_HwTunnelConfigEntry)
KILN_DESCRIBE(L2Rib::FloodSet)
KILN_DESCRIBE(L2Rib::FloodSetOutput)
KILN_DESCRIBE(VxlanController::VtepStatusDirV2)
KILN_DESCRIBE(Vane::VXLAN::NestedSm_FloodSet)
KILN_DESCRIBE(Vane::VXLAN::VaneVxlanHwHerSm)
KILN_DESCRIBE(Multicast::Vxlan::TunnelConfig)
KILN_DESCRIBE(Multicast::Vxlan::TunnelConfigDir)
KILN_DESCRIBE(Multicast::Vxlan::TunnelStatus)
KILN_DESCRIBE(Multicast::Vxlan::TunnelStatusDir)
KILN_DESCRIBE(Multicast::Vxlan::VxlanMcastTunnelConfigDir)
KILN_DESCRIBE(Multicast::Vxlan::VxlanMcastTunnelStatusDir)
KILN_DESCRIBE(Multicast::Vxlan::VxlanBumTunnelConfigDir)
KILN_DESCRIBE(Multicast::Vxlan::VxlanBumTunnelStatusDir)
KILN_DESCRIBE(Multicast::Vxlan::VxlanMcastHerTunnelConfigDir)
KILN_DESCRIBE(Multicast::Vxlan::VxlanMcastHerTunnelStatusDir)
KILN_DESCRIBE(Multicast::Tunnel::ConfigDirColl)
KILN_DESCRIBE(Multicast::Tunnel::StatusDirColl)
KILN_DESCRIBE(Vane::VXLAN::McastTunnels)
KILN_DESCRIBE(Vane::VXLAN::VaneVxlanMcastSm)
KILN_DESCRIBE(Vane::VXLAN::NestedSm_McastTunnelConfig)
KILN_DESCRIBE(Vane::VXLAN::NestedSm_McastTunnelStatus)
