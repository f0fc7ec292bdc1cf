#pragma once

#include <cstdint>

#include "platform/kiln/Codec.h"
#include "platform/kiln/RangeInt.h"

/// Whole numbers of a given count of bits, as chip fields have them.
using U2 = Kiln::RangeInt<std::uint8_t, 0, 0x03, "U2::value < 0 or > 0x03 not allowed">;
using U4 = Kiln::RangeInt<std::uint8_t, 0, 0x0f, "U4::value < 0 or > 0x0f not allowed">;
using U7 = Kiln::RangeInt<std::uint8_t, 0, 0x7f, "U7::value < 0 or > 0x7f not allowed">;
using U24 = Kiln::RangeInt<std::uint32_t, 0, 0x00ffffff, "U24::value < 0 or > 0x00ffffff not allowed">;

KILN_DECLARE_CODEC(U2);
KILN_DECLARE_CODEC(U4);
KILN_DECLARE_CODEC(U7);
KILN_DECLARE_CODEC(U24);
