#include "platform/plugin/L3MounterSmWrapper.h"

#include "platform/kiln/Invariant.h"

namespace TesselL3Unicast {

L3MounterSmWrapper::L3MounterSmWrapper(Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData> fcsd,
                                       Dovel::Ptr<Stateway::EntityManager> statewayEm, AgentSmId agentSmId,
                                       Dovel::Ptr<Local::EntityStore> localEntityStore,
                                       Dovel::Ptr<KilnSharedMem::EntityManager> shmemEm, Dovel::Ptr<Kiln::Dir> agentDir)
    : Sm(Quiet{}),
      fcsd_(*this, std::move(fcsd), Kiln::SubscribeOnly{}),
      statewayEm_(std::move(statewayEm)),
      agentSmId_(agentSmId),
      localEntityStore_(std::move(localEntityStore)),
      shmemEm_(std::move(shmemEm)),
      agentDir_(std::move(agentDir)),
      runningState_(*this, Dovel::make<SmRunningState>(), Kiln::SubscribeOnly{}),
      shmemName_(shmemEm_ ? shmemEm_->name() : Dovel::String()) {}

void L3MounterSmWrapper::doStart() {
  INVARIANT(localEntityManager() && vcsd());
  handleLogicalFapId();
  initStatewayState();
  handleRunningState();
  handleInitialized();
}

void L3MounterSmWrapper::handleLogicalFapId(LogicalFap::LogicalFapId) {}
void L3MounterSmWrapper::handleLogicalFapId() {}
void L3MounterSmWrapper::handleRunningState() {}
void L3MounterSmWrapper::handleInitialized() {}

void L3MounterSmWrapper::fcsdDispatch(Dovel::Change const& change) {
  if (change.id == TesselCentral::FeatureAgentCommonSmData::logicalFapId) {
    handleLogicalFapId(change.keyAs<LogicalFap::LogicalFapId>());
  }
}

void L3MounterSmWrapper::runningStateDispatch(Dovel::Change const& change) {
  if (change.id == SmRunningState::runningId) handleRunningState();
}

}  // namespace TesselL3Unicast
