// Every table class of the agent is loaded with this file, so that a profile can name it.
#include "platform/asic/TableDefinitions.h"
#include "platform/tessel/tables/EcmpGroup1Table.h"
#include "platform/tessel/tables/EcmpIndirectionTableConfigReg.h"
#include "platform/tessel/tables/EcmpMember1Table.h"
#include "platform/tessel/tables/EcnTables.h"
#include "platform/tessel/tables/EgrL3Ipv4TunnelTable.h"
#include "platform/tessel/tables/EgrL3Ipv6TunnelTable.h"
#include "platform/tessel/tables/EgrL3Oif2.h"
#include "platform/tessel/tables/EpreTables.h"
#include "platform/tessel/tables/HerNextHopTables.h"
#include "platform/tessel/tables/IngL3EcmpMember0Table.h"
#include "platform/tessel/tables/IpmcTable.h"
#include "platform/tessel/tables/L2TunnelTermTables.h"
#include "platform/tessel/tables/L3NextHop1Table.h"
#include "platform/tessel/tables/L3NextHop2Table.h"
#include "platform/tessel/tables/RL2TunnelDefaultNetworkSvp.h"
#include "platform/tessel/tables/VirtualPortTableMerged.h"
#include "platform/tessel/tables/VniTables.h"
#include "platform/tessel/tables/VpLagTables.h"
#include "platform/tessel/tables/VxlanEgrL3Oif1Table.h"

ASIC_DESCRIBE_TABLE(TesselL3Tunnel::EcmpGroup1Table)
ASIC_DESCRIBE_TABLE(TesselVxlan::EcmpIndirectionTableConfigReg)
ASIC_DESCRIBE_TABLE(TesselVxlan::EcmpMember1Table)
ASIC_DESCRIBE_TABLE(TesselVxlan::FlexQoSEgrEcn6Table)
ASIC_DESCRIBE_TABLE(TesselVxlan::FlexQosIngEcn)
ASIC_DESCRIBE_TABLE(TesselVxlan::EgrL3Ipv4TunnelTable)
ASIC_DESCRIBE_TABLE(TesselVxlan::EgrL3Ipv6TunnelTable)
ASIC_DESCRIBE_TABLE(TesselL3Tunnel::EgrL3Oif2)
ASIC_DESCRIBE_TABLE(TesselEpre::EpreCcbeNextHopRemapTable)
ASIC_DESCRIBE_TABLE(TesselVxlan::EpreEdevConfigCcbeRegister)
ASIC_DESCRIBE_TABLE(TesselVxlan::HerNextHop1Table)
ASIC_DESCRIBE_TABLE(TesselVxlan::HerNextHop2Table)
ASIC_DESCRIBE_TABLE(TesselVxlan::IngL3EcmpMember0Table)
ASIC_DESCRIBE_TABLE(TesselMcast::IpmcTable)
ASIC_DESCRIBE_TABLE(TesselVxlan::L2TunnelIpv4DipTable)
ASIC_DESCRIBE_TABLE(TesselVxlan::L2TunnelIpv6DipTable)
ASIC_DESCRIBE_TABLE(TesselVxlan::L2TunnelIpv4SipTable)
ASIC_DESCRIBE_TABLE(TesselVxlan::L2TunnelIpv6SipTable)
ASIC_DESCRIBE_TABLE(TesselVxlan::AllowedPortBitmapProfile)
ASIC_DESCRIBE_TABLE(TesselVxlan::IngL3NextHop1)
ASIC_DESCRIBE_TABLE(TesselVxlan::EgrL3NextHop1)
ASIC_DESCRIBE_TABLE(TesselVxlan::L3NextHop1Table)
ASIC_DESCRIBE_TABLE(TesselL3Common::IngL3NextHop2Table)
ASIC_DESCRIBE_TABLE(TesselL3Common::EgrL3NextHop2)
ASIC_DESCRIBE_TABLE(TesselL3Common::L3NextHop2Table)
ASIC_DESCRIBE_TABLE(TesselVxlan::RL2TunnelDefaultNetworkSvp)
ASIC_DESCRIBE_TABLE(TesselL3Common::VirtualPort1Table)
ASIC_DESCRIBE_TABLE(TesselL3Common::VirtualPort2Table)
ASIC_DESCRIBE_TABLE(TesselL3Common::VirtualPortTableMerged)
ASIC_DESCRIBE_TABLE(TesselVxlan::L2TunnelVnIdTable)
ASIC_DESCRIBE_TABLE(TesselVxlan::EgrVfiToVniMappingTable)
ASIC_DESCRIBE_TABLE(TesselVxlan::EgrAdaptSinglePortGroupTable)
ASIC_DESCRIBE_TABLE(TesselVxlan::VxlanV4UnderlayMcastTable)
ASIC_DESCRIBE_TABLE(TesselVxlan::VpLagGroupTable)
ASIC_DESCRIBE_TABLE(TesselVxlan::VpLagEcmpMember0Table)
ASIC_DESCRIBE_TABLE(TesselVxlan::VxlanEgrL3Oif1Table)
