#pragma once

#include "platform/anvil/IoctlDrv.h"
#include "platform/asic/ChipInfo.h"
#include "platform/kiln/Entity.h"
#include "platform/logicalfap/LogicalFapId.h"
#include "platform/tessel/central/PortConfigDir.h"

namespace TesselCentral {

/// The identity of one logical chip.
class LogicalModInfo final : public Kiln::Entity {
  KILN_TYPE(TesselCentral::LogicalModInfo, Kiln::Entity)

 public:
  LogicalModInfo() = default;
  explicit LogicalModInfo(Asic::ChipInfo chipInfo) : chipInfo_(std::move(chipInfo)) {}

  Asic::ChipInfo const& chipInfo() const { return chipInfo_; }

 private:
  Asic::ChipInfo chipInfo_;
};

/// The identity of a chip, as the tables take it. None until `doInit`.
class ChipInfo : public Asic::ChipInfo {
 public:
  ChipInfo() = default;
  explicit ChipInfo(LogicalModInfo const& logicalModInfo) { doInit(logicalModInfo); }

  void doInit(LogicalModInfo const& logicalModInfo) { Asic::ChipInfo::operator=(logicalModInfo.chipInfo()); }

  friend bool operator==(ChipInfo const&, ChipInfo const&) = default;
};

/// The same chip for a table that is brought up at `stage`.
inline ChipInfo getTableChipInfo(ChipInfo chipInfo, Asic::BringupStage stage) {
  chipInfo.stageIs(stage);
  return chipInfo;
}

/// Common data of all features of the agent (`fcsd`). Written by the host, read by the features.
///
/// A logical chip is present while `logicalFap` holds it. `logicalModInfos` becomes true when the host knows all of
/// them, before any feature brings up a table.
class FeatureAgentCommonSmData final : public Kiln::NamedEntity {
  KILN_TYPE(TesselCentral::FeatureAgentCommonSmData, Kiln::NamedEntity)
  KILN_ATTR(0x102, bool, logicalModInfos)
  KILN_ATTR(0x103, Dovel::Ptr<PortConfigDir>, portConfigDir)
  KILN_ATTR(0x104, Dovel::Ptr<Anvil::IoctlDrvFab>, ioctlDrvFab)  ///< The packet driver; null where there is none.
  KILN_COLL(0x1bf, LogicalFap::LogicalFapId, Dovel::Ptr<LogicalModInfo>, logicalFap)

 public:
  using NamedEntity::NamedEntity;
};

}  // namespace TesselCentral
