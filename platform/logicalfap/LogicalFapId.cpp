#include "platform/logicalfap/LogicalFapId.h"

#include "platform/kiln/Json.h"

KILN_VALUE_CODEC(LogicalFap::LogicalFapId, "LogicalFap::LogicalFapId")
