#pragma once

#include "platform/dovel/Factory.h"
#include "platform/stateway/EntityManager.h"
#include "platform/tessel/central/CommonData.h"
#include "platform/tessel/central/VxlanRecords.h"
#include "platform/vane/VaneHelperVniSm.h"

namespace TesselVxlan {

/// Base of the state machines that put the local mappings into tables that exist once for each logical chip.
///
/// In: the mappings, the logical chips, and the numbering of VFIs, which is read and not watched. Which tables these
/// are is the subclass's business. The tables of a logical chip that has left stay as they are. Main thread only.
class VlanVniMapSm : public VaneHelper::VaneHelperVniSm {
  void fcsdDispatch(Dovel::Change const& change);

  KILN_TYPE(TesselVxlan::VlanVniMapSm, VaneHelper::VaneHelperVniSm)
  KILN_WATCHED(0x104, TesselCentral::FeatureAgentCommonSmData const, fcsd, &KilnSelf::fcsdDispatch, nullptr)
  KILN_FIXED(0x105, Dovel::Ptr<Stateway::EntityManager>, statewayEm)
  KILN_FIXED(0x106, Dovel::Ptr<TesselCentral::VfiCapabilityStatus const>, vfiCapabilities)
  KILN_FIXED(0x107, Dovel::Ptr<TesselCentral::VlanVfiDir const>, vlanVfiDir)

 public:
  using VaneHelperVniSm::handleVlanVniMap;
  /// Every local mapping.
  void handleVlanVniMap();
  /// Every logical chip.
  void handleLogicalFapId();
  /// A logical chip that has come up gets its tables, and everything is written once more: what is unchanged costs no
  /// chip write. No effect for one that has left.
  void handleLogicalFapId(LogicalFap::LogicalFapId fapId);

 protected:
  VlanVniMapSm(Dovel::Ptr<VaneHelper::VaneHelperVniConfig const> helperVniConfig,
               Dovel::Ptr<VaneHelper::VaneHelperVniStatus> helperVniStatus,
               Dovel::Ptr<Stateway::EntityManager> statewayEm,
               Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
               Dovel::Ptr<TesselCentral::VfiCapabilityStatus const> vfiCapabilities,
               Dovel::Ptr<TesselCentral::VlanVfiDir const> vlanVfiDir);

  /// Makes the tables of a logical chip, and leaves them empty, unless it has them.
  virtual void fapTablesIs(LogicalFap::LogicalFapId fapId, TesselCentral::ChipInfo const& chipInfo) = 0;
  /// Writes everything.
  virtual void resynchronise() = 0;

  std::uint16_t vfiOf(std::uint16_t vlanId) const;
  std::uint16_t vlanOf(std::uint16_t vfi) const;
};

}  // namespace TesselVxlan
