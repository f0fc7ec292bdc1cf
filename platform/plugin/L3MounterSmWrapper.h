#pragma once

#include "platform/asic/Index.h"
#include "platform/kiln/Dir.h"
#include "platform/kiln/Sm.h"
#include "platform/kilnsharedmem/EntityManager.h"
#include "platform/local/EntityManager.h"
#include "platform/plugin/AgentSmId.h"
#include "platform/plugin/SmRunningState.h"
#include "platform/stateway/EntityManager.h"
#include "platform/tessel/central/CommonData.h"
#include "platform/vane/VaneHelperVni.h"
#include "platform/vane/VaneTunnel.h"

namespace TesselL3Unicast {

/// Root object of a running layer-3 feature: holds the agent's common data and runs the feature's start.
///
/// created (by the mounter) → common data set and `doStart` (by the host) → running.
/// Watches the logical chips of the agent and the feature's running state. Main thread only. All that it holds is
/// shared.
class L3MounterSmWrapper : public Kiln::Sm {
  void fcsdDispatch(Dovel::Change const& change);
  void runningStateDispatch(Dovel::Change const& change);

  KILN_BASE_TYPE(TesselL3Unicast::L3MounterSmWrapper)
  KILN_WATCHED(0x41, TesselCentral::FeatureAgentCommonSmData, fcsd, &KilnSelf::fcsdDispatch, nullptr)
  KILN_FIXED(0x42, Dovel::Ptr<Stateway::EntityManager>, statewayEm)
  KILN_FIXED(0x43, AgentSmId, agentSmId)
  KILN_FIXED(0x44, Dovel::Ptr<Local::EntityStore>, localEntityStore)
  KILN_FIXED(0x45, Dovel::Ptr<KilnSharedMem::EntityManager>, shmemEm)
  KILN_FIXED(0x46, Dovel::Ptr<Kiln::Dir>, agentDir)
  KILN_ATTR(0x47, Dovel::Ptr<Local::EntityManager>, localEntityManager)
  KILN_ATTR(0x48, Dovel::Ptr<Vane::VaneCommonSmData>, vcsd)
  KILN_ATTR(0x49, bool, profileSupportsVxlan)
  KILN_WATCHED(0x4a, SmRunningState, runningState, &KilnSelf::runningStateDispatch, nullptr)  // Never null.

 public:
  /// The chip that shared tables are brought up on.
  TesselCentral::ChipInfo const& chipInfo() const { return chipInfo_; }
  void chipInfoIs(TesselCentral::ChipInfo chipInfo) { chipInfo_ = std::move(chipInfo); }
  /// The unit of shared tables.
  Asic::UnitId unit() const { return Asic::kSharedUnit; }
  /// The name of the agent's shared memory, and whether it is required.
  Dovel::String const& shmemName() const { return shmemName_; }
  void shmemNameIs(Dovel::String name) { shmemName_ = std::move(name); }
  bool shmemRequired() const { return true; }

  /// Starts the feature: `handleLogicalFapId()`, `initStatewayState`, `handleRunningState`, `handleInitialized`, in
  /// this order. REQUIRES: once; the mounts are complete; `localEntityManager`, `vcsd`, `chipInfo` and
  /// `profileSupportsVxlan` are set.
  void doStart();

  /// The feature's own mappings of VNIs, where no other part of the agent owns them; null otherwise, and before the
  /// feature's state machines run.
  virtual Dovel::Ptr<VaneHelper::VaneHelperVni> ownHelperVni() const { return nullptr; }

  /// Handles a logical chip that was added, removed or changed; without an argument, all present ones. Does nothing
  /// here.
  virtual void handleLogicalFapId(LogicalFap::LogicalFapId fapId);
  virtual void handleLogicalFapId();
  /// The state of the host is complete.
  virtual void initStatewayState() = 0;
  /// Handles a change of the running state. Does nothing here.
  virtual void handleRunningState();
  /// Runs at the end of the start. Does nothing here.
  virtual void handleInitialized();

 protected:
  L3MounterSmWrapper(Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData> fcsd,
                     Dovel::Ptr<Stateway::EntityManager> statewayEm, AgentSmId agentSmId,
                     Dovel::Ptr<Local::EntityStore> localEntityStore, Dovel::Ptr<KilnSharedMem::EntityManager> shmemEm,
                     Dovel::Ptr<Kiln::Dir> agentDir);

 private:
  TesselCentral::ChipInfo chipInfo_;
  Dovel::String shmemName_;
};

}  // namespace TesselL3Unicast
