#include "platform/evpn/EvpnStatus.h"
#include "platform/kiln/AttributeDefinitions.h"

KILN_DESCRIBE(Evpn::EvpnStatus)
