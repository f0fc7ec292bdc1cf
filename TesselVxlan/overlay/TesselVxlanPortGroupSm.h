#pragma once

#include "TesselVxlan/overlay/VlanVniMapSm.h"
#include "platform/tessel/tables/VniTables.h"

namespace TesselVxlan {

/// Lets the VFIs of VLANs that have a VNI leave through the port group of all ports, on chips with a table
/// of port groups in place of VNI tables.
///
/// In: the local mappings; a mapping that is removed but still configured keeps its entry. Out:
/// `EgrAdaptSinglePortGroupTable` of each logical chip. No status, no message.
class TesselVxlanHelperPortGroupSm final : public VlanVniMapSm {
  KILN_TYPE(TesselVxlan::TesselVxlanHelperPortGroupSm, TesselVxlan::VlanVniMapSm)
  KILN_SMALL_COLL(0x108, LogicalFap::LogicalFapId, Dovel::Ptr<EgrAdaptSinglePortGroupTable>,
                  egrAdaptSinglePortGroupTable)

 public:
  /// Writes the present mappings.
  TesselVxlanHelperPortGroupSm(Dovel::Ptr<VaneHelper::VaneHelperVniConfig const> helperVniConfig,
                               Dovel::Ptr<VaneHelper::VaneHelperVniStatus> helperVniStatus,
                               Dovel::Ptr<Stateway::EntityManager> statewayEm,
                               Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
                               Dovel::Ptr<TesselCentral::VfiCapabilityStatus const> vfiCapabilities,
                               Dovel::Ptr<TesselCentral::VlanVfiDir const> vlanVfiDir);

  using VlanVniMapSm::handleVlanVniMap;
  void handleVlanVniMap(Vane::VXLAN::VtiVlanKey const& key) override;
  void handleInitialized();

 protected:
  bool isProgrammed(Vane::VXLAN::VtiVlanKey const&) const override { return true; }
  void fapTablesIs(LogicalFap::LogicalFapId fapId, TesselCentral::ChipInfo const& chipInfo) override;
  void resynchronise() override { handleVlanVniMap(); }
};

}  // namespace TesselVxlan
