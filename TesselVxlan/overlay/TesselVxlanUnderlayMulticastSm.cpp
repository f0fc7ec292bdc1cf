#include "TesselVxlan/overlay/TesselVxlanUnderlayMulticastSm.h"

#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"
#include "platform/tessel/LogMessages.h"

KILN_TRACE_FILE("TesselVxlanUnderlayMulticastSm");

namespace TesselVxlan {

using Bridging::VlanId;
using Meshal::IpAddr;

namespace {

Kiln::LogHandle enabled(TesselLog::TESSEL_VXLAN_UNDERLAY_MULTICAST_PIM_SM_ENABLED, 0, 1.0, 0, 0);
Kiln::LogHandle disabled(TesselLog::TESSEL_VXLAN_UNDERLAY_MULTICAST_PIM_SM_DISABLED, 0, 1.0, 0, 0);

VxlanV4UnderlayMcastTable::Key rowOf(IpAddr source, IpAddr group, VlanId vlan) { return {source, group, vlan.value()}; }

struct Response {
  IpAddr source;
  IpAddr group;
  VlanId vlan;

  void operator()(Asic::EntryState state) const {
    TRACE_IN("operator()", 1, " source : {} group : {} vlan : {} entryState : {}", source, group, vlan, state);
  }
};

}  // namespace

TesselVxlanUnderlayMulticastSm::TesselVxlanUnderlayMulticastSm(
    Dovel::Ptr<Stateway::EntityManager> statewayEm, Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
    Dovel::Ptr<MrouteLib::MrouteVxlanDecapTable> mrouteVxlanDecapTable,
    Dovel::Ptr<VxlanV4UnderlayMcastTable> vxlanV4UnderlayMcastTable)
    : TesselVxlanUnderlayMulticastBaseSm(std::move(statewayEm), std::move(fcsd), std::move(mrouteVxlanDecapTable)),
      vxlanV4UnderlayMcastTable_(std::move(vxlanV4UnderlayMcastTable)) {
  handleInitialized();
}

void TesselVxlanUnderlayMulticastSm::handleInitialized() {
  try {
    for (auto const& key : mrouteVxlanDecapTable()->mroutes()) handleVxlanMroute(key);
  } catch (Brisk::CorruptionException const& corruption) {
    mrouteVxlanDecapTable()->doCorruptionDetected(corruption.what());
  }
}

bool TesselVxlanUnderlayMulticastSm::hasHardwareResources() {
  bool const hasSpace = vxlanV4UnderlayMcastTable()->numEntries() != 0;
  if (hasSpace == noHardwareResources()) {
    noHardwareResources_ = !hasSpace;
    Kiln::log(hasSpace ? enabled : disabled);
  }
  return hasSpace;
}

void TesselVxlanUnderlayMulticastSm::handleVxlanMroute(IpGenRouteKey const& key) {
  if (!hasHardwareResources()) return;
  TRACE(1, " mroute key : {}", key);
  auto const source = key.source().v4Addr();
  auto const group = key.group().v4Addr();
  auto const oldVlan = mrouteKeyToVlan(key);
  bool const wasProgrammed = mrouteKeyToVlanHas(key);
  if (!mrouteVxlanDecapTable()->mrouteHas(key)) {
    if (!wasProgrammed) return;
    TRACE(1, " deleting mroute : {}", key);
    deleteEntry(source, group, oldVlan);
    mrouteKeyToVlanDel(key);
    return;
  }
  auto const newVlan = mrouteVxlanDecapTable()->mroute(key);
  if (!wasProgrammed) {
    TRACE(1, " adding mroute : {}", key);
  } else if (oldVlan != newVlan) {
    TRACE(1, " update mroute oldVlan : {}newVlan : {}", oldVlan, newVlan);
    deleteEntry(source, group, oldVlan);
  } else {
    return;
  }
  programEntry(source, group, newVlan);
  mrouteKeyToVlanIs(key, newVlan);
}

void TesselVxlanUnderlayMulticastSm::programEntry(IpAddr source, IpAddr group, VlanId vlan) {
  TRACE(1, "programEntry source :{} group :{} vlan :{}", source, group, vlan);
  VxlanV4UnderlayMcastTable::Entry entry;
  entry.writeResponse = Response{source, group, vlan};
  vxlanV4UnderlayMcastTable()->entryCommit(rowOf(source, group, vlan), std::move(entry));
}

void TesselVxlanUnderlayMulticastSm::deleteEntry(IpAddr source, IpAddr group, VlanId vlan) {
  TRACE(1, "deleteEntry source :{} group :{} vlan :{}", source, group, vlan);
  vxlanV4UnderlayMcastTable()->entryRemove(rowOf(source, group, vlan));
}

}  // namespace TesselVxlan
