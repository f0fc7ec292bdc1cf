#include "TesselVxlan/tunnel/HwTunnelProgrammerBase.h"
#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("HwTunnelProgrammerBase");

namespace TesselVxlan {

using TesselCentral::VtepIpToTnlIdNhIdMap;

void HwTunnelProgrammerBase::doTunnelCreate(ConfigEntry const& entry) {
  auto const& vtep = entry->tunnelKey().dst();
  TRACE(0, " tunnelType: {} vtepIp: {} localVtep: {}", tunnelType(), vtep, getVtepIp(vtep.af()));
  if (!doPreTunnelCreate(entry)) return TRACE(1, "Bailing out with doPreTunnelCreate");
  if (!doTunnelCreateCommon(entry)) return TRACE(1, "Bailing out with doTunnelCreateCommon");
  doPostTunnelCreate(entry);
}

bool HwTunnelProgrammerBase::doTunnelCreateCommon(ConfigEntry const& entry) {
  auto const key = entry->tunnelKey();
  auto const& vtep = key.dst();
  auto const localVtep = getVtepIp(vtep.af());
  TRACE(1, " tunnelType: {} vtepIp: {} localVtep: {}", tunnelType(), vtep, localVtep);
  // A VTEP without a family may get the address of another one here, but there is no header for it either.
  if (localVtep.isUnspecified() || vtep.af() == Meshal::AddressFamily::unknown) {
    TRACE(1, "Bailing out since localVtep not present");
    return false;
  }
  auto const nextHopEntryList = entry->nextHopEntryList();
  auto const watcher = recordTunnelKey(entry);
  if (!watcher) return false;
  auto const map = watcher->map();
  auto const source = headerSource(vtep, localVtep);
  map->setLocalVtep(source);
  if (nextHopEntryList) {
    TRACE(1, " updating AdjId tnlIdMap to : {}", nextHopEntryList->adjId());
    map->adjIdIs(nextHopEntryList->adjId());
  }

  // Each entry holds the handle of the next: the header first, then the port, then underlay and overlay.
  auto const egrL3Handle = programEgrL3TunnelTable(source, vtep);
  if (!egrL3Handle) {
    TRACE(1, " egrL3TunnelTableHandle is NULL");
    return false;
  }
  // Before the port: its success is published inside its write, and the status of a new generation would then show the
  // former one's failure.
  bool const programmable = isNexthopIdProgrammed(*watcher);
  TRACE(1, " egrL3TunnelTableHandle: {} Programming Virtual Port tables for vtep ip: {}", egrL3Handle, vtep);
  auto const vpHandle = virtualPortTableProgrammer()->insertEntry(key, tunnelType(), vtep,
                                                                  vxlanToL2State()->dataPathLearning(), egrL3Handle);
  if (watcher->entry() != entry) {
    TRACE(1, " Replaced or deleted while its virtual port was written: {}", key);
    return false;
  }
  if (programmable) programTunnelTables(entry, vpHandle);
  watcher->createdIs(true);
  // All ids may have been published inside the writes above, before everything that a status needs was there.
  maybeUpdateHwTunnelStatus(*watcher);
  if (watcher->entry() != entry) return false;
  // The row that admits the VTEP's traffic was written when the next hop became active. One that was refused is written
  // again with a new generation, like the rows above.
  auto const nhId = watcher->nhId();
  if (nhId.valid() && hwTunnelConfig()->activeNextHopIdListHas(nhId)) handleActiveNextHopId(nhId);
  return true;
}

Dovel::Ptr<NestedSm_TunnelIdMap> HwTunnelProgrammerBase::recordTunnelKey(ConfigEntry const& entry) {
  auto const& key = entry->tunnelKey();
  auto watcher = tunnelIdMap_.at(key.dst());
  if (watcher && watcher->map()->tnlKeysHas(tunnelType())) {
    return acceptGeneration(*watcher, entry, Event::creation) ? watcher : nullptr;
  }
  auto const present = vxlanToL2State()->vtepIpToTnlIdNhIdMap(key.dst());
  bool const known = bool(present);
  if (!watcher) {
    tunnelIdMapIs(known ? present : vxlanToL2State()->vtepIpToTnlIdNhIdMapIs(key.dst()));
    watcher = tunnelIdMap_.at(key.dst());
  }
  watcher->entryIs(entry);
  watcher->map()->tnlKeysIs(tunnelType(), key);
  if (known) TRACE(1, " Updated New TunnelKey into tnlIdMap ");
  return watcher;
}

bool HwTunnelProgrammerBase::acceptGeneration(NestedSm_TunnelIdMap& watcher, ConfigEntry const& entry, Event event) {
  auto& map = *watcher.map();
  auto const& key = entry->tunnelKey();
  auto const storedKey = map.tnlKeys(tunnelType());
  if (storedKey.genId() > key.genId()) {
    TRACE(1, " Skipping due to rcvdGenId : {} < tnlIdMapGenId : {}", key.genId(), storedKey.genId());
    return false;
  }
  if (storedKey.genId() < key.genId()) {
    if (event == Event::creation) {
      TRACE(1, " Updating tnlKey with new genId: {}", key.genId());
    } else {
      TRACE(1, " Updating tnlKey with new genId : {}", key.genId());
    }
    watcher.entryIs(entry);
    map.tnlKeysIs(tunnelType(), key);
    // The status of an earlier generation remains until the new one has its own. One that was replaced meanwhile is
    // not needed for that: it has no status yet, or one that is not complete.
    bool const earlier = hwTunnelStatus()->tunnelStatusHas(map.oldTnlKey(tunnelType()));
    if (!earlier) map.oldTnlKeyIs(tunnelType(), storedKey);
    if (earlier) hwTunnelStatus()->tunnelStatusDel(storedKey);
    return watcher.entry() == entry;
  }
  if (event == Event::creation) TRACE(1, " rcvd same genId proceeding ");
  watcher.entryIs(entry);
  return true;
}

HwTunnelProgrammerBase::Handle HwTunnelProgrammerBase::programEgrL3TunnelTable(Meshal::IpGenAddr const& srcIpAddr,
                                                                               Meshal::IpGenAddr const& dstIpAddr) {
  auto const& state = *vxlanState();
  TRACE(1, " srcIp: {} dstIp: {} udpDestPort: {} udpSrcPortValid: {} udpSrcPort: {}", srcIpAddr, dstIpAddr,
        state.udpPort(), state.udpSrcPortValid(), state.udpSrcPort());
  if (srcIpAddr.isUnspecified() || state.udpPort() == 0) {
    TRACE(1, "srcIpAddr or udpPort unprogrammed");
    return nullptr;
  }
  static Meshal::IntfId const vxlan1("Vxlan1");
  TesselL3Common::VxlanTunnelKey const header(vxlan1, srcIpAddr, state.udpPort(), state.udpSrcPortValid(),
                                              state.udpSrcPort(), state.ttl());
  return egrL3TunnelTablesProgrammer()->insertEntry(header, dstIpAddr);
}

}  // namespace TesselVxlan
