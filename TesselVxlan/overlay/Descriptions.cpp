#include "TesselVxlan/overlay/BumVtepSm.h"
#include "TesselVxlan/overlay/EpreEdevConfigCcbeSm.h"
#include "TesselVxlan/overlay/TesselVxlanEgrL3TunnelTablesProgrammer.h"
#include "TesselVxlan/overlay/TesselVxlanTunnelTermTableProgrammer.h"
#include "TesselVxlan/overlay/TesselVxlanVtiStatusSm.h"
#include "TesselVxlan/overlay/VxlanUnsupportedLogger.h"
#include "platform/kiln/AttributeDefinitions.h"

KILN_DESCRIBE(TesselVxlan::TesselVxlanEgrL3TunnelTablesProgrammer)
KILN_DESCRIBE(TesselVxlan::TesselVxlanTunnelTermTableProgrammer)
KILN_DESCRIBE(TesselVxlan::TesselVxlanVtiStatusSm)
KILN_DESCRIBE(TesselVxlan::VxlanUnsupportedLogger)
KILN_DESCRIBE(TesselVxlan::BumVtepSm)
KILN_DESCRIBE(TesselVxlan::EpreEdevConfigCcbeSm)
KILN_DESCRIBE(TesselVxlan::NestedSm_TesselVxlanBumVtepConfig)
KILN_DESCRIBE(TesselVxlan::NestedSm_TesselVxlanVtepHwTunnelConfig)
KILN_DESCRIBE(TesselVxlan::NestedSm_VlanStatus)
