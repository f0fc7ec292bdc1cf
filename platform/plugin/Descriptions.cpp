#include "platform/kiln/AttributeDefinitions.h"
#include "platform/plugin/InfraMounterBase.h"
#include "platform/plugin/L3MounterBase.h"
#include "platform/plugin/L3MounterSmWrapper.h"
#include "platform/plugin/LibMounterBase.h"
#include "platform/plugin/Mounter.h"
#include "platform/plugin/SmRunningState.h"

KILN_DESCRIBE(TesselInfra::MounterBase)
KILN_DESCRIBE(TesselL3Unicast::L3MounterBase)
KILN_DESCRIBE(TesselL3Unicast::L3MounterSmWrapper)
KILN_DESCRIBE(TesselLib::MounterBase)
KILN_DESCRIBE(Plugin::Mounter)
KILN_DESCRIBE(TesselL3Unicast::SmRunningState)
