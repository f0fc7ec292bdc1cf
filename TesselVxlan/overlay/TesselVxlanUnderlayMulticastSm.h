#pragma once

#include "platform/dovel/Factory.h"
#include "platform/tessel/mroute/TesselVxlanUnderlayMulticastBaseSm.h"
#include "platform/tessel/tables/VniTables.h"

namespace TesselVxlan {

/// Writes the underlay's multicast routes into hardware, so that a packet of a tunnel is accepted in its route's VLAN.
///
/// In: the routes, which are IPv4. Out: `VxlanV4UnderlayMcastTable`, of which this is the only writer. Where the chip's
/// profile has no space for the table, there is one message to the operator, and routes are passed over. Main thread
/// only.
class TesselVxlanUnderlayMulticastSm final : public TesselL3Common::TesselVxlanUnderlayMulticastBaseSm {
  KILN_TYPE(TesselVxlan::TesselVxlanUnderlayMulticastSm, TesselL3Common::TesselVxlanUnderlayMulticastBaseSm)
  KILN_FIXED(0x105, Dovel::Ptr<VxlanV4UnderlayMcastTable>, vxlanV4UnderlayMcastTable)
  KILN_COLL(0x106, Routing::Multicast::Fib::IpGenRouteKey, Bridging::VlanId, mrouteKeyToVlan)  ///< As programmed.
  KILN_FIXED(0x107, bool, noHardwareResources)  ///< As the last message said.

 public:
  /// Writes the present routes.
  TesselVxlanUnderlayMulticastSm(Dovel::Ptr<Stateway::EntityManager> statewayEm,
                                 Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
                                 Dovel::Ptr<MrouteLib::MrouteVxlanDecapTable> mrouteVxlanDecapTable,
                                 Dovel::Ptr<VxlanV4UnderlayMcastTable> vxlanV4UnderlayMcastTable);

  void handleVxlanMroute(IpGenRouteKey const& key) override;
  void handleInitialized() override;

 private:
  bool hasHardwareResources();
  void programEntry(Meshal::IpAddr source, Meshal::IpAddr group, Bridging::VlanId vlan);
  void deleteEntry(Meshal::IpAddr source, Meshal::IpAddr group, Bridging::VlanId vlan);
};

inline constexpr Dovel::Factory<TesselVxlanUnderlayMulticastSm> tesselVxlanUnderlayMulticastSmFactory;

}  // namespace TesselVxlan
