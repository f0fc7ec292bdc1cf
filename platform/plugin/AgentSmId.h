#pragma once

#include <cstdint>

#include "platform/kiln/Codec.h"
#include "platform/kiln/Text.h"

namespace TesselL3Unicast {

/// Which feature of the agent a wrapper belongs to.
enum class AgentSmId : std::uint8_t { none = 0, vxlan = 9 };
BOOST_DESCRIBE_ENUM(AgentSmId, none, vxlan)

}  // namespace TesselL3Unicast

KILN_DECLARE_CODEC(TesselL3Unicast::AgentSmId);
