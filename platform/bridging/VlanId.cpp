#include "platform/bridging/VlanId.h"

#include "platform/kiln/Json.h"

KILN_VALUE_CODEC(Bridging::VlanId, "Bridging::VlanId")
KILN_VALUE_CODEC(Bridging::VlanIdOrNone, "Bridging::VlanIdOrNone")
