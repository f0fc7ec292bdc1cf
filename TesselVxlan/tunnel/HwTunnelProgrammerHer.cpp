#include "TesselVxlan/tunnel/HwTunnelProgrammerHer.h"

#include <boost/container/small_vector.hpp>

#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("HwTunnelProgrammerHer");

namespace TesselVxlan {

namespace {

/// The ids of a tunnel that waits for a local VTEP.
constexpr std::uint32_t provisionalId = 1;

}  // namespace

Meshal::IpGenAddr HwTunnelProgrammerHer::getVtepIp(Meshal::AddressFamily af) const {
  TRACE(2, " address family {}", af);
  return getVtepIpHelper(af);
}

bool HwTunnelProgrammerHer::doPreTunnelCreate(ConfigEntry const& entry) {
  auto const& key = entry->tunnelKey();
  auto const localVtep = getVtepIp(key.dst().af());
  TRACE(1, " tunnelType: {} vtepIp: {}", tunnelType(), key.dst());
  if (!localVtep.isUnspecified()) return true;
  auto const status = hwTunnelStatus()->tunnelStatusIs(key);
  status->hwTunnelIdIs(Vane::VaneTunnelId(provisionalId));
  status->hwNextHopStatusEntryIs({Vane::VaneNextHopId(provisionalId), entry->nextHopEntryList()});
  return false;
}

void HwTunnelProgrammerHer::doPostTunnelCreate(ConfigEntry const& entry) {
  if (vxlanToL2State()->dataPathLearning() || !evpnStatus()->evpnEnabled()) return;
  auto const& vtep = entry->tunnelKey().dst();
  auto const vpHandle = virtualPortTableProgrammer()->getEntry(vtep);
  TRACE(1, " tunnelType: {} vtepIp: {} Adding SIP to SVP entry for EVPN Flood Vtep :{}", tunnelType(), vtep, vtep);
  tunnelTermTableProgrammer()->insertSipEntry(vtep, vpHandle, SipHolder::floodTunnel);
  evpnHerTunnelListIs(vtep, true);
}

void HwTunnelProgrammerHer::programTunnelTables(ConfigEntry const& entry, Handle const& vpHandle) {
  auto const nextHopEntryList = entry->nextHopEntryList();
  auto const key = entry->tunnelKey();
  TRACE(1, " tunnelType: {} key: {}", tunnelType(), key);
  boost::container::small_vector<Vane::NextHopEntry const*, 8> resolved;
  if (nextHopEntryList) {
    for (auto const& nextHop : nextHopEntryList->nextHopEntry()) {
      if (nextHop.type() == Vane::nextHopResolved) resolved.push_back(&nextHop);
    }
  }
  if (resolved.empty()) {
    TRACE(1, "Empty nexthop list");
    return deleteFloodTables(key);
  }
  // One path for a copy, and no group: the VTEPs spread over the next hops.
  auto const& chosen = *resolved[key.dst().v6Addr().hash() % resolved.size()];
  FinalNextHopSet finalNextHops;
  finalNextHops.nextHopIs(chosen);
  // Until the remap entry refers to it.
  Handle nextHopHandle;
  if (vxlanAttr()->vxlanHerNextHopTableSupported()) {
    herNextHopTableProgrammer()->insertEntry(key, chosen, vpHandle);
  } else {
    TRACE(1, "Programming NHID in EcmpMember0 table for Non-Ecmp.");
    nextHopHandle = nextHopTableProgrammer()->insertEntry(key, chosen);
  }
  TRACE(1, " Programmed nexthop : {}", chosen);
  programEpreTable(entry, finalNextHops);
}

}  // namespace TesselVxlan
