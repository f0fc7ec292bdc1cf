#pragma once

#include "TesselVxlan/frame/TesselVxlanMounterSmWrapper.h"
#include "platform/plugin/L3MounterBase.h"

namespace TesselVxlan {

/// How the feature enters the agent: the host makes it by its type name.
///
/// Says which state and which tables the feature needs, and, when all of it is there, makes the one object that does
/// all further work. Main thread only. Owns the wrapper.
class TesselVxlanMounter final : public TesselL3Unicast::L3MounterBase {
  KILN_TYPE(TesselVxlan::TesselVxlanMounter, TesselL3Unicast::L3MounterBase)
  KILN_READONLY(0x102, Dovel::Ptr<TesselVxlanMounterSmWrapper>, vxlanMounterSmWrapper)  ///< Null before the mounts.

 public:
  explicit TesselVxlanMounter(Dovel::String name) : L3MounterBase(std::move(name)) {}
  ~TesselVxlanMounter() override;

  /// Asks for all mounts. Throws `Stateway::MountError` where a path is taken by another type.
  void doInit() override;
  void doMountsComplete(Stateway::MountStatus mountStatus, Dovel::Ptr<Stateway::EntityManager> const& em) override;
  Dovel::Ptr<TesselL3Unicast::L3MounterSmWrapper> mounterSmWrapper() const override { return vxlanMounterSmWrapper(); }

  /// Makes the wrapper, live, in the place of one that stands.
  void vxlanMounterSmWrapperIs(Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData> const& fcsd,
                               Dovel::Ptr<Stateway::EntityManager> const& statewayEm,
                               TesselL3Unicast::AgentSmId agentSmId,
                               Dovel::Ptr<Local::EntityStore> const& localEntityStore,
                               Dovel::Ptr<KilnSharedMem::EntityManager> const& shmemEm,
                               Dovel::Ptr<Kiln::Dir> const& agentDir);
  void vxlanMounterSmWrapperDel();

 protected:
  void lastUserGone() override;
};

}  // namespace TesselVxlan
