#include "TesselVxlan/overlay/TesselVxlanVtepGroupSm.h"

#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("TesselVxlanVtepGroupSm");

namespace TesselVxlan {

using Meshal::IpGenAddr;
using Vane::VaneNextHopId;
using Vane::VaneTunnelId;
using Vane::VXLAN::VaneVtepGroupConfig;
using Vane::VXLAN::VaneVtepGroupKey;

namespace {

/// The mark of ids that name a group.
constexpr std::uint32_t groupBit = 0x8000;

}  // namespace

VxlanVtepGroupSm::VxlanVtepGroupSm(VaneVtepGroupKey const& key,
                                   Dovel::Ptr<VaneVtepGroupConfig const> vaneVtepGroupConfig,
                                   Dovel::Ptr<Vane::VXLAN::VaneVtepGroupStatus> vaneVtepGroupStatus,
                                   VxlanVtepGroupDirSm& vxlanVtepGroupDirSm,
                                   Dovel::Ptr<VxlanVtepGroupTunnelIdMap const> vtepGrpTnlIdMap,
                                   Dovel::Ptr<VpLagEcmpProgrammer> vpLagEcmpProgrammer)
    : VaneHelperVtepGroupSm(key, std::move(vaneVtepGroupConfig), std::move(vaneVtepGroupStatus), vxlanVtepGroupDirSm),
      vtepGrpTnlIdMap_(*this, std::move(vtepGrpTnlIdMap), Kiln::SubscribeOnly{}),
      vpLagEcmpProgrammer_(std::move(vpLagEcmpProgrammer)),
      vxlanVtepGroupDirSm_(vxlanVtepGroupDirSm) {}

void VxlanVtepGroupSm::vtepGrpTnlIdMapDispatch(Dovel::Change const& change) {
  if (change.id == VxlanVtepGroupTunnelIdMap::hwTunnelIdId) handleVtepGroupTunnelIdUpdate();
}

void VxlanVtepGroupSm::handleVersion() {
  TRACE(1, " key {}", vaneVtepGroupKey());
  vxlanVtepGroupDirSm_.scheduleReview(vaneVtepGroupKey());
}

void VxlanVtepGroupSm::doProgramVtep(IpGenAddr const& addr) {
  TRACE(1, " key {} vtep {}", vaneVtepGroupKey(), addr);
  vxlanVtepGroupDirSm_.scheduleReview(vaneVtepGroupKey());
}

void VxlanVtepGroupSm::handleInitialized() {
  TRACE(1, " key {}", vaneVtepGroupKey());
  vxlanVtepGroupDirSm_.scheduleReview(vaneVtepGroupKey());
}

void VxlanVtepGroupSm::programVtepGroup() {
  TRACE(1, "programVtepGroup {}", vaneVtepGroupKey());
  if (vaneVtepGroupConfig()->vtepListColl().empty()) return TRACE(1, " no Vteps in list ");
  reviewGroup();
}

void VxlanVtepGroupSm::reviewGroup() {
  if (!initialized() || vaneVtepGroupConfig()->vtepListColl().empty()) return;
  vpLagEcmpProgrammer()->insertEntry(vaneVtepGroupConfig(), vaneVtepGroupKey());
  handleVtepGroupTunnelIdUpdate();
}

void VxlanVtepGroupSm::handleVtepGroupTunnelIdUpdate() {
  auto const tnlId = vtepGrpTnlIdMap()->hwTunnelId();
  TRACE(1, " key {} tnlId {}", vaneVtepGroupKey(), tnlId);
  auto& status = *vaneVtepGroupStatus();
  for (auto const& addr : Kiln::keysOf(status.activeVtepListColl())) {
    if (!vaneVtepGroupConfig()->vtepListHas(addr)) status.activeVtepListDel(addr);
  }
  for (auto const& addr : Kiln::keysOf(vaneVtepGroupConfig()->vtepListColl())) {
    if (!status.activeVtepListHas(addr)) status.activeVtepListIs(addr, true);
  }
  auto const id = tnlId.valid() ? tnlId.value() | groupBit : tnlId.value();
  status.hwTunnelIdIs(VaneTunnelId(id));
  status.hwNextHopIdIs(VaneNextHopId(id));
}

void VxlanVtepGroupSm::cleanup() {
  TRACE(1, "cleanup {}", vaneVtepGroupKey());
  if (initialized()) vpLagEcmpProgrammer()->deleteEntry(vaneVtepGroupKey());
}

void VxlanVtepGroupSm::lastUserGone() {
  if (!isZombie()) cleanup();
  VaneHelperVtepGroupSm::lastUserGone();
}

VxlanVtepGroupDirSm::VxlanVtepGroupDirSm(Kiln::Clock const* clock, Dovel::Ptr<Vane::VaneCommonSmData const> vcsd,
                                         Dovel::Ptr<Vane::VXLAN::VaneVtepGroupConfigDir const> vaneVtepGroupConfigDir,
                                         Dovel::Ptr<Vane::VXLAN::VaneVtepGroupStatusDir> vaneVtepGroupStatusDir,
                                         Dovel::Ptr<TesselCentral::VxlanToL2State> vxlanToL2State,
                                         Dovel::Ptr<VpLagEcmpProgrammer> vpLagEcmpProgrammer,
                                         Dovel::Ptr<VxlanVtepGroupTunnelIdMapDir> vtepGrpTnlIdMapDir,
                                         Dovel::Ptr<Kiln::Dir> ecmpNhTableDir)
    : VaneHelperVtepGroupDirSm(clock, std::move(vcsd), std::move(vaneVtepGroupConfigDir),
                               std::move(vaneVtepGroupStatusDir), std::move(vxlanToL2State)),
      vpLagEcmpProgrammer_(std::move(vpLagEcmpProgrammer)),
      vtepGrpTnlIdMapDir_(std::move(vtepGrpTnlIdMapDir)),
      ecmpNhTableDir_(std::move(ecmpNhTableDir)) {}

void VxlanVtepGroupDirSm::addActiveNextHopId(VaneNextHopId nhId) { TRACE(1, " nhid{} ", nhId); }

void VxlanVtepGroupDirSm::delActiveNextHopId(VaneNextHopId nhId) { TRACE(1, " Deleting nhId:  {}", nhId); }

void VxlanVtepGroupDirSm::cleanVtepGroupConfig(VaneVtepGroupKey const& key) { TRACE(1, "key: {}", key); }

void VxlanVtepGroupDirSm::handleVtepGroup() {
  if (!initialized()) return;
  for (auto const& key : Kiln::keysOf(vaneVtepGroupConfigDir()->vaneVtepGroupConfigColl())) handleVtepGroup(key);
}

void VxlanVtepGroupDirSm::handleVtepGroup(VaneVtepGroupKey const& key) {
  if (!initialized()) return;
  if (vaneVtepGroupConfigDir()->vaneVtepGroupConfigHas(key)) {
    TRACE(1, " create vxlanVtepGroupSm with key : {}", key);
    return createL3VtepGroupSm(key);
  }
  TRACE(1, " delete vxlanVtepGroupSm with key : {}", key);
  deleteL3VtepGroupSm(key);
  if (vtepGrpTnlIdMapDir()->vtepGrpTnlIdMapHas(key)) vtepGrpTnlIdMapDir()->vtepGrpTnlIdMapDel(key);
  vaneVtepGroupStatusDir()->vaneVtepGroupStatusDel(key);
}

void VxlanVtepGroupDirSm::createL3VtepGroupSm(VaneVtepGroupKey const& key) {
  TRACE(1, "createL3VtepGroupSm key: {}", key);
  auto const config = vaneVtepGroupConfigDir()->vaneVtepGroupConfig(key);
  if (auto const& group = vxlanVtepGroupSm(key)) {
    if (group->vaneVtepGroupConfig() == config) return;
    deleteL3VtepGroupSm(key);
  }
  auto const vtepGrpTnlIdMap = vtepGrpTnlIdMapDir()->vtepGrpTnlIdMapIs(key);
  INVARIANT(vtepGrpTnlIdMap);
  auto const status = vaneVtepGroupStatusDir()->vaneVtepGroupStatusIs(key);
  auto const group = Dovel::make<VxlanVtepGroupSm>(key, config, status, *this, vtepGrpTnlIdMap, vpLagEcmpProgrammer());
  vxlanVtepGroupSmIs(key, group);
  group->initializedIs(true);
}

void VxlanVtepGroupDirSm::deleteL3VtepGroupSm(VaneVtepGroupKey const& key) { vxlanVtepGroupSmDel(key); }

void VxlanVtepGroupDirSm::doProgramVtepGroup(VaneVtepGroupKey const& key) {
  // A copy: what the group publishes may run handlers that remove it.
  auto const group = vxlanVtepGroupSm(key);
  if (!group) return TRACE(1, " key {} not present ", key);
  group->programVtepGroup();
}

void VxlanVtepGroupDirSm::hasNotificationActiveIs(bool active) {
  if (active == hasNotificationActive()) return;
  VaneHelperVtepGroupDirSm::hasNotificationActiveIs(active);
  for (auto const& [key, group] : vxlanVtepGroupSmColl()) group->hasNotificationActiveIs(active);
}

void VxlanVtepGroupDirSm::kilnDoZombieReactors(bool zombie) {
  if (zombie == isZombie()) return;
  for (auto const& [key, group] : vxlanVtepGroupSmColl()) group->kilnDoZombieReactors(zombie);
  VaneHelperVtepGroupDirSm::kilnDoZombieReactors(zombie);
}

}  // namespace TesselVxlan
