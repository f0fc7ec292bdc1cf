#include "TesselVxlan/tunnel/HwTunnelProgrammerBase.h"
#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("HwTunnelProgrammerBase");

namespace TesselVxlan {

using TesselCentral::EntryWriteStatus;
using TesselCentral::VtepIpToTnlIdNhIdMap;

void HwTunnelProgrammerBase::maybeUpdateHwTunnelStatus(Meshal::IpGenAddr const& dstIpAddr) {
  TRACE(1, " tunnelType: {} vtepIp: {}", tunnelType(), dstIpAddr);
  INVARIANT(tunnelIdMapHas(dstIpAddr));
  // Copies: what is written below may end the record.
  auto const vtep = dstIpAddr;
  auto const tnlIdMap = vtepMap(vtep);
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
      auto const nhId = tnlIdMap->nhId();
      maybeUpdateHwTunnelIdNhId(vtep);
      nhIdToVtepIpMapIs(nhId, vtep);
      return;
    }
    default:
      return TRACE(1, " UnSupported Tunnel ");
  }
}

void HwTunnelProgrammerBase::maybeUpdateHwTunnelIdNhId(Meshal::IpGenAddr const& vtep) {
  auto const map = vtepMap(vtep);
  auto const key = map->tnlKeys(tunnelType());
  auto const status = hwTunnelStatus()->tunnelStatusIs(key);
  status->hwTunnelIdIs(map->tnlId());
  writeNextHopStatus(*map, key, *status);
  endOldGeneration(*map);
}

void HwTunnelProgrammerBase::writeNextHopStatus(VtepIpToTnlIdNhIdMap& map, Vane::TunnelKey const& key,
                                                Vane::HwTunnelStatusEntry& status) {
  // A watcher can come here after the configuration has left the list and before its deletion is handled.
  auto const& config = hwTunnelConfig()->hwTunnelConfigList(key);
  Dovel::Ptr<Vane::NextHopEntryList> const list = config ? config->nextHopEntryList() : nullptr;
  auto nhId = Vane::VaneNextHopId(map.tnlId().value());
  switch (tunnelType()) {
    case Vane::vxlanTunnel_:
      nhId = map.nhId();
      break;
    case Vane::vxlanMemberTunnel_:
      keepUniqueNhId(map);
      break;
    default:
      break;
  }
  TRACE(1, " Updating tnlId to {} and nhId to {}", map.tnlId(), nhId);
  status.hwNextHopStatusEntryIs({nhId, list});
}

// An unchanged adjacency keeps its value; a value is never given out twice in a run.
void HwTunnelProgrammerBase::keepUniqueNhId(VtepIpToTnlIdNhIdMap& map) {
  auto const& kept = map.mbrTnlUniqueNhId();
  if (kept != TesselCentral::MemberTunnelUniqueNhId{} && kept.adjId() == map.adjId()) return;
  uniqueNhIdValueInc(1);
  map.mbrTnlUniqueNhIdIs({map.adjId(), uniqueNhIdValue()});
}

// Only now that the new generation's status stands: a reader never sees the tunnel without one.
void HwTunnelProgrammerBase::endOldGeneration(VtepIpToTnlIdNhIdMap& map) {
  if (!map.oldTnlKeyHas(tunnelType())) return;
  auto const oldKey = map.oldTnlKey(tunnelType());
  if (hwTunnelStatus()->tunnelStatusHas(oldKey)) {
    TRACE_IN("maybeUpdateHwTunnelIdNhId", 1, " Deleting the oldTnl status of {}", oldKey);
    hwTunnelStatus()->tunnelStatusDel(oldKey);
  }
  map.oldTnlKeyDel(tunnelType());
}

void HwTunnelProgrammerBase::doUpdateNextHop(ConfigEntry const& entry) {
  TRACE(0, " tunnelType: {}", tunnelType());
  auto const nextHopEntryList = entry->nextHopEntryList();
  auto const key = entry->tunnelKey();
  auto const map = vtepMap(key.dst());
  if (!map) return TRACE(1, " Skipping as tnlIdMap is not present ");
  if (map->tnlKeysHas(tunnelType()) && !takeUpGeneration(*map, key, Event::nextHop)) return;
  if (nextHopEntryList) {
    TRACE(1, " updating AdjId tnlIdMap to : {}", nextHopEntryList->adjId());
    map->adjIdIs(nextHopEntryList->adjId());
  }
  auto const vpHandle = virtualPortTableProgrammer()->getEntry(key.dst());
  if (isNexthopIdProgrammed(*entry)) programTunnelTables(entry, vpHandle);
  maybeUpdateHwTunnelStatus(key.dst());
}

void HwTunnelProgrammerBase::handleHwTunnelNextHopUpdate(Meshal::IpGenAddr const& vtep) {
  if (!tnlNhUpdateConfig()->tunnelNhUpdateHas(vtep)) return;
  TRACE(1, ", vtepIp: {}", vtep);
  maybeUpdateHwTunnelStatus(vtep);
}

void HwTunnelProgrammerBase::handleActiveNextHopId(Vane::VaneNextHopId nhId) {
  TRACE(0, " nhId: {}", nhId);
  if (!nhIdToVtepIpMapHas(nhId)) return;
  auto const vtep = nhIdToVtepIpMap(nhId);
  auto const vpHandle = virtualPortTableProgrammer()->getEntry(vtep);
  if (hwTunnelConfig()->activeNextHopIdListHas(nhId)) {
    TRACE(1, "Addition of nhID {} for vtepIp={}", nhId, vtep);
    handleSipEntry(vtep, vpHandle, true);
  } else if (!isHerEvpnTunnel(vtep)) {
    TRACE(1, "Deletion of nhID {} for vtepIp={}", nhId, vtep);
    handleSipEntry(vtep, vpHandle, false);
  }
}

void HwTunnelProgrammerBase::handleSipEntry(Meshal::IpGenAddr const& vtepIp, Handle const& vpHandle, bool add) {
  if (add) {
    TRACE(1, " Obtained SVP handleKey :{}", vpHandle);
    tunnelTermTableProgrammer()->insertSipEntry(vtepIp, vpHandle);
  } else {
    TRACE(1, " vtepIp: {}", vtepIp);
    tunnelTermTableProgrammer()->deleteSipEntry(vtepIp);
  }
}

}  // namespace TesselVxlan
