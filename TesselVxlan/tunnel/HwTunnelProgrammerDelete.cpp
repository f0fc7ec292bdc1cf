#include "TesselVxlan/tunnel/HwTunnelProgrammerBase.h"
#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("HwTunnelProgrammerBase");

namespace TesselVxlan {

void HwTunnelProgrammerBase::doTunnelDelete(ConfigEntry const& entry) {
  auto const key = entry->tunnelKey();
  auto const vtep = key.dst();
  TRACE(0, " tunnelType: {} vtepIp: {}", tunnelType(), vtep);
  auto const map = vtepMap(vtep);
  if (!map) {
    if (hwTunnelStatus()->tunnelStatusHas(key)) {
      TRACE(1, " tnlIdMap empty, deleting HwTunnelStatusEntry");
      hwTunnelStatus()->tunnelStatusDel(key);
    }
    return TRACE(1, " Skipping as tnlIdMap is not present ");
  }
  // A copy: the record may go below, and the status of this key goes after it.
  auto const storedKey = map->tnlKeys(tunnelType());
  if (storedKey.genId() > key.genId()) {
    return TRACE(1, " Skipping due to rcvdGenId : {} < tnlIdMapGenId : {}", key.genId(), storedKey.genId());
  }
  if (evpnHerTunnelListHas(vtep)) {
    TRACE(1, " Removing SIP to SVP entry for EVPN Flood Vtep :{}", vtep);
    tunnelTermTableProgrammer()->deleteSipEntry(vtep);
    evpnHerTunnelListDel(vtep);
  }
  if (map->tnlKeysHas(tunnelType())) {
    TRACE(1, "Removing tunnelKey : {} for tunnelType : {}", storedKey, tunnelType());
    map->tnlKeysDel(tunnelType());
  }
  // After the key has gone: it looks at the types that remain.
  deleteTunnelUnderlayTables(key);
  if (map->tnlKeysColl().empty()) {
    virtualPortTableProgrammer()->deleteEntry(key, vtep);
    TRACE(1, "Deleting tnlIdMap for vtepIp: {}", vtep);
    vxlanToL2State()->vtepIpToTnlIdNhIdMapDel(vtep);
  }
  deleteTunnelStatus(key, storedKey);
}

// The tables go before the status, so that no status stands for less than the chip holds.
void HwTunnelProgrammerBase::deleteTunnelStatus(Vane::TunnelKey const& received, Vane::TunnelKey const& stored) {
  TRACE(1, " Nhop2 and VP tables deleted. Deleting hwTunnelStatus entry now. ");
  if (hwTunnelStatus()->tunnelStatusHas(received)) {
    TRACE(1, " Deleting the tunnelStatus for rcvd tnlKey");
    hwTunnelStatus()->tunnelStatusDel(received);
  }
  if (hwTunnelStatus()->tunnelStatusHas(stored)) {
    TRACE(1, " Deleting the tunnelStatus for tnlIdMap->tnlKey");
    hwTunnelStatus()->tunnelStatusDel(stored);
  }
}

void HwTunnelProgrammerBase::deleteTunnelUnderlayTables(Vane::TunnelKey const& tunnelKey) {
  TRACE(1, " tunnelType: {} key: {}", tunnelType(), tunnelKey);
  auto const tnlIdMap = vtepMap(tunnelKey.dst());
  INVARIANT(tnlIdMap);
  if (tunnelType() != Vane::vxlanTunnel_ && tunnelType() != Vane::vxlanMemberTunnel_) return;
  // Unicast and member tunnel of a VTEP share its overlay entry: the second to go takes it along.
  if (tnlIdMap->tnlKeysHas(Vane::vxlanTunnel_) || tnlIdMap->tnlKeysHas(Vane::vxlanMemberTunnel_)) return;
  TRACE(1, "Deleting EcmpMember0 table for vtepIp: {}", tunnelKey.dst());
  deleteOverlayTableEntry(tunnelKey);
}

void HwTunnelProgrammerBase::deleteOverlayTableEntry(Vane::TunnelKey const& tunnelKey) {
  overlayTableProgrammer()->deleteEntry(tunnelKey);
  auto const tnlIdMap = vtepMap(tunnelKey.dst());
  INVARIANT(tnlIdMap);
  INVARIANT((tunnelType() == Vane::vxlanTunnel_) || (tunnelType() == Vane::vxlanMemberTunnel_));
  TRACE(1, " EcmpMember0Table, swKey: {} Invalidating tnlIdMap for vtepIp: {}", tunnelKey.dst(), tunnelKey.dst());
  // Before nhId: its watchers must find the record not ready, and write no status.
  tnlIdMap->nhIdEntryStatusIs(TesselCentral::EntryWriteStatus::entryWriteNone);
  nhIdToVtepIpMapDel(tnlIdMap->nhId());
  tnlIdMap->nhIdIs(Vane::VaneNextHopId::invalidNextHopId());
}

}  // namespace TesselVxlan
