#include "platform/anvil/IncrementalHBitmap.h"
#include "platform/kiln/AttributeDefinitions.h"

KILN_DESCRIBE(Anvil::IncrementalHBitmap)
