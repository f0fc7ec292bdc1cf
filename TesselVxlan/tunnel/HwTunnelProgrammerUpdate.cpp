#include "TesselVxlan/tunnel/HwTunnelProgrammerBase.h"
#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("HwTunnelProgrammerBase");

namespace TesselVxlan {

namespace {

/// The address that a tunnel was last programmed with: of its own family, but for an IPv6 tunnel from an MLAG address.
Meshal::IpGenAddr const& formerSource(TesselCentral::VtepIpToTnlIdNhIdMap const& map, Meshal::AddressFamily af) {
  auto const& own = map.getLocalVtep(af);
  if (!own.isUnspecified()) return own;
  return af == Meshal::AddressFamily::ipv4 ? map.localVtep6() : map.localVtep();
}

}  // namespace

void HwTunnelProgrammerBase::updateEgrL3TunnelTable(bool vxlanUdpPortChanged) {
  if (vxlanState()->udpPort() == 0) return;
  TRACE(0, " tunnelType: {}", tunnelType());
  HeaderPass pass{vxlanUdpPortChanged,
                  tunnelType() == Vane::vxlanTunnel_ &&
                      !egrL3TunnelTablesProgrammer()->egrL3TunnelTableAttributes()->ipv4DipInKey()};
  // A creation writes state that can change the list; what has left it meanwhile was deleted by its own event.
  for (auto const& key : Kiln::keysOf(hwTunnelConfig()->hwTunnelConfigListColl())) {
    ConfigEntry const entry = hwTunnelConfig()->hwTunnelConfigList(key);
    if (entry && !updateHeader(pass, entry)) return;
  }
}

bool HwTunnelProgrammerBase::updateHeader(HeaderPass& pass, ConfigEntry const& entry) {
  auto const& key = entry->tunnelKey();
  auto const& vtep = key.dst();
  TRACE_IN("updateEgrL3TunnelTable", 1, " Programming Vxlan tunnel : tunnelType: {} vtepIp: {}", tunnelType(), vtep);
  auto const newLocal = getVtepIp(vtep.af());
  if (!isCreated(*entry)) {
    if (!newLocal.isUnspecified()) doTunnelCreate(entry);
    return true;
  }
  auto const map = vtepMap(vtep);
  auto const oldLocal = formerSource(*map, vtep.af());
  if (oldLocal.isUnspecified()) {
    TRACE_IN("updateEgrL3TunnelTable", 1,
             " Skipping since oldLoopbackAddr is Zero oldLocalAddr : {} newLocalAddr : {} vtepIp :{}", oldLocal,
             newLocal, vtep);
    return true;
  }
  if (newLocal.isUnspecified()) {
    TRACE_IN("updateEgrL3TunnelTable", 1,
             " Skipping since newLoopbackAddr is Zero oldLocalAddr : {} newLocalAddr : {} vtepIp :{}", oldLocal,
             newLocal, vtep);
    // The tables keep the former address until there is one again, which starts another pass.
    return false;
  }
  auto const source = headerSource(vtep, newLocal);
  auto const egrL3Handle = headerOf(pass, source, vtep);
  // What the port holds decides too: an address may have been recorded while no header could be built from it.
  bool const held = sameEntry(egrL3Handle, virtualPortTableProgrammer()->egrL3TunnelTableHandle(vtep));
  if (!egrL3Handle || (oldLocal == source && held && !pass.vxlanUdpPortChanged)) {
    TRACE_IN("updateEgrL3TunnelTable", 1, " Bailing out for same vteps but different tunnelType : {} vtepIp:{}",
             tunnelType(), vtep);
    return true;
  }
  TRACE_IN(
      "updateEgrL3TunnelTable", 1,
      " Updating VP tables in-place for oldLocalAddr : {} change to newLocalAddr : {} for vtepIp :{} vxlanUdpPort : {}",
      oldLocal, source, vtep, vxlanState()->udpPort());
  updateVpTableInPlace(key, egrL3Handle);
  map->setLocalVtep(source);
  return true;
}

// A creation that stopped before the virtual port counts as none: the missing piece may just have been added. So does a
// newer generation that could not be put in force.
bool HwTunnelProgrammerBase::isCreated(Vane::HwTunnelConfigEntry const& entry) const {
  auto const& watcher = tunnelIdMap_.at(entry.tunnelKey().dst());
  return watcher && watcher->created() && watcher->entry()->tunnelKey().genId() >= entry.tunnelKey().genId();
}

HwTunnelProgrammerBase::Handle HwTunnelProgrammerBase::headerOf(HeaderPass& pass, Meshal::IpGenAddr const& local,
                                                                Meshal::IpGenAddr const& vtep) {
  bool const shared = pass.oneHeaderForAll && vtep.af() == Meshal::AddressFamily::ipv4;
  if (shared && pass.sharedWritten) return egrL3TunnelTablesProgrammer()->entryWeakRef(local, vtep);
  auto const egrL3Handle = programEgrL3TunnelTable(local, vtep);
  if (!egrL3Handle) TRACE(1, " egrL3TunnelTableHandle is NULL");
  if (shared && egrL3Handle) pass.sharedWritten = true;
  return egrL3Handle;
}

void HwTunnelProgrammerBase::updateVpTableInPlace(Vane::TunnelKey const& tunnelKey, Handle const& egrL3Handle) {
  TRACE(1, " tunnelKey: {} egrL3Handle: {}", tunnelKey, egrL3Handle);
  virtualPortTableProgrammer()->insertEntry(tunnelKey, tunnelType(), tunnelKey.dst(),
                                            vxlanToL2State()->dataPathLearning(), egrL3Handle);
}

void HwTunnelProgrammerBase::updateVxlanDataPathLearning(bool dataPathLearning) {
  TRACE(0, " tunnelType: {}", tunnelType());
  vxlanToL2State()->dataPathLearningIs(dataPathLearning);
  if (virtualPortTableProgrammer()->virtualPortTable() && vxlanState()->vpDefaultInit()) {
    auto const egrL3Handle = egrL3TunnelTablesProgrammer()->entryWeakRef({}, {});
    TRACE(1, " egrL3TunnelTableHandle: {}", egrL3Handle);
    virtualPortTableProgrammer()->insertDefaultEntries(dataPathLearning, egrL3Handle);
  }
  for (auto const& key : Kiln::keysOf(hwTunnelConfig()->hwTunnelConfigListColl())) handleVxlanDataPathLearning(key);
}

void HwTunnelProgrammerBase::handleVxlanDataPathLearning(Vane::TunnelKey const& key) {
  TRACE(1, " tunnelType: {}", tunnelType());
  auto const map = vtepMap(key.dst());
  // A tunnel that waits for its outer header has no port yet; a port written here would have no header.
  if (!map || !map->tnlKeysHas(tunnelType()) || !virtualPortTableProgrammer()->getEntry(key.dst())) {
    return TRACE(1, " Tunnel not yet created: {}", key);
  }
  // The header that the port holds, which may be sourced from an address of the other family or from a former one.
  auto const egrL3Handle = virtualPortTableProgrammer()->egrL3TunnelTableHandle(key.dst());
  TRACE(1, " Updating VP tables in-place with dataPathLearning: {} for vtepIp :{}",
        vxlanToL2State()->dataPathLearning(), key.dst());
  updateVpTableInPlace(key, egrL3Handle);
}

void HwTunnelProgrammerBase::handleDscpPropagation() {
  TRACE(1, " tunnelType: {}", tunnelType());
  updateEgrL3TunnelTable(false);
}

void HwTunnelProgrammerBase::handleTosBasePtr() {
  TRACE(1, " tunnelType: {}", tunnelType());
  updateEgrL3TunnelTable(false);
}

}  // namespace TesselVxlan
