#include "platform/vane/VaneVxlanHwHerSm.h"

namespace Vane::VXLAN {

NestedSm_FloodSet::NestedSm_FloodSet(VaneVxlanHwHerSm& owner, Dovel::Ptr<L2Rib::FloodSet const> const& floodSet)
    : NotifieeConst(floodSet), owner_(&owner), floodSet_(floodSet) {}

void NestedSm_FloodSet::onAttribute(Dovel::Change const& change) {
  if (owner_ && change.id == L2Rib::FloodSet::vtepId) owner_->handleVtep(*floodSet_, change.keyAs<Meshal::IpGenAddr>());
}

VaneVxlanHwHerSm::VaneVxlanHwHerSm(Dovel::Ptr<VaneCommonSmData const> vcsd,
                                   Dovel::Ptr<L2Rib::FloodSetOutput const> l2RibFloodSet,
                                   Dovel::Ptr<VaneTunnelConfig> tunnelConfig, Dovel::Ptr<VaneTunnelStatus> tunnelStatus,
                                   Dovel::Ptr<VaneVxlanHwHerVtepConfigDir> vtepConfigDir,
                                   Dovel::Ptr<VaneVxlanHwHerVtepStatusDir> vtepStatusDir,
                                   Dovel::Ptr<VxlanController::VtepStatusDirV2 const> vxlanVtepStatusDir,
                                   Dovel::Ptr<Vxlan::VtiStatusDir const> vtiStatusDir,
                                   Dovel::Ptr<Bridging::HwCapabilities const> bridgingHwCapabilities, bool)
    : vcsd_(std::move(vcsd)),
      tunnelConfig_(std::move(tunnelConfig)),
      tunnelStatus_(std::move(tunnelStatus)),
      vtepConfigDir_(std::move(vtepConfigDir)),
      vtepStatusDir_(std::move(vtepStatusDir)),
      vtiStatusDir_(std::move(vtiStatusDir)),
      bridgingHwCapabilities_(std::move(bridgingHwCapabilities)),
      l2RibFloodSet_(*this, std::move(l2RibFloodSet), Kiln::SubscribeOnly{}),
      vxlanVtepStatusDir_(*this, std::move(vxlanVtepStatusDir), Kiln::SubscribeOnly{}) {}

void VaneVxlanHwHerSm::initializedIs(bool initialized) {
  if (!initialized || initialized_) return;
  initialized_ = true;
  for (auto const& vlan : Kiln::keysOf(l2RibFloodSet_->floodSetColl())) handleFloodSet(vlan);
  for (auto const& vtep : Kiln::keysOf(tunnelConfig_->tunnelColl())) {
    if (!vtepConfigDir_->vaneVxlanHwHerVtepConfigHas(vtep)) tunnelConfig_->tunnelDel(vtep);
  }
}

void VaneVxlanHwHerSm::floodSetDispatch(Dovel::Change const& change) {
  if (initialized_ && change.id == L2Rib::FloodSetOutput::floodSetId) handleFloodSet(change.keyAs<Bridging::VlanId>());
}

void VaneVxlanHwHerSm::vtepStatusDispatch(Dovel::Change const& change) {
  if (!initialized_ || change.id != VxlanController::VtepStatusDirV2::vtepAdjacencyId) return;
  auto const& vtep = change.keyAs<Meshal::IpGenAddr>();
  if (auto const& tunnel = tunnelConfig_->tunnel(vtep)) tunnel->adjIdIs(vxlanVtepStatusDir_->vtepAdjacency(vtep));
}

// A list that replaces another one: the VTEPs that both have stay.
void VaneVxlanHwHerSm::handleFloodSet(Bridging::VlanId vlan) {
  auto const former = floodSets_.del(vlan);
  Dovel::Ptr<L2Rib::FloodSet const> const present = l2RibFloodSet_->floodSet(vlan);
  if (present) {
    floodSets_.add(Dovel::make<NestedSm_FloodSet>(*this, present));
    for (auto const& vtep : Kiln::keysOf(present->vtepColl())) vlanAdd(vtep, vlan);
  }
  if (!former) return;
  for (auto const& vtep : Kiln::keysOf(former->floodSet().vtepColl())) {
    if (!present || !present->vtepHas(vtep)) vlanDel(vtep, vlan);
  }
}

void VaneVxlanHwHerSm::handleVtep(L2Rib::FloodSet const& floodSet, Meshal::IpGenAddr const& vtep) {
  if (floodSet.vtepHas(vtep)) {
    vlanAdd(vtep, floodSet.vlanId());
  } else {
    vlanDel(vtep, floodSet.vlanId());
  }
}

void VaneVxlanHwHerSm::vlanAdd(Meshal::IpGenAddr const& vtep, Bridging::VlanId vlan) {
  vtepConfigDir_->vaneVxlanHwHerVtepConfigIs(vtep)->vlanListIs(vlan, VlanInfo());
  auto const adjId = vxlanVtepStatusDir_->vtepAdjacency(vtep);
  if (auto const& tunnel = tunnelConfig_->tunnel(vtep)) return tunnel->adjIdIs(adjId);
  auto const tunnel = Dovel::make<VaneTunnelConfigEntry>(vtep);
  tunnel->adjIdIs(adjId);
  tunnelConfig_->tunnelIs(tunnel);
}

void VaneVxlanHwHerSm::vlanDel(Meshal::IpGenAddr const& vtep, Bridging::VlanId vlan) {
  auto const config = vtepConfigDir_->vaneVxlanHwHerVtepConfig(vtep);
  if (!config) return;
  config->vlanListDel(vlan);
  if (!config->vlanListColl().empty()) return;
  vtepConfigDir_->vaneVxlanHwHerVtepConfigDel(vtep);
  tunnelConfig_->tunnelDel(vtep);
}

}  // namespace Vane::VXLAN
