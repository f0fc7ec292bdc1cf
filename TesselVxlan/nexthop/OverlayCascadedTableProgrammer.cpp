#include "TesselVxlan/nexthop/OverlayCascadedTableProgrammer.h"

#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"
#include "platform/tessel/LogMessages.h"
#include "platform/tessel/features/TesselChipAttributesVxlan.h"

KILN_TRACE_FILE("OverlayCascadedTableProgrammer");

namespace TesselVxlan {

using Meshal::IpGenAddr;

namespace {

Kiln::LogHandle nextHopsFull(TesselLog::TESSEL_VXLAN_CASCADED_NEXTHOP_RESOURCE_FULL, 0, 1.0, 0, 0);

constexpr OverlayTableWords words{
    .missing = "EcmpMember0 tnlIdMap not found. entry state: ",
    .inProgress = "EcmpMember0 : INPROGRESS for vtep: ",
    .failed = "Failed programming EcmpMember0 for vtep ",
    .written = "Programmed EcmpMember0 table",
    .hwIndex = " ecmpMember0 hwEntryIndex: ",
    .table = "EcmpMember0Table",
};

}  // namespace

OverlayCascadedTableProgrammer::OverlayCascadedTableProgrammer(
    Dovel::Ptr<Stateway::EntityManager> statewayEm, Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
    Dovel::Ptr<TesselCentral::VxlanToL2State> vxlanToL2State, Dovel::Ptr<TunnelNextHopUpdateConfig> tnlNhUpdateConfig)
    : OverlayTableProgrammer(std::move(statewayEm), std::move(fcsd), std::move(vxlanToL2State),
                             std::move(tnlNhUpdateConfig), words) {}

void OverlayCascadedTableProgrammer::initTables(TesselCentral::ChipInfo const& chipInfo) {
  TRACE(0, "initTables");
  auto const vxlanAttr = TesselProfile::feature<TesselChipAttributesVxlan>(chipInfo);
  INVARIANT(vxlanAttr && "Could not get TesselChipAttributesVxlan");
  INVARIANT(vxlanAttr->vxlanCascadedForwardingSupport());
  ingL3EcmpMember0TableIs(ingL3EcmpMember0TableFactory());
  Asic::bringUp(*ingL3EcmpMember0Table(), statewayEm(), chipInfo);
  INVARIANT(ingL3EcmpMember0Table()->entrys() == 0);
}

NextHopTableProgrammerBase::Handle OverlayCascadedTableProgrammer::insertEntry(Vane::TunnelKey const& tunnelKey,
                                                                               Vane::TunnelType tunnelType, bool ecmp,
                                                                               Handle const& vpHandle,
                                                                               Handle const& ulEntryHandle) {
  auto const& vtep = tunnelKey.dst();
  TRACE(1, "{}, tunnelKey: {}, nextHopEntryHandle: {}, isEcmp: {}", vtep, tunnelKey, handleText(ulEntryHandle), ecmp);
  IngL3EcmpMember0Table::Entry entry;
  entry.vpHandle = vpHandle;
  entry.ulEntryHandle = ulEntryHandle;
  entry.ecmp = ecmp;
  auto& table = *ingL3EcmpMember0Table();
  auto const present = table.entryWeakRef(vtep);
  if (present && isEq(entry, table.entry(vtep)) && isWritten(present->state())) {
    TRACE(1, " EcmpMember0 already exists for vtepIp= {}", vtep);
    return present;
  }
  // After the comparison: a member tunnel may refer to a unicast tunnel's row that is as it wants it.
  if (!mayWrite(vtep, tunnelType)) return {};
  TRACE(1, " EcmpMember0Table, swKey: {}", vtep);
  entry.writeResponse = writeResponse(tunnelKey);
  return table.entryCommit(vtep, std::move(entry));
}

void OverlayCascadedTableProgrammer::rowDel(IpGenAddr const& vtep) { ingL3EcmpMember0Table()->entryRemove(vtep); }

Vane::VaneNextHopId OverlayCascadedTableProgrammer::nextHopId(IpGenAddr const& vtep) const {
  return Vane::VaneNextHopId(ingL3EcmpMember0Table()->hwIndexOnlyForCrossAgentCommunication(vtep));
}

void OverlayCascadedTableProgrammer::tableFull(IpGenAddr const& vtep) const { Kiln::log(nextHopsFull, vtep); }

void OverlayCascadedTableProgrammer::unexpectedState() const {
  INVARIANT(false && "EcmpMember0 write failed with unexpected state");
}

}  // namespace TesselVxlan
