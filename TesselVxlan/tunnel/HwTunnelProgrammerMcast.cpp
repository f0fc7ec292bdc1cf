#include "TesselVxlan/tunnel/HwTunnelProgrammerMcast.h"

#include <vector>

#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("HwTunnelProgrammerMcast");

namespace TesselVxlan {

void HwTunnelProgrammerMcast::programTunnelTables(ConfigEntry const& entry, Handle const& vpHandle) {
  auto const nextHopEntryList = entry->nextHopEntryList();
  auto const key = entry->tunnelKey();
  TRACE(1, " tunnelType: {} key: {}", tunnelType(), key);
  FinalNextHopSet finalNextHops;
  // Until the remap entries refer to them.
  std::vector<Handle> handles;
  if (nextHopEntryList) {
    for (auto const& nexthopEntry : nextHopEntryList->nextHopEntry()) {
      INVARIANT(nexthopEntry.type() == Vane::nextHopMcastTunnel());
      auto handle = insertNextHop(key, nexthopEntry, vpHandle);
      if (!handle) continue;
      finalNextHops.nextHopIs(nexthopEntry);
      TRACE(1, " Programmed nexthop : {}", nexthopEntry);
      handles.push_back(std::move(handle));
    }
  } else {
    TRACE(1, " Empty nexthop list");
  }
  if (finalNextHops.nextHop().empty()) return deleteFloodTables(key);
  programEpreTable(entry, finalNextHops);
}

HwTunnelProgrammerBase::Handle HwTunnelProgrammerMcast::insertNextHop(Vane::TunnelKey const& key,
                                                                      Vane::NextHopEntry const& nextHop,
                                                                      Handle const& vpHandle) {
  if (vxlanAttr()->vxlanHerNextHopTableSupported())
    return herNextHopTableProgrammer()->insertEntry(key, nextHop, vpHandle);
  return nextHopTableProgrammer()->insertEntry(key, nextHop);
}

void HwTunnelProgrammerMcast::maybeUpdateHwTunnelIdNhId(Meshal::IpGenAddr const& vtep) {
  updateStatus(vtep, [&](auto&, Vane::HwTunnelStatusEntry const& status) {
    auto const nhId = status.hwNextHopStatusEntry().hwNextHopId();
    TRACE_IN("maybeUpdateHwTunnelIdNhId", 1, " Updating nextHopEntryList tunnelType: {} vtepIp: {}, nhId: {}",
             tunnelType(), vtep, nhId);
    return nhId;
  });
}

}  // namespace TesselVxlan
