#pragma once

#include "platform/kiln/Entity.h"
#include "platform/meshal/IpGenAddr.h"
#include "platform/vane/Ids.h"
#include "platform/vane/NextHopEntrySet.h"
#include "platform/vane/TunnelKey.h"
#include "platform/vane/TunnelType.h"

// Tunnels that the multicast features of the agent want, and the ids that result: to multicast groups, and to flood
// VTEPs of broadcast and of multicast traffic.

namespace Multicast::Vxlan {

/// One wanted tunnel, to a group or to a flood VTEP.
class TunnelConfig final : public Kiln::Entity {
  KILN_TYPE(Multicast::Vxlan::TunnelConfig, Kiln::Entity)
  KILN_FIXED(0x102, Meshal::IpGenAddr, addr)
  KILN_ATTR(0x103, Vane::NextHopEntrySet, nextHops)

 public:
  explicit TunnelConfig(Meshal::IpGenAddr const& addr) : addr_(addr) {}
  Dovel::String name() const override { return Kiln::toText(addr_); }
};

/// The wanted tunnels of one kind.
class TunnelConfigDir : public Kiln::NamedEntity {
  KILN_TYPE(Multicast::Vxlan::TunnelConfigDir, Kiln::NamedEntity)
  KILN_ENTITY_COLL(0x102, Meshal::IpGenAddr, TunnelConfig, addr, tunnel)

 public:
  using NamedEntity::NamedEntity;
};

/// The ids of one tunnel. The next-hop id grows with each change of what the tunnel's packets go to.
class TunnelStatus final : public Kiln::Entity {
  KILN_TYPE(Multicast::Vxlan::TunnelStatus, Kiln::Entity)
  KILN_FIXED(0x102, Meshal::IpGenAddr, addr)
  KILN_ATTR(0x103, Vane::VaneTunnelId, hwTunnelId)
  KILN_ATTR(0x104, Vane::VaneNextHopId, hwNextHopId)

 public:
  explicit TunnelStatus(Meshal::IpGenAddr const& addr) : addr_(addr) {}
  Dovel::String name() const override { return Kiln::toText(addr_); }
};

/// The ids of the tunnels of one kind.
class TunnelStatusDir : public Kiln::NamedEntity {
  KILN_TYPE(Multicast::Vxlan::TunnelStatusDir, Kiln::NamedEntity)
  KILN_ENTITY_COLL(0x102, Meshal::IpGenAddr, TunnelStatus, addr, tunnel)

 public:
  using NamedEntity::NamedEntity;
};

/// A kind of tunnel: its directories under a type of their own.
#define MCAST_TUNNEL_DIR(Class_, Base_)                          \
  class Class_ final : public Base_ {                            \
    KILN_TYPE(Multicast::Vxlan::Class_, Multicast::Vxlan::Base_) \
                                                                 \
   public:                                                       \
    using Base_::Base_;                                          \
  };

MCAST_TUNNEL_DIR(VxlanMcastTunnelConfigDir, TunnelConfigDir)
MCAST_TUNNEL_DIR(VxlanMcastTunnelStatusDir, TunnelStatusDir)
MCAST_TUNNEL_DIR(VxlanBumTunnelConfigDir, TunnelConfigDir)
MCAST_TUNNEL_DIR(VxlanBumTunnelStatusDir, TunnelStatusDir)
MCAST_TUNNEL_DIR(VxlanMcastHerTunnelConfigDir, TunnelConfigDir)
MCAST_TUNNEL_DIR(VxlanMcastHerTunnelStatusDir, TunnelStatusDir)

}  // namespace Multicast::Vxlan

namespace Multicast::Tunnel {

/// The wanted tunnels of all kinds, by the type of their hardware tunnels.
class ConfigDirColl final : public Kiln::NamedEntity {
  KILN_TYPE(Multicast::Tunnel::ConfigDirColl, Kiln::NamedEntity)
  KILN_SMALL_COLL(0x102, Vane::TunnelType, Dovel::Ptr<Vxlan::TunnelConfigDir>, tunnelConfigDir)

 public:
  using NamedEntity::NamedEntity;
};

/// The same for the ids.
class StatusDirColl final : public Kiln::NamedEntity {
  KILN_TYPE(Multicast::Tunnel::StatusDirColl, Kiln::NamedEntity)
  KILN_SMALL_COLL(0x102, Vane::TunnelType, Dovel::Ptr<Vxlan::TunnelStatusDir>, tunnelStatusDir)

 public:
  using NamedEntity::NamedEntity;
};

}  // namespace Multicast::Tunnel

namespace Vane {

/// The key of the tunnel to a group or a flood VTEP, of which there is one generation.
inline TunnelKey floodTunnelKey(Meshal::IpGenAddr const& addr) { return {{}, addr, 0, 0, {}}; }

}  // namespace Vane
