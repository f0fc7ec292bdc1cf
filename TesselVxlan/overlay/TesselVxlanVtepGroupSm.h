#pragma once

#include "TesselVxlan/frame/TesselVxlanTypes.h"
#include "TesselVxlan/nexthop/VpLagEcmpProgrammer.h"
#include "platform/dovel/Factory.h"
#include "platform/kiln/Dir.h"
#include "platform/tessel/vtepgroup/VaneHelperVtepGroupDirSm.h"
#include "platform/tessel/vtepgroup/VaneHelperVtepGroupSm.h"

namespace TesselVxlan {

class VxlanVtepGroupDirSm;

/// Programs one VTEP group and publishes its status.
///
/// In: the group's members and the id from its programmer. Out: `vaneVtepGroupStatus`; the id is published as
/// tunnel and as next hop, with bit 15 as the mark of a group. A group without members stays as it was. Each change
/// only schedules a review. When its last reference is released, the group is removed from the chip, unless the agent
/// ends. Main thread only.
class VxlanVtepGroupSm final : public Vane::VaneHelperVtepGroupSm {
  void vtepGrpTnlIdMapDispatch(Dovel::Change const& change);

  KILN_TYPE(TesselVxlan::VxlanVtepGroupSm, Vane::VaneHelperVtepGroupSm)
  KILN_WATCHED(0x105, VxlanVtepGroupTunnelIdMap const, vtepGrpTnlIdMap, &KilnSelf::vtepGrpTnlIdMapDispatch, nullptr)
  KILN_FIXED(0x106, Dovel::Ptr<VpLagEcmpProgrammer>, vpLagEcmpProgrammer)

 public:
  VxlanVtepGroupSm(Vane::VXLAN::VaneVtepGroupKey const& key,
                   Dovel::Ptr<Vane::VXLAN::VaneVtepGroupConfig const> vaneVtepGroupConfig,
                   Dovel::Ptr<Vane::VXLAN::VaneVtepGroupStatus> vaneVtepGroupStatus,
                   VxlanVtepGroupDirSm& vxlanVtepGroupDirSm,
                   Dovel::Ptr<VxlanVtepGroupTunnelIdMap const> vtepGrpTnlIdMap,
                   Dovel::Ptr<VpLagEcmpProgrammer> vpLagEcmpProgrammer);

  void handleVersion() override;
  void doProgramVtep(Meshal::IpGenAddr const& addr) override;
  void handleInitialized() override;

  /// What a due review does.
  void programVtepGroup();
  /// The same without a word: nothing for a group without members, and before `initializedIs(true)`.
  void reviewGroup();
  /// Publishes id and members.
  void handleVtepGroupTunnelIdUpdate();
  /// Removes the group from the chip.
  void cleanup();

 protected:
  void lastUserGone() override;

 private:
  VxlanVtepGroupDirSm& vxlanVtepGroupDirSm_;
};

/// Keeps a `VxlanVtepGroupSm` for each configured VTEP group. Main thread only.
class VxlanVtepGroupDirSm final : public Vane::VaneHelperVtepGroupDirSm {
  KILN_TYPE(TesselVxlan::VxlanVtepGroupDirSm, Vane::VaneHelperVtepGroupDirSm)
  KILN_FIXED(0x106, Dovel::Ptr<VpLagEcmpProgrammer>, vpLagEcmpProgrammer)
  KILN_FIXED(0x107, Dovel::Ptr<VxlanVtepGroupTunnelIdMapDir>, vtepGrpTnlIdMapDir)
  KILN_FIXED(0x108, Dovel::Ptr<Kiln::Dir>, ecmpNhTableDir)
  KILN_COLL(0x109, Vane::VXLAN::VaneVtepGroupKey, Dovel::Ptr<VxlanVtepGroupSm>, vxlanVtepGroupSm)

 public:
  VxlanVtepGroupDirSm(Kiln::Clock const* clock, Dovel::Ptr<Vane::VaneCommonSmData const> vcsd,
                      Dovel::Ptr<Vane::VXLAN::VaneVtepGroupConfigDir const> vaneVtepGroupConfigDir,
                      Dovel::Ptr<Vane::VXLAN::VaneVtepGroupStatusDir> vaneVtepGroupStatusDir,
                      Dovel::Ptr<TesselCentral::VxlanToL2State> vxlanToL2State,
                      Dovel::Ptr<VpLagEcmpProgrammer> vpLagEcmpProgrammer,
                      Dovel::Ptr<VxlanVtepGroupTunnelIdMapDir> vtepGrpTnlIdMapDir,
                      Dovel::Ptr<Kiln::Dir> ecmpNhTableDir);

  void addActiveNextHopId(Vane::VaneNextHopId nhId) override;
  void delActiveNextHopId(Vane::VaneNextHopId nhId) override;
  void cleanVtepGroupConfig(Vane::VXLAN::VaneVtepGroupKey const& key) override;
  void handleVtepGroup() override;
  void handleVtepGroup(Vane::VXLAN::VaneVtepGroupKey const& key) override;
  /// Makes the group's objects; a group that exists with the same configuration is kept. REQUIRES: it is configured.
  virtual void createL3VtepGroupSm(Vane::VXLAN::VaneVtepGroupKey const& key);
  virtual void deleteL3VtepGroupSm(Vane::VXLAN::VaneVtepGroupKey const& key);
  void doProgramVtepGroup(Vane::VXLAN::VaneVtepGroupKey const& key) override;

  /// Both pass on to the groups.
  void hasNotificationActiveIs(bool active) override;
  void kilnDoZombieReactors(bool zombie) override;
};

inline constexpr Dovel::Factory<VxlanVtepGroupDirSm> vxlanVtepGroupDirSmFactory;

}  // namespace TesselVxlan
