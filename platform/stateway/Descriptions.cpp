#include "platform/kiln/AttributeDefinitions.h"
#include "platform/stateway/EntityManager.h"
#include "platform/stateway/MountGroup.h"
#include "platform/stateway/Mounter.h"

KILN_DESCRIBE(Stateway::EntityManager)
KILN_DESCRIBE(Stateway::MountGroup)
KILN_DESCRIBE(Stateway::Mounter)
