#include "TesselVxlan/overlay/BumVtepSm.h"
#include "TesselVxlan/overlay/EpreEdevConfigCcbeSm.h"
#include "TesselVxlan/overlay/TesselVxlanECNSm.h"
#include "TesselVxlan/overlay/TesselVxlanEgrL3TunnelTablesProgrammer.h"
#include "TesselVxlan/overlay/TesselVxlanPortGroupSm.h"
#include "TesselVxlan/overlay/TesselVxlanTunnelTermTableProgrammer.h"
#include "TesselVxlan/overlay/TesselVxlanUnderlayMulticastSm.h"
#include "TesselVxlan/overlay/TesselVxlanVniSm.h"
#include "TesselVxlan/overlay/TesselVxlanVtepGroupSm.h"
#include "TesselVxlan/overlay/TesselVxlanVtiStatusSm.h"
#include "TesselVxlan/overlay/VlanVniMapSm.h"
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
KILN_DESCRIBE(TesselVxlan::VlanVniMapSm)
KILN_DESCRIBE(TesselVxlan::TesselVxlanHelperVni)
KILN_DESCRIBE(TesselVxlan::TesselVxlanHelperVniSm)
KILN_DESCRIBE(TesselVxlan::TesselVxlanHelperPortGroupSm)
KILN_DESCRIBE(TesselVxlan::TesselVxlanUnderlayMulticastSm)
KILN_DESCRIBE(TesselVxlan::TesselVxlanECNSm)
KILN_DESCRIBE(TesselVxlan::VxlanVtepGroupSm)
KILN_DESCRIBE(TesselVxlan::VxlanVtepGroupDirSm)
