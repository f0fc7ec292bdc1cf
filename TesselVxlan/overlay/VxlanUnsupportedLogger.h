#pragma once

#include "platform/kiln/Sm.h"
#include "platform/vxlan/VxlanConfig.h"

namespace TesselVxlan {

/// Warns the operator of each VXLAN interface on a system profile without room for VXLAN.
///
/// Watches the interfaces from its construction on; those that exist then count too. Logs
/// `TESSEL_PROFILE_VXLAN_UNSUPPORTED` once for each interface that is added, and writes nothing.
/// Main thread only.
class VxlanUnsupportedLogger final : public Kiln::Sm {
  KILN_BASE_TYPE(TesselVxlan::VxlanUnsupportedLogger)

 public:
  VxlanUnsupportedLogger(bool profileSupportsVxlan, Dovel::Ptr<Vxlan::VtiStatusDir const> vtiStatusDir);

 private:
  void vtiStatusDirDispatch(Dovel::Change const& change);
  void handleVtiStatus();
  void handleVtiStatus(Meshal::IntfId intf);

  KILN_FIXED(0x102, bool, profileSupportsVxlan)
  KILN_WATCHED(0x103, Vxlan::VtiStatusDir const, vtiStatusDir, &KilnSelf::vtiStatusDirDispatch,
               static_cast<void (KilnSelf::*)()>(&KilnSelf::handleVtiStatus))
};

}  // namespace TesselVxlan
