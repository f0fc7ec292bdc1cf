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
#include "platform/vane/VaneTunnel.h"

namespace TesselL3Unicast {

/// Root object of a running layer-3 feature: holds the agent's common data and runs the feature's start.
///
/// made (by the mounter) → common data set (by the host) → `doStart` → running.
/// Watches the feature's running state and the FAPs of the agent. Main thread only. Everything it holds is shared.
class L3MounterSmWrapper : public Kiln::Sm {
  KILN_TYPE(TesselL3Unicast::L3MounterSmWrapper, Kiln::Sm)
  KILN_FIXED(0x41, Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData>, fcsd)
  KILN_FIXED(0x42, Dovel::Ptr<Stateway::EntityManager>, statewayEm)
  KILN_FIXED(0x43, AgentSmId, agentSmId)
  KILN_FIXED(0x44, Dovel::Ptr<Local::EntityStore>, localEntityStore)
  KILN_FIXED(0x45, Dovel::Ptr<KilnSharedMem::EntityManager>, shmemEm)
  KILN_FIXED(0x46, Dovel::Ptr<Kiln::Dir>, agentDir)
  KILN_ATTR(0x47, Dovel::Ptr<Local::EntityManager>, localEntityManager)
  KILN_ATTR(0x48, Dovel::Ptr<Vane::VaneCommonSmData>, vcsd)
  KILN_ATTR(0x49, bool, profileSupportsVxlan)
};

}  // namespace TesselL3Unicast
