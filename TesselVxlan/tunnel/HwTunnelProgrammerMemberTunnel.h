#pragma once

#include "TesselVxlan/tunnel/HwTunnelProgrammerBase.h"
#include "platform/dovel/Factory.h"

namespace TesselVxlan {

/// Programs member tunnels: remote VTEPs that belong to a group of VTEPs.
///
/// Unlike a unicast tunnel's, a single next hop is a row of the next-hop table, unless the chip needs a group of one;
/// and the published next-hop id is the tunnel id, with an id beside it that changes with the adjacency.
class HwTunnelProgrammerMemberTunnel final : public HwTunnelProgrammerBase {
  KILN_TYPE(TesselVxlan::HwTunnelProgrammerMemberTunnel, TesselVxlan::HwTunnelProgrammerBase)

 public:
  /// REQUIRES: `inputs.tunnelType` is that of member tunnels.
  explicit HwTunnelProgrammerMemberTunnel(TunnelProgrammerInputs const& inputs) : HwTunnelProgrammerBase(inputs) {}

 protected:
  void programTunnelTables(ConfigEntry const& entry, Handle const& vpHandle) override;

 private:
  /// The underlay of the tunnel and whether it is a group; null if it has none.
  struct Underlay {
    Handle handle;
    bool ecmp = false;
  };
  Underlay programUnderlay(ConfigEntry const& entry);
  bool groupOfOne() const;
};

inline constexpr Dovel::Factory<HwTunnelProgrammerMemberTunnel> hwTunnelProgrammerMemberTunnelFactory;

}  // namespace TesselVxlan
