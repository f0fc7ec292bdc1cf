#pragma once

#include <vector>

#include "platform/kiln/Clock.h"
#include "platform/kiln/Sm.h"
#include "platform/tessel/central/VxlanToL2State.h"
#include "platform/vane/VaneTunnel.h"
#include "platform/vane/VtepGroup.h"

namespace Vane {

class VaneHelperVtepGroupDirSm;
class VaneHelperVtepGroupSm;

/// Watches the hardware tunnel of one VTEP for the groups it is a member of.
class NestedSm_MemberVtep final : public Kiln::NotifieeConst {
  KILN_BASE_TYPE(Vane::NestedSm_MemberVtep)

 public:
  NestedSm_MemberVtep(VaneHelperVtepGroupDirSm& owner, Meshal::IpGenAddr const& vtepIp);
  Meshal::IpGenAddr const& key() const { return vtepIp_; }
  void ownerClear() { owner_ = nullptr; }
  std::vector<VaneHelperVtepGroupSm*>& groups() { return groups_; }

 protected:
  void onAttribute(Dovel::Change const& change) override;

 private:
  VaneHelperVtepGroupDirSm* owner_;
  Meshal::IpGenAddr vtepIp_;
  std::vector<VaneHelperVtepGroupSm*> groups_;
};

/// Base of the state machine of all VTEP groups: turns changes of their configuration into calls of its virtual
/// operations, gathers reviews, and watches the member VTEPs for the groups.
///
/// In: `vaneVtepGroupConfigDir`, `vxlanToL2State` (the hardware tunnels of VTEPs). Out: a status that no group will
/// write any more is removed from `vaneVtepGroupStatusDir` at the start. Nothing is called before
/// `initializedIs(true)`. Main thread only.
class VaneHelperVtepGroupDirSm : public Kiln::Sm {
  void vaneVtepGroupConfigDirDispatch(Dovel::Change const& change);
  void vtepsDispatch(Dovel::Change const& change);

  KILN_BASE_TYPE(Vane::VaneHelperVtepGroupDirSm)
  KILN_FIXED(0x102, Dovel::Ptr<VaneCommonSmData const>, vcsd)
  KILN_WATCHED(0x103, VXLAN::VaneVtepGroupConfigDir const, vaneVtepGroupConfigDir,
               &KilnSelf::vaneVtepGroupConfigDirDispatch, nullptr)
  KILN_FIXED(0x104, Dovel::Ptr<VXLAN::VaneVtepGroupStatusDir>, vaneVtepGroupStatusDir)
  KILN_FIXED(0x105, Dovel::Ptr<TesselCentral::VxlanToL2State>, vxlanToL2State)

 public:
  bool initialized() const { return initialized_; }
  /// True takes up the present groups and follows all of them from then on. False, and a second true, do nothing.
  void initializedIs(bool initialized);

  /// Asks for one later call of `doProgramVtepGroup`; a group that waits for it is not asked for again.
  void scheduleReview(VXLAN::VaneVtepGroupKey const& key);

  /// Watches a VTEP for a group, which is called when its tunnel is added, is removed, or has another id or adjacency.
  void memberAdd(Meshal::IpGenAddr const& vtepIp, VaneHelperVtepGroupSm& group);
  /// REQUIRES: added before.
  void memberDel(Meshal::IpGenAddr const& vtepIp, VaneHelperVtepGroupSm& group);
  void handleMemberVtep(Meshal::IpGenAddr const& vtepIp);

  /// A group's id came into use for traffic.
  virtual void addActiveNextHopId(VaneNextHopId nhId) = 0;
  /// The opposite.
  virtual void delActiveNextHopId(VaneNextHopId nhId) = 0;
  /// Calls the one of both that fits the list of ids in use.
  virtual void handleActiveNextHopId(VaneNextHopId nhId);
  /// A former process has left a status of a group that is not configured any more.
  virtual void cleanVtepGroupConfig(VXLAN::VaneVtepGroupKey const& key) = 0;
  /// All groups that are configured.
  virtual void handleVtepGroup() = 0;
  /// A group was added, replaced or removed.
  virtual void handleVtepGroup(VXLAN::VaneVtepGroupKey const& key) = 0;
  /// The review of a group is due. The group may be gone.
  virtual void doProgramVtepGroup(VXLAN::VaneVtepGroupKey const& key) = 0;

 protected:
  /// REQUIRES: `clock`, by which the delay of reviews is measured, is the activity manager's.
  VaneHelperVtepGroupDirSm(Kiln::Clock const* clock, Dovel::Ptr<VaneCommonSmData const> vcsd,
                           Dovel::Ptr<VXLAN::VaneVtepGroupConfigDir const> vaneVtepGroupConfigDir,
                           Dovel::Ptr<VXLAN::VaneVtepGroupStatusDir> vaneVtepGroupStatusDir,
                           Dovel::Ptr<TesselCentral::VxlanToL2State> vxlanToL2State);
  ~VaneHelperVtepGroupDirSm() override;

 private:
  using Self = VaneHelperVtepGroupDirSm;

  bool initialized_ = false;
  Kiln::HashMap<VXLAN::VaneVtepGroupKey, Kiln::ActivityManager::Id> reviews_;
  Kiln::Watch<TesselCentral::VxlanToL2State const, &Self::vtepsDispatch> vteps_{*this};  ///< Null without members.
  Kiln::NestedSms<Meshal::IpGenAddr, NestedSm_MemberVtep> members_{*this};
};

}  // namespace Vane
