#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "platform/vane/HwTunnel.h"

/// A whole agent with its feature on a simulated chip, told about as a story.
namespace AgentTest {

inline constexpr auto unicast = Vane::vxlanTunnel_;
inline constexpr auto member = Vane::vxlanMemberTunnel_;
inline constexpr auto flood = Vane::vxlanHerTunnel_;
inline constexpr auto mcast = Vane::vxlanMcastTunnel_;
inline constexpr auto mcastHer = Vane::vxlanMcastHer_;
inline constexpr auto bum = Vane::vxlanBum_;
inline constexpr Vane::TunnelType tunnelTypes[] = {unicast, member, flood, mcast, mcastHer, bum};

/// Whether the next-hop id of the type's statuses is a version. Its tunnels have one generation, and next hops of their
/// own in place of an adjacency.
constexpr bool hasVersion(Vane::TunnelType type) { return type == mcast || type == mcastHer || type == bum; }

// One small number yields every name of the test world.
inline std::string vtep(unsigned n) { return "10.255.0." + std::to_string(n); }
inline std::string vtep6(unsigned n) { return "fd00::" + std::to_string(n); }
/// The address of a multicast tunnel.
inline std::string group(unsigned n) { return "239.1.1." + std::to_string(n); }

/// A next hop through uplink `n`: gateway 10.1.n.1, MAC 02:00:00:00:00:0n, port "Ethernet<n>", interface "Vlan<100+n>".
/// Uplinks 1 to 8 are ports of the switch, 9 is an aggregation of ports, 10 is a port that the chip doesn't have, and
/// those from 11 on name no port.
struct Hop {
  Hop(unsigned n, bool isResolved = true) : uplink(n), resolved(isResolved) {}
  unsigned uplink;
  bool resolved;
  friend auto operator<=>(Hop const&, Hop const&) = default;
};
using Hops = std::set<Hop>;
inline Hop uplink(unsigned n) { return {n}; }
inline Hop unresolved(unsigned n) { return {n, false}; }

/// The same as entries of a configuration; of a multicast tunnel's, the resolved ones.
Vane::NextHopEntrySet entriesOf(Hops const& hops, Vane::TunnelType type = unicast);

struct TunnelWish {
  std::optional<std::uint32_t> adjId;
  std::uint64_t genId = 0;       ///< 0: left to the agent.
  std::set<unsigned> vlans{10};  ///< Of a flood tunnel alone.
  friend bool operator==(TunnelWish const&, TunnelWish const&) = default;
};

/// All that a test wants of the switch: the naive model of its configuration.
struct Wish {
  bool vti = true;
  std::string localVtep, localVtep6, mlagVtep, mlagVtep6;  ///< Empty: none.
  std::uint16_t udpPort = 0;
  std::uint16_t udpSrcPort = 0, udpSrcPorts = 0;
  bool learning = false;
  bool evpn = false;
  bool dscp = false;
  std::uint8_t tos = 0;
  unsigned firstPort = 1;                            ///< The chip's number for Ethernet1.
  std::map<unsigned, std::set<unsigned>> vlanPorts;  ///< The ports of each underlay VLAN, "Ethernet<n>".
  std::map<std::uint32_t, Hops> adjacencies;
  std::map<std::pair<Vane::TunnelType, std::string>, TunnelWish> tunnels;

  std::map<unsigned, unsigned> mappings;          ///< VLANs and their VNIs.
  std::map<unsigned, unsigned> remotes;           ///< VNIs from elsewhere and their VLANs.
  bool vfis = false;                              ///< VFIs are numbered otherwise than VLANs.
  std::map<unsigned, std::set<unsigned>> groups;  ///< The VTEPs of each group, as for `vtep`.
  std::map<unsigned, unsigned> routes;            ///< Multicast groups, as for `group`, and the VLANs of their routes.
  bool ecn = false;

  /// All but `groups`, which are written into the state.
  std::string document() const;
};

}  // namespace AgentTest
