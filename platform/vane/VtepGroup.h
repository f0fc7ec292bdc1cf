#pragma once

#include <cstdint>

#include "platform/kiln/Entity.h"
#include "platform/kiln/StrongId.h"
#include "platform/meshal/IpGenAddr.h"
#include "platform/vane/Ids.h"

namespace Vxlan {

/// The number of a group of tunnels that traffic is spread over.
struct SwTunnelGroupId : Kiln::StrongId<SwTunnelGroupId> {
  using StrongId::StrongId;
};

}  // namespace Vxlan

namespace Vane::VXLAN {

/// The key of a VTEP group. Its text is the group's number.
struct VaneVtepGroupKey : Kiln::StrongId<VaneVtepGroupKey> {
  using StrongId::StrongId;
  constexpr explicit VaneVtepGroupKey(Vxlan::SwTunnelGroupId group) : StrongId(group.value()) {}

  constexpr Vxlan::SwTunnelGroupId swTunnelGroupId() const { return Vxlan::SwTunnelGroupId(value()); }
};

/// The configured members of one group. `version` grows with each change of them.
class VaneVtepGroupConfig final : public Kiln::Entity {
  KILN_TYPE(Vane::VXLAN::VaneVtepGroupConfig, Kiln::Entity)
  KILN_FIXED(0x102, VaneVtepGroupKey, vaneVtepGroupKey)
  KILN_ATTR(0x103, std::uint64_t, version)
  /// In the order of the addresses; the bool is not read.
  KILN_SMALL_COLL(0x104, Meshal::IpGenAddr, bool, vtepList)

 public:
  explicit VaneVtepGroupConfig(VaneVtepGroupKey const& key) : vaneVtepGroupKey_(key) {}
  Dovel::String name() const override { return Kiln::toText(vaneVtepGroupKey_); }
};

/// The configured groups.
class VaneVtepGroupConfigDir final : public Kiln::NamedEntity {
  KILN_TYPE(Vane::VXLAN::VaneVtepGroupConfigDir, Kiln::NamedEntity)
  KILN_ENTITY_COLL(0x102, VaneVtepGroupKey, VaneVtepGroupConfig, vaneVtepGroupKey, vaneVtepGroupConfig)

 public:
  using NamedEntity::NamedEntity;
};

/// The status of one group. Written by the feature.
class VaneVtepGroupStatus final : public Kiln::Entity {
  KILN_TYPE(Vane::VXLAN::VaneVtepGroupStatus, Kiln::Entity)
  KILN_FIXED(0x102, VaneVtepGroupKey, vaneVtepGroupKey)
  KILN_ATTR(0x103, VaneTunnelId, hwTunnelId)
  KILN_ATTR(0x104, VaneNextHopId, hwNextHopId)
  KILN_SMALL_COLL(0x105, Meshal::IpGenAddr, bool, activeVtepList)

 public:
  explicit VaneVtepGroupStatus(VaneVtepGroupKey const& key) : vaneVtepGroupKey_(key) {}
  Dovel::String name() const override { return Kiln::toText(vaneVtepGroupKey_); }
};

/// The statuses of the groups.
class VaneVtepGroupStatusDir final : public Kiln::NamedEntity {
  KILN_TYPE(Vane::VXLAN::VaneVtepGroupStatusDir, Kiln::NamedEntity)
  KILN_ENTITY_COLL(0x102, VaneVtepGroupKey, VaneVtepGroupStatus, vaneVtepGroupKey, vaneVtepGroupStatus)

 public:
  using NamedEntity::NamedEntity;
};

/// Stored for its consumers; not read here.
class VtepGroupConfigDir final : public Kiln::NamedEntity {
  KILN_TYPE(Vane::VXLAN::VtepGroupConfigDir, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
};

/// Stored for its consumers; not read here.
class VtepGroupStatusDir final : public Kiln::NamedEntity {
  KILN_TYPE(Vane::VXLAN::VtepGroupStatusDir, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
};

}  // namespace Vane::VXLAN

KILN_DECLARE_CODEC(Vxlan::SwTunnelGroupId);
KILN_DECLARE_CODEC(Vane::VXLAN::VaneVtepGroupKey);
