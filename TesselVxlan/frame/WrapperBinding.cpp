#include "TesselVxlan/frame/TesselVxlanMounterSmWrapper.h"
#include "TesselVxlan/frame/Toggles.h"
#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("TesselVxlanMounterSmWrapper");

namespace TesselVxlan {

void TesselVxlanMounterSmWrapper::bindLocalEntities() {
  vxlanToL2StateIs(mounted<TesselCentral::VxlanToL2State>("hardware/tessel/tunnel/vxlan/vxlanToL2State"));
  vlanStatusDirIs(local<Bridging::VlanStatusDir>("l3/vlanStatusDir"));
  vxlanStateIs(local<TesselL3Common::TesselVxlanState>("tesselVxlan/vxlanState"));
  hwTunnelConfigDirIs(local<Vane::HwTunnelConfigDir>("l3/hwTunnelConfigDir"));
  hwTunnelStatusDirIs(local<Vane::HwTunnelStatusDir>("l3/hwTunnelStatusDir"));
  vxlanBootStatusIs(local<TesselL3Common::TesselVxlanBootStatus>("vxlanBootStatus"));
}

void TesselVxlanMounterSmWrapper::bindTableDirs() {
  herNextHop1Dir_ = local<Kiln::Dir>("vxlan/swTable/shared/destination/herNh1");
  routeDestinationTableDirIs(local<Kiln::Dir>("vxlan/swTable/shared/destination/epreRemap"));
  virtualPortDir_ = local<Kiln::Dir>("vxlan/swTable/shared/vp");
  ecmpNhTableDirIs(local<Kiln::Dir>("vxlan/swTable/shared/destination/ecmp"));
  nextHop2Dir_ = local<Kiln::Dir>("vxlan/swTable/shared/destination/nexthop2");
  ipmcTable_ = local<TesselMcast::IpmcTable>("mcast/swTable/shared/destination/ipmc/511");
  bumVtepConfigDirIs(local<TesselL3Common::TesselVxlanBumVtepConfigDir>("vxlan/bumVtepConfigDir"));
  encapIdToBumVtepIpConfigDirIs(
      local<TesselL3Common::EncapIdToBumVtepIpConfigDir>("vxlan/encapIdToBumVtepIpConfigDir"));
  floodUnderlayVlanToVtepListDirIs();
}

void TesselVxlanMounterSmWrapper::bindQos() {
  ecnConfigIs(mounted<Vxlan::EcnConfig>("vxlan/ecnConfig"));
  vxlanConfigDirIs(mounted<Vxlan::VxlanConfigDir>("vxlan/config"));
  qosTrustStatusAllLocalIs(TesselCommon::Qos::trustStatusFactory("trustStatusLocal"));
  qosTrustStatusDirIs(mounted<Kiln::Dir>("qos/hardware/tessel/trust/status/slice"));
  qosTrustStatusSmIs(qosTrustStatusDir(), qosTrustStatusAllLocal());
}

void TesselVxlanMounterSmWrapper::makeMcastTunnelPair() {
  hwMcastTunnelConfigIs(Vane::hwTunnelConfigFactory(Vane::vxlanMcastTunnel_));
  hwMcastTunnelStatusIs(Vane::hwTunnelStatusFactory(Vane::vxlanMcastTunnel_));
  local<Vane::HwTunnelConfigDir>("l3/hwMcastTunnelConfigDir")->hwTunnelConfigIs(hwMcastTunnelConfig());
  local<Vane::HwTunnelStatusDir>("l3/hwMcastTunnelStatusDir")->hwTunnelStatusIs(hwMcastTunnelStatus());
}

void TesselVxlanMounterSmWrapper::bindMountedEntities() {
  evpnStatusIs(mounted<Evpn::EvpnStatus>("evpn/status"));
  vxlanCapabilitiesIs(mounted<TesselCentral::VxlanCapabilities>("hardware/tessel/centralStatus/vxlanCapabilities"));
  if (toggleVaneVniSmInTesselL2Enabled()) {
    helperVniConfigIs(mounted<VaneHelper::VaneHelperVniConfig>("hardware/tessel/tunnel/vxlan/helperVniConfig"));
    helperVniStatusIs(mounted<VaneHelper::VaneHelperVniStatus>("hardware/tessel/tunnel/vxlan/helperVniStatus"));
  }
  routingStatusIs(mounted<TesselL3::RoutingStatus>("hardware/tessel/centralStatus/feature/l3/routingStatus"));
  vaneL3IntfTableIs(mounted<VaneL3Intf::Table>("vane/l3IntfTable"));
  dvpToVtepMappingIs(local<TesselL3Common::VxlanDvpToVtepMap>("l3/dvpToVtepMap"));
  tunnelIndexToVtepMappingIs(local<TesselL3Common::VxlanTunnelIndexToVtepMap>("l3/tunnelToVtepMap"));
}

void TesselVxlanMounterSmWrapper::bindChipAttributes() {
  nhAttributesIs(TesselProfile::feature<TesselL3Unicast::L3NextHopAttributes>(chipInfo()));
  INVARIANT(nhAttributes());
  vxlanUnderlayFloodingHwIs(nhAttributes()->vxlanUnderlayFloodingHw());
}

void TesselVxlanMounterSmWrapper::doBindEntities() {
  bindHerAndL3Status();
  vtiStatusDirIs(mounted<Vxlan::VtiStatusDir>("interface/status/eth/vxlan"));
  bindVaneTunnels();
  vaneVtepGroupConfigDirIs(
      mounted<Vane::VXLAN::VaneVtepGroupConfigDir>("hardware/tessel/tunnel/vxlan/vaneVtepGroupConfigDir"));
  vaneVtepGroupStatusDirIs(
      mounted<Vane::VXLAN::VaneVtepGroupStatusDir>("hardware/tessel/tunnel/vxlan/vaneVtepGroupStatusDir"));
  vlanIntfConfigDirIs(mounted<Interface::VlanIntfConfigDir>("interface/config/eth/vlan"));
  vxlanSliceConfigIs(mounted<TesselCentral::VxlanSliceConfig>("hardware/tessel/tunnel/vxlan/sliceConfig"));
  vfiCapabilityStatusIs(
      mounted<TesselCentral::VfiCapabilityStatus>("hardware/tessel/centralStatus/vfiCapabilityStatus"));
  bridgingHwCapabilitiesIs(mounted<Bridging::HwCapabilities>("bridging/hwcapabilities"));
  vlanVfiDirIs(mounted<TesselCentral::VlanVfiDir>("hardware/tessel/vfi/l2Status/vlanVfiMap"));
  vxlanHwStatusDirIs(mounted<Vxlan::VxlanHwStatusDir>("vxlan/hardware/status"));
  bridgingConfigIs(mounted<Bridging::Config>("bridging/config"));
  bindVxlanInfo();
  vtepGroupConfigDirIs("vtepGroupConfigDir");
  vtepGroupStatusDirIs("vtepGroupStatusDir");
  makeTunnelStatuses();
  tesselCentralVxlanStateIs(mounted<TesselCentral::VxlanState>("hardware/tessel/tunnel/vxlan/vxlanState"));
  bindFloodSet();
  vxlanVtepStatusDirIs(mounted<VxlanController::VtepStatusDirV2>("vxlan/version2/vtepStatusDir"));
  if (vxlanCapabilities()->mcastTunnelSupported()) bindRemoteVniStatus();
  if (vxlanCapabilities()->underlayMcastSupported()) bindMrouteDecap();
  TRACE(0, "doBindEntities");
}

void TesselVxlanMounterSmWrapper::bindHerAndL3Status() {
  vaneVxlanHwHerVtepStatusDirIs(
      mounted<Vane::VXLAN::VaneVxlanHwHerVtepStatusDir>("hardware/tessel/tunnel/vxlan/herVtepStatus"));
  vaneVxlanHwHerVtepStatusDir()->vaneVxlanHwHerVtepStatusDelAll();
  vaneVxlanHwHerVtepConfigDirIs(Vane::VXLAN::vaneVxlanHwHerVtepConfigDirFactory("HwVtepConfigDir"));
  vxlanConfigIs(TesselL3Common::tesselVxlanConfigFactory("vxlanConfig"));
  vxlanConfig()->vlanMappingDirIs(
      mounted<TesselCentral::VlanMappingDir>("hardware/tessel/tunnel/vxlan/l3Config/vlanMapping"));
  vxlanStatusIs(TesselL3Common::tesselVxlanStatusFactory());
  vxlanStatus()->vxlanL3StatusEntryDirIs(
      mounted<TesselCentral::VxlanL3StatusEntryDir>("hardware/tessel/tunnel/vxlan/l3Status/vxlanL3StatusEntry"));
}

void TesselVxlanMounterSmWrapper::bindVaneTunnels() {
  tunnelConfigDirIs(Vane::vaneTunnelConfigDirFactory("tunnelConfigDir"));
  tunnelStatusDirIs(Vane::vaneTunnelStatusDirFactory("tunnelStatusDir"));
  vxlanTunnelConfigIs(mounted<Vane::VaneTunnelConfig>("hardware/tessel/tunnel/configDir/vxlanTunnel"));
  vxlanTunnelStatusIs(mounted<Vane::VaneTunnelStatus>("hardware/tessel/tunnel/statusDir/vxlanTunnel"));
  vxlanMemberTunnelConfigIs(mounted<Vane::VaneTunnelConfig>("hardware/tessel/tunnel/configDir/vxlanMemberTunnel"));
  vxlanMemberTunnelStatusIs(mounted<Vane::VaneTunnelStatus>("hardware/tessel/tunnel/statusDir/vxlanMemberTunnel"));
  tunnelConfigDir()->tunnelConfigIs(Vane::vxlanTunnel_, vxlanTunnelConfig());
  tunnelStatusDir()->tunnelStatusIs(Vane::vxlanTunnel_, vxlanTunnelStatus());
  tunnelConfigDir()->tunnelConfigIs(Vane::vxlanMemberTunnel_, vxlanMemberTunnelConfig());
  tunnelStatusDir()->tunnelStatusIs(Vane::vxlanMemberTunnel_, vxlanMemberTunnelStatus());
  tunnelConfigDir()->tunnelConfigIs(
      Vane::vxlanHerTunnel_, mounted<Vane::VaneTunnelConfig>("hardware/tessel/tunnel/configDir/vxlanHwHerTunnel"));
  tunnelStatusDir()->tunnelStatusIs(
      Vane::vxlanHerTunnel_, mounted<Vane::VaneTunnelStatus>("hardware/tessel/tunnel/statusDir/vxlanHwHerTunnel"));
}

void TesselVxlanMounterSmWrapper::bindVxlanInfo() {
  vxlanInfoIs("vxlanInfo");
  vxlanInfo()->vaneGlobalVtiStatusIs(
      mounted<Vane::VXLAN::VaneGlobalVtiStatus>("hardware/tessel/tunnel/vxlan/vxlanInfo/vaneGlobalVtiStatus"));
  vxlanInfo()->vaneActivatedVtiIs(
      mounted<Vane::VXLAN::VaneVxlanActivedVti>("hardware/tessel/tunnel/vxlan/vxlanInfo/vaneActivatedVti"));
}

void TesselVxlanMounterSmWrapper::makeTunnelStatuses() {
  for (auto const type : {Vane::vxlanTunnel_, Vane::vxlanMemberTunnel_, Vane::vxlanHerTunnel_}) {
    hwTunnelStatusDir()->hwTunnelStatusIs(Vane::hwTunnelStatusFactory(type));
  }
  // Last: its reader relies on all three being present.
  vxlanBootStatus()->hwTunnelStatusInitializedIs(true);
}

void TesselVxlanMounterSmWrapper::bindFloodSet() {
  static char const* const path = "bridging/l2Rib/floodOutput";
  auto const shmem = KilnSharedMem::EntityManager::getEntityManager(shmemName(), shmemRequired());
  auto const group = shmem->getMountGroup();
  group->doMount(path, L2Rib::FloodSetOutput::kilnType().name(), KilnPelican::MountInfo());
  group->doClose();
  auto const floodSet = shmem->getEntity<L2Rib::FloodSetOutput>(path);
  shmem->assertSafeToAccess(floodSet, path);
  l2RibFloodSetIs(floodSet);
}

void TesselVxlanMounterSmWrapper::bindRemoteVniStatus() {
  static char const* const irbPath = "multicast/irb/remoteVniToVlanStatus/Vxlan1";
  static char const* const staticPath = "multicast/static/remoteVniToVlanStatus/Vxlan1";
  auto const type = Vxlan::RemoteVniToVlanStatus::kilnType().name();
  shmemEm()->doMount(irbPath, type, KilnBrisk::MountInfo(1));
  shmemEm()->doMount(staticPath, type, KilnBrisk::MountInfo(1));
  irbRemoteVniToVlanStatusIs(shmemEm()->getEntity<Vxlan::RemoteVniToVlanStatus>(irbPath));
  staticRemoteVniToVlanStatusIs(shmemEm()->getEntity<Vxlan::RemoteVniToVlanStatus>(staticPath));
  remoteVniToVlanStatusIs(Dovel::make<Vxlan::RemoteVniToVlanStatus>(""));
  remoteVniToSBDVlanMergeSmIs(irbRemoteVniToVlanStatus(), staticRemoteVniToVlanStatus(), remoteVniToVlanStatus());
}

void TesselVxlanMounterSmWrapper::bindMrouteDecap() {
  auto const* const path = MrouteLib::MrouteVxlanDecapTable::mountPath(Meshal::AddressFamily::ipv4);
  KilnBrisk::MountInfo info(1);
  info.collectionInfoIs("mrouteVxlanDecap");
  auto const group = shmemEm()->getMountGroup();
  group->doMount(path, MrouteLib::MrouteVxlanDecapTable::kilnType().name(), info);
  group->doClose();
  mrouteVxlanDecapTableIs(shmemEm()->getEntity<MrouteLib::MrouteVxlanDecapTable>(path));
}

}  // namespace TesselVxlan
