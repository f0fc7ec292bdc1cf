#include "platform/tessel/mroute/TesselVxlanUnderlayMulticastBaseSm.h"

namespace TesselL3Common {

using MrouteLib::MrouteVxlanDecapTable;

TesselVxlanUnderlayMulticastBaseSm::TesselVxlanUnderlayMulticastBaseSm(
    Dovel::Ptr<Stateway::EntityManager> statewayEm, Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
    Dovel::Ptr<MrouteVxlanDecapTable> mrouteVxlanDecapTable)
    : statewayEm_(std::move(statewayEm)),
      fcsd_(std::move(fcsd)),
      mrouteVxlanDecapTable_(*this, std::move(mrouteVxlanDecapTable), Kiln::SubscribeOnly{}) {}

void TesselVxlanUnderlayMulticastBaseSm::mrouteVxlanDecapTableDispatch(Dovel::Change const& change) {
  if (change.id == MrouteVxlanDecapTable::mrouteId) handleVxlanMroute(change.keyAs<IpGenRouteKey>());
}

}  // namespace TesselL3Common
