#pragma once

#include <vector>

#include "platform/kiln/Sm.h"
#include "platform/vane/VtepGroup.h"

namespace Vane {

class VaneHelperVtepGroupDirSm;

/// Base of the state machine of one VTEP group: turns changes of its configuration and of its member VTEPs into calls
/// of its virtual operations.
///
/// In: `vaneVtepGroupConfig`. `vaneVtepGroupStatus` is for the subclass. Nothing is called before
/// `initializedIs(true)`. Main thread only. `dirSm` outlives it, or has made it a zombie.
class VaneHelperVtepGroupSm : public Kiln::Sm {
  void vaneVtepGroupConfigDispatch(Dovel::Change const& change);

  KILN_BASE_TYPE(Vane::VaneHelperVtepGroupSm)
  KILN_FIXED(0x102, VXLAN::VaneVtepGroupKey, vaneVtepGroupKey)
  KILN_WATCHED(0x103, VXLAN::VaneVtepGroupConfig const, vaneVtepGroupConfig, &KilnSelf::vaneVtepGroupConfigDispatch,
               nullptr)
  KILN_FIXED(0x104, Dovel::Ptr<VXLAN::VaneVtepGroupStatus>, vaneVtepGroupStatus)

 public:
  bool initialized() const { return initialized_; }
  /// True: follows the members from now on, then `handleInitialized()`. False, and a second true, do nothing.
  void initializedIs(bool initialized);

  /// The configuration has a new version, or other members.
  virtual void handleVersion() = 0;
  /// The hardware tunnel of a member VTEP was added, was removed, or has another id or another adjacency. REQUIRES:
  /// changes no group's members.
  virtual void doProgramVtep(Meshal::IpGenAddr const& addr) = 0;
  virtual void handleInitialized() = 0;

 protected:
  VaneHelperVtepGroupSm(VXLAN::VaneVtepGroupKey const& key,
                        Dovel::Ptr<VXLAN::VaneVtepGroupConfig const> vaneVtepGroupConfig,
                        Dovel::Ptr<VXLAN::VaneVtepGroupStatus> vaneVtepGroupStatus, VaneHelperVtepGroupDirSm& dirSm);
  void lastUserGone() override;

 private:
  void handleMember(Meshal::IpGenAddr const& addr);

  VaneHelperVtepGroupDirSm& dirSm_;
  bool initialized_ = false;
  std::vector<Meshal::IpGenAddr> followed_;  ///< The members that `dirSm_` watches for this group.
};

}  // namespace Vane
