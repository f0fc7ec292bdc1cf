#pragma once

#include "platform/tessel/features/TesselProfile.h"

namespace TesselVxlan {

/// How congestion marks are handled where tunnels end.
class EcnTunnelTableAttributes final : public Asic::Feature {
  KILN_TYPE(TesselVxlan::EcnTunnelTableAttributes, Asic::Feature)
  KILN_ATTR(0x102, bool, tunnelDecapEcnDefaults)
};

}  // namespace TesselVxlan
