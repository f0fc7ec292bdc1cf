#pragma once

#include "platform/local/EntityManager.h"
#include "platform/plugin/AgentSmId.h"
#include "platform/plugin/InfraMounterBase.h"
#include "platform/tessel/central/CommonData.h"
#include "platform/vaulter/VaulterPStoreHelper.h"

namespace TesselL3Unicast {

class L3MounterSmWrapper;

/// Base of the mounters of an agent's layer-3 features.
///
/// The host creates it by type name, sets the attributes, runs `doBootStageMount` with the mounter's open mount group
/// and then `doInit`, which closes the group. When the mounts are complete it has a wrapper, which the host starts.
class L3MounterBase : public TesselInfra::MounterBase {
  KILN_TYPE(TesselL3Unicast::L3MounterBase, TesselInfra::MounterBase)
  KILN_FIXED(0x31, Dovel::String, name)
  KILN_ATTR(0x32, AgentSmId, agentSmId)
  KILN_ATTR(0x33, Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData>, fcsd)
  KILN_ATTR(0x34, Dovel::Ptr<Local::EntityStore>, localEntityStore)
  KILN_ATTR(0x35, Dovel::Ptr<KilnSharedMem::EntityManager>, shmemEm)
  KILN_ATTR(0x36, Dovel::Ptr<Stateway::EntityManager>, statewayEm)
  KILN_ATTR(0x37, Dovel::Ptr<Kiln::Dir>, agentDir)

 public:
  Dovel::Ptr<KilnSharedMem::EntityManager> getShmemEntityManager() const override { return shmemEm(); }
  /// Whether the feature takes part in restarts that leave forwarding as it is.
  virtual bool isHitlessRestartSupported() const { return false; }
  /// Adds what every layer-3 feature reads and does not mount itself.
  virtual void doBootStageMount(Stateway::MountGroup& mountGroup);
  /// What takes over the feature's part of an upgrade document; null for a feature without one. REQUIRES: the mounts
  /// are complete.
  virtual Dovel::Ptr<Vaulter::VaulterPStoreHelper> vaulterPStoreHelper() const { return nullptr; }
  /// The feature's wrapper; null before the mounts are complete.
  virtual Dovel::Ptr<L3MounterSmWrapper> mounterSmWrapper() const = 0;

 protected:
  explicit L3MounterBase(Dovel::String name) : name_(std::move(name)) {}
};

}  // namespace TesselL3Unicast
