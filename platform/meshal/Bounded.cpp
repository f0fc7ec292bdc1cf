#include "platform/meshal/Bounded.h"

#include "platform/kiln/Json.h"

KILN_VALUE_CODEC(U2, "U2")
KILN_VALUE_CODEC(U4, "U4")
KILN_VALUE_CODEC(U7, "U7")
KILN_VALUE_CODEC(U24, "U24")
