#include "TesselVxlan/frame/TesselVxlanTypes.h"
#include "platform/kiln/AttributeDefinitions.h"
