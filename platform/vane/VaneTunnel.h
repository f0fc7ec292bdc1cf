#pragma once

#include <compare>
#include <cstdint>

#include "platform/dovel/Factory.h"
#include "platform/kiln/Entity.h"
#include "platform/meshal/IntfId.h"
#include "platform/meshal/IpGenAddr.h"
#include "platform/vane/Ids.h"
#include "platform/vane/NextHopEntrySet.h"
#include "platform/vane/TunnelType.h"

// The wanted tunnels as documents state them, and the ids that result. The forwarding abstraction turns the former into
// `HwTunnelConfig` and fills the latter from `HwTunnelStatus`.

namespace Vane {

/// The id of an underlay adjacency, or none: no route. In a document a number or null.
class AdjIdOrNone {
 public:
  constexpr AdjIdOrNone() = default;
  constexpr explicit AdjIdOrNone(std::uint32_t adjId) : adjId_(adjId), present_(true) {}

  constexpr explicit operator bool() const { return present_; }
  /// 0 for none.
  constexpr std::uint32_t value() const { return adjId_; }

  friend constexpr bool operator==(AdjIdOrNone const&, AdjIdOrNone const&) = default;
  friend constexpr auto operator<=>(AdjIdOrNone const&, AdjIdOrNone const&) = default;

 private:
  std::uint32_t adjId_ = 0;
  bool present_ = false;
};
/// The number, or "none".
void appendText(std::string& out, AdjIdOrNone const& adjId);
bool parseText(std::string_view text, AdjIdOrNone& out);
KILN_VALUE_STREAM(AdjIdOrNone)

/// The interface of a tunnel that names none.
inline Meshal::IntfId defaultTunnelIntf() { return Meshal::IntfId("Vxlan1"); }

/// One set of underlay next hops, shared by the tunnels that name it.
class VaneAdjacency final : public Kiln::Entity {
  KILN_TYPE(Vane::VaneAdjacency, Kiln::Entity)
  KILN_FIXED(0x102, std::uint32_t, adjId)
  KILN_ATTR(0x103, NextHopEntrySet, nextHops)

 public:
  explicit VaneAdjacency(std::uint32_t adjId) : adjId_(adjId) {}
  Dovel::String name() const override { return Kiln::toText(adjId_); }
};

/// One configured tunnel.
class VaneTunnelConfigEntry final : public Kiln::Entity {
  KILN_TYPE(Vane::VaneTunnelConfigEntry, Kiln::Entity)
  KILN_FIXED(0x102, Meshal::IpGenAddr, vtep)
  KILN_ATTR(0x103, Meshal::IpGenAddr, src)
  KILN_ATTR(0x104, AdjIdOrNone, adjId)
  KILN_ATTR(0x105, std::uint32_t, vrf)
  KILN_ATTR(0x106, Meshal::IntfId, intfId, defaultTunnelIntf())
  /// 0 leaves the generation to the forwarding abstraction.
  KILN_ATTR(0x107, std::uint64_t, genId)

 public:
  explicit VaneTunnelConfigEntry(Meshal::IpGenAddr const& vtep) : vtep_(vtep) {}
  Dovel::String name() const override { return Kiln::toText(vtep_); }
};

/// The configured tunnels of one type by remote VTEP, and the adjacencies that they use.
class VaneTunnelConfig final : public Kiln::NamedEntity {
  KILN_TYPE(Vane::VaneTunnelConfig, Kiln::NamedEntity)
  // Before the tunnels: a document fills the attributes in this order, and a tunnel's adjacency should exist first.
  KILN_ENTITY_COLL(0x102, std::uint32_t, VaneAdjacency, adjId, adjacency)
  KILN_ENTITY_COLL(0x103, Meshal::IpGenAddr, VaneTunnelConfigEntry, vtep, tunnel)

 public:
  using NamedEntity::NamedEntity;
};

/// The ids of one tunnel.
class VaneTunnelStatusEntry final : public Kiln::Entity {
  KILN_TYPE(Vane::VaneTunnelStatusEntry, Kiln::Entity)
  KILN_FIXED(0x102, Meshal::IpGenAddr, vtep)
  KILN_ATTR(0x103, VaneTunnelId, hwTunnelId)
  KILN_ATTR(0x104, VaneNextHopId, hwNextHopId)

 public:
  explicit VaneTunnelStatusEntry(Meshal::IpGenAddr const& vtep) : vtep_(vtep) {}
  Dovel::String name() const override { return Kiln::toText(vtep_); }
};

/// The ids of the tunnels of one type by remote VTEP.
class VaneTunnelStatus final : public Kiln::NamedEntity {
  KILN_TYPE(Vane::VaneTunnelStatus, Kiln::NamedEntity)
  KILN_ENTITY_COLL(0x102, Meshal::IpGenAddr, VaneTunnelStatusEntry, vtep, tunnelStatusEntry)

 public:
  using NamedEntity::NamedEntity;
};

/// Configured tunnels by tunnel type.
class VaneTunnelConfigDir final : public Kiln::NamedEntity {
  KILN_TYPE(Vane::VaneTunnelConfigDir, Kiln::NamedEntity)
  KILN_COLL(0x102, TunnelType, Dovel::Ptr<VaneTunnelConfig>, tunnelConfig)

 public:
  using NamedEntity::NamedEntity;
};

/// Tunnel ids by tunnel type.
class VaneTunnelStatusDir final : public Kiln::NamedEntity {
  KILN_TYPE(Vane::VaneTunnelStatusDir, Kiln::NamedEntity)
  KILN_COLL(0x102, TunnelType, Dovel::Ptr<VaneTunnelStatus>, tunnelStatus)

 public:
  using NamedEntity::NamedEntity;
};

/// The common data of the forwarding abstraction's state machines. The feature only passes it on.
class VaneCommonSmData final : public Kiln::NamedEntity {
  KILN_TYPE(Vane::VaneCommonSmData, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
};

inline constexpr Dovel::Factory<VaneTunnelConfigDir> vaneTunnelConfigDirFactory;
inline constexpr Dovel::Factory<VaneTunnelStatusDir> vaneTunnelStatusDirFactory;

}  // namespace Vane

KILN_DECLARE_CODEC(Vane::AdjIdOrNone);
