#include "platform/kiln/AttributeDefinitions.h"
#include "platform/kilnsharedmem/EntityManager.h"

KILN_DESCRIBE(KilnSharedMem::MountGroup)
KILN_DESCRIBE(KilnSharedMem::EntityManager)
