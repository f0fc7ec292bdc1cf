#pragma once

#include <cstdint>

#include "platform/kiln/Codec.h"
#include "platform/kiln/Describe.h"

namespace TesselCentral {

/// Distinguishes the next hop of a member tunnel from the others of its VTEP. Zeros: none.
struct MemberTunnelUniqueNhId {
  KILN_FIELD(std::uint32_t, adjId) = 0;
  KILN_FIELD(std::uint32_t, uniqueNhId) = 0;

  static bool isEq(MemberTunnelUniqueNhId const& a, MemberTunnelUniqueNhId const& b) {
    return a.adjId_ == b.adjId_ && a.uniqueNhId_ == b.uniqueNhId_;
  }
};
BOOST_DESCRIBE_STRUCT(MemberTunnelUniqueNhId, (), (adjId_, uniqueNhId_))
KILN_VALUE_OPS(MemberTunnelUniqueNhId)

}  // namespace TesselCentral

KILN_DECLARE_CODEC(TesselCentral::MemberTunnelUniqueNhId);
