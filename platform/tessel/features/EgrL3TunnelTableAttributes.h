#pragma once

#include "platform/tessel/features/TesselProfile.h"

namespace TesselVxlan {

/// How outer headers are keyed and filled.
class EgrL3TunnelTableAttributes final : public Asic::Feature {
  KILN_TYPE(TesselVxlan::EgrL3TunnelTableAttributes, Asic::Feature)
  KILN_ATTR(0x102, bool, tunnelEncapEcnDefaults)
  /// IPv4 headers by source and destination; otherwise all tunnels of a source share one.
  KILN_ATTR(0x103, bool, ipv4DipInKey)
  /// The chip keeps only the upper half of an IPv6 destination.
  KILN_ATTR(0x104, bool, ipv6DipUpper64Only)
  KILN_ATTR(0x105, std::uint16_t, defaultUdpDestPort)
  KILN_ATTR(0x106, std::uint8_t, defaultHdrSelectA)
  KILN_ATTR(0x107, std::uint8_t, defaultHdrSelectB)
  KILN_ATTR(0x108, std::uint8_t, tunnelHdrSelectA)
  KILN_ATTR(0x109, std::uint8_t, tunnelHdrSelectB)
};

}  // namespace TesselVxlan
