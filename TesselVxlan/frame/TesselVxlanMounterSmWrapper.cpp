#include "TesselVxlan/frame/TesselVxlanMounterSmWrapper.h"

#include "TesselVxlan/frame/Toggles.h"
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

std::array<Dovel::Node*, 3> TesselVxlanMounterSmWrapper::nestedSms() const {
  return {remoteVniToSBDVlanMergeSm().get(), l3McastEvpnStatusSm().get(), qosTrustStatusSm().get()};
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
  // Neither gate closes again, but the boot status can be bound or written again, also from inside what follows: the
  // first object that is created marks the start.
  if (vaneVxlanHwHerSm()) return;
  vaneVxlanHwHerSmIs(Vane::VXLAN::vaneVxlanHwHerSmFactory(
      vcsd(), l2RibFloodSet(), tunnelConfigDir()->tunnelConfig(Vane::vxlanHerTunnel_),
      tunnelStatusDir()->tunnelStatus(Vane::vxlanHerTunnel_), vaneVxlanHwHerVtepConfigDir(),
      vaneVxlanHwHerVtepStatusDir(), vxlanVtepStatusDir(), vtiStatusDir(), bridgingHwCapabilities(), false));
  vaneVxlanHwHerSm()->initializedIs(true);
  vxlanVtiStatusSmIs(tesselVxlanVtiStatusSmFactory(
      "vxlanVtiStatusSm", vtiStatusDir(), bridgingHwCapabilities(), statewayEm(), fcsd(), vxlanCapabilities(),
      vxlanConfig(), tunnelTermTableProgrammer(), egrL3TunnelTablesProgrammer(), tesselCentralVxlanState(),
      vxlanState(), vxlanSliceConfig(), vxlanConfigDir(), profileSupportsVxlan()));
  TRACE(0, "Calling createVxlanTunnelHelperSm");
  createVxlanTunnelHelperSm();
  if (toggleTessel4L3McastUnderlayHEREnabled()) {
    l3McastEvpnStatusSmIs(mounted<Routing::Multicast::McastEvpnStatus>("routing/multicast/mcastEvpnStatus"),
                          mounted<Routing::Multicast::McastEvpnStatus>("routing6/multicast/mcastEvpnStatus"));
  }
}

void TesselVxlanMounterSmWrapper::createVxlanTunnelHelperSm() {
  auto const encapIdBitmap = Anvil::incrementalHBitmapFactory(0, encapIds, 1, 0);
  if (!virtualPortTableProgrammer() || !tunnelTermTableProgrammer() || !nextHopTableProgrammer() ||
      !egrL3TunnelTablesProgrammer()) {
    return TRACE(0, "Returning TBNI");
  }
  if (!vxlanBootStatus()->vaneTunnelSmReady()) return TRACE(0, "Returning VTSNI");
  INVARIANT(nhAttributes());
  hwTunnelProgrammerIs(Vane::vxlanTunnel_,
                       hwTunnelProgrammerUnicastFactory(tunnelProgrammerInputs(Vane::vxlanTunnel_, encapIdBitmap)));
  hwTunnelProgrammerIs(Vane::vxlanMemberTunnel_, hwTunnelProgrammerMemberTunnelFactory(
                                                     tunnelProgrammerInputs(Vane::vxlanMemberTunnel_, encapIdBitmap)));
  vxlanTunnelHelperSmIs(tunnelHelper(Vane::vxlanTunnel_));
  vxlanTunnelHelperSm()->initializedIs(true);
  vxlanMemberTunnelHelperSmIs(tunnelHelper(Vane::vxlanMemberTunnel_));
  vxlanMemberTunnelHelperSm()->initializedIs(true);
}

TunnelProgrammerInputs TesselVxlanMounterSmWrapper::tunnelProgrammerInputs(
    Vane::TunnelType type, Dovel::Ptr<Anvil::IncrementalHBitmap> const& encapIdBitmap) const {
  return {.statewayEm = statewayEm(),
          .fcsd = fcsd(),
          .vxlanToL2State = vxlanToL2State(),
          .virtualPortTableProgrammer = virtualPortTableProgrammer(),
          .tunnelTermTableProgrammer = tunnelTermTableProgrammer(),
          .nextHopTableProgrammer = nextHopTableProgrammer(),
          .egrL3TunnelTablesProgrammer = egrL3TunnelTablesProgrammer(),
          .underlayEcmpProgrammer = underlayEcmpProgrammer(),
          .tunnelType = type,
          .hwTunnelConfig = hwTunnelConfigDir()->hwTunnelConfig(type),
          .hwTunnelStatus = hwTunnelStatusDir()->hwTunnelStatus(type),
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
  return tunnelBaseHelperSmFactory(vcsd(), type, hwTunnelConfigDir()->hwTunnelConfig(type),
                                   hwTunnelStatusDir()->hwTunnelStatus(type), hwTunnelProgrammer(type), vxlanState(),
                                   vxlanInfo());
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
