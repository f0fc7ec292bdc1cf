#include "platform/tessel/l3common/TesselVxlanState.h"

namespace TesselL3Common {

Meshal::IpGenAddr const& TesselVxlanState::getLocalVtep(Meshal::AddressFamily af) const {
  static Meshal::IpGenAddr const none;
  if (af == Meshal::AddressFamily::ipv4) return localVtep();
  if (af == Meshal::AddressFamily::ipv6) return localVtep6();
  return none;
}

}  // namespace TesselL3Common
