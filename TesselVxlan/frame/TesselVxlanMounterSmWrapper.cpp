#include "TesselVxlan/frame/TesselVxlanMounterSmWrapper.h"

#include "TesselVxlan/frame/Toggles.h"
#include "TesselVxlan/tunnel/HwTunnelProgrammerHer.h"
#include "TesselVxlan/tunnel/HwTunnelProgrammerMcast.h"
#include "TesselVxlan/tunnel/HwTunnelProgrammerMemberTunnel.h"
#include "TesselVxlan/tunnel/HwTunnelProgrammerUnicast.h"
#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("TesselVxlanMounterSmWrapper");

namespace TesselVxlan {

using TesselL3Common::TesselVxlanBootStatus;
using TesselL3Common::TesselVxlanState;

namespace {

/// How many encapsulation ids exist.
constexpr std::uint32_t encapIds = 0x6000;

}  // namespace

TesselVxlanMounterSmWrapper::TesselVxlanMounterSmWrapper(Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData> fcsd,
                                                         Dovel::Ptr<Stateway::EntityManager> statewayEm,
                                                         TesselL3Unicast::AgentSmId agentSmId,
                                                         Dovel::Ptr<Local::EntityStore> localEntityStore,
                                                         Dovel::Ptr<KilnSharedMem::EntityManager> shmemEm,
                                                         Dovel::Ptr<Kiln::Dir> agentDir)
    : TesselL3Unicast::L3MounterSmWrapper(std::move(fcsd), std::move(statewayEm), agentSmId,
                                          std::move(localEntityStore), std::move(shmemEm), std::move(agentDir)) {}

TesselVxlanMounterSmWrapper::~TesselVxlanMounterSmWrapper() {
  hwTunnelProgrammersToEnd_ = std::move(hwTunnelProgrammer_);
}

std::array<Dovel::Node*, 6> TesselVxlanMounterSmWrapper::nestedSms() const {
  return {remoteVniToSBDVlanMergeSm().get(),    l3McastEvpnStatusSm().get(),    qosTrustStatusSm().get(),
          tesselVxlanHelperPortGroupSm().get(), tesselVxlanHelperVniSm().get(), underlayMulticastSm().get()};
}

void TesselVxlanMounterSmWrapper::hasNotificationActiveIs(bool active) {
  if (active == hasNotificationActive()) return;
  TesselL3Unicast::L3MounterSmWrapper::hasNotificationActiveIs(active);
  for (auto* const sm : nestedSms()) {
    if (sm) sm->hasNotificationActiveIs(active);
  }
}

void TesselVxlanMounterSmWrapper::kilnDoZombieReactors(bool zombie) {
  if (zombie == isZombie()) return;
  for (auto* const sm : nestedSms()) {
    if (sm) sm->kilnDoZombieReactors(zombie);
  }
  TesselL3Unicast::L3MounterSmWrapper::kilnDoZombieReactors(zombie);
}

void TesselVxlanMounterSmWrapper::vxlanBootStatusDispatch(Dovel::Change const& change) {
  if (change.id == TesselVxlanBootStatus::vaneTunnelSmReadyId) doStartVxlanSms();
}

void TesselVxlanMounterSmWrapper::vxlanStateDispatch(Dovel::Change const& change) {
  if (change.id == TesselVxlanState::egrL3TunnelDefaultInitId) programDefaultSvpEntry();
}

void TesselVxlanMounterSmWrapper::tablesInitializedIs(bool tablesInitialized) {
  if (tablesInitialized == tablesInitialized_) return;
  tablesInitializedSet(tablesInitialized);
  doStartVxlanSms();
}

void TesselVxlanMounterSmWrapper::doStartVxlanSms() {
  TRACE(0, "doStartVxlanSms");
  auto const vxlanAttr = TesselProfile::feature<TesselChipAttributesVxlan>(chipInfo());
  INVARIANT(vxlanAttr && "Could not get TesselChipAttributesVxlan");
  if (!vxlanBootStatus()->vaneTunnelSmReady()) return TRACE(0, "vaneTunnelSm not ready");
  if (!tablesInitialized()) return TRACE(0, "Table init not ready");
  // Neither gate closes again, but the boot status can be bound or written again, also from inside what follows.
  if (std::exchange(started_, true)) return;
  startVniSm();
  startMulticastAndFlooding();
  startEcnAndEpre();
  vxlanVtiStatusSmIs(tesselVxlanVtiStatusSmFactory(
      "vxlanVtiStatusSm", vtiStatusDir(), bridgingHwCapabilities(), statewayEm(), fcsd(), vxlanCapabilities(),
      vxlanConfig(), tunnelTermTableProgrammer(), egrL3TunnelTablesProgrammer(), tesselCentralVxlanState(),
      vxlanState(), vxlanSliceConfig(), vxlanConfigDir(), profileSupportsVxlan()));
  TRACE(0, "Calling createVxlanTunnelHelperSm");
  createVxlanTunnelHelperSm();
  createVaneVxlanMcastHelperSm();
  if (vxlanAttr->vtepGroupSupported()) startVtepGroups();
  if (toggleTessel4L3McastUnderlayHEREnabled()) {
    l3McastEvpnStatusSmIs(mounted<Routing::Multicast::McastEvpnStatus>("routing/multicast/mcastEvpnStatus"),
                          mounted<Routing::Multicast::McastEvpnStatus>("routing6/multicast/mcastEvpnStatus"));
  }
}

void TesselVxlanMounterSmWrapper::startVniSm() {
  if (!toggleVaneVniSmInTesselL2Enabled()) {
    helperVniIs("vniHelper");
    helperVniConfigIs(helperVni()->helperVniConfig());
    helperVniStatusIs(helperVni()->helperVniStatus());
  }
  if (chipHas<EgrAdaptSinglePortGroupTable>()) {
    tesselVxlanHelperPortGroupSmIs(helperVniConfig(), helperVniStatus(), statewayEm(), fcsd(), vfiCapabilityStatus(),
                                   vlanVfiDir());
  } else {
    tesselVxlanHelperVniSmIs(helperVniConfig(), helperVniStatus(), statewayEm(), fcsd(), vfiCapabilityStatus(),
                             vxlanCapabilities(), vlanVfiDir(), l2TunnelVnIdTable());
  }
}

void TesselVxlanMounterSmWrapper::startMulticastAndFlooding() {
  if (vxlanCapabilities()->underlayMcastSupported()) {
    underlayMulticastSmIs(statewayEm(), fcsd(), mrouteVxlanDecapTable(), vxlanV4UnderlayMcastTable());
  }
  vaneVxlanHwHerSmIs(Vane::VXLAN::vaneVxlanHwHerSmFactory(
      vcsd(), l2RibFloodSet(), tunnelConfigDir()->tunnelConfig(Vane::vxlanHerTunnel_),
      tunnelStatusDir()->tunnelStatus(Vane::vxlanHerTunnel_), vaneVxlanHwHerVtepConfigDir(),
      vaneVxlanHwHerVtepStatusDir(), vxlanVtepStatusDir(), vtiStatusDir(), bridgingHwCapabilities(), false));
  vaneVxlanHwHerSm()->initializedIs(true);
}

void TesselVxlanMounterSmWrapper::startEcnAndEpre() {
  if (chipHas<FlexQoSEgrEcn6Table>()) {
    tesselVxlanECNSmIs(tesselVxlanECNSmFactory(statewayEm(), fcsd(), ecnConfig(), qosTrustStatusAllLocal()));
  }
  if (chipHas<TesselEpre::EpreCcbeNextHopRemapTable>()) {
    epreSmIs(epreEdevConfigCcbeSmFactory(statewayEm(), fcsd(), routeDestinationTableDir(), epreNextHopRemapTable(),
                                         virtualPortTableProgrammer(), nextHopTableProgrammer(), vxlanState(),
                                         vxlanUnderlayFloodingHw()));
  }
}

void TesselVxlanMounterSmWrapper::startVtepGroups() {
  vxlanVtepGroupDirSmIs(vxlanVtepGroupDirSmFactory(Kiln::activityManager()->clock(), vcsd(), vaneVtepGroupConfigDir(),
                                                   vaneVtepGroupStatusDir(), vxlanToL2State(), vpLagEcmpProgrammer(),
                                                   vtepGrpTnlIdMapDir(), ecmpNhTableDir()));
  vxlanVtepGroupDirSm()->initializedIs(true);
}

void TesselVxlanMounterSmWrapper::createVxlanTunnelHelperSm() {
  auto const encapIdBitmap = Anvil::incrementalHBitmapFactory(0, encapIds, 1, 0);
  if (!virtualPortTableProgrammer() || !tunnelTermTableProgrammer() || !nextHopTableProgrammer() ||
      !egrL3TunnelTablesProgrammer()) {
    return TRACE(0, "Returning TBNI");
  }
  if (!vxlanBootStatus()->vaneTunnelSmReady()) return TRACE(0, "Returning VTSNI");
  if (chipHas<TesselEpre::EpreCcbeNextHopRemapTable>()) INVARIANT(epreSm());
  INVARIANT(nhAttributes());
  auto const inputs = [&](Vane::TunnelType type) { return tunnelProgrammerInputs(type, encapIdBitmap); };
  hwTunnelProgrammerIs(Vane::vxlanTunnel_, hwTunnelProgrammerUnicastFactory(inputs(Vane::vxlanTunnel_)));
  hwTunnelProgrammerIs(Vane::vxlanMemberTunnel_,
                       hwTunnelProgrammerMemberTunnelFactory(inputs(Vane::vxlanMemberTunnel_)));
  hwTunnelProgrammerIs(Vane::vxlanHerTunnel_, hwTunnelProgrammerHerFactory(inputs(Vane::vxlanHerTunnel_)));
  if (vxlanCapabilities()->mcastTunnelSupported()) {
    hwTunnelProgrammerIs(Vane::vxlanMcastTunnel_, hwTunnelProgrammerMcastFactory(inputs(Vane::vxlanMcastTunnel_)));
    vxlanMcastTunnelHelperSmIs(tunnelHelper(Vane::vxlanMcastTunnel_));
    vxlanMcastTunnelHelperSm()->initializedIs(true);
  }
  vxlanTunnelHelperSmIs(tunnelHelper(Vane::vxlanTunnel_));
  vxlanTunnelHelperSm()->initializedIs(true);
  vxlanMemberTunnelHelperSmIs(tunnelHelper(Vane::vxlanMemberTunnel_));
  vxlanMemberTunnelHelperSm()->initializedIs(true);
  auto const her = tunnelPair(Vane::vxlanHerTunnel_);
  herTunnelHelperSmIs(herTunnelHelperSmFactory(vcsd(), Vane::vxlanHerTunnel_, her.config, her.status,
                                               hwTunnelProgrammer(Vane::vxlanHerTunnel_), vxlanState(), vxlanInfo(),
                                               vaneVxlanHwHerVtepConfigDir(), vaneVxlanHwHerVtepStatusDir()));
  herTunnelHelperSm()->initializedIs(true);
}

Vane::VXLAN::HwTunnelPair TesselVxlanMounterSmWrapper::tunnelPair(Vane::TunnelType type) const {
  if (type == Vane::vxlanMcastTunnel_) return {hwMcastTunnelConfig(), hwMcastTunnelStatus()};
  return {hwTunnelConfigDir()->hwTunnelConfig(type), hwTunnelStatusDir()->hwTunnelStatus(type)};
}

TunnelProgrammerInputs TesselVxlanMounterSmWrapper::tunnelProgrammerInputs(
    Vane::TunnelType type, Dovel::Ptr<Anvil::IncrementalHBitmap> const& encapIdBitmap) const {
  auto const pair = tunnelPair(type);
  return {.statewayEm = statewayEm(),
          .fcsd = fcsd(),
          .vxlanToL2State = vxlanToL2State(),
          .virtualPortTableProgrammer = virtualPortTableProgrammer(),
          .tunnelTermTableProgrammer = tunnelTermTableProgrammer(),
          .nextHopTableProgrammer = nextHopTableProgrammer(),
          .herNextHopTableProgrammer = herNextHopTableProgrammer(),
          .egrL3TunnelTablesProgrammer = egrL3TunnelTablesProgrammer(),
          .underlayEcmpProgrammer = underlayEcmpProgrammer(),
          .epreEdevConfigCcbeSm = epreSm(),
          .tunnelType = type,
          .hwTunnelConfig = pair.config,
          .hwTunnelStatus = pair.status,
          .vxlanState = vxlanState(),
          .encapIdBitmap = encapIdBitmap,
          .bumVtepConfigDir = bumVtepConfigDir(),
          .encapIdToBumVtepIpConfigDir = encapIdToBumVtepIpConfigDir(),
          .qosTrustStatus = qosTrustStatusAllLocal(),
          .vxlanConfigDir = vxlanConfigDir(),
          .l3Oif1TableProgrammer = l3Oif1TableProgrammer(),
          .evpnStatus = evpnStatus(),
          .vxlanCapabilities = vxlanCapabilities(),
          .vxlanUnderlayFloodingHw = vxlanUnderlayFloodingHw(),
          .floodUnderlayVlanToVtepListDir = floodUnderlayVlanToVtepListDir()};
}

Dovel::Ptr<TunnelBaseHelperSm> TesselVxlanMounterSmWrapper::tunnelHelper(Vane::TunnelType type) const {
  auto const pair = tunnelPair(type);
  return tunnelBaseHelperSmFactory(vcsd(), type, pair.config, pair.status, hwTunnelProgrammer(type), vxlanState(),
                                   vxlanInfo());
}

void TesselVxlanMounterSmWrapper::createVaneVxlanMcastHelperSm() {
  using namespace Multicast::Vxlan;
  Vane::VXLAN::HwTunnelPair const bum{Vane::hwTunnelConfigFactory(Vane::vxlanBum_),
                                      Vane::hwTunnelStatusFactory(Vane::vxlanBum_)};
  Vane::VXLAN::HwTunnelPair const mcastHer{Vane::hwTunnelConfigFactory(Vane::vxlanMcastHer_),
                                           Vane::hwTunnelStatusFactory(Vane::vxlanMcastHer_)};
  mcastTunnelConfigDirCollIs();
  mcastTunnelStatusDirCollIs();
  mcastTunnelDirsIs<VxlanMcastTunnelConfigDir, VxlanMcastTunnelStatusDir>(Vane::vxlanMcastTunnel_,
                                                                          "vxlan/multicast/tunnel/");
  mcastTunnelDirsIs<VxlanBumTunnelConfigDir, VxlanBumTunnelStatusDir>(Vane::vxlanBum_, "vxlan/multicast/bumTunnel/");
  mcastTunnelDirsIs<VxlanMcastHerTunnelConfigDir, VxlanMcastHerTunnelStatusDir>(Vane::vxlanMcastHer_,
                                                                                "vxlan/multicast/herTunnel/");
  bool const hasMcast = vxlanCapabilities()->mcastTunnelSupported();
  auto const mcast = hasMcast ? tunnelPair(Vane::vxlanMcastTunnel_) : Vane::VXLAN::HwTunnelPair();
  vaneVxlanMcastSmIs(Vane::VXLAN::vaneVxlanMcastSmFactory(vcsd(), mcastTunnelConfigDirColl(),
                                                          mcastTunnelStatusDirColl(), mcast, mcastHer, bum,
                                                          vxlanBootStatus(), vaneL3IntfTable()));
  vaneVxlanMcastSm()->initializedIs(true);
  bumVtepSmIs(bumVtepSmOf(bum));
  if (vxlanCapabilities()->bumFloodSupported()) mcastHerVtepSmIs(bumVtepSmOf(mcastHer));
  if (hasMcast) mcastVtepSmIs(bumVtepSmOf(mcast));
}

template <class ConfigDir, class StatusDir>
void TesselVxlanMounterSmWrapper::mcastTunnelDirsIs(Vane::TunnelType type, std::string const& path) {
  mcastTunnelConfigDirColl()->tunnelConfigDirIs(type, mounted<ConfigDir>(path + "config"));
  mcastTunnelStatusDirColl()->tunnelStatusDirIs(type, mounted<StatusDir>(path + "status"));
}

Dovel::Ptr<BumVtepSm> TesselVxlanMounterSmWrapper::bumVtepSmOf(Vane::VXLAN::HwTunnelPair const& pair) const {
  return bumVtepSmFactory(pair.config, pair.status, bumVtepConfigDir(), floodUnderlayVlanToVtepListDir(),
                          vlanStatusDir(), vxlanUnderlayFloodingHw());
}

void TesselVxlanMounterSmWrapper::programDefaultSvpEntry() {
  if (!vxlanState()->egrL3TunnelDefaultInit()) return TRACE(0, "egrL3TunnelDefaultInit not ready");
  // An earlier wrapper of this process can have set the flag before this one has tables.
  if (!egrL3TunnelTablesProgrammer() || !egrL3TunnelTablesProgrammer()->egrL3Ipv4TunnelTable()) return;
  auto const egrL3TunnelTableHandle = egrL3TunnelTablesProgrammer()->entryWeakRef({}, {});
  TRACE(0, " egrL3TunnelTableHandle: {}", egrL3TunnelTableHandle);
  virtualPortTableProgrammer()->insertDefaultEntries(tesselCentralVxlanState()->controllerClientL3Mode(),
                                                     egrL3TunnelTableHandle);
  vxlanState()->vpDefaultInitIs(true);
}

}  // namespace TesselVxlan
