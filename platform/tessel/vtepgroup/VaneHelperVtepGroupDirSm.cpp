#include "platform/tessel/vtepgroup/VaneHelperVtepGroupDirSm.h"

#include <algorithm>

#include "platform/kiln/Invariant.h"
#include "platform/tessel/vtepgroup/VaneHelperVtepGroupSm.h"

namespace Vane {

using TesselCentral::VtepIpToTnlIdNhIdMap;
using TesselCentral::VxlanToL2State;
using VXLAN::VaneVtepGroupConfigDir;
using VXLAN::VaneVtepGroupKey;

namespace {

/// A review runs on the next turn of the loop: after everything that the change of one document brings.
constexpr Kiln::Seconds reviewDelay = 0;

}  // namespace

NestedSm_MemberVtep::NestedSm_MemberVtep(VaneHelperVtepGroupDirSm& owner, Meshal::IpGenAddr const& vtepIp)
    : NotifieeConst(Dovel::attributes(VtepIpToTnlIdNhIdMap::tnlIdId, VtepIpToTnlIdNhIdMap::adjIdId)),
      owner_(&owner),
      vtepIp_(vtepIp) {
  isRegisteredNotifieeIs(true);
}

void NestedSm_MemberVtep::onAttribute(Dovel::Change const& change) {
  if (!owner_) return;
  if (change.id == VtepIpToTnlIdNhIdMap::tnlIdId || change.id == VtepIpToTnlIdNhIdMap::adjIdId) {
    owner_->handleMemberVtep(vtepIp_);
  }
}

VaneHelperVtepGroupDirSm::VaneHelperVtepGroupDirSm(Kiln::Clock const* clock, Dovel::Ptr<VaneCommonSmData const> vcsd,
                                                   Dovel::Ptr<VaneVtepGroupConfigDir const> vaneVtepGroupConfigDir,
                                                   Dovel::Ptr<VXLAN::VaneVtepGroupStatusDir> vaneVtepGroupStatusDir,
                                                   Dovel::Ptr<VxlanToL2State> vxlanToL2State)
    : vcsd_(std::move(vcsd)),
      vaneVtepGroupConfigDir_(*this, std::move(vaneVtepGroupConfigDir), Kiln::SubscribeOnly{}),
      vaneVtepGroupStatusDir_(std::move(vaneVtepGroupStatusDir)),
      vxlanToL2State_(std::move(vxlanToL2State)) {
  INVARIANT(clock == Kiln::activityManager()->clock());
}

VaneHelperVtepGroupDirSm::~VaneHelperVtepGroupDirSm() {
  for (auto const& [key, id] : reviews_) Kiln::activityManager()->cancel(id);
}

void VaneHelperVtepGroupDirSm::initializedIs(bool initialized) {
  if (!initialized || initialized_) return;
  initialized_ = true;
  for (auto const& key : Kiln::keysOf(vaneVtepGroupStatusDir()->vaneVtepGroupStatusColl())) {
    auto const& config = vaneVtepGroupConfigDir()->vaneVtepGroupConfig(key);
    // A group without members is not written either.
    if (config && !config->vtepListColl().empty()) continue;
    cleanVtepGroupConfig(key);
    vaneVtepGroupStatusDir()->vaneVtepGroupStatusDel(key);
  }
  handleVtepGroup();
}

void VaneHelperVtepGroupDirSm::vaneVtepGroupConfigDirDispatch(Dovel::Change const& change) {
  if (!initialized_) return;
  if (change.id == VaneVtepGroupConfigDir::vaneVtepGroupConfigId) {
    handleVtepGroup(change.keyAs<VaneVtepGroupKey>());
  } else if (change.id == VaneVtepGroupConfigDir::activeNextHopIdListId) {
    handleActiveNextHopId(change.keyAs<VaneNextHopId>());
  }
}

void VaneHelperVtepGroupDirSm::handleActiveNextHopId(VaneNextHopId nhId) {
  if (vaneVtepGroupConfigDir()->activeNextHopIdListHas(nhId)) {
    addActiveNextHopId(nhId);
  } else {
    delActiveNextHopId(nhId);
  }
}

void VaneHelperVtepGroupDirSm::scheduleReview(VaneVtepGroupKey const& key) {
  auto const [review, isNew] = reviews_.try_emplace(key, 0);
  if (!isNew) return;
  review->second = Kiln::activityManager()->schedule(reviewDelay, [this, key] {
    reviews_.erase(reviews_.find(key));
    if (isZombie()) return;
    Dovel::Ptr<Kiln::Sm> const alive(this);
    doProgramVtepGroup(key);
  });
}

void VaneHelperVtepGroupDirSm::memberAdd(Meshal::IpGenAddr const& vtepIp, VaneHelperVtepGroupSm& group) {
  auto const [member, isNew] =
      members_.findOrMake(vtepIp, [&] { return Dovel::make<NestedSm_MemberVtep>(*this, vtepIp); });
  member->groups().push_back(&group);
  if (!isNew) return;
  member->notifierIs(vxlanToL2State()->vtepIpToTnlIdNhIdMap(vtepIp));
  vteps_.notifierIs(vxlanToL2State());
}

void VaneHelperVtepGroupDirSm::memberDel(Meshal::IpGenAddr const& vtepIp, VaneHelperVtepGroupSm& group) {
  auto& groups = members_.at(vtepIp)->groups();
  groups.erase(std::find(groups.begin(), groups.end(), &group));
  if (!groups.empty()) return;
  members_.del(vtepIp);
  if (members_.all().empty()) vteps_.notifierIs(nullptr);
}

void VaneHelperVtepGroupDirSm::vtepsDispatch(Dovel::Change const& change) {
  if (change.id != VxlanToL2State::vtepIpToTnlIdNhIdMapId) return;
  auto const& vtepIp = change.keyAs<Meshal::IpGenAddr>();
  auto const& member = members_.at(vtepIp);
  if (!member) return;
  member->notifierIs(vxlanToL2State()->vtepIpToTnlIdNhIdMap(vtepIp));
  handleMemberVtep(vtepIp);
}

void VaneHelperVtepGroupDirSm::handleMemberVtep(Meshal::IpGenAddr const& vtepIp) {
  for (auto* const group : members_.at(vtepIp)->groups()) group->doProgramVtep(vtepIp);
}

}  // namespace Vane
