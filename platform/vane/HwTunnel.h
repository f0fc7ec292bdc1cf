#pragma once

#include <cstdint>

#include "platform/dovel/Factory.h"
#include "platform/kiln/Entity.h"
#include "platform/vane/Ids.h"
#include "platform/vane/NextHopEntrySet.h"
#include "platform/vane/TunnelKey.h"
#include "platform/vane/TunnelType.h"

// The interface between the forwarding abstraction and the feature: configuration in, status out, one of each per
// tunnel type.

namespace Vane {

/// The next hops of one underlay adjacency.
///
/// Shared by all tunnels over the adjacency. Never changes: other next hops are another list, which replaces this one
/// in the tunnels' entries.
class NextHopEntryList final : public Kiln::Entity {
  KILN_TYPE(Vane::NextHopEntryList, Kiln::Entity)
  KILN_FIXED(0x102, std::uint32_t, adjId)
  KILN_FIXED(0x103, NextHopEntrySet, nextHopEntry)

 public:
  NextHopEntryList(std::uint32_t adjId, NextHopEntrySet nextHopEntry);

  /// Tells this list from every other one of the process: lists of equal serial number have the same next hops.
  std::uint64_t serial() const { return serial_; }

 private:
  std::uint64_t serial_;
};

/// One configured tunnel. Written by the forwarding abstraction; the feature only reads it.
class HwTunnelConfigEntry final : public Kiln::Entity {
  KILN_TYPE(Vane::HwTunnelConfigEntry, Kiln::Entity)
  KILN_FIXED(0x102, TunnelKey, tunnelKey)
  /// Null until the next hops are resolved.
  KILN_ATTR(0x103, Dovel::Ptr<NextHopEntryList>, nextHopEntryList)
  KILN_ATTR(0x104, std::uint8_t, ttl)

 public:
  explicit HwTunnelConfigEntry(TunnelKey const& tunnelKey) : tunnelKey_(tunnelKey) {}
  Dovel::String name() const override { return Kiln::toText(tunnelKey_); }
};

/// The configured tunnels of one type. Written by the forwarding abstraction; the feature only reads it.
///
/// `hwInit` and `hwCleanup` are counters of the writer: the feature echoes each new value in its `HwTunnelStatus`.
class HwTunnelConfig final : public Kiln::Entity {
  KILN_TYPE(Vane::HwTunnelConfig, Kiln::Entity)
  KILN_FIXED(0x82, TunnelType, tunnelType)
  KILN_ATTR(0x83, std::uint32_t, hwInit)
  KILN_ATTR(0x84, std::uint32_t, hwCleanup)
  KILN_ENTITY_COLL(0x85, TunnelKey, HwTunnelConfigEntry, tunnelKey, hwTunnelConfigList)
  KILN_ID_COLL(0x86, VaneNextHopId, bool, activeNextHopIdList)

 public:
  explicit HwTunnelConfig(TunnelType tunnelType) : tunnelType_(tunnelType) {}
  Dovel::String name() const override { return Kiln::toText(tunnelType_); }
};

/// Configurations by tunnel type. `hwTunnelConfigIs(type)` creates an empty one, `hwTunnelConfigIs(config)` stores one.
class HwTunnelConfigDir final : public Kiln::NamedEntity {
  KILN_TYPE(Vane::HwTunnelConfigDir, Kiln::NamedEntity)
  KILN_ENTITY_COLL(0x102, TunnelType, HwTunnelConfig, tunnelType, hwTunnelConfig)

 public:
  using NamedEntity::NamedEntity;
};

/// The id of a tunnel's next hop and the list that it was made from; compared and written together.
struct HwNextHopStatusEntry {
  KILN_FIELD(VaneNextHopId, hwNextHopId){};
  KILN_FIELD(Dovel::Ptr<NextHopEntryList>, nextHopEntryList){};

  friend bool operator==(HwNextHopStatusEntry const&, HwNextHopStatusEntry const&) = default;
};
/// "{hwNextHopId=5,adjId=36}"; without the adjacency where there is no list.
void appendText(std::string& out, HwNextHopStatusEntry const& entry);
KILN_VALUE_STREAM(HwNextHopStatusEntry)

/// The status of one tunnel. Written by the feature.
class HwTunnelStatusEntry final : public Kiln::Entity {
  KILN_TYPE(Vane::HwTunnelStatusEntry, Kiln::Entity)
  KILN_FIXED(0x102, TunnelKey, tunnelKey)
  KILN_ATTR(0x103, VaneTunnelId, hwTunnelId)
  KILN_ATTR(0x104, HwNextHopStatusEntry, hwNextHopStatusEntry)

 public:
  explicit HwTunnelStatusEntry(TunnelKey const& tunnelKey) : tunnelKey_(tunnelKey) {}
  Dovel::String name() const override { return Kiln::toText(tunnelKey_); }
};

/// The statuses of the tunnels of one type, and the counters of its `HwTunnelConfig` as last handled. Written by the
/// feature.
class HwTunnelStatus final : public Kiln::Entity {
  KILN_TYPE(Vane::HwTunnelStatus, Kiln::Entity)
  KILN_FIXED(0x82, TunnelType, tunnelType)
  KILN_ATTR(0x83, std::uint32_t, hwInit)
  KILN_ATTR(0x84, std::uint32_t, hwCleanup)
  KILN_ENTITY_COLL(0x85, TunnelKey, HwTunnelStatusEntry, tunnelKey, tunnelStatus)

 public:
  explicit HwTunnelStatus(TunnelType tunnelType) : tunnelType_(tunnelType) {}
  Dovel::String name() const override { return Kiln::toText(tunnelType_); }
};

/// Statuses by tunnel type; as `HwTunnelConfigDir`.
class HwTunnelStatusDir final : public Kiln::NamedEntity {
  KILN_TYPE(Vane::HwTunnelStatusDir, Kiln::NamedEntity)
  KILN_ENTITY_COLL(0x102, TunnelType, HwTunnelStatus, tunnelType, hwTunnelStatus)

 public:
  using NamedEntity::NamedEntity;
};

inline constexpr Dovel::Factory<HwTunnelConfig> hwTunnelConfigFactory;
inline constexpr Dovel::Factory<HwTunnelStatus> hwTunnelStatusFactory;

}  // namespace Vane

KILN_DECLARE_CODEC(Vane::HwNextHopStatusEntry);
