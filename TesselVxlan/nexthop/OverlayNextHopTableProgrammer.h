#pragma once

#include "TesselVxlan/nexthop/NextHopTableProgrammer.h"
#include "TesselVxlan/nexthop/OverlayTableProgrammerBase.h"
#include "TesselVxlan/nexthop/UnderlayEcmpProgrammer.h"
#include "TesselVxlan/nexthop/VxlanL3Oif1TableProgrammer.h"
#include "platform/dovel/Factory.h"
#include "platform/tessel/tables/L3NextHop1Table.h"

namespace TesselVxlan {

/// The overlay next hops of a chip without cascaded forwarding: rows of `L3NextHop1Table`.
///
/// The next-hop id of a VTEP is the row of the table's ingress part, not the merged row. A full table is not reported
/// to the operator; it shows in the VTEP's status. Main thread only.
class OverlayNextHopTableProgrammer final : public OverlayTableProgrammer {
  KILN_TYPE(TesselVxlan::OverlayNextHopTableProgrammer, TesselVxlan::OverlayTableProgrammer)
  KILN_FIXED(0x106, Dovel::Ptr<TesselVxlan::VxlanL3Oif1TableProgrammer>, l3Oif1TableProgrammer)
  KILN_FIXED(0x107, Dovel::Ptr<TesselVxlan::NextHopTableProgrammer>, ulNhProgrammer)    ///< Held only.
  KILN_FIXED(0x108, Dovel::Ptr<TesselVxlan::UnderlayEcmpProgrammer>, ulEcmpProgrammer)  ///< Held only.
  KILN_ATTR(0x109, Dovel::Ptr<TesselVxlan::L3NextHop1Table>, l3NextHop1Table)

 public:
  OverlayNextHopTableProgrammer(Dovel::Ptr<Stateway::EntityManager> statewayEm,
                                Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
                                Dovel::Ptr<TesselCentral::VxlanToL2State> vxlanToL2State,
                                Dovel::Ptr<TunnelNextHopUpdateConfig> tnlNhUpdateConfig,
                                Dovel::Ptr<VxlanL3Oif1TableProgrammer> l3Oif1TableProgrammer,
                                Dovel::Ptr<NextHopTableProgrammer> ulNhProgrammer,
                                Dovel::Ptr<UnderlayEcmpProgrammer> ulEcmpProgrammer);

  /// REQUIRES: the chip has no cascaded forwarding.
  void initTables(TesselCentral::ChipInfo const& chipInfo) override;
  Handle insertEntry(Vane::TunnelKey const& tunnelKey, Vane::TunnelType tunnelType, bool ecmp, Handle const& vpHandle,
                     Handle const& ulEntryHandle) override;

 private:
  void rowDel(Meshal::IpGenAddr const& vtep) override;
  Vane::VaneNextHopId nextHopId(Meshal::IpGenAddr const& vtep) const override;
  void tableFull(Meshal::IpGenAddr const&) const override {}
  void unexpectedState() const override;
};

inline constexpr Dovel::Factory<OverlayNextHopTableProgrammer> overlayNextHopTableProgrammerFactory;

}  // namespace TesselVxlan
