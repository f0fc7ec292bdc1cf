#pragma once

#include <cstdint>

#include "platform/kiln/Text.h"

namespace TesselVxlan {

/// The chip's own form of a packet's congestion mark; the numbers are those of the two bits in an IP header.
enum EcnIntCnValues : std::uint8_t {
  ecnIntCnNonEct = 0,   ///< Not capable of congestion marks.
  ecnIntCnEcnEct1 = 1,  ///< Capable, first code.
  ecnIntCnEcnEct2 = 2,  ///< Capable, second code.
  ecnIntCnEcnCe = 3,    ///< Congestion experienced.
};
BOOST_DESCRIBE_ENUM(EcnIntCnValues, ecnIntCnNonEct, ecnIntCnEcnEct1, ecnIntCnEcnEct2, ecnIntCnEcnCe)
KILN_VALUE_STREAM(EcnIntCnValues)

}  // namespace TesselVxlan
