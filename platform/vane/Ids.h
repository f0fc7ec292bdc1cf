#pragma once

#include <cstdint>

#include "platform/kiln/Codec.h"
#include "platform/kiln/StrongId.h"

namespace Vane {

/// The id under which a tunnel is known to the forwarding-abstraction layer: the hardware index that the chip's tables
/// gave, or one of the two values set apart. No id yet by default.
struct VaneTunnelId : Kiln::StrongId<VaneTunnelId, 0xFFFFFFFF> {
  using StrongId::StrongId;

  /// No id yet.
  static constexpr VaneTunnelId invalidTunnelId() { return VaneTunnelId(0xFFFFFFFF); }
  /// The write of the entry that would own the id failed. A valid id all the same.
  static constexpr VaneTunnelId unprogrammed() { return VaneTunnelId(0xFFFFFFFE); }
  constexpr bool valid() const { return value() != 0xFFFFFFFF; }
};

/// The same for a next hop.
struct VaneNextHopId : Kiln::StrongId<VaneNextHopId, 0xFFFFFFFF> {
  using StrongId::StrongId;

  static constexpr VaneNextHopId invalidNextHopId() { return VaneNextHopId(0xFFFFFFFF); }
  static constexpr VaneNextHopId unprogrammed() { return VaneNextHopId(0xFFFFFFFE); }
  constexpr bool valid() const { return value() != 0xFFFFFFFF; }
};

}  // namespace Vane

KILN_DECLARE_CODEC(Vane::VaneTunnelId);
KILN_DECLARE_CODEC(Vane::VaneNextHopId);
