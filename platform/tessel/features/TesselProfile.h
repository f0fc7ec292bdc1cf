#pragma once

#include "platform/asic/ChipInfo.h"

/// Access to the profile of a chip.
namespace TesselProfile {

/// The profile of the chip. REQUIRES: `chipInfo` names a chip.
inline Dovel::Ptr<Asic::ChipProfile const> activeChipProfile(Asic::ChipInfo const& chipInfo) {
  return chipInfo.chip()->profile();
}

/// One feature of the chip; null if the chip does not have it.
template <class T>
Dovel::Ptr<T const> feature(Asic::ChipInfo const& chipInfo) {
  return activeChipProfile(chipInfo)->feature<T>();
}

}  // namespace TesselProfile
