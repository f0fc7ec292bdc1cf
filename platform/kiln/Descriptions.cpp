#include "platform/kiln/AttributeDefinitions.h"
#include "platform/kiln/Dir.h"
#include "platform/kiln/Entity.h"

KILN_DESCRIBE(Kiln::Dir)
KILN_DESCRIBE(Kiln::Entity)
KILN_DESCRIBE(Kiln::NamedEntity)
KILN_DESCRIBE(Kiln::RevisedEntity)
