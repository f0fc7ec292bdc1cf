#include "platform/vane/VtepGroup.h"

#include "platform/kiln/Json.h"

KILN_VALUE_CODEC(Vxlan::SwTunnelGroupId, "Vxlan::SwTunnelGroupId")
KILN_VALUE_CODEC(Vane::VXLAN::VaneVtepGroupKey, "Vane::VXLAN::VaneVtepGroupKey")
