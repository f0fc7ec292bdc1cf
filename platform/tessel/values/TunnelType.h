#pragma once

#include <cstdint>

#include "platform/kiln/Codec.h"
#include "platform/kiln/Text.h"

namespace TesselVxlan {

/// The chain of egress records that a tunnel's packets take. Not the kind of tunnel, which is `Vane::TunnelType`.
enum class TunnelType : std::uint8_t { overlay = 0, her = 1 };
BOOST_DESCRIBE_ENUM(TunnelType, overlay, her)
KILN_VALUE_STREAM(TunnelType)

}  // namespace TesselVxlan

KILN_DECLARE_CODEC(TesselVxlan::TunnelType);
