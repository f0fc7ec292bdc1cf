#include "platform/brisk/BriskMap.h"
#include "platform/kiln/AttributeDefinitions.h"

KILN_DESCRIBE(Brisk::BriskMapBase)
