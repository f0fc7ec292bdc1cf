#include "TesselVxlan/frame/TesselVxlanMounter.h"

#include "TesselVxlan/frame/TesselVxlanVaulterPStoreHelper.h"
#include "TesselVxlan/frame/Toggles.h"
#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"
#include "platform/tessel/tables/EcnTables.h"
#include "platform/tessel/tables/HerNextHopTables.h"
#include "platform/tessel/tables/IngL3EcmpMember0Table.h"
#include "platform/tessel/tables/L3NextHop1Table.h"
#include "platform/tessel/tables/VpLagTables.h"

KILN_TRACE_FILE("TesselVxlanMounter");

namespace TesselVxlan {

namespace {

struct MountRow {
  char const* path;
  char const* type;
  char const* mode;
  bool helperVni = false;  ///< Mounted only if the layer-2 agent owns the VNI helper.
};

// Path and mode are a contract with the writers and readers of these paths.
constexpr MountRow mounts[] = {
    {"hardware/tessel/system/profile", "Kiln::Dir", "ri"},
    {"interface/status/eth/vxlan", "Vxlan::VtiStatusDir", "r"},
    {"hardware/tessel/tunnel/configDir/vxlanTunnel", "Vane::VaneTunnelConfig", "w"},
    {"hardware/tessel/tunnel/statusDir/vxlanTunnel", "Vane::VaneTunnelStatus", "w"},
    {"hardware/tessel/tunnel/configDir/vxlanMemberTunnel", "Vane::VaneTunnelConfig", "w"},
    {"hardware/tessel/tunnel/statusDir/vxlanMemberTunnel", "Vane::VaneTunnelStatus", "w"},
    {"hardware/tessel/tunnel/configDir/vxlanHwHerTunnel", "Vane::VaneTunnelConfig", "w"},
    {"hardware/tessel/tunnel/statusDir/vxlanHwHerTunnel", "Vane::VaneTunnelStatus", "w"},
    {"hardware/tessel/tunnel/vxlan/vaneVtepGroupConfigDir", "Vane::VXLAN::VaneVtepGroupConfigDir", "r"},
    {"hardware/tessel/tunnel/vxlan/vaneVtepGroupStatusDir", "Vane::VXLAN::VaneVtepGroupStatusDir", "r"},
    {"hardware/tessel/tunnel/vxlan/herVtepStatus", "Vane::VXLAN::VaneVxlanHwHerVtepStatusDir", "w"},
    {"hardware/tessel/tunnel/vxlan/vxlanToL2State", "TesselCentral::VxlanToL2State", "w"},
    {"hardware/tessel/tunnel/vxlan/l2ToVxlanState", "TesselCentral::L2ToVxlanState", "r"},
    {"hardware/tessel/tunnel/vxlan/l3Config/vlanMapping", "TesselCentral::VlanMappingDir", "r"},
    {"hardware/tessel/tunnel/vxlan/helperVniConfig", "VaneHelper::VaneHelperVniConfig", "r", true},
    {"hardware/tessel/tunnel/vxlan/helperVniStatus", "VaneHelper::VaneHelperVniStatus", "w", true},
    {"hardware/tessel/tunnel/vxlan/l3Status/vxlanL3StatusEntry", "TesselCentral::VxlanL3StatusEntryDir", "w"},
    {"hardware/tessel/vfi/l2Status/vlanVfiMap", "TesselCentral::VlanVfiDir", "w"},
    {"vxlan/hardware/status", "Vxlan::VxlanHwStatusDir", "w"},
    {"bridging/config", "Bridging::Config", "r"},
    {"hardware/tessel/tunnel/vxlan/sliceConfig", "TesselCentral::VxlanSliceConfig", "w"},
    {"hardware/tessel/tunnel/vxlan/vxlanInfo/vaneGlobalVtiStatus", "Vane::VXLAN::VaneGlobalVtiStatus", "r"},
    {"hardware/tessel/tunnel/vxlan/vxlanInfo/vaneActivatedVti", "Vane::VXLAN::VaneVxlanActivedVti", "r"},
    {"hardware/tessel/tunnel/vxlan/vxlanState", "TesselCentral::VxlanState", "r"},
    {"vxlan/version2/vtepStatusDir", "VxlanController::VtepStatusDirV2", "r"},
    {"vxlan/ecnConfig", "Vxlan::EcnConfig", "r"},
    {"vxlan/config", "Vxlan::VxlanConfigDir", "r"},
    {"qos/hardware/tessel/trust/status/slice", "Kiln::Dir", "ri"},
    {"vxlan/multicast/tunnel/config", "Multicast::Vxlan::VxlanMcastTunnelConfigDir", "r"},
    {"vxlan/multicast/tunnel/status", "Multicast::Vxlan::VxlanMcastTunnelStatusDir", "w"},
    {"vxlan/multicast/bumTunnel/config", "Multicast::Vxlan::VxlanBumTunnelConfigDir", "w"},
    {"vxlan/multicast/bumTunnel/status", "Multicast::Vxlan::VxlanBumTunnelStatusDir", "w"},
    {"vxlan/multicast/herTunnel/config", "Multicast::Vxlan::VxlanMcastHerTunnelConfigDir", "w"},
    {"vxlan/multicast/herTunnel/status", "Multicast::Vxlan::VxlanMcastHerTunnelStatusDir", "w"},
    {"routing/multicast/mcastEvpnStatus", "Routing::Multicast::McastEvpnStatus", "r"},
    {"routing6/multicast/mcastEvpnStatus", "Routing::Multicast::McastEvpnStatus", "r"},
    {"evpn/status", "Evpn::EvpnStatus", "r"},
};

void doMount(Stateway::MountGroup& group, MountRow const& row) {
  Stateway::Mount mount(row.path, row.type);
  mount.flags().valIs(0);
  mount.handleFlags(row.mode);
  group.doMount(mount);
}

}  // namespace

TesselVxlanMounter::~TesselVxlanMounter() {
  nodeFlagSet(kZombie, true);
  if (vxlanMounterSmWrapper()) vxlanMounterSmWrapper()->hasNotificationActiveIs(false);
}

void TesselVxlanMounter::doInit() {
  auto const mountGroup = statewayEm()->getMountGroup(*this);
  TRACE(0, ": Mounting...");
  for (auto const& row : mounts) {
    if (!row.helperVni || toggleVaneVniSmInTesselL2Enabled()) doMount(*mountGroup, row);
  }
  doMountSwTables<1, EgrAdaptSinglePortGroupTable, EgrVfiToVniMappingTable>(*mountGroup);
  doMountSwTables<
      2, L2TunnelIpv4DipTable, L2TunnelIpv6DipTable, L2TunnelVnIdTable, EgrL3Ipv4TunnelTable, EgrL3Ipv6TunnelTable,
      TesselL3Common::EgrL3NextHop2, TesselL3Common::IngL3NextHop2Table, TesselL3Common::VirtualPort1Table,
      TesselL3Common::VirtualPort2Table, L2TunnelIpv4SipTable, L2TunnelIpv6SipTable, TesselL3Tunnel::EgrL3Oif2,
      EpreEdevConfigCcbeRegister, IngL3EcmpMember0Table, EcmpMember1Table, TesselL3Tunnel::EcmpGroup1Table,
      RL2TunnelDefaultNetworkSvp, TesselEpre::EpreCcbeNextHopRemapTable, FlexQoSEgrEcn6Table, FlexQosIngEcn,
      VpLagGroupTable, VpLagEcmpMember0Table, VxlanEgrL3Oif1Table, EcmpIndirectionTableConfigReg, EgrL3NextHop1,
      IngL3NextHop1, AllowedPortBitmapProfile, HerNextHop1Table, HerNextHop2Table, VxlanV4UnderlayMcastTable>(
      *mountGroup);
  mountGroup->doClose(false, "", 0);
}

void TesselVxlanMounter::doMountsComplete(Stateway::MountStatus mountStatus,
                                          Dovel::Ptr<Stateway::EntityManager> const& em) {
  TRACE(0, ": Mounts complete...");
  INVARIANT(mountStatus == Stateway::mountSuccess());
  fcsdIs(Dovel::cast<TesselCentral::FeatureAgentCommonSmData>(sharedEntity("featureCommon")));
  vxlanMounterSmWrapperIs(fcsd(), em, agentSmId(), localEntityStore(), shmemEm(), agentDir());
}

Dovel::Ptr<Vaulter::VaulterPStoreHelper> TesselVxlanMounter::vaulterPStoreHelper() const {
  return tesselVxlanVaulterPStoreHelperFactory(
      statewayEm()->getEntity<TesselCentral::VxlanToL2State>("hardware/tessel/tunnel/vxlan/vxlanToL2State"));
}

void TesselVxlanMounter::vxlanMounterSmWrapperIs(Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData> const& fcsd,
                                                 Dovel::Ptr<Stateway::EntityManager> const& statewayEm,
                                                 TesselL3Unicast::AgentSmId agentSmId,
                                                 Dovel::Ptr<Local::EntityStore> const& localEntityStore,
                                                 Dovel::Ptr<KilnSharedMem::EntityManager> const& shmemEm,
                                                 Dovel::Ptr<Kiln::Dir> const& agentDir) {
  vxlanMounterSmWrapperDel();
  vxlanMounterSmWrapperSet(TesselVxlanMounterSmWrapper::TesselVxlanMounterSmWrapperIs(
      fcsd, statewayEm, agentSmId, localEntityStore, shmemEm, agentDir));
  vxlanMounterSmWrapper()->hasNotificationActiveIs(true);
}

void TesselVxlanMounter::vxlanMounterSmWrapperDel() {
  if (!vxlanMounterSmWrapper()) return;
  vxlanMounterSmWrapper()->hasNotificationActiveIs(false);
  vxlanMounterSmWrapperSet(nullptr);
}

}  // namespace TesselVxlan
