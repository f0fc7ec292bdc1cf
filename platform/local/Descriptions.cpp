#include "platform/kiln/AttributeDefinitions.h"
#include "platform/local/EntityManager.h"

KILN_DESCRIBE(Local::EntityStore)
KILN_DESCRIBE(Local::EntityManager)
