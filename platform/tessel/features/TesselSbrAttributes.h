#pragma once

#include "platform/tessel/features/TesselProfile.h"

namespace TesselTile {

/// The chip's codes for virtual port rows.
class TesselSbrAttributes final : public Asic::Feature {
  KILN_TYPE(TesselTile::TesselSbrAttributes, Asic::Feature)
  /// By number; 0 for a number that the chip does not have.
  KILN_SMALL_COLL(0x102, std::uint8_t, std::uint8_t, sbrCode)
};

}  // namespace TesselTile
