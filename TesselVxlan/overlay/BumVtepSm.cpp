#include "TesselVxlan/overlay/BumVtepSm.h"

#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("BumVtepSm");

namespace TesselVxlan {

using Bridging::VlanStatus;
using Bridging::VlanStatusDir;
using TesselL3Common::FloodUnderlayVlanToVtepListDir;
using TesselL3Common::TesselVxlanBumVtepConfig;
using TesselL3Common::TesselVxlanBumVtepConfigDir;
using Vane::HwTunnelConfig;
using Vane::TunnelKey;

NestedSm_TesselVxlanBumVtepConfig::NestedSm_TesselVxlanBumVtepConfig(
    BumVtepSm& owner, Dovel::Ptr<TesselVxlanBumVtepConfig const> const& config)
    : NotifieeConst(config, Dovel::attributes(TesselVxlanBumVtepConfig::versionId)), owner_(&owner), config_(config) {}

void NestedSm_TesselVxlanBumVtepConfig::onAttribute(Dovel::Change const& change) {
  if (change.id == TesselVxlanBumVtepConfig::versionId) handleVersionUpdate();
}

// A record that is made now has no next hop yet: its first version is the first news of it.
void NestedSm_TesselVxlanBumVtepConfig::handleInitialized() {
  for (auto const& nextHop : config_->nextHopsColl()) {
    if (nextHop->port().empty()) continue;
    auto const tunnelKey = makeTunnelKey(key());
    TRACE(1, "handleInitialized, tunnelKey: {}", tunnelKey);
    if (owner_) owner_->maybeUpdateHwTunnelStatus(tunnelKey, false);
    return;
  }
}

void NestedSm_TesselVxlanBumVtepConfig::handleVersionUpdate() {
  auto const tunnelKey = makeTunnelKey(key());
  TRACE(1, "handleVersionUpdate, tunnelKey: {}", tunnelKey);
  if (owner_) owner_->maybeUpdateHwTunnelStatus(tunnelKey, false);
}

void NestedSm_TesselVxlanBumVtepConfig::handleDel() {
  auto const tunnelKey = makeTunnelKey(key());
  TRACE(1, "handleDel, tunnelKey: {}", tunnelKey);
  if (owner_) owner_->maybeUpdateHwTunnelStatus(tunnelKey, false);
}

NestedSm_TesselVxlanVtepHwTunnelConfig::NestedSm_TesselVxlanVtepHwTunnelConfig(
    BumVtepSm& owner, Dovel::Ptr<Vane::HwTunnelConfigEntry const> const& entry)
    : NotifieeConst(entry), owner_(&owner), key_(entry->tunnelKey()) {}

void NestedSm_TesselVxlanVtepHwTunnelConfig::handleHwTunnelConfig(TunnelKey const& tunnelKey) {
  // A reference: what is written below may delete this object.
  Dovel::Ptr<NestedSm_TesselVxlanVtepHwTunnelConfig> const alive(this);
  if (!owner_ || !owner_->initialized()) return;
  TRACE(1, ", tunnelKey: {},  version: {}", tunnelKey, owner_->version(tunnelKey));
  if (owner_->hwTunnelConfig()->hwTunnelConfigListHas(tunnelKey)) {
    TRACE(1, " Add tunnel status {}", tunnelKey);
    return owner_->maybeUpdateHwTunnelStatus(tunnelKey, true);
  }
  owner_->versionDel(tunnelKey);
  if (!owner_->hwTunnelStatus()->tunnelStatusHas(tunnelKey)) {
    return TRACE(1, " tunnel status already deleted for {}", tunnelKey);
  }
  TRACE(1, " Delete tunnel status for {}", tunnelKey);
  owner_->hwTunnelStatus()->tunnelStatusDel(tunnelKey);
}

NestedSm_VlanStatus::NestedSm_VlanStatus(BumVtepSm& owner, Dovel::Ptr<VlanStatus const> const& vlanStatus)
    : NotifieeConst(vlanStatus), owner_(&owner), vlanId_(vlanStatus->vlanId()) {}

void NestedSm_VlanStatus::onAttribute(Dovel::Change const& change) {
  if (change.id == VlanStatus::portStateId) handleVlanPort();
}

void NestedSm_VlanStatus::handleVlanPort() {
  if (!owner_ || !owner_->vxlanUnderlayFloodingHw()) return;
  TRACE(1, ", underlay vlanId: {}", vlanId_);
  // A copy: what is written below may change the list, and end this object.
  auto const list = owner_->floodUnderlayVlanToVtepListDir()->floodUnderlayVlanToVtepList(vlanId_);
  Dovel::Ptr<BumVtepSm> const owner(owner_);
  for (auto const& tunnelIp : list.vtepIpList()) {
    TRACE(1, ", tunnelIp: {}", tunnelIp);
    owner->maybeUpdateHwTunnelStatus(makeTunnelKey(tunnelIp), false);
  }
}

BumVtepSm::BumVtepSm(Dovel::Ptr<HwTunnelConfig const> hwTunnelConfig, Dovel::Ptr<Vane::HwTunnelStatus> hwTunnelStatus,
                     Dovel::Ptr<TesselVxlanBumVtepConfigDir const> bumVtepConfigDir,
                     Dovel::Ptr<FloodUnderlayVlanToVtepListDir const> floodUnderlayVlanToVtepListDir,
                     Dovel::Ptr<VlanStatusDir const> vlanStatusDir, bool vxlanUnderlayFloodingHw)
    : hwTunnelConfig_(*this, std::move(hwTunnelConfig), Kiln::SubscribeOnly{}),
      bumVtepConfigDir_(*this, std::move(bumVtepConfigDir), Kiln::SubscribeOnly{}),
      hwTunnelStatus_(std::move(hwTunnelStatus)),
      vlanStatusDir_(*this, std::move(vlanStatusDir), Kiln::SubscribeOnly{}),
      floodUnderlayVlanToVtepListDir_(std::move(floodUnderlayVlanToVtepListDir)),
      vxlanUnderlayFloodingHw_(vxlanUnderlayFloodingHw) {
  handleInitialized();
}

void BumVtepSm::handleInitialized() {
  TRACE(1, "handleInitialized");
  initialized_ = true;
  handleHwInit();
  handleHwCleanup();
  // Tunnels first: a flood VTEP raises the version of a status that exists.
  for (auto const& tunnelKey : Kiln::keysOf(this->hwTunnelConfig()->hwTunnelConfigListColl())) handleTunnel(tunnelKey);
  for (auto const& vtepIp : Kiln::keysOf(this->bumVtepConfigDir()->bumVtepConfigColl())) handleVtep(vtepIp);
  for (auto const& vlanId : Kiln::keysOf(this->vlanStatusDir()->vlanStatusColl())) handleVlan(vlanId);
}

void BumVtepSm::handleHwInit() {
  TRACE(1, " hwInit config: {} hwInit status: {}", hwTunnelConfig()->hwInit(), hwTunnelStatus()->hwInit());
  if (initialized()) hwTunnelStatus()->hwInitIs(hwTunnelConfig()->hwInit());
  TRACE(1, " on exit hwInit config: {} hwInit status: {}", hwTunnelConfig()->hwInit(), hwTunnelStatus()->hwInit());
}

void BumVtepSm::handleHwCleanup() {
  auto const wanted = hwTunnelConfig()->hwCleanup();
  TRACE(1, " hwMcastCleanup config {} HwCleanup status {}", wanted, hwTunnelStatus()->hwCleanup());
  // The tunnel helper of the same pair may have echoed the counter before.
  if (!initialized() || wanted == 0 || wanted == hwTunnelStatus()->hwCleanup()) return;
  INVARIANT(hwTunnelConfig()->hwCleanup() > hwTunnelStatus()->hwCleanup());
  hwTunnelStatus()->hwCleanupIs(wanted);
}

void BumVtepSm::hwTunnelConfigDispatch(Dovel::Change const& change) {
  switch (change.id) {
    case HwTunnelConfig::hwTunnelConfigListId:
      return handleTunnel(change.keyAs<TunnelKey>());
    case HwTunnelConfig::hwInitId:
      return handleHwInit();
    case HwTunnelConfig::hwCleanupId:
      return handleHwCleanup();
    default:
      return;
  }
}

void BumVtepSm::bumVtepConfigDirDispatch(Dovel::Change const& change) {
  if (change.id == TesselVxlanBumVtepConfigDir::bumVtepConfigId) handleVtep(change.keyAs<Meshal::IpGenAddr>());
}

void BumVtepSm::vlanStatusDirDispatch(Dovel::Change const& change) {
  if (change.id == VlanStatusDir::vlanStatusId) handleVlan(change.keyAs<Bridging::VlanId>());
}

void BumVtepSm::handleTunnel(TunnelKey const& tunnelKey) {
  Dovel::Ptr<Vane::HwTunnelConfigEntry const> const entry = hwTunnelConfig()->hwTunnelConfigList(tunnelKey);
  if (entry) {
    auto const tunnel = Dovel::make<NestedSm_TesselVxlanVtepHwTunnelConfig>(*this, entry);
    tesselVxlanVtepHwTunnelConfig_.add(tunnel);
    tunnel->handleInitialized();
    watchVtep(tunnelKey.dst());
    return;
  }
  if (auto const tunnel = tesselVxlanVtepHwTunnelConfig_.at(tunnelKey)) {
    tunnel->handleDel();
    if (hwTunnelConfig()->hwTunnelConfigListHas(tunnelKey)) return;
    tesselVxlanVtepHwTunnelConfig_.del(tunnelKey);
    if (tunnelKey == makeTunnelKey(tunnelKey.dst())) tesselVxlanBumVtepConfig_.del(tunnelKey.dst());
  }
}

// Most flood VTEPs have no tunnel here, and so no status that their changes could be published in.
Dovel::Ptr<NestedSm_TesselVxlanBumVtepConfig> BumVtepSm::watchVtep(Meshal::IpGenAddr const& vtepIp) {
  if (!hwTunnelConfig()->hwTunnelConfigListHas(makeTunnelKey(vtepIp))) return nullptr;
  Dovel::Ptr<TesselVxlanBumVtepConfig const> const config = bumVtepConfigDir()->bumVtepConfig(vtepIp);
  if (!config) return nullptr;
  auto const vtep = Dovel::make<NestedSm_TesselVxlanBumVtepConfig>(*this, config);
  tesselVxlanBumVtepConfig_.add(vtep);
  return vtep;
}

void BumVtepSm::handleVtep(Meshal::IpGenAddr const& vtepIp) {
  if (bumVtepConfigDir()->bumVtepConfigHas(vtepIp)) {
    if (auto const vtep = watchVtep(vtepIp)) vtep->handleInitialized();
    return;
  }
  auto const vtep = tesselVxlanBumVtepConfig_.at(vtepIp);
  if (!vtep) return;
  vtep->handleDel();
  if (!bumVtepConfigDir()->bumVtepConfigHas(vtepIp)) tesselVxlanBumVtepConfig_.del(vtepIp);
}

void BumVtepSm::handleVlan(Bridging::VlanId vlanId) {
  vlanStatus_.del(vlanId);
  Dovel::Ptr<VlanStatus const> const vlan = vlanStatusDir()->vlanStatus(vlanId);
  if (vlan) vlanStatus_.add(Dovel::make<NestedSm_VlanStatus>(*this, vlan));
}

void BumVtepSm::maybeUpdateHwTunnelStatus(TunnelKey const& tunnelKey, bool setStatus) {
  if (!initialized()) return;
  Dovel::Ptr<Vane::HwTunnelConfigEntry const> const entry = hwTunnelConfig()->hwTunnelConfigList(tunnelKey);
  // A tunnel programmer that hears of a tunnel first may raise its VTEP's version before this object hears of it.
  auto const known = tesselVxlanVtepHwTunnelConfig_.at(tunnelKey);
  if (!entry || !known || known->notifier().get() != entry.get()) {
    return TRACE(1, ", tunnelKey: {}, not updating hwTunnelStatus ", tunnelKey);
  }
  if (setStatus) {
    hwTunnelStatus()->tunnelStatusIs(tunnelKey);
  } else {
    INVARIANT(hwTunnelStatus()->tunnelStatusHas(tunnelKey));
  }
  auto const version = this->version(tunnelKey) + 1;
  versionIs(tunnelKey, version);
  TRACE(1, ",  tunnelKey: {} updated version to : {}", tunnelKey, version);
  // A subscriber of the status that was made may have removed it again.
  if (auto const status = hwTunnelStatus()->tunnelStatus(tunnelKey)) {
    status->hwNextHopStatusEntryIs(
        {Vane::VaneNextHopId(static_cast<std::uint32_t>(version)), entry->nextHopEntryList()});
  }
}

}  // namespace TesselVxlan
