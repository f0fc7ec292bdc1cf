#pragma once

#include "platform/tessel/features/TesselProfile.h"

namespace TesselL3Unicast {

/// How the chip's underlay next hops are written.
class L3NextHopAttributes final : public Asic::Feature {
  KILN_TYPE(TesselL3Unicast::L3NextHopAttributes, Asic::Feature)
  KILN_ATTR(0x102, bool, l2IfSupported)
  /// Row 0 is reserved by hardware; the agent does not write it.
  KILN_ATTR(0x103, bool, ownReservedRow)
  /// The chip floods in the underlay in hardware.
  KILN_ATTR(0x104, bool, vxlanUnderlayFloodingHw)
};

}  // namespace TesselL3Unicast
