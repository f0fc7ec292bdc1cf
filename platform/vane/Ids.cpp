#include "platform/vane/Ids.h"

#include "platform/kiln/Json.h"

KILN_VALUE_CODEC(Vane::VaneTunnelId, "Vane::VaneTunnelId")
KILN_VALUE_CODEC(Vane::VaneNextHopId, "Vane::VaneNextHopId")
