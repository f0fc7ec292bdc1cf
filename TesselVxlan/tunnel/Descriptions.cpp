#include "TesselVxlan/tunnel/HerTunnelHelperSm.h"
#include "TesselVxlan/tunnel/HwTunnelProgrammerBase.h"
#include "TesselVxlan/tunnel/HwTunnelProgrammerHer.h"
#include "TesselVxlan/tunnel/HwTunnelProgrammerMcast.h"
#include "TesselVxlan/tunnel/HwTunnelProgrammerMemberTunnel.h"
#include "TesselVxlan/tunnel/HwTunnelProgrammerUnicast.h"
#include "TesselVxlan/tunnel/TunnelBaseHelperSm.h"
#include "platform/kiln/AttributeDefinitions.h"

KILN_DESCRIBE(TesselVxlan::NestedSm_TunnelIdMap)
KILN_DESCRIBE(TesselVxlan::HwTunnelProgrammerBase)
KILN_DESCRIBE(TesselVxlan::HwTunnelProgrammerMemberTunnel)
KILN_DESCRIBE(TesselVxlan::HwTunnelProgrammerUnicast)
KILN_DESCRIBE(TesselVxlan::TunnelBaseHelperSm)
KILN_DESCRIBE(TesselVxlan::HerTunnelHelperSm)
KILN_DESCRIBE(TesselVxlan::HwTunnelProgrammerHer)
KILN_DESCRIBE(TesselVxlan::HwTunnelProgrammerMcast)
KILN_DESCRIBE(TesselVxlan::NestedSm_VaneVxlanHwHerVtepConfig)
