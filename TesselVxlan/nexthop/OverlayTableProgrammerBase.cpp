#include "TesselVxlan/nexthop/OverlayTableProgrammerBase.h"

#include "TesselVxlan/nexthop/WriteState.h"
#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("OverlayTableProgrammerBase");

namespace TesselVxlan {

using Meshal::IpGenAddr;
using TesselCentral::VtepIpToTnlIdNhIdMap;

struct OverlayTableProgrammer::Response {
  Dovel::Ptr<OverlayTableProgrammer> programmer;
  Vane::TunnelKey tunnelKey;

  void operator()(EntryState state) const { programmer->respond(tunnelKey, state); }
};

OverlayTableProgrammer::OverlayTableProgrammer(Dovel::Ptr<Stateway::EntityManager> statewayEm,
                                               Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
                                               Dovel::Ptr<TesselCentral::VxlanToL2State> vxlanToL2State,
                                               Dovel::Ptr<TunnelNextHopUpdateConfig> tnlNhUpdateConfig,
                                               OverlayTableWords const& words)
    : NextHopTableProgrammerBase(std::move(statewayEm), std::move(fcsd)),
      vxlanToL2State_(std::move(vxlanToL2State)),
      tnlNhUpdateConfig_(std::move(tnlNhUpdateConfig)),
      words_(words) {}

void OverlayTableProgrammer::deleteEntry(Vane::TunnelKey const& tunnelKey) {
  auto const vtep = tunnelKey.dst();
  TRACE(1, " {}, swKey: {}", words_.table, vtep);
  rowDel(vtep);
  tnlNhUpdateConfig()->tunnelNhUpdateDel(vtep);
}

bool OverlayTableProgrammer::mayWrite(IpGenAddr const& vtep, Vane::TunnelType tunnelType) const {
  if (tunnelType != Vane::vxlanMemberTunnel_) return true;
  auto const& map = vxlanToL2State()->vtepIpToTnlIdNhIdMap(vtep);
  return !map || !map->tnlKeysHas(Vane::vxlanTunnel_);
}

Asic::WriteResponseFn OverlayTableProgrammer::writeResponse(Vane::TunnelKey const& tunnelKey) {
  return Response{Dovel::Ptr<OverlayTableProgrammer>(this), tunnelKey};
}

void OverlayTableProgrammer::respond(Vane::TunnelKey const& tunnelKey, EntryState state) {
  auto const& vtep = tunnelKey.dst();
  // A reference to the map: watchers may remove it while it is written.
  Dovel::Ptr<VtepIpToTnlIdNhIdMap> const map = vxlanToL2State()->vtepIpToTnlIdNhIdMap(vtep);
  if (!map) {
    return TRACE_IN("insertEntry", 1, "{}{} ,tunnelKey  {} ,number {}", words_.missing, state, tunnelKey,
                    tunnelKey.genId());
  }
  byState(state, {.inProgress =
                      [&] {
                        TRACE_IN("insertEntry", 1, "{}{} nhIdEntryStatus : {}", words_.inProgress, vtep,
                                 map->nhIdEntryStatus());
                      },
                  .written = [&] { written(*map); },
                  .failed =
                      [&](bool full) {
                        if (full) tableFull(vtep);
                        failed(*map, state);
                      },
                  .unexpected = [&] { unexpectedState(); }});
}

void OverlayTableProgrammer::written(VtepIpToTnlIdNhIdMap& map) {
  auto const& vtep = map.vtepIp();
  auto const id = nextHopId(vtep);
  // Before the id, whose watchers read it.
  map.nhIdEntryStatusIs(TesselCentral::entryWriteDone);
  TRACE_IN("insertEntry", 1, "{}", words_.written);
  TRACE_IN("insertEntry", 1, "Adding into map, for remote vtep: {}{}{}", vtep, words_.hwIndex, id);
  // A new id itself notifies its readers.
  if (id != map.nhId()) return map.nhIdIs(id);
  auto& counts = *tnlNhUpdateConfig();
  counts.tunnelNhUpdateIs(vtep, counts.tunnelNhUpdate(vtep) + 1);
}

void OverlayTableProgrammer::failed(VtepIpToTnlIdNhIdMap& map, EntryState state) {
  TRACE_IN("insertEntry", 1, "{}{} with state={}", words_.failed, map.vtepIp(), state);
  TRACE_IN("insertEntry", 1, " Updating VtepIpToIdMap with unprogrammed NhId");
  map.nhIdEntryStatusIs(TesselCentral::entryWriteFailed);
  map.nhIdIs(Vane::VaneNextHopId::unprogrammed());
}

}  // namespace TesselVxlan
