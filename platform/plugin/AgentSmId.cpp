#include "platform/plugin/AgentSmId.h"

#include "platform/kiln/Json.h"

KILN_VALUE_CODEC(TesselL3Unicast::AgentSmId, "TesselL3Unicast::AgentSmId")
