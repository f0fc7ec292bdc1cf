#include "TesselVxlan/tunnel/TunnelBaseHelperSm.h"

#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("TunnelBaseHelperSm");

namespace TesselVxlan {

using TesselL3Common::TesselVxlanState;
using ConfigEntry = Dovel::Ptr<Vane::HwTunnelConfigEntry const>;

TunnelBaseHelperSm::TunnelBaseHelperSm(Dovel::Ptr<Vane::VaneCommonSmData const> const& vcsd,
                                       Vane::TunnelType tunnelType,
                                       Dovel::Ptr<Vane::HwTunnelConfig const> const& hwTunnelConfig,
                                       Dovel::Ptr<Vane::HwTunnelStatus> const& hwTunnelStatus,
                                       Dovel::Ptr<HwTunnelProgrammerBase> const& hwTunnelProgrammer,
                                       Dovel::Ptr<TesselVxlanState> const& vxlanState,
                                       Dovel::Ptr<Vane::VXLAN::VaneVxlanInfo> const& vaneVxlanInfo)
    : VaneHelper::VaneHelperTunnelSm(vcsd, tunnelType, hwTunnelConfig, hwTunnelStatus),
      hwTunnelProgrammer_(hwTunnelProgrammer),
      vxlanState_(*this, vxlanState, Kiln::SubscribeOnly{}),
      vaneVxlanInfo_(*this, vaneVxlanInfo, Kiln::SubscribeOnly{}) {
  // Runs the learning handler once: a flag that was set before the start must reach the default virtual ports.
  if (vaneVxlanInfo) globalVtiStatusIs(vaneVxlanInfo->vaneGlobalVtiStatus());
}

void TunnelBaseHelperSm::handleInitialized() {
  TRACE(1, " tunnelType: {}", tunnelType());
  hwInit();
}

void TunnelBaseHelperSm::hwInit() {
  TRACE(1, " tunnelType: {}", tunnelType());
  if (hwTunnelConfig()->hwInit() != 0 && hwTunnelStatus()) hwTunnelStatus()->hwInitIs(hwTunnelConfig()->hwInit());
}

void TunnelBaseHelperSm::hwCleanup() {
  TRACE(1, " tunnelType: {}", tunnelType());
  if (hwTunnelConfig()->hwCleanup() == 0) return;
  INVARIANT(hwTunnelConfig()->hwCleanup() > hwTunnelStatus()->hwCleanup());
  hwTunnelStatus()->hwCleanupIs(hwTunnelConfig()->hwCleanup());
}

void TunnelBaseHelperSm::doHandleTunnelCreate(ConfigEntry const& entry) {
  TRACE(0, " tunnelType: {} key: {}", tunnelType(), entry->tunnelKey());
  hwTunnelProgrammer()->doTunnelCreate(entry);
}

void TunnelBaseHelperSm::doHandleTunnelDelete(ConfigEntry const& entry) {
  TRACE(0, " tunnelType: {} key: {}", tunnelType(), entry->tunnelKey());
  hwTunnelProgrammer()->doTunnelDelete(entry);
}

// The TTL of a tunnel is not programmed per tunnel.
void TunnelBaseHelperSm::doHandleTunnelTTL(ConfigEntry const& entry) {
  TRACE(0, " tunnelType: {} key: {}", tunnelType(), entry->tunnelKey());
}

void TunnelBaseHelperSm::doHandleTunnelNextHopId(ConfigEntry const& entry) {
  TRACE(0, " tunnelType: {} key: {}", tunnelType(), entry->tunnelKey());
  auto const& map = hwTunnelProgrammer()->vtepMap(entry->tunnelKey().dst());
  if (!map || !map->tnlKeysHas(tunnelType())) return TRACE(1, "Skipping nhop update.. key: {}", entry->tunnelKey());
  TRACE(1, " nhop update : {}", entry->tunnelKey());
  hwTunnelProgrammer()->doUpdateNextHop(entry);
}

void TunnelBaseHelperSm::handleActiveNextHopId(Vane::VaneNextHopId id) {
  TRACE(0, " tunnelType: {} id: {}", tunnelType(), id);
  if (tunnelType() == Vane::vxlanTunnel_) hwTunnelProgrammer()->handleActiveNextHopId(id);
}

void TunnelBaseHelperSm::verifyTunnelsAndNextHops() { TRACE(0, " tunnelType: {}", tunnelType()); }

void TunnelBaseHelperSm::vxlanStateDispatch(Dovel::Change const& change) {
  switch (change.id) {
    case TesselVxlanState::localVtepId:
    case TesselVxlanState::localVtep6Id:
      return handleLocalVtepUpdate();
    case TesselVxlanState::udpSrcPortId:
      return handleUdpSrcPortUpdate();
    case TesselVxlanState::udpPortId:
      return handleUdpPortUpdate();
    default:
      return;
  }
}

void TunnelBaseHelperSm::handleLocalVtepUpdate() {
  TRACE(1, " tunnelType: {}", tunnelType());
  hwTunnelProgrammer()->updateEgrL3TunnelTable(false);
}

void TunnelBaseHelperSm::handleUdpSrcPortUpdate() {
  TRACE(1, " tunnelType: {}", tunnelType());
  hwTunnelProgrammer()->updateEgrL3TunnelTable(false);
}

void TunnelBaseHelperSm::handleUdpPortUpdate() {
  TRACE(1, " tunnelType: {}", tunnelType());
  hwTunnelProgrammer()->updateEgrL3TunnelTable(true);
}

void TunnelBaseHelperSm::vaneVxlanInfoDispatch(Dovel::Change const& change) {
  if (change.id == Vane::VXLAN::VaneVxlanInfo::vaneGlobalVtiStatusId) handleVaneVxlanInfo();
}

void TunnelBaseHelperSm::handleVaneVxlanInfo() { globalVtiStatusIs(vaneVxlanInfo()->vaneGlobalVtiStatus()); }

void TunnelBaseHelperSm::globalVtiStatusDispatch(Dovel::Change const& change) {
  if (change.id == Vane::VXLAN::VaneGlobalVtiStatus::dataPathLearningId) handleVxlanDataPathLearning();
}

void TunnelBaseHelperSm::handleVxlanDataPathLearning() {
  if (!vaneVxlanInfo() || !vaneVxlanInfo()->vaneGlobalVtiStatus()) return;
  auto const dataPathLearning = vaneVxlanInfo()->vaneGlobalVtiStatus()->dataPathLearning();
  TRACE(1, " dataPathLearning: {}", dataPathLearning);
  hwTunnelProgrammer()->updateVxlanDataPathLearning(dataPathLearning);
}

}  // namespace TesselVxlan
