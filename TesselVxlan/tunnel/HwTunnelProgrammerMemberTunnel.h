#pragma once

#include "TesselVxlan/tunnel/HwTunnelProgrammerBase.h"

namespace TesselVxlan {

/// Programs member tunnels: remote VTEPs that belong to a group of VTEPs.
///
/// Unlike a unicast tunnel, a single next hop goes through the next-hop table, unless the chip wants a group of one;
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

Dovel::Ptr<HwTunnelProgrammerMemberTunnel> hwTunnelProgrammerMemberTunnelFactory(TunnelProgrammerInputs const& inputs);

}  // namespace TesselVxlan
