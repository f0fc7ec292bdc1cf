#include "TesselVxlan/nexthop/NextHopTableProgrammer.h"

#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"
#include "platform/tessel/LogMessages.h"
#include "platform/tessel/features/L3NextHopAttributes.h"
#include "platform/tessel/l3common/DstPort.h"

KILN_TRACE_FILE("NextHopTableProgrammer");

namespace TesselVxlan {

using TesselL3Common::EgrL3NextHop2;
using TesselL3Common::IngL3NextHop2Table;
using TesselL3Common::L3NextHop2Key;
using TesselL3Common::L3NextHop2Table;

namespace {

Kiln::LogHandle nextHopsFull(TesselLog::TESSEL_VXLAN_UL_NEXT_HOP_RESOURCES_FULL, 0, 1.0, 0, 0);

// Codes of the chip's row formats.
constexpr std::uint8_t egressView = 9;
constexpr std::uint8_t ingressView = 5;
constexpr std::uint8_t reservedIngressView = 7;
constexpr std::uint8_t multicastDestination = 1;
constexpr std::uint8_t portDestination = 2;
constexpr std::uint8_t vlanMulticast = 1;

/// A row that forwards to no port.
L3NextHop2Table::Entry fixedRow(std::uint8_t ingressViewCode, std::uint8_t egressViewCode) {
  L3NextHop2Table::Entry entry;
  entry.egress.l3Oif2Handle = Asic::SwTableWorkaround::dontCareHandle(Asic::Index(0));
  entry.egress.egressViewCode = egressViewCode;
  entry.ingress.destinationHandle = Asic::SwTableWorkaround::dontCareHandle(Asic::Index(0));
  entry.ingress.ingressViewCode = ingressViewCode;
  return entry;
}

void setNextHopDestination(TesselL3Common::DestPort const& dest, IngL3NextHop2Table::Entry& ingress) {
  switch (dest.kind()) {
    case 0:
      ingress.destination = dest.first();
      return;
    case 1:
      ingress.destination = dest.second();
      return;
    case 2:
      ingress.destination = dest.third();
      ingress.isLag = 1;
      return;
    default:
      INVARIANT(false && "Invalid Destination");
  }
}

}  // namespace

struct NextHopTableProgrammer::Response {
  Dovel::Ptr<NextHopTableProgrammer> programmer;
  Meshal::EthAddr macAddr;

