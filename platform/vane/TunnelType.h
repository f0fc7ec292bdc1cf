#pragma once

#include <cstdint>

#include "platform/kiln/Codec.h"
#include "platform/kiln/Text.h"

namespace Vane {

/// The kinds of tunnel that the feature serves. A member tunnel differs from a unicast tunnel in bit 3 alone.
enum TunnelType : std::uint8_t {
  vxlanTunnel_ = 1,
  vxlanHerTunnel_ = 7,
  vxlanMemberTunnel_ = 9,
  vxlanMcastTunnel_ = 10,
  vxlanMcastHer_ = 11,
  vxlanBum_ = 12,
};
BOOST_DESCRIBE_ENUM(TunnelType, vxlanTunnel_, vxlanHerTunnel_, vxlanMemberTunnel_, vxlanMcastTunnel_, vxlanMcastHer_,
                    vxlanBum_)
KILN_VALUE_STREAM(TunnelType)

}  // namespace Vane

KILN_DECLARE_CODEC(Vane::TunnelType);
