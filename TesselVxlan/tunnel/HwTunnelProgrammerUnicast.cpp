#include "TesselVxlan/tunnel/HwTunnelProgrammerUnicast.h"

#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("HwTunnelProgrammerUnicast");

namespace TesselVxlan {

void HwTunnelProgrammerUnicast::programTunnelTables(ConfigEntry const& entry, Handle const& vpHandle) {
  TRACE(1, " tunnelType: {} key: {}", tunnelType(), entry->tunnelKey());
  Handle ulNhHandle;
  if (auto const& list = entry->nextHopEntryList()) {
    if (resolvedNextHops(*list) >= 1) ulNhHandle = underlayEcmpProgrammer()->insertEntry(entry);
  } else {
    TRACE(1, " nextHopEntryList is null ");
  }
  if (!ulNhHandle) {
    ulNhHandle = defaultNextHop();
    TRACE(1, "Programming NHID in Overlay table");
  }
  programOverlayTableEntry(entry->tunnelKey(), true, vpHandle, ulNhHandle);
}

}  // namespace TesselVxlan
