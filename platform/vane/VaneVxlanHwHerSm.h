#pragma once

#include "platform/bridging/BridgingConfig.h"
#include "platform/dovel/Factory.h"
#include "platform/kiln/Sm.h"
#include "platform/vane/FloodLists.h"
#include "platform/vane/HerVtep.h"
#include "platform/vane/VaneTunnel.h"
#include "platform/vxlan/VxlanConfig.h"

namespace Vane::VXLAN {

class VaneVxlanHwHerSm;

/// Watches the flood list of one VLAN.
class NestedSm_FloodSet final : public Kiln::NotifieeConst {
  KILN_BASE_TYPE(Vane::VXLAN::NestedSm_FloodSet)

 public:
  NestedSm_FloodSet(VaneVxlanHwHerSm& owner, Dovel::Ptr<L2Rib::FloodSet const> const& floodSet);
  Bridging::VlanId const& key() const { return floodSet().vlanId(); }
  L2Rib::FloodSet const& floodSet() const { return *floodSet_; }
  void ownerClear() { owner_ = nullptr; }

 protected:
  void onAttribute(Dovel::Change const& change) override;

 private:
  VaneVxlanHwHerSm* owner_;
  Dovel::Ptr<L2Rib::FloodSet const> floodSet_;
};

/// Turns flood lists by VLAN into flood VTEPs with their VLANs, and wants a head-end replication tunnel to each.
///
/// In: the flood lists, and the adjacency of each VTEP. Out: `vtepConfigDir`, where a VTEP is present while a list has
/// it; `tunnelConfig`, whose tunnels are all this object's: those that a former process has left and no list has are
/// removed. Nothing happens before `initializedIs(true)`. Main thread only. The cost of a change does not depend on the
/// length of a list.
class VaneVxlanHwHerSm final : public Kiln::Sm {
  KILN_BASE_TYPE(Vane::VXLAN::VaneVxlanHwHerSm)

 public:
  VaneVxlanHwHerSm(Dovel::Ptr<VaneCommonSmData const> vcsd, Dovel::Ptr<L2Rib::FloodSetOutput const> l2RibFloodSet,
                   Dovel::Ptr<VaneTunnelConfig> tunnelConfig, Dovel::Ptr<VaneTunnelStatus> tunnelStatus,
                   Dovel::Ptr<VaneVxlanHwHerVtepConfigDir> vtepConfigDir,
                   Dovel::Ptr<VaneVxlanHwHerVtepStatusDir> vtepStatusDir,
                   Dovel::Ptr<VxlanController::VtepStatusDirV2 const> vxlanVtepStatusDir,
                   Dovel::Ptr<Vxlan::VtiStatusDir const> vtiStatusDir,
                   Dovel::Ptr<Bridging::HwCapabilities const> bridgingHwCapabilities, bool);

  bool initialized() const { return initialized_; }
  /// True takes up the present lists and follows them from then on. False, and a second true, do nothing.
  void initializedIs(bool initialized);

 private:
  friend class NestedSm_FloodSet;
  using Self = VaneVxlanHwHerSm;

  void floodSetDispatch(Dovel::Change const& change);
  void vtepStatusDispatch(Dovel::Change const& change);
  void handleFloodSet(Bridging::VlanId vlan);
  void handleVtep(L2Rib::FloodSet const& floodSet, Meshal::IpGenAddr const& vtep);
  void vlanAdd(Meshal::IpGenAddr const& vtep, Bridging::VlanId vlan);
  void vlanDel(Meshal::IpGenAddr const& vtep, Bridging::VlanId vlan);

  Dovel::Ptr<VaneCommonSmData const> vcsd_;
  Dovel::Ptr<VaneTunnelConfig> tunnelConfig_;
  Dovel::Ptr<VaneTunnelStatus> tunnelStatus_;
  Dovel::Ptr<VaneVxlanHwHerVtepConfigDir> vtepConfigDir_;
  Dovel::Ptr<VaneVxlanHwHerVtepStatusDir> vtepStatusDir_;
  Dovel::Ptr<Vxlan::VtiStatusDir const> vtiStatusDir_;
  Dovel::Ptr<Bridging::HwCapabilities const> bridgingHwCapabilities_;
  bool initialized_ = false;
  Kiln::Watch<L2Rib::FloodSetOutput const, &Self::floodSetDispatch> l2RibFloodSet_;
  Kiln::Watch<VxlanController::VtepStatusDirV2 const, &Self::vtepStatusDispatch> vxlanVtepStatusDir_;
  Kiln::NestedSms<Bridging::VlanId, NestedSm_FloodSet> floodSets_{*this};
};

inline constexpr Dovel::Factory<VaneVxlanHwHerSm> vaneVxlanHwHerSmFactory;

}  // namespace Vane::VXLAN
