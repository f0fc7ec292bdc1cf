#include "platform/vane/TunnelType.h"

#include "platform/kiln/Json.h"

KILN_VALUE_CODEC(Vane::TunnelType, "Vane::TunnelType")
