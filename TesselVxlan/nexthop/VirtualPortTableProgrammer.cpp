#include "TesselVxlan/nexthop/VirtualPortTableProgrammer.h"

#include "TesselVxlan/nexthop/WriteState.h"
#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"
#include "platform/tessel/LogMessages.h"

KILN_TRACE_FILE("VirtualPortTableProgrammer");

namespace TesselVxlan {

using Meshal::IpGenAddr;
using TesselCentral::VtepIpToTnlIdNhIdMap;
using TesselL3Common::VirtualPortTableMerged;

namespace {

Kiln::LogHandle virtualPortsFull(TesselLog::TESSEL_VXLAN_VP_TABLE_RESOURCE_FULL, 0, 1.0, 0, 0);

IpGenAddr const default0Key{Meshal::IpAddr(0x7f000001)};
IpGenAddr const default1Key;
constexpr std::uint16_t defaultDvp = 1;

// The numbers under which the chip's attributes have the codes of a row.
constexpr std::uint8_t defaultRowCodeAC = 18;
constexpr std::uint8_t defaultRowCodeB = 0;
constexpr std::uint8_t tunnelRowCodeAC = 19;
constexpr std::uint8_t tunnelRowCodeB = 1;

/// What all rows have in common.
VirtualPortTableMerged::Entry baseRow(VirtualPortProgrammer::Handle const& egrL3TunnelTableHandle) {
  VirtualPortTableMerged::Entry row;
  row.vp1.vp1FlagA = 1;
  row.vp1.vp1FlagB = 1;
  row.vp1.vp1FlagD = 1;
  row.vp2.egrL3TunnelTableHandle = egrL3TunnelTableHandle;
  return row;
}

std::uint64_t vtepIpBits(IpGenAddr const& addr) { return addr.isIpv4() ? addr.v4Addr().value() : addr.u64(1); }

}  // namespace

/// Holds no pointer to the VTEP's map: the tunnel may have been removed when the chip's completion arrives.
struct VirtualPortProgrammer::Response {
  Dovel::Ptr<VirtualPortProgrammer const> programmer;
  IpGenAddr addr;

