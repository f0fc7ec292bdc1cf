#pragma once

#include <cstdint>

#include "platform/kiln/Codec.h"
#include "platform/kiln/RangeInt.h"

namespace Bridging {

/// The number of a VLAN.
using VlanId = Kiln::RangeInt<std::uint16_t, 1, 4094, "Bridging::VlanId::value < 1 or > 4094 not allowed">;

/// The number of a VLAN, or 0 for none.
using VlanIdOrNone = Kiln::RangeInt<std::uint16_t, 0, 4094, "Bridging::VlanIdOrNone::value > 4094 not allowed">;

}  // namespace Bridging

KILN_DECLARE_CODEC(Bridging::VlanId);
KILN_DECLARE_CODEC(Bridging::VlanIdOrNone);
