#include "TesselVxlan/frame/TesselVxlanMounter.h"
#include "TesselVxlan/frame/TesselVxlanMounterSmWrapper.h"
#include "TesselVxlan/frame/TesselVxlanTypes.h"
#include "platform/kiln/AttributeDefinitions.h"