  void operator()(EntryState state) const { programmer->respond(addr, state); }
};

VirtualPortProgrammer::VirtualPortProgrammer(
    Dovel::Ptr<Stateway::EntityManager> statewayEm, Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
    Dovel::Ptr<TesselCentral::VxlanToL2State> vxlanToL2State,
    Dovel::Ptr<TesselCentral::VxlanCapabilities const> vxlanCapabilities,
    Dovel::Ptr<TesselL3Common::VxlanDvpToVtepMap> dvpToVtepMapping,
    Dovel::Ptr<TesselL3Common::VxlanTunnelIndexToVtepMap> tunnelIndexToVtepMapping)
    : statewayEm_(std::move(statewayEm)),
      fcsd_(std::move(fcsd)),
      vxlanToL2State_(std::move(vxlanToL2State)),
      vxlanCapabilities_(std::move(vxlanCapabilities)),
      dvpToVtepMapping_(std::move(dvpToVtepMapping)),
      tunnelIndexToVtepMapping_(std::move(tunnelIndexToVtepMapping)) {}

void VirtualPortProgrammer::initTables(TesselCentral::ChipInfo const& chipInfo) {
  TRACE(0, "initTables");
  INVARIANT(fcsd()->logicalModInfos());
  INVARIANT(virtualPortTable());
  virtualPortTable()->entryRemoveAll();
  sbrAttributesIs(TesselProfile::feature<TesselTile::TesselSbrAttributes>(chipInfo));
  INVARIANT(sbrAttributes());
  tesselVxlanChipAttrIs(TesselProfile::feature<TesselChipAttributesVxlan>(chipInfo));
  INVARIANT(tesselVxlanChipAttr());
  if (!tesselVxlanChipAttr()->defaultNetworkSvpSupported()) return;
  TRACE(0, "Allocating virtual port table");
  rL2TunnelDefaultNetworkSvpIs(rL2TunnelDefaultNetworkSvpFactory());
  Asic::bringUp(*rL2TunnelDefaultNetworkSvp(), statewayEm(), chipInfo);
  INVARIANT(rL2TunnelDefaultNetworkSvp()->entrys() == 0);
}

void VirtualPortProgrammer::insertDefaultEntries(bool dataPathLearning, Handle const& egrL3TunnelTableHandle) {
  TRACE(1, "dataPathLearning: {}", dataPathLearning);
  insertDefault0Entry(dataPathLearning, egrL3TunnelTableHandle);
  insertDefault1Entry(dataPathLearning, egrL3TunnelTableHandle);
  dvpToVtepMapping()->dvpToVtepMapIs(defaultDvp, Meshal::IpAddr());
}

void VirtualPortProgrammer::insertDefault0Entry(bool dataPathLearning, Handle const& egrL3TunnelTableHandle) {
  auto entry = baseRow(egrL3TunnelTableHandle);
  entry.vp1.defaultLearnEnable = dataPathLearning;
  entry.vp1.vpClassCode = 1;
  entry.vp1.sbrCodeA = sbrAttributes()->sbrCode(defaultRowCodeAC);
  entry.vp2.sbrCodeB = sbrAttributes()->sbrCode(defaultRowCodeB);
  entry.vp2.sbrCodeC = sbrAttributes()->sbrCode(defaultRowCodeAC);
  virtualPortTable()->entryWriteAtIndex(Asic::Index(0), default0Key, entry);
}

void VirtualPortProgrammer::insertDefault1Entry(bool dataPathLearning, Handle const& egrL3TunnelTableHandle) {
  auto entry = baseRow(egrL3TunnelTableHandle);
  entry.vp1.vp1FlagC = tesselVxlanChipAttr()->defaultVpFlag();
  entry.vp1.defaultLearnEnable = dataPathLearning;
  entry.vp1.vpClassCode = vpClassCode();
  entry.vp1.capabilityFlag = capabilityFlag();
  entry.vp2.sbrCodeB = sbrAttributes()->sbrCode(defaultRowCodeB);
  entry.vp2.vp2FlagA = 1;
  virtualPortTable()->entryWriteAtIndex(Asic::Index(1), default1Key, entry);
  if (!tesselVxlanChipAttr()->defaultNetworkSvpSupported()) return;
  RL2TunnelDefaultNetworkSvp::Entry svp;
  svp.svp = defaultDvp;
  rL2TunnelDefaultNetworkSvp()->entryCommit(Asic::Index(0), svp);
  rL2TunnelDefaultNetworkSvp()->entryCommit(Asic::Index(1), svp);
}

void VirtualPortProgrammer::deleteDefaultEntry() {
  TRACE(1, "");
  virtualPortTable()->entryRemove(default1Key);
  if (!tesselVxlanChipAttr()->defaultNetworkSvpSupported()) return;
  rL2TunnelDefaultNetworkSvp()->entryRemove(Asic::Index(0));
  rL2TunnelDefaultNetworkSvp()->entryRemove(Asic::Index(1));
}

VirtualPortProgrammer::Handle VirtualPortProgrammer::insertEntry(Vane::TunnelKey const& tunnelKey,
                                                                 Vane::TunnelType tunnelType, IpGenAddr const& addr,
                                                                 bool dataPathLearning,
                                                                 Handle const& egrL3TunnelTableHandle) {
  TRACE(1, " vtep: {} tunnelKey: {} tunnelType: {}", addr, tunnelKey, tunnelType);
  auto const& tnlIdMap = vxlanToL2State()->vtepIpToTnlIdNhIdMap(addr);
  INVARIANT(tnlIdMap);
  auto entry = tunnelRow(addr, dataPathLearning, egrL3TunnelTableHandle);
  entry.writeResponse = Response{Dovel::Ptr<VirtualPortProgrammer const>(this), addr};
  // A chip that completes at once has written the port: its id is published before the overlay entry refers to the
  // port.
  auto handle = virtualPortTable()->entryCommit(addr, std::move(entry), Asic::Report::atOnce);
  reverseMapsIs(addr);
  return handle;
}

void VirtualPortProgrammer::deleteEntry(Vane::TunnelKey const& tunnelKey, IpGenAddr const& addr) {
  TRACE(1, " vtep: {} tunnelKey: {}", addr, tunnelKey);
  // The port's number before the port is removed.
  auto const dvp = virtualPortTable()->index(addr);
  virtualPortTable()->entryRemove(addr);
  dvpToVtepMapping()->dvpToVtepMapDel(dvp.value());
}

VirtualPortProgrammer::Handle VirtualPortProgrammer::getEntry(IpGenAddr const& addr) const {
  return virtualPortTable()->entryWeakRef(addr);
}

VirtualPortProgrammer::Handle const& VirtualPortProgrammer::egrL3TunnelTableHandle(IpGenAddr const& addr) const {
  return virtualPortTable()->virtualPort2TableEntry(addr).egrL3TunnelTableHandle;
}

VirtualPortTableMerged::Entry VirtualPortProgrammer::tunnelRow(IpGenAddr const& addr, bool dataPathLearning,
                                                               Handle const& egrL3TunnelTableHandle) const {
  auto const& codes = tunnelCodes();
  auto row = baseRow(egrL3TunnelTableHandle);
  // The counts make each row differ from the one before it: a virtual port is always written.
  auto const& former = virtualPortTable()->entry(addr);
  row.vp1.vp1UpdateCount = former.vp1.vp1UpdateCount + 1;
  row.vp2.vp2UpdateCount = former.vp2.vp2UpdateCount + 1;
  row.vp1.learnEnableA = dataPathLearning;
  row.vp1.learnEnableB = dataPathLearning;
  row.vp1.vp1FlagC = 1;
  row.vp1.vpClassCode = vpClassCode();
  row.vp1.capabilityFlag = capabilityFlag();
  row.vp1.vp1FlagF = 1;
  row.vp1.sbrCodeA = codes.aAndC;
  row.vp2.vtepIpBits = vtepIpBits(addr);
  row.vp2.sbrCodeB = codes.b;
  row.vp2.vp2FlagA = 1;
  row.vp2.vp2FlagC = 1;
  row.vp2.vp2FlagD = 1;
  row.vp2.vp2FlagE = 1;
  row.vp2.vp2CodeA = 0x10;
  row.vp2.vp2FlagF = 1;
  row.vp2.sbrCodeC = codes.aAndC;
  return row;
}

void VirtualPortProgrammer::respond(IpGenAddr const& addr, EntryState state) const {
  // A reference to the map: watchers may remove it while it is written.
  Dovel::Ptr<VtepIpToTnlIdNhIdMap> const map = vxlanToL2State()->vtepIpToTnlIdNhIdMap(addr);
  if (!map) {
    return TRACE_IN("operator()", 1, " VP Programming, not found tnlIdMap,addr {} with entry state {}", addr, state);
  }
  TRACE_IN("operator()", 1, " entryState is  :  {}", state);
  auto const known = state == EntryState::none ? EntryState::inProgress : state;
  byState(known, {.inProgress =
                      [&] {
                        TRACE_IN("operator()", 1, " VP Programming : INPROGRESS for vtep: {} tnlIdEntryStatus {}", addr,
                                 map->tnlIdEntryStatus());
                      },
                  .written = [&] { written(*map); },
                  .failed =
                      [&](bool full) {
                        if (full) Kiln::log(virtualPortsFull, addr);
                        failed(*map, state);
                      },
                  .unexpected = [] { INVARIANT(false && "VP write failed with unexpected state"); }});
}

void VirtualPortProgrammer::written(VtepIpToTnlIdNhIdMap& map) const {
  auto const& addr = map.vtepIp();
  Vane::VaneTunnelId const tnlId(virtualPortTable()->hwIndexOnlyForCrossAgentCommunication(addr));
  TRACE_IN("operator()", 1, "VP Programming : SUCCESS for vtep {} Updating VtepIpToIdMap with tnlId: {}", addr, tnlId);
  // A port that found no row at first has one now.
  if (map.tnlIdEntryStatus() == TesselCentral::entryWriteFailed) reverseMapsIs(addr);
  // Before the id, whose watchers read it.
  map.tnlIdEntryStatusIs(TesselCentral::entryWriteDone);
  map.tnlIdIs(tnlId);
}

void VirtualPortProgrammer::failed(VtepIpToTnlIdNhIdMap& map, EntryState state) const {
  TRACE_IN("operator()", 1, "VP Programming : FAILED for vtep {} with state={}", map.vtepIp(), state);
  TRACE_IN("operator()", 1, " Updating VtepIpToIdMap with unprogrammed TnlId");
  map.tnlIdEntryStatusIs(TesselCentral::entryWriteFailed);
  map.tnlIdIs(Vane::VaneTunnelId::unprogrammed());
}

void VirtualPortProgrammer::reverseMapsIs(IpGenAddr const& addr) const {
  auto const dvp = virtualPortTable()->index(addr);
  if (dvp.value() == Asic::Index::none) return;
  dvpToVtepMapping()->dvpToVtepMapIs(dvp.value(), addr);
  tunnelIndexToVtepMapping()->tunnelIndexToVtepMapIs(virtualPortTable()->virtualPort2TableEntry(addr).tunnelIndex,
                                                     addr);
}

U4 VirtualPortProgrammer::vpClassCode() const { return U4(tesselVxlanChipAttr()->vpClassCode()); }

VirtualPortProgrammer::Codes const& VirtualPortProgrammer::tunnelCodes() const {
  auto const* of = sbrAttributes().get();
  if (tunnelCodes_.of != of) tunnelCodes_ = {of, of->sbrCode(tunnelRowCodeB), of->sbrCode(tunnelRowCodeAC)};
  return tunnelCodes_;
}

bool VirtualPortProgrammer::capabilityFlag() const {
  return vxlanCapabilities() && vxlanCapabilities()->capabilityFlag();
}

}  // namespace TesselVxlan
