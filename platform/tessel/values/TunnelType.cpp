#include "platform/tessel/values/TunnelType.h"

#include "platform/kiln/Json.h"

KILN_VALUE_CODEC(TesselVxlan::TunnelType, "TesselVxlan::TunnelType")
