#include "platform/tessel/values/MemberTunnelUniqueNhId.h"

#include "platform/kiln/Json.h"

KILN_VALUE_CODEC(TesselCentral::MemberTunnelUniqueNhId, "TesselCentral::MemberTunnelUniqueNhId")
