#include "TesselVxlan/nexthop/VpLagEcmpCascadeProgrammer.h"

#include "TesselVxlan/nexthop/WriteState.h"
#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"
#include "platform/tessel/features/TesselProfile.h"
#include "platform/tessel/tables/EcmpMember1Table.h"

KILN_TRACE_FILE("VpLagEcmpCascadeProgrammer");

namespace TesselVxlan {

using TesselL3Common::L3AdjIdKey;
using Vane::VaneTunnelId;
using Vane::VXLAN::VaneVtepGroupKey;

namespace {

/// The tables of groups are brought up later than those that they refer to.
constexpr Asic::BringupStage groupStage{0x6b};

VpLagKey rowOf(VaneVtepGroupKey const& key) { return {key.swTunnelGroupId()}; }

template <class Table>
bool chipHas(TesselCentral::ChipInfo const& chipInfo) {
  return TesselProfile::feature<typename Table::Util>(chipInfo) != nullptr;
}

}  // namespace

struct VpLagEcmpCascadeProgrammer::Response {
  VaneVtepGroupKey key;
  Dovel::Ptr<VpLagEcmpCascadeProgrammer const> programmer;

  void operator()(EntryState state) const { programmer->handleWrite(key, state); }
};

VpLagEcmpCascadeProgrammer::VpLagEcmpCascadeProgrammer(Dovel::Ptr<Stateway::EntityManager> statewayEm,
                                                       Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
                                                       Dovel::Ptr<TesselCentral::VxlanToL2State const> vxlanToL2State,
                                                       Dovel::Ptr<Local::EntityStore const> localEntityStore,
                                                       Dovel::Ptr<VxlanVtepGroupTunnelIdMapDir> vtepGrpTnlIdMapDir)
    : VpLagEcmpProgrammer(std::move(statewayEm), std::move(fcsd), std::move(vxlanToL2State),
                          std::move(vtepGrpTnlIdMapDir)),
      localEntityStore_(std::move(localEntityStore)) {}

void VpLagEcmpCascadeProgrammer::initTables(TesselCentral::ChipInfo const& chipInfo) {
  mountPath_ = localEntityStore()->getEntity<Kiln::Dir>("vxlan/swTable/shared/vp");
  ecmpNhTableDir_ = localEntityStore()->getEntity<Kiln::Dir>("vxlan/swTable/shared/destination/ecmp");
  INVARIANT(mountPath() && ecmpNhTableDir());
  if (!chipHas<VpLagGroupTable>(chipInfo)) return;
  initSharedTables(chipInfo);
  chipInfo_ = TesselCentral::getTableChipInfo(chipInfo, groupStage);
  vpLagGroupTable_ = mountPath()->createEntity<VpLagGroupTable>("vpLagEcmp");
  INVARIANT(vpLagGroupTable());
  Asic::bringUp(*vpLagGroupTable(), statewayEm(), chipInfo_);
  INVARIANT(vpLagGroupTable()->entrys() == 0);
  if (chipHas<VpLagEcmpMember0Table>(chipInfo)) initVpLagMember0Table(chipInfo_);
}

void VpLagEcmpCascadeProgrammer::initSharedTables(TesselCentral::ChipInfo const& chipInfo) {
  static std::string const ports = "virtualPortTable";
  static std::string const groups = "underlay";
  bool const hadPorts = mountPath()->child(ports) != nullptr;
  virtualPortTable_ = mountPath()->createEntity<TesselL3Common::VirtualPortTableMerged>(ports);
  if (hadPorts) {
    TRACE(0, " Virtual Port table already initialized");
  } else {
    Asic::bringUp(*virtualPortTable(), statewayEm(), chipInfo);
  }
  if (!chipHas<EcmpMember1Table>(chipInfo)) return;
  bool const hadGroups = ecmpNhTableDir()->child(groups) != nullptr;
  ecmpGroup1Table_ = ecmpNhTableDir()->createEntity<TesselL3Tunnel::EcmpGroup1Table>(groups);
  if (hadGroups) {
    TRACE(0, " ecmpGroup1Table and ecmpMember1Table tables already initialized ");
  } else {
    Asic::bringUp(*ecmpGroup1Table(), statewayEm(), chipInfo);
  }
}

void VpLagEcmpCascadeProgrammer::initVpLagMember0Table(TesselCentral::ChipInfo const& chipInfo) {
  TRACE(0, "VpLag member0 table");
  INVARIANT(fcsd()->logicalModInfos());
  vpLagEcmpMember0Table_ = vpLagEcmpMember0TableFactory();
  Asic::bringUp(*vpLagEcmpMember0Table(), statewayEm(), chipInfo);
  INVARIANT(vpLagEcmpMember0Table()->entryBlocks() == 0);
}

VpLagEcmpProgrammer::Handle VpLagEcmpCascadeProgrammer::insertEntry(
    Dovel::Ptr<Vane::VXLAN::VaneVtepGroupConfig const> const& vaneVtepGroupConfig, VaneVtepGroupKey const& key) {
  TRACE(1, " VP-LAG Programming for vtepGrpId{}", key);
  if (!vpLagEcmpMember0Table() || !ecmpGroup1Table()) {
    TRACE(1, " No VP-LAG tables for vtepGrpId {}", key);
    return {};
  }
  VpLagEcmpMember0Table::EntryBlock block;
  std::uint16_t members = 0;
  for (auto const& [vtepIp, unused] : vaneVtepGroupConfig->vtepListColl()) {
    TRACE(1, " vtepIp= {}", vtepIp);
    auto const& map = vxlanToL2State()->vtepIpToTnlIdNhIdMap(vtepIp);
    if (!map) {
      TRACE(1, "Tunnel not yet established for vtepIp= {}", vtepIp);
      return {};
    }
    TRACE(1, " VtepIp= {} adjId= {}", vtepIp, map->adjId() & 0x7FFFFFFF);
    if (map->adjId() != 0) block.entryIs(members++, memberOf(vtepIp, map->adjId()));
  }
  if (members == 0) {
    TRACE(1, " No valid entry block for {} removing vplagGroup Table ", key);
    vpLagGroupTable()->entryRemove(rowOf(key));
    if (auto const& map = vtepGrpTnlIdMapDir()->vtepGrpTnlIdMap(key)) map->hwTunnelIdIs(VaneTunnelId::unprogrammed());
    return {};
  }
  VpLagGroupTable::Entry entry;
  entry.memberBlockHandle =
      vpLagEcmpMember0Table()->entryBlockRef(block, vpLagGroupTable()->entry(rowOf(key)).memberBlockHandle);
  entry.lastMemberIndex = static_cast<std::uint16_t>(members - 1);
  entry.writeResponse = Response{key, Dovel::Ptr<VpLagEcmpCascadeProgrammer const>(this)};
  auto handle = vpLagGroupTable()->entryCommit(rowOf(key), std::move(entry), Asic::Report::atOnce);
  TRACE(1, " key.swTunnelGroupId= {} vpLagGroupTable handle= {}", key, bool(handle));
  return handle;
}

VpLagEcmpMember0Table::Entry VpLagEcmpCascadeProgrammer::memberOf(Meshal::IpGenAddr const& vtepIp,
                                                                  std::uint32_t adjId) const {
  VpLagEcmpMember0Table::Entry member;
  member.dvpHandle = virtualPortTable()->entryWeakRef(vtepIp);
  member.nhHandle = ecmpGroup1Table()->entryWeakRef(L3AdjIdKey::l3Underlay(adjId));
  TRACE(1, " dvpHandle= {} nhHandle={}", bool(member.dvpHandle), bool(member.nhHandle));
  return member;
}

void VpLagEcmpCascadeProgrammer::handleWrite(VaneVtepGroupKey const& key, EntryState state) const {
  auto const map = vtepGrpTnlIdMapDir()->vtepGrpTnlIdMap(key);
  if (!map) return TRACE(1, " VP-LAG tnlId not found for vtepGrpId {} entry state {}", key, state);
  switch (state) {
    case EntryState::written: {
      VaneTunnelId const id(vpLagGroupTable()->hwIndexOnlyForCrossAgentCommunication(rowOf(key)));
      TRACE(1, "VP-LAG Programming SUCCESS for vtepGrpId {}  Updating VtepGrpTnlIdMap with tnlId: {}", key, id);
      map->tnlIdEntryStatusIs(TesselCentral::entryWriteDone);
      return map->hwTunnelIdIs(id);
    }
    case EntryState::failed:
    case EntryState::full:
      TRACE(
          1,
          "VP-LAG Programming FAILED for vtepGrpId {} with state= {} Updating VtepGrpTnlIdMap with unprogrammed TnlId",
          key, state);
      map->tnlIdEntryStatusIs(TesselCentral::entryWriteFailed);
      return map->hwTunnelIdIs(VaneTunnelId::unprogrammed());
    case EntryState::none:
    case EntryState::inProgress:
      return TRACE(1, " VP-LAG Programming {} for vtepGrpId {} tnlIdEntryStatus {}", state, key,
                   map->tnlIdEntryStatus());
    default:
      INVARIANT(false && "VP-LAG write failed with unexpected state");
  }
}

void VpLagEcmpCascadeProgrammer::deleteEntry(VaneVtepGroupKey const& key) {
  TRACE(1, " Deleting VP-LAG entry for vtepGrpId: {}", key);
  if (vpLagGroupTable()) vpLagGroupTable()->entryRemove(rowOf(key));
}

}  // namespace TesselVxlan
