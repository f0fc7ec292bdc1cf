#include "platform/anvil/IncrementalHBitmap.h"
#include "platform/anvil/IoctlDrv.h"
#include "platform/kiln/AttributeDefinitions.h"

KILN_DESCRIBE(Anvil::IncrementalHBitmap)
KILN_DESCRIBE(Anvil::IoctlDrv)
KILN_DESCRIBE(Anvil::IoctlDrvFab)
