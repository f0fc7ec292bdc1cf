#pragma once

#include <cstdint>

#include "platform/kiln/Entity.h"
#include "platform/meshal/IpGenAddr.h"

namespace TesselL3Common {

/// State that all tunnels of this agent share: local addresses, ports, and which fixed rows of the tables are written.
///
/// Written by the feature's watcher of the VXLAN interfaces and by the wrapper; the tunnel helpers watch it. An address
/// without a family means none.
class TesselVxlanState final : public Kiln::NamedEntity {
  KILN_TYPE(TesselL3Common::TesselVxlanState, Kiln::NamedEntity)
  KILN_ATTR(0x102, Meshal::IpGenAddr, mlagVtepAddr)
  KILN_ATTR(0x103, bool, udpSrcPortValid)
  KILN_ATTR(0x104, std::uint8_t, ttl, 64)  ///< 1 to 64.
  KILN_ATTR(0x105, Meshal::IpGenAddr, localVtep)
  KILN_ATTR(0x106, Meshal::IpGenAddr, localVtep6)
  KILN_ATTR(0x107, Meshal::IpGenAddr, vArpVtepAddr)
  KILN_ATTR(0x108, Meshal::IpGenAddr, vArpVtepAddr6)
  KILN_ATTR(0x10c, std::uint16_t, udpSrcPort)
  KILN_ATTR(0x10e, std::uint16_t, udpPort)  ///< 0: not configured.
  KILN_ATTR(0x110, bool, egrL3TunnelDefaultInit)
  KILN_ATTR(0x111, bool, vxlanDefaultEpreEnabled)
  KILN_ATTR(0x112, bool, vxlanDefaultEpreReady)
  KILN_ATTR(0x113, bool, vpDefaultInit)
  KILN_ATTR(0x114, bool, nextHop2DefaultInit)

 public:
  using NamedEntity::NamedEntity;

  /// The local address of a family; one without a family for any other `af`.
  Meshal::IpGenAddr const& getLocalVtep(Meshal::AddressFamily af) const;
};

/// Two flags of the start: the one that this feature sets when its status objects exist, and the one that the
/// forwarding abstraction sets when it has seen them. Neither is cleared again.
class TesselVxlanBootStatus final : public Kiln::NamedEntity {
  KILN_TYPE(TesselL3Common::TesselVxlanBootStatus, Kiln::NamedEntity)
  KILN_ATTR(0x102, bool, hwTunnelStatusInitialized)
  KILN_ATTR(0x202, bool, vaneTunnelSmReady)

 public:
  using NamedEntity::NamedEntity;
};

}  // namespace TesselL3Common
