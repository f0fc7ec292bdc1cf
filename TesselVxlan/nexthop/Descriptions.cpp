#include "TesselVxlan/nexthop/HerNextHopTableProgrammer.h"
#include "TesselVxlan/nexthop/NextHopTableProgrammer.h"
#include "TesselVxlan/nexthop/NextHopTableProgrammerBase.h"
#include "TesselVxlan/nexthop/OverlayCascadedTableProgrammer.h"
#include "TesselVxlan/nexthop/OverlayNextHopTableProgrammer.h"
#include "TesselVxlan/nexthop/OverlayTableProgrammerBase.h"
#include "TesselVxlan/nexthop/UnderlayEcmpProgrammer.h"
#include "TesselVxlan/nexthop/VirtualPortTableProgrammer.h"
#include "TesselVxlan/nexthop/VpLagEcmpCascadeProgrammer.h"
#include "TesselVxlan/nexthop/VxlanL3Oif1TableProgrammer.h"
#include "platform/kiln/AttributeDefinitions.h"

KILN_DESCRIBE(TesselVxlan::NextHopTableProgrammer)
KILN_DESCRIBE(TesselVxlan::NextHopTableProgrammerBase)
KILN_DESCRIBE(TesselVxlan::OverlayCascadedTableProgrammer)
KILN_DESCRIBE(TesselVxlan::OverlayNextHopTableProgrammer)
KILN_DESCRIBE(TesselVxlan::OverlayTableProgrammer)
KILN_DESCRIBE(TesselVxlan::UnderlayEcmpProgrammer)
KILN_DESCRIBE(TesselVxlan::VirtualPortProgrammer)
KILN_DESCRIBE(TesselVxlan::VxlanL3Oif1TableProgrammer)
KILN_DESCRIBE(TesselVxlan::HerNextHopTableProgrammer)
KILN_DESCRIBE(TesselVxlan::VpLagEcmpProgrammer)
KILN_DESCRIBE(TesselVxlan::VpLagEcmpCascadeProgrammer)
