#pragma once

#include "platform/kiln/Sm.h"
#include "platform/stateway/EntityManager.h"
#include "platform/tessel/central/CommonData.h"
#include "platform/tessel/mroute/MrouteVxlanDecapTable.h"

namespace TesselL3Common {

/// Base of the state machine that puts multicast routes of the underlay into hardware: calls `handleVxlanMroute` for
/// each change of a route. Nothing is called for routes that are present already. Main thread only.
class TesselVxlanUnderlayMulticastBaseSm : public Kiln::Sm {
  void mrouteVxlanDecapTableDispatch(Dovel::Change const& change);

  KILN_BASE_TYPE(TesselL3Common::TesselVxlanUnderlayMulticastBaseSm)
  KILN_FIXED(0x102, Dovel::Ptr<Stateway::EntityManager>, statewayEm)
  KILN_FIXED(0x103, Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const>, fcsd)
  KILN_WATCHED(0x104, MrouteLib::MrouteVxlanDecapTable, mrouteVxlanDecapTable, &KilnSelf::mrouteVxlanDecapTableDispatch,
               nullptr)

 public:
  using IpGenRouteKey = Routing::Multicast::Fib::IpGenRouteKey;

  /// A route was added, changed or removed.
  virtual void handleVxlanMroute(IpGenRouteKey const& key) = 0;
  virtual void handleInitialized() = 0;

 protected:
  TesselVxlanUnderlayMulticastBaseSm(Dovel::Ptr<Stateway::EntityManager> statewayEm,
                                     Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
                                     Dovel::Ptr<MrouteLib::MrouteVxlanDecapTable> mrouteVxlanDecapTable);
};

}  // namespace TesselL3Common
