#pragma once

#include "platform/tessel/features/TesselProfile.h"

namespace TesselVxlan {

/// The shape of the table chain, and the values of virtual port rows that differ from chip to chip.
class TesselChipAttributesVxlan final : public Asic::Feature {
  KILN_TYPE(TesselVxlan::TesselChipAttributesVxlan, Asic::Feature)
  /// The cascaded chain instead of overlay next hops.
  KILN_ATTR(0x102, bool, vxlanCascadedForwardingSupport)
  /// The tables for packets that are replicated to VTEPs, and the outgoing-interface records of both chains.
  KILN_ATTR(0x103, bool, vxlanHerNextHopTableSupported)
  KILN_ATTR(0x104, bool, vtepGroupSupported)
  /// 0 to 15 on every existing chip; the row checks the range.
  KILN_ATTR(0x105, std::uint16_t, vpClassCode)
  KILN_ATTR(0x106, std::uint8_t, defaultVpFlag)
  KILN_ATTR(0x107, bool, defaultNetworkSvpSupported)

 public:
  std::string fault() const override;
};

}  // namespace TesselVxlan
