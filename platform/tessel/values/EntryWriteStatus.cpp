#include "platform/tessel/values/EntryWriteStatus.h"

#include "platform/kiln/Json.h"

KILN_VALUE_CODEC(TesselCentral::EntryWriteStatus, "TesselCentral::EntryWriteStatus")
