#include "TesselVxlan/overlay/VlanVniMapSm.h"

#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"
#include "platform/tessel/central/VlanVfi.h"

KILN_TRACE_FILE("VlanVniMapSm");

namespace TesselVxlan {

using TesselCentral::FeatureAgentCommonSmData;

VlanVniMapSm::VlanVniMapSm(Dovel::Ptr<VaneHelper::VaneHelperVniConfig const> helperVniConfig,
                           Dovel::Ptr<VaneHelper::VaneHelperVniStatus> helperVniStatus,
                           Dovel::Ptr<Stateway::EntityManager> statewayEm,
                           Dovel::Ptr<FeatureAgentCommonSmData const> fcsd,
                           Dovel::Ptr<TesselCentral::VfiCapabilityStatus const> vfiCapabilities,
                           Dovel::Ptr<TesselCentral::VlanVfiDir const> vlanVfiDir)
    : VaneHelperVniSm(std::move(helperVniConfig), std::move(helperVniStatus)),
      fcsd_(*this, std::move(fcsd), Kiln::SubscribeOnly{}),
      statewayEm_(std::move(statewayEm)),
      vfiCapabilities_(std::move(vfiCapabilities)),
      vlanVfiDir_(std::move(vlanVfiDir)) {}

void VlanVniMapSm::fcsdDispatch(Dovel::Change const& change) {
  if (change.id == FeatureAgentCommonSmData::logicalFapId) {
    handleLogicalFapId(change.keyAs<LogicalFap::LogicalFapId>());
  }
}

void VlanVniMapSm::handleVlanVniMap() {
  for (auto const& key : Kiln::keysOf(helperVniConfig()->vlanVniMapColl())) handleVlanVniMap(key);
}

void VlanVniMapSm::handleLogicalFapId() {
  for (auto const& fapId : Kiln::keysOf(fcsd()->logicalFapColl())) handleLogicalFapId(fapId);
}

void VlanVniMapSm::handleLogicalFapId(LogicalFap::LogicalFapId fapId) {
  TRACE(1, " fapId: {}", fapId);
  auto const logicalModInfo = fcsd()->logicalFap(fapId);
  if (!logicalModInfo) return;
  INVARIANT(fcsd()->logicalModInfos());
  fapTablesIs(fapId, TesselCentral::ChipInfo(*logicalModInfo));
  resynchronise();
}

std::uint16_t VlanVniMapSm::vfiOf(std::uint16_t vlanId) const {
  return TesselCommon::vlanToVfi(*vfiCapabilities(), *vlanVfiDir(), vlanId);
}

std::uint16_t VlanVniMapSm::vlanOf(std::uint16_t vfi) const {
  return TesselCommon::vfiToVlan(*vfiCapabilities(), *vlanVfiDir(), vfi);
}

}  // namespace TesselVxlan
