#include "TesselVxlan/nexthop/OverlayNextHopTableProgrammer.h"

#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"
#include "platform/tessel/features/TesselChipAttributesVxlan.h"

KILN_TRACE_FILE("OverlayNextHopTableProgrammer");

namespace TesselVxlan {

using Meshal::IpGenAddr;

namespace {

constexpr OverlayTableWords words{
    .missing = "OlL3NextHop1 tnlIdMap not found. Entry state: ",
    .inProgress = "OlL3NextHop1: INPROGRESS for vtep: ",
    .failed = "Failed programming OlL3NextHop1 for vtep ",
    .written = "Programmed OlL3NextHop1 table",
    .hwIndex = " OlL3NextHop1 hwEntryIndex: ",
    .table = "L3NextHop1Table",
};

}  // namespace

OverlayNextHopTableProgrammer::OverlayNextHopTableProgrammer(
    Dovel::Ptr<Stateway::EntityManager> statewayEm, Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
    Dovel::Ptr<TesselCentral::VxlanToL2State> vxlanToL2State, Dovel::Ptr<TunnelNextHopUpdateConfig> tnlNhUpdateConfig,
    Dovel::Ptr<VxlanL3Oif1TableProgrammer> l3Oif1TableProgrammer, Dovel::Ptr<NextHopTableProgrammer> ulNhProgrammer,
    Dovel::Ptr<UnderlayEcmpProgrammer> ulEcmpProgrammer)
    : OverlayTableProgrammer(std::move(statewayEm), std::move(fcsd), std::move(vxlanToL2State),
                             std::move(tnlNhUpdateConfig), words),
      l3Oif1TableProgrammer_(std::move(l3Oif1TableProgrammer)),
      ulNhProgrammer_(std::move(ulNhProgrammer)),
      ulEcmpProgrammer_(std::move(ulEcmpProgrammer)) {}

void OverlayNextHopTableProgrammer::initTables(TesselCentral::ChipInfo const& chipInfo) {
  TRACE(0, "initTables");
  auto const vxlanAttr = TesselProfile::feature<TesselChipAttributesVxlan>(chipInfo);
  INVARIANT(vxlanAttr && "Could not get TesselChipAttributesVxlan");
  INVARIANT(!vxlanAttr->vxlanCascadedForwardingSupport());
  l3NextHop1TableIs(l3NextHop1TableFactory());
  Asic::bringUp(*l3NextHop1Table(), statewayEm(), chipInfo);
}

NextHopTableProgrammerBase::Handle OverlayNextHopTableProgrammer::insertEntry(Vane::TunnelKey const& tunnelKey,
                                                                              Vane::TunnelType tunnelType, bool ecmp,
                                                                              Handle const& vpHandle,
                                                                              Handle const& ulEntryHandle) {
  auto const& vtep = tunnelKey.dst();
  TRACE(1, "{}, tunnelKey: {}, nextHopEntryHandle: {}, isEcmp: {}", vtep, tunnelKey, handleText(ulEntryHandle), ecmp);
  L3NextHop1Table::Entry entry;
  entry.ingress.ulEntryHandle = ulEntryHandle;
  entry.ingress.ecmp = ecmp;
  entry.egress.vpHandle = vpHandle;
  entry.egress.oif1Handle = l3Oif1TableProgrammer()->insertEntry(TunnelType::overlay);
  entry.egress.nextHopValid = 1;
  auto& table = *l3NextHop1Table();
  auto const present = table.entryWeakRef(vtep);
  if (present && isEq(entry.ingress, table.ingL3NextHop1Entry(vtep)) &&
      isEq(entry.egress, table.egrL3NextHop1Entry(vtep)) && isWritten(present->state())) {
    TRACE(1, " OlL3NextHop1 already exists for vtepIp= {}", vtep);
    return present;
  }
  // After the comparison: a member tunnel may refer to a unicast tunnel's row that is as it wants it.
  if (!mayWrite(vtep, tunnelType)) return {};
  TRACE(1, " OlL3NextHop1, swKey: {}", vtep);
  entry.writeResponse = writeResponse(tunnelKey);
  return table.entryCommit(vtep, std::move(entry));
}

void OverlayNextHopTableProgrammer::rowDel(IpGenAddr const& vtep) { l3NextHop1Table()->entryRemove(vtep); }

Vane::VaneNextHopId OverlayNextHopTableProgrammer::nextHopId(IpGenAddr const& vtep) const {
  auto const row = l3NextHop1Table()->hwIndexOnlyForCrossAgentCommunication(vtep);
  return Vane::VaneNextHopId(
      l3NextHop1Table()->ingL3NextHop1()->hwIndexOnlyForCrossAgentCommunication(Asic::Index(row)));
}

void OverlayNextHopTableProgrammer::unexpectedState() const {
  INVARIANT(false && "OlL3NextHop1 failed with unexpected state");
}

}  // namespace TesselVxlan
