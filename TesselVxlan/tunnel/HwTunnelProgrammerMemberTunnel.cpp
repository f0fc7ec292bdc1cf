#include "TesselVxlan/tunnel/HwTunnelProgrammerMemberTunnel.h"

#include <algorithm>

#include "platform/kiln/Trace.h"
#include "platform/tessel/features/ChipAttributes.h"

KILN_TRACE_FILE("HwTunnelProgrammerMemberTunnel");

namespace TesselVxlan {

void HwTunnelProgrammerMemberTunnel::programTunnelTables(ConfigEntry const& entry, Handle const& vpHandle) {
  TRACE(1, " tunnelType: {} key: {}", tunnelType(), entry->tunnelKey());
  auto underlay = programUnderlay(entry);
  if (!underlay.handle) {
    underlay.handle = defaultNextHop();
    TRACE(1, "Programming NHID in Overlay table");
  }
  programOverlayTableEntry(entry->tunnelKey(), underlay.ecmp, vpHandle, underlay.handle);
}

HwTunnelProgrammerMemberTunnel::Underlay HwTunnelProgrammerMemberTunnel::programUnderlay(ConfigEntry const& entry) {
  auto const& list = entry->nextHopEntryList();
  if (!list) {
    TRACE_IN("programTunnelTables", 1, " nextHopEntryList is null ");
    return {};
  }
  auto const count = resolvedNextHops(*list);
  if (count == 0) {
    TRACE_IN("programTunnelTables", 1, " no resolved nexthops");
    return {};
  }
  if (count > 1 || groupOfOne()) return {underlayEcmpProgrammer()->insertEntry(entry), true};
  auto const& nextHops = list->nextHopEntry();
  auto const nextHop = std::find_if(nextHops.begin(), nextHops.end(), [](Vane::NextHopEntry const& candidate) {
    return candidate.type() == Vane::nextHopResolved;
  });
  TRACE_IN("programTunnelTables", 1, "Programming NextHopId for NextHop : {} tunnelKey: {}", *nextHop,
           entry->tunnelKey());
  return {nextHopTableProgrammer()->insertEntry(entry->tunnelKey(), *nextHop), false};
}

// Where the overlay row is an ECMP level of its own, some chips forward from it to a group alone, and test chips
// model those.
bool HwTunnelProgrammerMemberTunnel::groupOfOne() const {
  auto const chipAttrs = TesselCentral::tesselAttributes(chipInfo());
  bool const wanted = chipInfo().isTestChip() || (chipAttrs && chipAttrs->memberSingleHopEcmp());
  return wanted && vxlanAttr()->vxlanCascadedForwardingSupport();
}

}  // namespace TesselVxlan
