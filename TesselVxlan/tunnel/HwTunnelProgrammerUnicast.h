#pragma once

#include "TesselVxlan/tunnel/HwTunnelProgrammerBase.h"
#include "platform/dovel/Factory.h"

namespace TesselVxlan {

/// Programs unicast tunnels: traffic to one remote VTEP, through an overlay entry over the underlay.
///
/// Every tunnel with a resolved next hop uses an ECMP group, also for a single one; a tunnel without uses the default
/// next hop, and its overlay entry is rewritten when next hops are resolved. Its ids are published in both cases.
class HwTunnelProgrammerUnicast final : public HwTunnelProgrammerBase {
  KILN_TYPE(TesselVxlan::HwTunnelProgrammerUnicast, TesselVxlan::HwTunnelProgrammerBase)

 public:
  /// REQUIRES: `inputs.tunnelType` is that of unicast tunnels.
  explicit HwTunnelProgrammerUnicast(TunnelProgrammerInputs const& inputs) : HwTunnelProgrammerBase(inputs) {}

 protected:
  Meshal::IpGenAddr getVtepIp(Meshal::AddressFamily af) const override { return getVtepIpHelper(af); }
  void programTunnelTables(ConfigEntry const& entry, Handle const& vpHandle) override;
};

inline constexpr Dovel::Factory<HwTunnelProgrammerUnicast> hwTunnelProgrammerUnicastFactory;

}  // namespace TesselVxlan
