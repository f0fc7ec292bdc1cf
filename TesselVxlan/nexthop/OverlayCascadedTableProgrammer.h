#pragma once

#include "TesselVxlan/nexthop/OverlayTableProgrammerBase.h"
#include "platform/dovel/Factory.h"
#include "platform/tessel/tables/IngL3EcmpMember0Table.h"

namespace TesselVxlan {

/// The overlay next hops of a chip with cascaded forwarding: rows of `IngL3EcmpMember0Table`, the overlay ECMP level
/// that the lookup reaches before the underlay's.
///
/// The next-hop id of a VTEP is its row. Each refusal by a full table is reported to the operator.
/// Main thread only.
class OverlayCascadedTableProgrammer final : public OverlayTableProgrammer {
  KILN_TYPE(TesselVxlan::OverlayCascadedTableProgrammer, TesselVxlan::OverlayTableProgrammer)
  KILN_ATTR(0x106, Dovel::Ptr<TesselVxlan::IngL3EcmpMember0Table>, ingL3EcmpMember0Table)

 public:
  OverlayCascadedTableProgrammer(Dovel::Ptr<Stateway::EntityManager> statewayEm,
                                 Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
                                 Dovel::Ptr<TesselCentral::VxlanToL2State> vxlanToL2State,
                                 Dovel::Ptr<TunnelNextHopUpdateConfig> tnlNhUpdateConfig);

  /// REQUIRES: the chip has cascaded forwarding.
  void initTables(TesselCentral::ChipInfo const& chipInfo) override;
  Handle insertEntry(Vane::TunnelKey const& tunnelKey, Vane::TunnelType tunnelType, bool ecmp, Handle const& vpHandle,
                     Handle const& ulEntryHandle) override;

 private:
  void rowDel(Meshal::IpGenAddr const& vtep) override;
  Vane::VaneNextHopId nextHopId(Meshal::IpGenAddr const& vtep) const override;
  void tableFull(Meshal::IpGenAddr const& vtep) const override;
  void unexpectedState() const override;
};

inline constexpr Dovel::Factory<OverlayCascadedTableProgrammer> overlayCascadedTableProgrammerFactory;

}  // namespace TesselVxlan
