#pragma once

#include <string>
#include <string_view>

#include "tests/support/AgentWish.h"

namespace AgentTest {

/// One thing that happens to an agent.
///
/// Its numbers are absolute, so that it means the same whatever happened before: a story without some of its events is
/// a story.
struct Event {
  enum Kind : std::uint8_t {
    // Of one tunnel.
    over,        ///< Over adjacency n; 0: without a route.
    generation,  ///< A new configuration; nothing for a tunnel that has one generation.
    vlans,       ///< Of a flood tunnel: VLAN 10, 20, 30 for each bit of n.
    gone,
    // Of the switch.
    adjacency,  ///< Number n gets `hops`.
    noAdjacency,
    source,  ///< Local VTEP n; 0: none.
    source6,
    mlag,         ///< MLAG address n, and m of IPv6; 0: none. May be a local VTEP, too.
    sourcePorts,  ///< UDP source ports from n on; 0: none.
    udpPort,
    learning,
    evpn,
    vlanPorts,  ///< VLAN n gets port Ethernet1, Ethernet2 for each bit of m.
    dscp,
    tos,
    mapping,    ///< VLAN n has VNI m; 0: none.
    remote,     ///< VNI n has VLAN m; 0: none.
    vfis,       ///< VFIs are numbered otherwise than VLANs.
    vtepGroup,  ///< Group n has VTEPs 2, 3, ... for each bit of m; 0: it is removed.
    route,      ///< The route of multicast group n has VLAN m; 0: it is removed.
    ecn,
    vti,  ///< 0: the interface is removed.
    // Of a tunnel that the test itself writes.
    formerHops,  ///< A former generation, late, gets adjacency n.
    formersGone,
    react,  ///< From inside notification m of its status from now on: `Reaction` n.
    // Of chip and process.
    hold,     ///< Completions of table n are held back.
    holdAll,  ///< Those of all tables.
    deliver,  ///< The oldest n that are held back, one by one.
    release,
    refuseTable,  ///< Every write of chip table n, with state m.
    refuseNth,    ///< The n-th write from now on, with state m.
    heal,         ///< Nothing is refused any more.
    restart,
    kinds
  };
  /// What a subscriber does on the stack of a status.
  enum Reaction : std::uint32_t { remove, removeAndReturn, newGeneration, otherHops, reactions };

  Kind kind;
  Vane::TunnelType type = unicast;
  unsigned vtep = 0;  ///< As for `vtepOf`.
  std::uint32_t n = 0, m = 0;
  Hops hops{};
  bool more = false;  ///< One change together with the next event.
};

/// Tables whose completions are held back, and tables of the chip that refuse; the number of an event is an index here.
inline constexpr std::string_view kHeldTables[] = {
    "VirtualPortTableMerged", "IngL3EcmpMember0Table", "L3NextHop1Table",  "L3NextHop2Table",
    "EgrL3Ipv4TunnelTable",   "EcmpGroup1Table",       "HerNextHop1Table", "EpreCcbeNextHopRemapTable",
    "L2TunnelVnIdTable",      "VpLagGroupTable"};
inline constexpr std::string_view kRefusingTables[] = {"VirtualPort1Table",
                                                       "VirtualPort2Table",
                                                       "IngL3EcmpMember0Table",
                                                       "IngL3NextHop1",
                                                       "EgrL3NextHop1",
                                                       "IngL3NextHop2Table",
                                                       "EgrL3NextHop2",
                                                       "EgrL3Ipv4TunnelTable",
                                                       "EcmpGroup1Table",
                                                       "EcmpMember1Table",
                                                       "EgrL3Ipv6TunnelTable",
                                                       "L2TunnelIpv4DipTable",
                                                       "EgrL3Oif2",
                                                       "L2TunnelIpv4SipTable",
                                                       "HerNextHop1Table",
                                                       "HerNextHop2Table",
                                                       "EpreCcbeNextHopRemapTable",
                                                       "L2TunnelVnIdTable",
                                                       "EgrVfiToVniMappingTable",
                                                       "EgrAdaptSinglePortGroupTable",
                                                       "VpLagGroupTable",
                                                       "VpLagEcmpMember0Table",
                                                       "VxlanV4UnderlayMcastTable",
                                                       "FlexQosIngEcn"};

/// The VTEP of a number: of IPv6 from 100 on.
inline std::string vtepOf(unsigned n) { return n < 100 ? vtep(n) : vtep6(n - 100); }
/// The address of the tunnel of an event: of a multicast tunnel, a group.
inline std::string addressOf(Event const& event) {
  return event.type == mcast ? group(event.vtep) : vtepOf(event.vtep);
}
/// The line of an event in a story, such as "unicast 10.255.0.2 over adjacency 3".
std::string text(Event const& event);

}  // namespace AgentTest