  void operator()(EntryState state) const { programmer->respond(macAddr, state); }
};

NextHopTableProgrammer::NextHopTableProgrammer(
    Dovel::Ptr<Stateway::EntityManager> statewayEm, Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
    Dovel::Ptr<TesselL3::RoutingStatus const> routingStatus, Dovel::Ptr<VaneL3Intf::Table const> vaneL3IntfTable,
    Dovel::Ptr<TesselL3Tunnel::L3TunnelEgrL3OifHelper const> l3Oif2TableHelper,
    Dovel::Ptr<TesselMcast::IpmcTable const> ipmcTable, bool vxlanUnderlayFloodingHw)
    : NextHopTableProgrammerBase(std::move(statewayEm), std::move(fcsd)),
      vaneL3IntfTable_(std::move(vaneL3IntfTable)),
      l3Oif2TableHelper_(std::move(l3Oif2TableHelper)),
      vxlanUnderlayFloodingHw_(vxlanUnderlayFloodingHw),
      routingStatus_(std::move(routingStatus)),
      ipmcTable_(std::move(ipmcTable)) {}

void NextHopTableProgrammer::initTables(TesselCentral::ChipInfo const& chipInfo) {
  TRACE(0, "initTables");
  INVARIANT(fcsd()->logicalModInfos());
  l3NextHop2TableIs(mountPath()->createEntity<L3NextHop2Table>("nexthop2"));
  Asic::bringUp(*l3NextHop2Table(), statewayEm(), chipInfo);
  auto const nhAttr = TesselProfile::feature<TesselL3Unicast::L3NextHopAttributes>(chipInfo);
  INVARIANT(nhAttr);
  l2IfSupportedIs(nhAttr->l2IfSupported());
  // Row 0, which such a chip must not use as a next hop.
  if (!nhAttr->ownReservedRow()) programReservedNextHopEntry();
  programDropNextHopEntry();
}

NextHopTableProgrammerBase::Handle NextHopTableProgrammer::insertEntry(Vane::TunnelKey const& tunnelKey,
                                                                       Vane::NextHopEntry const& nextHopEntry) {
  TRACE(1, "insertEntry NextHopEntry: {}, tunnelKey: {}", nextHopEntry, tunnelKey);
  auto const vlanId = vlanOf(nextHopEntry.l3Intf());
  L3NextHop2Key const key{nextHopEntry.ethAddr(), nextHopEntry.l3Intf()};
  L3NextHop2Table::Entry entry;
  entry.egress.l3Oif2Handle = l3Oif2TableHelper()->getEgrL3OifHandle(vlanId);
  entry.egress.macAddr = key.macAddr();
  entry.egress.egressViewCode = egressView;
  entry.ingress.ingressViewCode = ingressView;
  entry.ingress.vlanId = vlanId;
  if (!fillDestination(key, nextHopEntry, entry)) return {};
  auto& table = *l3NextHop2Table();
  if (isEq(entry.ingress, table.ingL3NextHop2TableEntry(key)) && isEq(entry.egress, table.egrL3NextHop2Entry(key)) &&
      !isRefused(table, key)) {
    TRACE(1, " Underlay NextHop already exists for l3NhKey= {}", key);
    return table.entryWeakRef(key);
  }
  ++changes_;
  entry.writeResponse = Response{Dovel::Ptr<NextHopTableProgrammer>(this), key.macAddr()};
  // At once where the state is final: a full table is reported even if the entry is removed before its completion.
  auto handle = table.entryRef(key, entry, Asic::Report::atOnce);
  INVARIANT(handle);
  return handle;
}

// No status depends on a single next hop: a full table is reported to the operator, and the entry waits in the table.
void NextHopTableProgrammer::respond(Meshal::EthAddr macAddr, EntryState state) {
  TRACE_IN("operator()", 1, " entryState is : {}", state);
  if (state == EntryState::full) Kiln::log(nextHopsFull, macAddr);
  if (state == EntryState::failed) ++changes_;
}

std::uint64_t NextHopTableProgrammer::revision() {
  auto const& ports = fcsd()->portConfigDir();
  if (ports != ports_) {
    // Above every number that the former ports can have led to.
    changes_ += 1 + (ports_ ? ports_->revision() : 0);
    ports_ = ports;
  }
  return changes_ + vaneL3IntfTable()->revision() + (ports ? ports->revision() : 0);
}

void NextHopTableProgrammer::programReservedNextHopEntry() {
  l3NextHop2Table()->entryWriteAtIndex(Asic::Index(0), L3NextHop2Key{}, fixedRow(reservedIngressView, egressView));
}

void NextHopTableProgrammer::programDropNextHopEntry() {
  l3NextHop2Table()->entryCommit(L3NextHop2Key{Meshal::EthAddr(0xffffffffffff), Meshal::IntfId()}, fixedRow(0, 0));
}

Bridging::VlanIdOrNone NextHopTableProgrammer::vlanOf(Meshal::IntfId l3Intf) const {
  auto const l3id = vaneL3IntfTable()->intfIdToL3Id(l3Intf);
  auto const vlanId = l3id == 0 ? Bridging::VlanIdOrNone() : L3Id::l3IdToVlanId(l3id);
  TRACE(2, " vlanId: {} l3id: {}", vlanId, l3id);
  return vlanId;
}

bool NextHopTableProgrammer::fillDestination(L3NextHop2Key const& key, Vane::NextHopEntry const& nextHopEntry,
                                             L3NextHop2Table::Entry& entry) const {
  if (vxlanUnderlayFloodingHw() && nextHopEntry.l2Intf().empty()) {
    fillFlood(key, entry);
    return true;
  }
  auto const dest = TesselL3Common::getDstPort(fcsd(), nextHopEntry.l2Intf(), nextHopEntry.type(), l2IfSupported());
  TRACE(1, " Program Egr/IngL3NextHop2 nextHop, Destination: {}:{}/{}/{}, macAddr: {}, l3Oif2: {}, swKey: {}",
        dest.kind(), dest.first(), dest.second(), dest.third(), key.macAddr(), handleText(entry.egress.l3Oif2Handle),
        key);
  if (!vxlanUnderlayFloodingHw() && dest.isInvalid()) {
    TRACE(1, " Invalid Dst Port");
    return false;
  }
  entry.ingress.destinationHandle = Asic::SwTableWorkaround::dontCareHandle(Asic::Index(0));
  entry.ingress.destinationKind = portDestination;
  setNextHopDestination(dest, entry.ingress);
  return true;
}

void NextHopTableProgrammer::fillFlood(L3NextHop2Key const& key, L3NextHop2Table::Entry& entry) const {
  auto& ingress = entry.ingress;
  // Another feature's table: until that has initialised it, there is no group to forward to.
  if (ipmcTable()->initialized()) {
    ingress.destinationHandle = ipmcTable()->entryWeakRef(TesselL3Common::L3IpmcKey{vlanMulticast, ingress.vlanId});
  }
  ingress.destinationKind = multicastDestination;
  TRACE(
      1,
      " Program Egr/IngL3NextHop2 vxlanUnderlayFlood nextHop, ipmcDestination: {}, macAddr: {}, l3Oif2: {}, swKey: {}",
      handleText(ingress.destinationHandle), key.macAddr(), handleText(entry.egress.l3Oif2Handle), key);
}

}  // namespace TesselVxlan
