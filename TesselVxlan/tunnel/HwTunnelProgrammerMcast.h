#pragma once

#include "TesselVxlan/tunnel/HwTunnelProgrammerBase.h"
#include "platform/dovel/Factory.h"

namespace TesselVxlan {

/// Programs tunnels to multicast groups, over each next hop that has a row.
///
/// The next-hop id of a status is another writer's: it counts the changes of what the tunnel's packets go to.
class HwTunnelProgrammerMcast final : public HwTunnelProgrammerBase {
  KILN_TYPE(TesselVxlan::HwTunnelProgrammerMcast, TesselVxlan::HwTunnelProgrammerBase)

 public:
  /// REQUIRES: `inputs.tunnelType` is that of multicast tunnels, whose next hops are of type `nextHopMcastTunnel()`.
  explicit HwTunnelProgrammerMcast(TunnelProgrammerInputs const& inputs) : HwTunnelProgrammerBase(inputs) {}

 protected:
  void programTunnelTables(ConfigEntry const& entry, Handle const& vpHandle) override;
  void maybeUpdateHwTunnelIdNhId(Meshal::IpGenAddr const& vtep) override;

 private:
  Handle insertNextHop(Vane::TunnelKey const& key, Vane::NextHopEntry const& nextHop, Handle const& vpHandle);
};

inline constexpr Dovel::Factory<HwTunnelProgrammerMcast> hwTunnelProgrammerMcastFactory;

}  // namespace TesselVxlan
