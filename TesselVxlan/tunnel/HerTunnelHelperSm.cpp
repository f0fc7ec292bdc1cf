#include "TesselVxlan/tunnel/HerTunnelHelperSm.h"

#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("HerTunnelHelperSm");

namespace TesselVxlan {

using Vane::VXLAN::VaneVxlanHwHerVtepConfig;
using Vane::VXLAN::VaneVxlanHwHerVtepConfigDir;
using Vane::VXLAN::VaneVxlanHwHerVtepStatusDir;

NestedSm_VaneVxlanHwHerVtepConfig::NestedSm_VaneVxlanHwHerVtepConfig(
    Dovel::Ptr<VaneVxlanHwHerVtepConfig const> const& config, Dovel::Ptr<VaneVxlanHwHerVtepStatusDir> const& statusDir)
    : NotifieeConst(config), config_(config), statusDir_(statusDir) {
  handleInitialized();
}

void NestedSm_VaneVxlanHwHerVtepConfig::onAttribute(Dovel::Change const& change) {
  if (change.id == VaneVxlanHwHerVtepConfig::vlanListId) handleVlan(change.keyAs<Bridging::VlanId>());
}

void NestedSm_VaneVxlanHwHerVtepConfig::handleInitialized() {
  TRACE(1, "handleInitialized");
  handleVlan();
}

void NestedSm_VaneVxlanHwHerVtepConfig::handleVlan() {
  for (auto const& vlanId : Kiln::keysOf(config_->vlanListColl())) handleVlan(vlanId);
}

void NestedSm_VaneVxlanHwHerVtepConfig::handleVlan(Bridging::VlanId vlanId) {
  TRACE(1, " Vlan: {} ,VtepIp: {}", vlanId, key());
  if (config_->vlanListHas(vlanId)) {
    statusDir_->vaneVxlanHwHerVtepStatusIs(key())->vlanListIs(vlanId, true);
    TRACE(1, " add vlan = {} vtepStatus = {}", vlanId, key());
  } else if (auto const status = statusDir_->vaneVxlanHwHerVtepStatus(key())) {
    status->vlanListDel(vlanId);
    TRACE(1, " deleting vlan {} vtepStatus = {}", vlanId, key());
  }
}

void NestedSm_VaneVxlanHwHerVtepConfig::cleanup() {
  TRACE(1, " Deleting her tunnel to  {}", key());
  statusDir_->vaneVxlanHwHerVtepStatusDel(key());
}

HerTunnelHelperSm::HerTunnelHelperSm(Dovel::Ptr<Vane::VaneCommonSmData const> const& vcsd, Vane::TunnelType tunnelType,
                                     Dovel::Ptr<Vane::HwTunnelConfig const> const& hwTunnelConfig,
                                     Dovel::Ptr<Vane::HwTunnelStatus> const& hwTunnelStatus,
                                     Dovel::Ptr<HwTunnelProgrammerBase> const& hwTunnelProgrammer,
                                     Dovel::Ptr<TesselL3Common::TesselVxlanState> const& vxlanState,
                                     Dovel::Ptr<Vane::VXLAN::VaneVxlanInfo> const& vaneVxlanInfo,
                                     Dovel::Ptr<VaneVxlanHwHerVtepConfigDir const> const& vaneVxlanHwHerVtepConfigDir,
                                     Dovel::Ptr<VaneVxlanHwHerVtepStatusDir> const& vaneVxlanHwHerVtepStatusDir)
    : TunnelBaseHelperSm(vcsd, tunnelType, hwTunnelConfig, hwTunnelStatus, hwTunnelProgrammer, vxlanState,
                         vaneVxlanInfo),
      vaneVxlanHwHerVtepConfigDir_(*this, vaneVxlanHwHerVtepConfigDir, Kiln::SubscribeOnly{}),
      vaneVxlanHwHerVtepStatusDir_(vaneVxlanHwHerVtepStatusDir) {
  for (auto const& vtepIp : Kiln::keysOf(vaneVxlanHwHerVtepConfigDir->vaneVxlanHwHerVtepConfigColl())) {
    handleVtep(vtepIp);
  }
}

void HerTunnelHelperSm::vaneVxlanHwHerVtepConfigDirDispatch(Dovel::Change const& change) {
  if (change.id == VaneVxlanHwHerVtepConfigDir::vaneVxlanHwHerVtepConfigId) {
    handleVtep(change.keyAs<Meshal::IpGenAddr>());
  }
}

void HerTunnelHelperSm::handleVtep(Meshal::IpGenAddr const& vtepIp) {
  if (auto const former = vaneVxlanHwHerVtepConfig_.del(vtepIp)) former->cleanup();
  Dovel::Ptr<VaneVxlanHwHerVtepConfig const> const config =
      vaneVxlanHwHerVtepConfigDir()->vaneVxlanHwHerVtepConfig(vtepIp);
  if (!config) return;
  vaneVxlanHwHerVtepConfig_.add(Dovel::make<NestedSm_VaneVxlanHwHerVtepConfig>(config, vaneVxlanHwHerVtepStatusDir()));
}

}  // namespace TesselVxlan
