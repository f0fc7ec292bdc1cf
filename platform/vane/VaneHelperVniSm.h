#pragma once

#include "platform/kiln/Sm.h"
#include "platform/vane/VaneHelperVni.h"

namespace VaneHelper {

/// Base of the state machines that put mappings of VLANs and VNIs into hardware: turns changes of the wanted mappings
/// into calls of its virtual operations.
///
/// In: `helperVniConfig`. `helperVniStatus` is for the subclass; here it is asked which mappings were programmed: a
/// removed one that never was needs no call. Nothing is called for what is present already: a subclass walks the
/// mappings when it has its tables. Main thread only.
class VaneHelperVniSm : public Kiln::Sm {
  void helperVniConfigDispatch(Dovel::Change const& change);

  KILN_BASE_TYPE(VaneHelper::VaneHelperVniSm)
  KILN_WATCHED(0x102, VaneHelperVniConfig const, helperVniConfig, &KilnSelf::helperVniConfigDispatch, nullptr)
  KILN_FIXED(0x103, Dovel::Ptr<VaneHelperVniStatus>, helperVniStatus)

 public:
  /// The hardware is initialised; does nothing here.
  virtual void handleHwInit();
  /// The hardware is to be cleaned up; does nothing here.
  virtual void handleHwCleanup();
  /// A local mapping was added, changed or removed.
  virtual void handleVlanVniMap(Vane::VXLAN::VtiVlanKey const& key) = 0;
  /// The same for a remote mapping; does nothing here.
  virtual void handleRemoteVniConfig(Vane::VXLAN::VtiVniKey const& key);

 protected:
  VaneHelperVniSm(Dovel::Ptr<VaneHelperVniConfig const> helperVniConfig,
                  Dovel::Ptr<VaneHelperVniStatus> helperVniStatus);

  /// Whether a local mapping that was removed is to be handled.
  virtual bool isProgrammed(Vane::VXLAN::VtiVlanKey const& key) const { return helperVniStatus()->statusEntryHas(key); }
};

}  // namespace VaneHelper
