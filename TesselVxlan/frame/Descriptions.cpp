#include "TesselVxlan/frame/TesselVxlanMounter.h"
#include "TesselVxlan/frame/TesselVxlanMounterSmWrapper.h"
#include "TesselVxlan/frame/TesselVxlanTypes.h"
#include "TesselVxlan/frame/TesselVxlanVaulterPStoreHelper.h"
#include "platform/kiln/AttributeDefinitions.h"

KILN_DESCRIBE(TesselVxlan::TesselVxlanMounter)
KILN_DESCRIBE(TesselVxlan::TesselVxlanMounterSmWrapper)
KILN_DESCRIBE(TesselVxlan::TunnelNextHopUpdateConfig)
KILN_DESCRIBE(TesselVxlan::VxlanVtepGroupTunnelIdMap)
KILN_DESCRIBE(TesselVxlan::VxlanVtepGroupTunnelIdMapDir)
KILN_DESCRIBE(TesselVxlan::TesselVxlanVaulterPStoreHelper)
