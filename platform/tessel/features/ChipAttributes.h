#pragma once

#include "platform/tessel/features/TesselProfile.h"

namespace TesselCentral {

/// Attributes of a chip for all features of the agent.
class ChipAttributes final : public Asic::Feature {
  KILN_TYPE(TesselCentral::ChipAttributes, Asic::Feature)
  /// A member tunnel's single next hop is programmed as a group of one.
  KILN_ATTR(0x102, bool, memberSingleHopEcmp)
  KILN_ATTR(0x103, bool, qosFeatureAgent)
};

/// VXLAN capabilities of the chip; the host copies them into `TesselCentral::VxlanCapabilities`.
class VxlanCapabilityAttributes final : public Asic::Feature {
  KILN_TYPE(TesselCentral::VxlanCapabilityAttributes, Asic::Feature)
  KILN_ATTR(0x102, bool, mcastTunnelSupported)
  KILN_ATTR(0x103, bool, underlayMcastSupported)
  KILN_ATTR(0x104, bool, bumFloodSupported)
  KILN_ATTR(0x105, bool, singleVnIdTableUser)
  KILN_ATTR(0x106, bool, capabilityFlag)
};

/// Null if the chip's profile has none.
Dovel::Ptr<ChipAttributes const> tesselAttributes(Asic::ChipInfo const& chipInfo);

}  // namespace TesselCentral

namespace Tessel {

/// True if the agent of this chip also programs quality of service.
bool isQosFeatureAgent(Asic::ChipInfo const& chipInfo);

}  // namespace Tessel
