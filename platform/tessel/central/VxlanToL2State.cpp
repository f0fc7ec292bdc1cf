#include "platform/tessel/central/VxlanToL2State.h"

#include "platform/kiln/Invariant.h"

namespace TesselCentral {

Meshal::IpGenAddr const& VtepIpToTnlIdNhIdMap::getLocalVtep(Meshal::AddressFamily af) const {
  switch (af) {
    case Meshal::AddressFamily::ipv4:
      return localVtep();
    case Meshal::AddressFamily::ipv6:
      return localVtep6();
    default:
      INVARIANT(false && "Invalid AddressFamily type");
      return localVtep();
  }
}

void VtepIpToTnlIdNhIdMap::setLocalVtep(Meshal::IpGenAddr const& localVtep) {
  switch (localVtep.af()) {
    case Meshal::AddressFamily::ipv4:
      return localVtepIs(localVtep);
    case Meshal::AddressFamily::ipv6:
      return localVtep6Is(localVtep);
    default:
      INVARIANT(false && "Invalid AddressFamily type");
  }
}

}  // namespace TesselCentral
