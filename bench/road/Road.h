#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "platform/vane/HwTunnel.h"

namespace RoadBench {

inline constexpr std::uint32_t kAdjacencies = 64;
inline constexpr std::uint32_t kNextHops = 4;  ///< Of each adjacency.
inline constexpr std::uint32_t kPorts = 64;
/// Entries that are written between two turns of the agent's loop.
inline constexpr std::uint32_t kBurst = 64;
inline constexpr std::uint16_t kUdpPort = 4789;

/// What is wanted at each VTEP.
enum class Kind : std::uint8_t {
  unicast,
  member,  ///< Of VTEP groups.
  her,     ///< Head-end replication.
  flood,   ///< The same, from the flood list of one VLAN.
  mixed,   ///< Unicast and head-end replication.
  mcast,
};

/// The overlay of `tunnels` remote VTEPs: what both the agent and the floor are given. Always the same for the same
/// size.
struct Road {
  explicit Road(std::uint32_t tunnels, Kind kind = Kind::unicast);

  Meshal::IpGenAddr vtep(std::uint32_t tunnel) const;
  Vane::TunnelKey key(std::uint32_t tunnel) const;
  static Vane::NextHopEntrySet nextHops(std::uint32_t adjacency, Vane::TunnelType type = Vane::vxlanTunnel_);
  static std::uint32_t adjacencyOf(std::uint32_t tunnel) { return tunnel % kAdjacencies; }
  /// The state of the switch itself: interfaces, ports, the VTI. With all tunnels wanted on demand.
  std::string document(bool withTunnels) const;

  /// One change of a tunnel's next hops: over another adjacency, or over the same in a new list.
  struct Update {
    std::uint32_t tunnel;
    std::uint32_t adjacency;
  };
  /// A tenth of them changes something.
  std::vector<Update> updates(std::uint32_t count) const;
  /// All tunnels in random order.
  std::vector<std::uint32_t> shuffled() const;

  /// The types of the tunnels at each VTEP.
  std::vector<Vane::TunnelType> types() const;
  bool has(Vane::TunnelType type) const;

  std::uint32_t tunnels;  ///< VTEPs, or groups.
  Kind kind;
};

}  // namespace RoadBench
