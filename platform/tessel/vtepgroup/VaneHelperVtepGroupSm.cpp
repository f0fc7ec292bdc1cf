#include "platform/tessel/vtepgroup/VaneHelperVtepGroupSm.h"

#include <algorithm>

#include "platform/tessel/vtepgroup/VaneHelperVtepGroupDirSm.h"

namespace Vane {

using VXLAN::VaneVtepGroupConfig;

VaneHelperVtepGroupSm::VaneHelperVtepGroupSm(VXLAN::VaneVtepGroupKey const& key,
                                             Dovel::Ptr<VaneVtepGroupConfig const> vaneVtepGroupConfig,
                                             Dovel::Ptr<VXLAN::VaneVtepGroupStatus> vaneVtepGroupStatus,
                                             VaneHelperVtepGroupDirSm& dirSm)
    : vaneVtepGroupKey_(key),
      vaneVtepGroupConfig_(*this, std::move(vaneVtepGroupConfig), Kiln::SubscribeOnly{}),
      vaneVtepGroupStatus_(std::move(vaneVtepGroupStatus)),
      dirSm_(dirSm) {}

void VaneHelperVtepGroupSm::initializedIs(bool initialized) {
  if (!initialized || initialized_) return;
  initialized_ = true;
  for (auto const& addr : Kiln::keysOf(vaneVtepGroupConfig()->vtepListColl())) handleMember(addr);
  handleInitialized();
}

void VaneHelperVtepGroupSm::vaneVtepGroupConfigDispatch(Dovel::Change const& change) {
  if (!initialized_) return;
  if (change.id == VaneVtepGroupConfig::vtepListId) {
    handleMember(change.keyAs<Meshal::IpGenAddr>());
    handleVersion();
  } else if (change.id == VaneVtepGroupConfig::versionId) {
    handleVersion();
  }
}

void VaneHelperVtepGroupSm::handleMember(Meshal::IpGenAddr const& addr) {
  auto const found = std::find(followed_.begin(), followed_.end(), addr);
  bool const isMember = vaneVtepGroupConfig()->vtepListHas(addr);
  if (isMember == (found != followed_.end())) return;
  if (isMember) {
    followed_.push_back(addr);
    dirSm_.memberAdd(addr, *this);
  } else {
    followed_.erase(found);
    dirSm_.memberDel(addr, *this);
  }
}

void VaneHelperVtepGroupSm::lastUserGone() {
  // A zombie's owner may be gone.
  if (!isZombie()) {
    for (auto const& addr : followed_) dirSm_.memberDel(addr, *this);
  }
  Kiln::Sm::lastUserGone();
}

}  // namespace Vane
