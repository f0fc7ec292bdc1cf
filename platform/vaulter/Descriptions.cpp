#include "platform/kiln/AttributeDefinitions.h"
#include "platform/vaulter/VaulterPStoreHelper.h"

KILN_DESCRIBE(Vaulter::VaulterPStoreHelper)
