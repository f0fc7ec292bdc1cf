#include "TesselVxlan/overlay/TesselVxlanPortGroupSm.h"

#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("TesselVxlanPortGroupSm");

namespace TesselVxlan {

using VaneHelper::VaneHelperVniConfigEntry;

TesselVxlanHelperPortGroupSm::TesselVxlanHelperPortGroupSm(
    Dovel::Ptr<VaneHelper::VaneHelperVniConfig const> helperVniConfig,
    Dovel::Ptr<VaneHelper::VaneHelperVniStatus> helperVniStatus, Dovel::Ptr<Stateway::EntityManager> statewayEm,
    Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
    Dovel::Ptr<TesselCentral::VfiCapabilityStatus const> vfiCapabilities,
    Dovel::Ptr<TesselCentral::VlanVfiDir const> vlanVfiDir)
    : VlanVniMapSm(std::move(helperVniConfig), std::move(helperVniStatus), std::move(statewayEm), std::move(fcsd),
                   std::move(vfiCapabilities), std::move(vlanVfiDir)) {
  handleInitialized();
}

void TesselVxlanHelperPortGroupSm::handleInitialized() {
  TRACE(1, "handleInitialized");
  handleLogicalFapId();
}

void TesselVxlanHelperPortGroupSm::fapTablesIs(LogicalFap::LogicalFapId fapId,
                                               TesselCentral::ChipInfo const& chipInfo) {
  if (egrAdaptSinglePortGroupTableHas(fapId)) return;
  auto const table = egrAdaptSinglePortGroupTableFactory();
  egrAdaptSinglePortGroupTableIs(fapId, table);
  Asic::bringUp(*table, statewayEm(), chipInfo, fapId.value());
  INVARIANT(egrAdaptSinglePortGroupTable(fapId)->entrys() == 0);
}

void TesselVxlanHelperPortGroupSm::handleVlanVniMap(Vane::VXLAN::VtiVlanKey const& key) {
  TRACE(1, "handleVlanVniMap vti: {} vlanId: {}", key.intfId(), key.vlanId());
  auto const vfi = vfiOf(key.vlanId());
  auto const row = EgrAdaptSinglePortGroupTable::keyOfAllPorts(vfi);
  switch (helperVniConfig()->vlanVniMap(key).action()) {
    case VaneHelperVniConfigEntry::add: {
      EgrAdaptSinglePortGroupTable::Entry entry;
      entry.vfi = vfi;
      for (auto const& [fapId, table] : egrAdaptSinglePortGroupTableColl()) table->entryCommit(row, entry);
      return;
    }
    case VaneHelperVniConfigEntry::remove:
      return TRACE(1, " Removing VNI to VLAN mapping ");
    case VaneHelperVniConfigEntry::none:
      TRACE(1, " Removing EgrAdapt entry for vlanId {}", key.vlanId());
      for (auto const& [fapId, table] : egrAdaptSinglePortGroupTableColl()) table->entryRemove(row);
      return;
    default:
      INVARIANT(false && "Unknown action");
  }
}

}  // namespace TesselVxlan
