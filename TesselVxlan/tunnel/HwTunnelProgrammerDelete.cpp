#include "TesselVxlan/tunnel/HwTunnelProgrammerBase.h"
#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("HwTunnelProgrammerBase");

namespace TesselVxlan {

void HwTunnelProgrammerBase::doTunnelDelete(ConfigEntry const& entry) {
  auto const key = entry->tunnelKey();
  auto const vtep = key.dst();
  TRACE(0, " tunnelType: {} vtepIp: {}", tunnelType(), vtep);
  auto const watcher = tunnelIdMap_.at(vtep);
  if (!watcher) {
    if (hwTunnelStatus()->tunnelStatusHas(key)) {
      TRACE(1, " tnlIdMap empty, deleting HwTunnelStatusEntry");
      hwTunnelStatus()->tunnelStatusDel(key);
    }
    return TRACE(1, " Skipping as tnlIdMap is not present ");
  }
  auto const map = watcher->map();
  // Copies: the record may be removed below, and the statuses of these keys are removed after it.
  auto const storedKey = map->tnlKeys(tunnelType());
  bool const replacing = map->oldTnlKeyHas(tunnelType());
  auto const oldKey = map->oldTnlKey(tunnelType());
  if (storedKey.genId() > key.genId()) {
    // The replaced generation's status is removed when the newer one has its own; a provisional one of a generation
    // that was never put in force has no other end than this.
    if (oldKey != key) deleteTunnelStatus(key, " Deleting the tunnelStatus for rcvd tnlKey");
    return TRACE(1, " Skipping due to rcvdGenId : {} < tnlIdMapGenId : {}", key.genId(), storedKey.genId());
  }
  if (evpnHerTunnelListHas(vtep)) {
    TRACE(1, " Removing SIP to SVP entry for EVPN Flood Vtep :{}", vtep);
    tunnelTermTableProgrammer()->deleteSipEntry(vtep, SipHolder::floodTunnel);
    evpnHerTunnelListDel(vtep);
  }
  if (map->tnlKeysHas(tunnelType())) {
    TRACE(1, "Removing tunnelKey : {} for tunnelType : {}", storedKey, tunnelType());
    map->tnlKeysDel(tunnelType());
    map->oldTnlKeyDel(tunnelType());
  }
  watcher->entryIs(nullptr);
  // After the key is removed: it looks at the types that remain.
  deleteTunnelUnderlayTables(*map, key);
  publishedNextHopIdIs(*watcher, Vane::VaneNextHopId());
  if (map->tnlKeysColl().empty()) {
    virtualPortTableProgrammer()->deleteEntry(key, vtep);
    TRACE(1, "Deleting tnlIdMap for vtepIp: {}", vtep);
    vxlanToL2State()->vtepIpToTnlIdNhIdMapDel(vtep);
  }
  // The tables before the statuses, so that no status claims more than the chip holds.
  TRACE(1, " Nhop2 and VP tables deleted. Deleting hwTunnelStatus entry now. ");
  deleteTunnelStatus(key, " Deleting the tunnelStatus for rcvd tnlKey");
  if (storedKey != key) deleteTunnelStatus(storedKey, " Deleting the tunnelStatus for tnlIdMap->tnlKey");
  // A generation that was replaced, and its successor deleted before it had a status of its own.
  if (replacing) deleteTunnelStatus(oldKey, " Deleting the oldTnl status");
}

void HwTunnelProgrammerBase::deleteTunnelStatus(Vane::TunnelKey const& key, [[maybe_unused]] char const* why) {
  auto const& watcher = tunnelIdMap_.at(key.dst());
  if (watcher && watcher->entry() && watcher->entry()->tunnelKey() == key) return;
  if (!hwTunnelStatus()->tunnelStatusHas(key)) return;
  TRACE_IN("doTunnelDelete", 1, "{}", why);
  hwTunnelStatus()->tunnelStatusDel(key);
}

void HwTunnelProgrammerBase::deleteTunnelUnderlayTables(TesselCentral::VtepIpToTnlIdNhIdMap& tnlIdMap,
                                                        Vane::TunnelKey const& tunnelKey) {
  TRACE(1, " tunnelType: {} key: {}", tunnelType(), tunnelKey);
  if (tunnelType() == Vane::vxlanHerTunnel_ || tunnelType() == Vane::vxlanMcastTunnel_) {
    TRACE(1, "Deleting EPRE table for vtepIp: {}", tunnelKey.dst());
    return deleteFloodTables(tunnelKey);
  }
  // Unicast and member tunnel of a VTEP share its overlay entry: the second one's deletion removes it.
  if (tnlIdMap.tnlKeysHas(Vane::vxlanTunnel_) || tnlIdMap.tnlKeysHas(Vane::vxlanMemberTunnel_)) {
    tnlNhUpdateConfig()->tunnelNhUpdateDel(tunnelKey.dst());
    return;
  }
  TRACE(1, "Deleting EcmpMember0 table for vtepIp: {}", tunnelKey.dst());
  deleteOverlayTableEntry(tnlIdMap, tunnelKey);
}

void HwTunnelProgrammerBase::deleteFloodTables(Vane::TunnelKey const& tunnelKey) {
  deleteEpreTable(tunnelKey);
  if (vxlanAttr()->vxlanHerNextHopTableSupported()) herNextHopTableProgrammer()->deleteEntry(tunnelKey.dst());
}

void HwTunnelProgrammerBase::deleteOverlayTableEntry(TesselCentral::VtepIpToTnlIdNhIdMap& tnlIdMap,
                                                     Vane::TunnelKey const& tunnelKey) {
  overlayTableProgrammer()->deleteEntry(tunnelKey);
  INVARIANT((tunnelType() == Vane::vxlanTunnel_) || (tunnelType() == Vane::vxlanMemberTunnel_));
  TRACE(1, " EcmpMember0Table, swKey: {} Invalidating tnlIdMap for vtepIp: {}", tunnelKey.dst(), tunnelKey.dst());
  // Before nhId: its watchers must find the record not ready and write no status.
  tnlIdMap.nhIdEntryStatusIs(TesselCentral::EntryWriteStatus::entryWriteNone);
  nhIdToVtepIpMapDel(tnlIdMap.nhId());
  tnlIdMap.nhIdIs(Vane::VaneNextHopId::invalidNextHopId());
}

}  // namespace TesselVxlan
