#include "TesselVxlan/tunnel/HwTunnelProgrammerBase.h"
#include "TesselVxlan/tunnel/HwTunnelProgrammerMemberTunnel.h"
#include "TesselVxlan/tunnel/HwTunnelProgrammerUnicast.h"
#include "TesselVxlan/tunnel/TunnelBaseHelperSm.h"
#include "platform/kiln/AttributeDefinitions.h"

KILN_DESCRIBE(TesselVxlan::NestedSm_TunnelIdMap)
KILN_DESCRIBE(TesselVxlan::HwTunnelProgrammerBase)
KILN_DESCRIBE(TesselVxlan::HwTunnelProgrammerMemberTunnel)
KILN_DESCRIBE(TesselVxlan::HwTunnelProgrammerUnicast)
KILN_DESCRIBE(TesselVxlan::TunnelBaseHelperSm)
