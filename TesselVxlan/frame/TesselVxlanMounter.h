#pragma once

#include "TesselVxlan/frame/TesselVxlanMounterSmWrapper.h"
#include "platform/plugin/L3MounterBase.h"

namespace TesselVxlan {

/// Plug-in entry point: the host creates it by its type name.
///
/// Mounts the state and the tables that the feature needs, and, once the mounts are complete, creates the wrapper,
/// which does all further work. Main thread only. Owns the wrapper, which it deactivates before it releases it.
class TesselVxlanMounter final : public TesselL3Unicast::L3MounterBase {
  KILN_TYPE(TesselVxlan::TesselVxlanMounter, TesselL3Unicast::L3MounterBase)
  KILN_READONLY(0x102, Dovel::Ptr<TesselVxlanMounterSmWrapper>,
                vxlanMounterSmWrapper)  ///< Null until the mounts are complete.

 public:
  explicit TesselVxlanMounter(Dovel::String name) : L3MounterBase(std::move(name)) {}
  ~TesselVxlanMounter() override;

  /// Adds all mounts and closes the group. Throws `Stateway::MountError` where a path has an entity of another type.
  void doInit() override;
  void doMountsComplete(Stateway::MountStatus mountStatus, Dovel::Ptr<Stateway::EntityManager> const& em) override;
  Dovel::Ptr<Vaulter::VaulterPStoreHelper> vaulterPStoreHelper() const override;
  Dovel::Ptr<TesselL3Unicast::L3MounterSmWrapper> mounterSmWrapper() const override { return vxlanMounterSmWrapper(); }

  /// Creates the wrapper and activates its notification; a former one is deactivated and released first.
  void vxlanMounterSmWrapperIs(Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData> const& fcsd,
                               Dovel::Ptr<Stateway::EntityManager> const& statewayEm,
                               TesselL3Unicast::AgentSmId agentSmId,
                               Dovel::Ptr<Local::EntityStore> const& localEntityStore,
                               Dovel::Ptr<KilnSharedMem::EntityManager> const& shmemEm,
                               Dovel::Ptr<Kiln::Dir> const& agentDir);
  void vxlanMounterSmWrapperDel();
};

}  // namespace TesselVxlan
