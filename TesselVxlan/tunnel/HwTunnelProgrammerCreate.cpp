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
  // For a VTEP without a family the address of another one may stand in: there is no header for it either.
  if (localVtep.isUnspecified() || vtep.af() == Meshal::AddressFamily::unknown) {
    TRACE(1, "Bailing out since localVtep not present");
    return false;
  }
  auto const nextHopEntryList = entry->nextHopEntryList();
  auto const map = recordTunnelKey(key);
  if (!map) return false;
  map->setLocalVtep(localVtep);
  if (nextHopEntryList) {
    TRACE(1, " updating AdjId tnlIdMap to : {}", nextHopEntryList->adjId());
    map->adjIdIs(nextHopEntryList->adjId());
  }

  // Each entry holds the handle of the next: the header comes first, the port second, what lies behind it last.
  auto const egrL3Handle = programEgrL3TunnelTable(localVtep, vtep);
  if (!egrL3Handle) {
    TRACE(1, " egrL3TunnelTableHandle is NULL");
    return false;
  }
  TRACE(1, " egrL3TunnelTableHandle: {} Programming Virtual Port tables for vtep ip: {}", egrL3Handle, vtep);
  auto const vpHandle = virtualPortTableProgrammer()->insertEntry(key, tunnelType(), vtep,
                                                                  vxlanToL2State()->dataPathLearning(), egrL3Handle);
  if (isNexthopIdProgrammed(*entry)) programTunnelTables(entry, vpHandle);
  // The ids may all have come inside the writes above, when not everything that a status needs was in.
  maybeUpdateHwTunnelStatus(vtep);
  return true;
}

Dovel::Ptr<VtepIpToTnlIdNhIdMap> HwTunnelProgrammerBase::recordTunnelKey(Vane::TunnelKey const& key) {
  auto map = vtepMap(key.dst());
  if (!map) {
    // The notification of the new record makes its watcher before this returns.
    map = vxlanToL2State()->vtepIpToTnlIdNhIdMapIs(key.dst());
    map->tnlKeysIs(tunnelType(), key);
    return map;
  }
  if (!map->tnlKeysHas(tunnelType())) {
    map->tnlKeysIs(tunnelType(), key);
    TRACE(1, " Updated New TunnelKey into tnlIdMap ");
    return map;
  }
  return takeUpGeneration(*map, key, Event::creation) ? map : nullptr;
}

bool HwTunnelProgrammerBase::takeUpGeneration(VtepIpToTnlIdNhIdMap& map, Vane::TunnelKey const& key, Event event) {
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
    map.tnlKeysIs(tunnelType(), key);
    // A generation that was replaced before it got a status has none to end; that of an earlier one still stands.
    if (!hwTunnelStatus()->tunnelStatusHas(map.oldTnlKey(tunnelType()))) map.oldTnlKeyIs(tunnelType(), storedKey);
  } else if (event == Event::creation) {
    TRACE(1, " rcvd same genId proceeding ");
  }
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
