#include "platform/kiln/Codec.h"

#include <cstdint>
#include <string>

#include "platform/kiln/Json.h"

KILN_VALUE_CODEC(bool, "bool")
KILN_VALUE_CODEC(std::uint8_t, "u8")
KILN_VALUE_CODEC(std::uint16_t, "u16")
KILN_VALUE_CODEC(std::uint32_t, "u32")
KILN_VALUE_CODEC(std::uint64_t, "u64")
KILN_VALUE_CODEC(std::string, "string")
