#pragma once

#include "platform/tessel/features/TesselProfile.h"

namespace TesselCentral {

/// What all features of the agent may ask of a chip.
class ChipAttributes final : public Asic::Feature {
  KILN_TYPE(TesselCentral::ChipAttributes, Asic::Feature)
  /// A member tunnel's only next hop is programmed as a group of one.
  KILN_ATTR(0x102, bool, memberSingleHopEcmp)
  KILN_ATTR(0x103, bool, qosFeatureAgent)
};

/// What the chip can do for virtual networks; the host copies it into the record of that name.
class VxlanCapabilityAttributes final : public Asic::Feature {
  KILN_TYPE(TesselCentral::VxlanCapabilityAttributes, Asic::Feature)
  KILN_ATTR(0x102, bool, mcastTunnelSupported)
  KILN_ATTR(0x103, bool, underlayMcastSupported)
  KILN_ATTR(0x104, bool, bumFloodSupported)
  KILN_ATTR(0x105, bool, singleVnIdTableUser)
  KILN_ATTR(0x106, bool, capabilityFlag)
};

/// Never null: a chip whose profile doesn't say gives the defaults.
Dovel::Ptr<ChipAttributes const> chipAttributes(Asic::ChipInfo const& chipInfo);

}  // namespace TesselCentral

namespace Tessel {

/// Whether the agent of this chip programs quality of service too.
bool isQosFeatureAgent(Asic::ChipInfo const& chipInfo);

}  // namespace Tessel
