#include "platform/kiln/AttributeDefinitions.h"
#include "platform/tessel/central/CommonData.h"
#include "platform/tessel/central/PortConfigDir.h"
#include "platform/tessel/central/VxlanRecords.h"
#include "platform/tessel/central/VxlanToL2State.h"
#include "platform/tessel/features/ChipAttributes.h"
#include "platform/tessel/features/EcnTunnelTableAttributes.h"
#include "platform/tessel/features/EgrL3TunnelTableAttributes.h"
#include "platform/tessel/features/L3NextHopAttributes.h"
#include "platform/tessel/features/TesselChipAttributesVxlan.h"
#include "platform/tessel/features/TesselSbrAttributes.h"
#include "platform/tessel/l3/EgrL3OifHelper.h"
#include "platform/tessel/l3/L3Intf.h"
#include "platform/tessel/l3common/TesselVxlanState.h"
#include "platform/tessel/l3common/VxlanDirs.h"
#include "platform/tessel/mroute/MrouteVxlanDecapTable.h"
#include "platform/tessel/mroute/TesselVxlanUnderlayMulticastBaseSm.h"
#include "platform/tessel/opaque/Records.h"
#include "platform/tessel/opaque/StateMachines.h"
#include "platform/tessel/qos/TrustStatus.h"
#include "platform/tessel/vtepgroup/VaneHelperVtepGroupDirSm.h"
#include "platform/tessel/vtepgroup/VaneHelperVtepGroupSm.h"

KILN_DESCRIBE(TesselCentral::LogicalModInfo)
KILN_DESCRIBE(TesselCentral::FeatureAgentCommonSmData)
KILN_DESCRIBE(TesselCentral::PortConfigDir)
KILN_DESCRIBE(TesselCentral::VxlanState)
KILN_DESCRIBE(TesselCentral::VxlanSliceConfig)
KILN_DESCRIBE(TesselCentral::VxlanCapabilities)
KILN_DESCRIBE(TesselCentral::VfiCapabilityStatus)
KILN_DESCRIBE(TesselCentral::VlanVfiDir)
KILN_DESCRIBE(TesselCentral::L2ToVxlanState)
KILN_DESCRIBE(TesselCentral::VlanMappingDir)
KILN_DESCRIBE(TesselCentral::VxlanL3StatusEntryDir)
KILN_DESCRIBE(TesselCentral::VtepIpToTnlIdNhIdMap)
KILN_DESCRIBE(TesselCentral::RecoveredVtepList)
KILN_DESCRIBE(TesselCentral::VxlanToL2State)
KILN_DESCRIBE(TesselCentral::ChipAttributes)
KILN_DESCRIBE(TesselCentral::VxlanCapabilityAttributes)
KILN_DESCRIBE(TesselVxlan::EcnTunnelTableAttributes)
KILN_DESCRIBE(TesselVxlan::EgrL3TunnelTableAttributes)
KILN_DESCRIBE(TesselL3Unicast::L3NextHopAttributes)
KILN_DESCRIBE(TesselVxlan::TesselChipAttributesVxlan)
KILN_DESCRIBE(TesselTile::TesselSbrAttributes)
KILN_DESCRIBE(Interface::VlanIntfConfigDir)
KILN_DESCRIBE(MrouteLib::MrouteVxlanDecapTable)
KILN_DESCRIBE(Routing::Multicast::McastEvpnStatus)
KILN_DESCRIBE(TesselL3Common::TesselVxlanUnderlayMulticastBaseSm)
KILN_DESCRIBE(Vane::VaneHelperVtepGroupDirSm)
KILN_DESCRIBE(Vane::VaneHelperVtepGroupSm)
KILN_DESCRIBE(Vane::NestedSm_MemberVtep)
KILN_DESCRIBE(TesselVxlanCommon::L3McastEvpnStatusSmCommon)
KILN_DESCRIBE(TesselL3Tunnel::L3TunnelEgrL3OifHelper)
KILN_DESCRIBE(VaneL3Intf::Table)
KILN_DESCRIBE(TesselL3::RoutingStatus)
KILN_DESCRIBE(TesselL3Common::TesselVxlanState)
KILN_DESCRIBE(TesselL3Common::TesselVxlanBootStatus)
KILN_DESCRIBE(TesselL3Common::TesselVxlanConfig)
KILN_DESCRIBE(TesselL3Common::TesselVxlanStatus)
KILN_DESCRIBE(TesselL3Common::VxlanDvpToVtepMap)
KILN_DESCRIBE(TesselL3Common::VxlanTunnelIndexToVtepMap)
KILN_DESCRIBE(TesselL3Common::TesselVxlanVtepNextHop)
KILN_DESCRIBE(TesselL3Common::TesselVxlanBumVtepConfig)
KILN_DESCRIBE(TesselL3Common::TesselVxlanBumVtepConfigDir)
KILN_DESCRIBE(TesselL3Common::EncapIdToBumVtepIpConfig)
KILN_DESCRIBE(TesselL3Common::EncapIdToBumVtepIpConfigDir)
KILN_DESCRIBE(TesselL3Common::FloodUnderlayVlanToVtepListDir)
KILN_DESCRIBE(TesselCommon::Qos::TrustStatus)
KILN_DESCRIBE(TesselCommon::Qos::TrustStatusSm)
