#include "TesselVxlan/tunnel/HwTunnelProgrammerBase.h"

#include "TesselVxlan/nexthop/OverlayCascadedTableProgrammer.h"
#include "TesselVxlan/nexthop/OverlayNextHopTableProgrammer.h"
#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("HwTunnelProgrammerBase");

namespace TesselVxlan {

using TesselCentral::VtepIpToTnlIdNhIdMap;

NestedSm_TunnelIdMap::NestedSm_TunnelIdMap(Dovel::Ptr<VtepIpToTnlIdNhIdMap> const& map, HwTunnelProgrammerBase* owner)
    : NotifieeConst(map, Dovel::attributes(VtepIpToTnlIdNhIdMap::tnlIdId, VtepIpToTnlIdNhIdMap::nhIdId)),
      map_(map),
      owner_(owner) {
  TRACE(1, "handleInitialized tunnelType: {}", owner->tunnelType());
}

void NestedSm_TunnelIdMap::mapIs(Dovel::Ptr<VtepIpToTnlIdNhIdMap> const& map) {
  if (map == map_) return;
  map_ = map;
  entryIs(nullptr);
  notifierIs(map_);
  updateTunnelIdStatus();
  updateCascadingNextHopIdInStatus();
}

void NestedSm_TunnelIdMap::entryIs(ConfigEntry const& entry) {
  if (entry && entry == entry_) return;
  entry_ = entry;
  status_ = nullptr;
  created_ = false;
}

void NestedSm_TunnelIdMap::onAttribute(Dovel::Change const& change) {
  if (change.id == VtepIpToTnlIdNhIdMap::tnlIdId) updateTunnelIdStatus();
  if (change.id == VtepIpToTnlIdNhIdMap::nhIdId) updateCascadingNextHopIdInStatus();
}

void NestedSm_TunnelIdMap::updateTunnelIdStatus() {
  if (!owner_) return;
  TRACE(1, " tunnelType: {} vtepIp: {}", owner_->tunnelType(), key());
  owner_->maybeUpdateHwTunnelStatus(*this);
}

// A next-hop id matters to unicast tunnels alone: the other types publish the tunnel id as their next-hop id.
void NestedSm_TunnelIdMap::updateCascadingNextHopIdInStatus() {
  if (!owner_) return;
  TRACE(1, " tunnelType: {} vtepIp: {}", owner_->tunnelType(), key());
  if (owner_->tunnelType() == Vane::vxlanTunnel_) owner_->maybeUpdateHwTunnelStatus(*this);
}

HwTunnelProgrammerBase::HwTunnelProgrammerBase(TunnelProgrammerInputs const& inputs)
    : statewayEm_(inputs.statewayEm),
      fcsd_(*this, inputs.fcsd, Kiln::SubscribeOnly{}),
      vxlanToL2State_(*this, inputs.vxlanToL2State, Kiln::SubscribeOnly{}),
      virtualPortTableProgrammer_(inputs.virtualPortTableProgrammer),
      tunnelTermTableProgrammer_(inputs.tunnelTermTableProgrammer),
      nextHopTableProgrammer_(inputs.nextHopTableProgrammer),
      herNextHopTableProgrammer_(inputs.herNextHopTableProgrammer),
      egrL3TunnelTablesProgrammer_(inputs.egrL3TunnelTablesProgrammer),
      underlayEcmpProgrammer_(inputs.underlayEcmpProgrammer),
      epreEdevConfigCcbeSm_(inputs.epreEdevConfigCcbeSm),
      tunnelType_(inputs.tunnelType),
      hwTunnelConfig_(inputs.hwTunnelConfig),
      hwTunnelStatus_(inputs.hwTunnelStatus),
      vxlanState_(inputs.vxlanState),
      encapIdBitmap_(inputs.encapIdBitmap),
      vxlanCapabilities_(inputs.vxlanCapabilities),
      vxlanUnderlayFloodingHw_(inputs.vxlanUnderlayFloodingHw),
      bumVtepConfigDir_(inputs.bumVtepConfigDir),
      encapIdToBumVtepIpConfigDir_(inputs.encapIdToBumVtepIpConfigDir),
      qosTrustStatus_(*this, inputs.qosTrustStatus, Kiln::SubscribeOnly{}),
      vxlanConfigDir_(*this, inputs.vxlanConfigDir, Kiln::SubscribeOnly{}),
      floodUnderlayVlanToVtepListDir_(inputs.floodUnderlayVlanToVtepListDir),
      l3Oif1TableProgrammer_(inputs.l3Oif1TableProgrammer),
      evpnStatus_(inputs.evpnStatus) {
  handleInitialized();
  // Finds the overlay programmer created: for logical chips that `handleInitialized` did not see.
  handleLogicalFapId();
  for (auto const& vtep : Kiln::keysOf(vxlanToL2State()->vtepIpToTnlIdNhIdMapColl())) handleVtepMap(vtep);
}

void HwTunnelProgrammerBase::handleInitialized() {
  TRACE(1, "tunnelType: {}", tunnelType());
  // Before the chip's overlay programmer, which increments its counters.
  tnlNhUpdateConfigIs(tunnelNextHopUpdateConfigFactory());
  handleLogicalFapId();
}

void HwTunnelProgrammerBase::handleLogicalFapId() {
  TRACE(1, "HwTunnelProgrammerBase::handleLogicalFapId");
  for (auto const& fapId : Kiln::keysOf(fcsd()->logicalFapColl())) handleLogicalFapId(fapId);
}

void HwTunnelProgrammerBase::handleLogicalFapId(LogicalFap::LogicalFapId fapId) {
  TRACE(1, "HwTunnelProgrammerBase::handleLogicalFapId fapId: {}", fapId);
  auto const modInfo = fcsd()->logicalFap(fapId);
  if (!modInfo) return;
  chipInfo_.doInit(*modInfo);
  vxlanAttr_ = TesselProfile::feature<TesselChipAttributesVxlan>(chipInfo());
  INVARIANT(vxlanAttr() && "Could not initialize TesselChipAttributesVxlan");
  if (overlayTableProgrammer()) return;
  if (vxlanAttr()->vxlanCascadedForwardingSupport()) {
    overlayTableProgrammer_ =
        overlayCascadedTableProgrammerFactory(statewayEm(), fcsd(), vxlanToL2State(), tnlNhUpdateConfig());
  } else {
    overlayTableProgrammer_ = overlayNextHopTableProgrammerFactory(statewayEm(), fcsd(), vxlanToL2State(),
                                                                   tnlNhUpdateConfig(), l3Oif1TableProgrammer(),
                                                                   nextHopTableProgrammer(), underlayEcmpProgrammer());
  }
  overlayTableProgrammer()->initTables(chipInfo());
}

void HwTunnelProgrammerBase::fcsdDispatch(Dovel::Change const& change) {
  if (change.id != TesselCentral::FeatureAgentCommonSmData::logicalFapId) return;
  handleLogicalFapId(change.keyAs<LogicalFap::LogicalFapId>());
}

void HwTunnelProgrammerBase::vxlanToL2StateDispatch(Dovel::Change const& change) {
  if (change.id == TesselCentral::VxlanToL2State::vtepIpToTnlIdNhIdMapId) {
    handleVtepMap(change.keyAs<Meshal::IpGenAddr>());
  }
}

void HwTunnelProgrammerBase::qosTrustStatusDispatch(Dovel::Change const& change) {
  if (change.id == TesselCommon::Qos::TrustStatus::tosBasePtrId) handleTosBasePtr();
}

void HwTunnelProgrammerBase::vxlanConfigDirDispatch(Dovel::Change const& change) {
  if (change.id == Vxlan::VxlanConfigDir::dscpPropagationId) handleDscpPropagation();
}

void HwTunnelProgrammerBase::tnlNhUpdateConfigDispatch(Dovel::Change const& change) {
  if (change.id == TunnelNextHopUpdateConfig::tunnelNhUpdateId) {
    handleHwTunnelNextHopUpdate(change.keyAs<Meshal::IpGenAddr>());
  }
}

// A record is watched from the first tunnel of this object's type on: the ids of other types' tunnels change nothing
// here.
void HwTunnelProgrammerBase::handleVtepMap(Meshal::IpGenAddr const& vtep) {
  auto const& map = vxlanToL2State()->vtepIpToTnlIdNhIdMap(vtep);
  if (!map) {
    tunnelIdMapDel(vtep);
  } else if (map->tnlKeysHas(tunnelType()) || tunnelIdMapHas(vtep)) {
    tunnelIdMapIs(map);
  }
}

Dovel::Ptr<VtepIpToTnlIdNhIdMap> const& HwTunnelProgrammerBase::vtepMap(Meshal::IpGenAddr const& vtep) const {
  static constexpr Dovel::Ptr<VtepIpToTnlIdNhIdMap> none;
  auto const& watcher = tunnelIdMap_.at(vtep);
  return watcher ? watcher->map() : none;
}

void HwTunnelProgrammerBase::tunnelIdMapIs(Dovel::Ptr<VtepIpToTnlIdNhIdMap> const& map) {
  if (!map) Kiln::throwMutatorArgNullPointerException("tunnelIdMap");
  auto const [found, isNew] =
      tunnelIdMap_.findOrMake(map->vtepIp(), [&] { return Dovel::make<NestedSm_TunnelIdMap>(map, this); });
  if (isNew) return;
  auto const watcher = found;
  watcher->mapIs(map);
}

Dovel::Ptr<VtepIpToTnlIdNhIdMap> HwTunnelProgrammerBase::tunnelIdMapDel(Meshal::IpGenAddr const& vtep) {
  auto const watcher = tunnelIdMap_.del(vtep);
  if (!watcher) return nullptr;
  watcher->entryIs(nullptr);
  publishedNextHopIdIs(*watcher, Vane::VaneNextHopId());
  return watcher->map();
}

void HwTunnelProgrammerBase::tunnelIdMapDelAll() {
  for (auto const& vtep : Kiln::keysOf(tunnelIdMap())) tunnelIdMapDel(vtep);
}

Meshal::IpGenAddr HwTunnelProgrammerBase::getVtepIpHelper(Meshal::AddressFamily af) const {
  TRACE(2, " address family {}", af);
  if (!vxlanState()->mlagVtepAddr().isUnspecified()) {
    TRACE(2, "mlag vtep addr {}", vxlanState()->mlagVtepAddr());
    return vxlanState()->mlagVtepAddr();
  }
  return vxlanState()->getLocalVtep(af);
}

Meshal::IpGenAddr HwTunnelProgrammerBase::getVtepIp(Meshal::AddressFamily af) const {
  TRACE(2, " address family {}", af);
  return vxlanState()->getLocalVtep(af);
}

Meshal::IpGenAddr HwTunnelProgrammerBase::headerSource(Meshal::IpGenAddr const& vtep,
                                                       Meshal::IpGenAddr const& localVtep) const {
  if (tunnelType() != Vane::vxlanMemberTunnel_) return localVtep;
  auto const& map = vtepMap(vtep);
  bool const shared = map && (map->tnlKeysHas(Vane::vxlanTunnel_) || map->tnlKeysHas(Vane::vxlanHerTunnel_));
  return shared ? getVtepIpHelper(vtep.af()) : localVtep;
}

bool HwTunnelProgrammerBase::isHerEvpnTunnel(Meshal::IpGenAddr const& vtep) const {
  TRACE(1, " vtep : {}", vtep);
  if (!evpnStatus()->evpnEnabled()) return false;
  auto const& map = vtepMap(vtep);
  return map && map->tnlKeysHas(Vane::vxlanHerTunnel_);
}

bool HwTunnelProgrammerBase::isNexthopIdProgrammed(NestedSm_TunnelIdMap& watcher) const {
  auto const& tnlId = watcher.map()->tnlId();
  if (!tnlId.valid() || !watcher.entry()) return true;
  if (!watcher.status()) watcher.statusIs(hwTunnelStatus()->tunnelStatus(watcher.entry()->tunnelKey()));
  auto const& status = watcher.status();
  if (status && status->hwTunnelId() == tnlId &&
      status->hwNextHopStatusEntry().hwNextHopId() == Vane::VaneNextHopId::unprogrammed()) {
    TRACE(1, " nextHopEntryList is null, skip further programming as nextHopId is unprogrammed");
    return false;
  }
  return true;
}

void HwTunnelProgrammerBase::programTunnelTables(ConfigEntry const& entry, Handle const&) {
  TRACE(1, " UNKNOWN Tunnel Type {} key: {}", tunnelType(), entry->tunnelKey());
}

HwTunnelProgrammerBase::Handle HwTunnelProgrammerBase::programOverlayTableEntry(Vane::TunnelKey const& tunnelKey,
                                                                                bool ecmp, Handle const& vpHandle,
                                                                                Handle const& nextHop2Handle) {
  TRACE(1, ", tunnelKey: {}, nextHopEntryHandle: {}, isEcmp: {}", tunnelKey, nextHop2Handle, ecmp);
  return overlayTableProgrammer()->insertEntry(tunnelKey, tunnelType(), ecmp, vpHandle, nextHop2Handle);
}

HwTunnelProgrammerBase::Handle HwTunnelProgrammerBase::defaultNextHop() const {
  Handle const ulNhHandle = nextHopTableProgrammer()->l3NextHop2Table()->entryWeakRef(
      TesselL3Common::L3NextHop2Key{Meshal::EthAddr(0xffffffffffff), Meshal::IntfId()});
  INVARIANT(ulNhHandle != NULL);
  return ulNhHandle;
}

unsigned HwTunnelProgrammerBase::resolvedNextHops(Vane::NextHopEntryList const& list) {
  unsigned count = 0;
  for (auto const& nextHop : list.nextHopEntry()) {
    if (nextHop.type() == Vane::nextHopResolved) ++count;
  }
  return count;
}

}  // namespace TesselVxlan
