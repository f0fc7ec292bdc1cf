#include "platform/asic/Chip.h"
#include "platform/asic/ChipProfile.h"
#include "platform/asic/EntryHandle.h"
#include "platform/asic/Feature.h"
#include "platform/asic/Store.h"
#include "platform/asic/SwTable.h"
#include "platform/kiln/AttributeDefinitions.h"

KILN_DESCRIBE(Asic::Chip)
KILN_DESCRIBE(Asic::ChipProfile)
KILN_DESCRIBE(Asic::EntryHandle)
KILN_DESCRIBE(Asic::Feature)
KILN_DESCRIBE(Asic::StoreBase)
KILN_DESCRIBE(Asic::SwTableBase)
KILN_DESCRIBE(Asic::SwTable)
