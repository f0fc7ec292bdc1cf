#pragma once

#include <cstdint>

#include "platform/kiln/Entity.h"
#include "platform/kiln/StrongId.h"
#include "platform/meshal/IpGenAddr.h"
#include "platform/vane/Ids.h"

namespace Vxlan {

/// The number of a group of tunnels that traffic is spread over. How many values name a group is counted in a table
/// beside them; main thread only.
class SwTunnelGroupId : public Kiln::StrongId<SwTunnelGroupId> {
 public:
  explicit SwTunnelGroupId(std::uint32_t value = 0) : StrongId(value) { refInc(); }
  SwTunnelGroupId(SwTunnelGroupId const& other) : StrongId(other) { refInc(); }
  SwTunnelGroupId& operator=(SwTunnelGroupId const& other);
  ~SwTunnelGroupId() { refDec(); }

  /// How many values there are for each number that has one.
  static Kiln::HashMap<std::uint32_t, std::uint32_t> const& refcountTable() { return counts(); }

 private:
  static Kiln::HashMap<std::uint32_t, std::uint32_t>& counts();
  void refInc() const;
  void refDec() const;
};

}  // namespace Vxlan

namespace Vane::VXLAN {

/// The key of a VTEP group. Its text is the group's number.
struct VaneVtepGroupKey : Kiln::StrongId<VaneVtepGroupKey> {
  using StrongId::StrongId;
  explicit VaneVtepGroupKey(Vxlan::SwTunnelGroupId const& group) : StrongId(group.value()) {}

  Vxlan::SwTunnelGroupId swTunnelGroupId() const { return Vxlan::SwTunnelGroupId(value()); }
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
  KILN_COLL(0x103, VaneNextHopId, bool, activeNextHopIdList)  ///< The groups' ids that routes and MAC entries use.

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
