#include "TesselVxlan/tunnel/HwTunnelProgrammerBase.h"
#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("HwTunnelProgrammerBase");

namespace TesselVxlan {

using TesselCentral::EntryWriteStatus;
using TesselCentral::VtepIpToTnlIdNhIdMap;

void HwTunnelProgrammerBase::maybeUpdateHwTunnelStatus(Meshal::IpGenAddr const& dstIpAddr) {
  INVARIANT(tunnelIdMapHas(dstIpAddr));
  auto const watcher = tunnelIdMap_.at(dstIpAddr);
  maybeUpdateHwTunnelStatus(*watcher);
}

void HwTunnelProgrammerBase::maybeUpdateHwTunnelStatus(NestedSm_TunnelIdMap& watcher) {
  // A reference: a subscriber of what is written below may replace or remove the record.
  auto const tnlIdMap = watcher.map();
  auto const& vtep = tnlIdMap->vtepIp();
  TRACE(1, " tunnelType: {} vtepIp: {}", tunnelType(), vtep);
  if (!tnlIdMap->tnlKeysHas(tunnelType())) {
    return TRACE(1, " Skipping update tunnelId as {} tunnelType not in tnlKeys for vtepIp={}", tunnelType(), vtep);
  }
  if (tnlIdMap->tnlIdEntryStatus() == EntryWriteStatus::entryWriteNone) return;
  INVARIANT(tnlIdMap->tnlId() != Vane::VaneTunnelId::invalidTunnelId());
  switch (tunnelType()) {
    case Vane::vxlanHerTunnel_:
    case Vane::vxlanMemberTunnel_:
    case Vane::vxlanMcastTunnel_:
      return maybeUpdateHwTunnelIdNhId(vtep);
    case Vane::vxlanTunnel_: {
      if (tnlIdMap->nhIdEntryStatus() == EntryWriteStatus::entryWriteNone) return;
      INVARIANT(tnlIdMap->nhId() != Vane::VaneNextHopId::invalidNextHopId());
      maybeUpdateHwTunnelIdNhId(vtep);
      // Unless a subscriber of the status has deleted the tunnel: its id must not find the VTEP any more.
      if (tunnelIdMap_.at(vtep).get() == &watcher && watcher.map()->tnlKeysHas(tunnelType())) {
        publishedNextHopIdIs(watcher, watcher.map()->nhId());
      }
      return;
    }
    default:
      return TRACE(1, " UnSupported Tunnel ");
  }
}

void HwTunnelProgrammerBase::maybeUpdateHwTunnelIdNhId(Meshal::IpGenAddr const& vtep) {
  updateStatus(vtep, [this](VtepIpToTnlIdNhIdMap& map, Vane::HwTunnelStatusEntry const&) { return nextHopIdOf(map); });
}

// Each write may run a subscriber that deletes the tunnel or replaces its generation: the rest is then not this call's.
void HwTunnelProgrammerBase::updateStatus(Meshal::IpGenAddr const& vtep, NextHopIdOf const& nextHopId) {
  auto const watcher = tunnelIdMap_.at(vtep);
  auto const map = watcher->map();
  auto const status = statusIs(*watcher);
  if (!status) return;
  if (status->hwTunnelId() != map->tnlId()) {
    status->hwTunnelIdIs(map->tnlId());
    if (watcher->status() != status) return;
  }
  auto const* config = watcher->entry().get();
  // None is in force at a record that replaced another.
  if (!config) config = hwTunnelConfig()->hwTunnelConfigList(map->tnlKeys(tunnelType())).get();
  status->hwNextHopStatusEntryIs({nextHopId(*map, *status), config ? config->nextHopEntryList() : nullptr});
  if (map->oldTnlKeyHas(tunnelType()) && watcher->status() == status) endOldGeneration(*map);
}

NestedSm_TunnelIdMap::StatusEntry HwTunnelProgrammerBase::statusIs(NestedSm_TunnelIdMap& watcher) {
  if (watcher.status()) return watcher.status();
  auto const key = watcher.map()->tnlKeys(tunnelType());
  auto const inForce = watcher.entry();
  auto const status = hwTunnelStatus()->tunnelStatusIs(key);
  if (watcher.entry() != inForce || hwTunnelStatus()->tunnelStatus(key) != status) return nullptr;
  watcher.statusIs(status);
  return status;
}

Vane::VaneNextHopId HwTunnelProgrammerBase::nextHopIdOf(VtepIpToTnlIdNhIdMap& map) {
  if (tunnelType() == Vane::vxlanMemberTunnel_) keepUniqueNhId(map);
  auto const nhId = tunnelType() == Vane::vxlanTunnel_ ? map.nhId() : Vane::VaneNextHopId(map.tnlId().value());
  TRACE_IN("maybeUpdateHwTunnelIdNhId", 1, " Updating tnlId to {} and nhId to {}", map.tnlId(), nhId);
  return nhId;
}

// An unchanged adjacency keeps its value; a value is never used twice in a run.
void HwTunnelProgrammerBase::keepUniqueNhId(VtepIpToTnlIdNhIdMap& map) {
  auto const& kept = map.mbrTnlUniqueNhId();
  if (kept != TesselCentral::MemberTunnelUniqueNhId{} && kept.adjId() == map.adjId()) return;
  uniqueNhIdValueInc(1);
  map.mbrTnlUniqueNhIdIs({map.adjId(), uniqueNhIdValue()});
}

// Called once the new generation's status is written: a reader never sees the tunnel without one.
void HwTunnelProgrammerBase::endOldGeneration(VtepIpToTnlIdNhIdMap& map) {
  auto const oldKey = map.oldTnlKeyDel(tunnelType());
  if (!hwTunnelStatus()->tunnelStatusHas(oldKey)) return;
  TRACE_IN("maybeUpdateHwTunnelIdNhId", 1, " Deleting the oldTnl status of {}", oldKey);
  hwTunnelStatus()->tunnelStatusDel(oldKey);
}

void HwTunnelProgrammerBase::publishedNextHopIdIs(NestedSm_TunnelIdMap& watcher, Vane::VaneNextHopId nhId) {
  // The mark of a failed write is many VTEPs' and finds none of them.
  auto const id = nhId == Vane::VaneNextHopId::unprogrammed() ? Vane::VaneNextHopId() : nhId;
  auto const former = watcher.nhId();
  if (id == former) return;
  watcher.nhIdIs(id);
  if (former.valid()) forgetInactive(former, watcher.key());
  if (!id.valid()) return;
  nhIdToVtepIpMapIs(id, watcher.key());
  // A subscriber of the status may have made the id active before its VTEP could be found.
  if (hwTunnelConfig()->activeNextHopIdListHas(id)) handleActiveNextHopId(id);
}

void HwTunnelProgrammerBase::forgetInactive(Vane::VaneNextHopId nhId, Meshal::IpGenAddr const& vtep) {
  if (hwTunnelConfig()->activeNextHopIdListHas(nhId) || nhIdToVtepIpMap(nhId) != vtep) return;
  nhIdToVtepIpMapDel(nhId);
}

void HwTunnelProgrammerBase::doUpdateNextHop(ConfigEntry const& entry) {
  TRACE(0, " tunnelType: {}", tunnelType());
  auto const& key = entry->tunnelKey();
  auto const watcher = tunnelIdMap_.at(key.dst());
  if (!watcher) return TRACE(1, " Skipping as tnlIdMap is not present ");
  if (watcher->map()->tnlKeysHas(tunnelType()) && !acceptGeneration(*watcher, entry, Event::nextHop)) return;
  if (auto const& list = entry->nextHopEntryList()) {
    TRACE(1, " updating AdjId tnlIdMap to : {}", list->adjId());
    watcher->map()->adjIdIs(list->adjId());
  }
  auto const vpHandle = virtualPortTableProgrammer()->getEntry(key.dst());
  // The creation that writes the port reads the next hops of that time; an overlay entry written now would have none.
  if (!vpHandle) return TRACE(1, " No virtual port yet for vtepIp: {}", key.dst());
  if (isNexthopIdProgrammed(*watcher)) programTunnelTables(entry, vpHandle);
  maybeUpdateHwTunnelStatus(*watcher);
}

void HwTunnelProgrammerBase::handleHwTunnelNextHopUpdate(Meshal::IpGenAddr const& vtep) {
  if (!tnlNhUpdateConfig()->tunnelNhUpdateHas(vtep)) return;
  TRACE(1, ", vtepIp: {}", vtep);
  if (tunnelIdMapHas(vtep)) maybeUpdateHwTunnelStatus(vtep);
  // The overlay entry is another type's by now; nothing else would remove the counter.
  auto const& map = vtepMap(vtep);
  if (!map || !map->tnlKeysHas(tunnelType())) tnlNhUpdateConfig()->tunnelNhUpdateDel(vtep);
}

void HwTunnelProgrammerBase::handleActiveNextHopId(Vane::VaneNextHopId nhId) {
  TRACE(0, " nhId: {}", nhId);
  auto const known = nhIdToVtepIpMapColl().find(nhId);
  if (known == nhIdToVtepIpMapColl().end()) return;
  auto const vtep = known->second;
  if (hwTunnelConfig()->activeNextHopIdListHas(nhId)) {
    TRACE(1, "Addition of nhID {} for vtepIp={}", nhId, vtep);
    return handleSipEntry(vtep, virtualPortTableProgrammer()->getEntry(vtep), true);
  }
  if (!isHerEvpnTunnel(vtep)) TRACE(1, "Deletion of nhID {} for vtepIp={}", nhId, vtep);
  // The row stays where a flood tunnel needs it too.
  handleSipEntry(vtep, nullptr, false);
  auto const& watcher = tunnelIdMap_.at(vtep);
  if (!watcher || watcher->nhId() != nhId) forgetInactive(nhId, vtep);
}

void HwTunnelProgrammerBase::handleSipEntry(Meshal::IpGenAddr const& vtepIp, Handle const& vpHandle, bool add) {
  if (add) {
    TRACE(1, " Obtained SVP handleKey :{}", vpHandle);
    tunnelTermTableProgrammer()->insertSipEntry(vtepIp, vpHandle, SipHolder::nextHop);
  } else {
    TRACE(1, " vtepIp: {}", vtepIp);
    tunnelTermTableProgrammer()->deleteSipEntry(vtepIp, SipHolder::nextHop);
  }
}

}  // namespace TesselVxlan
