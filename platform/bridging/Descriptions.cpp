#include "platform/bridging/BridgingConfig.h"
#include "platform/bridging/VlanStatusDir.h"
#include "platform/kiln/AttributeDefinitions.h"

KILN_DESCRIBE(Bridging::Config)
KILN_DESCRIBE(Bridging::HwCapabilities)
KILN_DESCRIBE(Bridging::VlanStatus)
KILN_DESCRIBE(Bridging::VlanStatusDir)
