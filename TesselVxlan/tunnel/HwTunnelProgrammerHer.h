#pragma once

#include "TesselVxlan/tunnel/HwTunnelProgrammerBase.h"
#include "platform/dovel/Factory.h"

namespace TesselVxlan {

/// Programs head-end replication tunnels: a copy of each flooded frame to one remote VTEP.
///
/// A tunnel uses one of its resolved next hops, chosen by the VTEP's address, so that the VTEPs spread over the next
/// hops; without one it has no flood entry, but its virtual port. While there is no local VTEP, a status with the ids 1
/// and 1 shows it as up. A tunnel that is created while remote VTEPs are learnt from a routing protocol, and not from
/// packets, holds the row that accepts the VTEP's packets until it ends.
class HwTunnelProgrammerHer final : public HwTunnelProgrammerBase {
  KILN_TYPE(TesselVxlan::HwTunnelProgrammerHer, TesselVxlan::HwTunnelProgrammerBase)

 public:
  /// REQUIRES: `inputs.tunnelType` is that of head-end replication tunnels.
  explicit HwTunnelProgrammerHer(TunnelProgrammerInputs const& inputs) : HwTunnelProgrammerBase(inputs) {}

 protected:
  bool doPreTunnelCreate(ConfigEntry const& entry) override;
  void doPostTunnelCreate(ConfigEntry const& entry) override;
  Meshal::IpGenAddr getVtepIp(Meshal::AddressFamily af) const override;
  void programTunnelTables(ConfigEntry const& entry, Handle const& vpHandle) override;
};

inline constexpr Dovel::Factory<HwTunnelProgrammerHer> hwTunnelProgrammerHerFactory;

}  // namespace TesselVxlan
