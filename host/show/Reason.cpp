#include "host/show/Reason.h"

#include <algorithm>

#include "host/show/Chain.h"
#include "host/show/NextHops.h"
#include "platform/tessel/features/ChipAttributes.h"
#include "platform/tessel/features/L3NextHopAttributes.h"
#include "platform/tessel/l3common/DstPort.h"
#include "platform/tessel/l3common/TesselVxlanState.h"

namespace Host {

namespace {

using Text = std::optional<std::string>;

Text missingLocal(Agent const& agent, TunnelReport const& report) {
  auto const& vtep = report.vtep;
  auto const state = agent.local<TesselL3Common::TesselVxlanState>(kVxlanStatePath);
  auto local = state ? state->getLocalVtep(vtep.af()) : Meshal::IpGenAddr();
  // The common address of a pair of switches replaces its own.
  bool const shared = report.type == Vane::vxlanTunnel_ || report.type == Vane::vxlanHerTunnel_;
  if (state && shared && !state->mlagVtepAddr().isUnspecified()) local = state->mlagVtepAddr();
  if (local.isUnspecified()) return vtep.isIpv6() ? "no local VTEP for IPv6" : "no local VTEP";
  return state->udpPort() == 0 ? Text("no UDP port") : Text();
}

bool hasPort(Agent const& agent, Vane::NextHopEntry const& nextHop) {
  auto const attributes = agent.profile().feature<TesselL3Unicast::L3NextHopAttributes>();
  bool const l2 = attributes && attributes->l2IfSupported();
  return !TesselL3Common::getDstPort(agent.world().fcsd, nextHop.l2Intf(), nextHop.type(), l2).isInvalid();
}

/// Whether packets can be sent to it; of a multicast tunnel the type says nothing more.
bool isResolved(Vane::NextHopEntry const& hop) {
  return hop.type() == Vane::nextHopResolved || hop.type() == Vane::nextHopMcastTunnel();
}

std::string noPortFor(Vane::NextHopEntry const& hop) {
  return "no port for the next hop's interface " + (hop.l2Intf().empty() ? hop.l3Intf() : hop.l2Intf()).name();
}

/// What the import says of a neighbour that is not resolved; empty: nothing.
std::string whyUnresolved(Agent const& agent, Vane::NextHopEntry const& hop) {
  auto const& notes = agent.notes().unresolved;
  auto const why = notes.find({hop.addr(), std::string(hop.l3Intf().name())});
  return why == notes.end() ? "" : ", " + why->second;
}

std::string unresolved(Agent const& agent, Vane::NextHopEntry const& hop) {
  return "next hop unresolved: " + Kiln::toText(hop.addr()) + whyUnresolved(agent, hop);
}

Text missingNextHop(Agent const& agent, Vane::NextHopEntrySet const& nextHops) {
  auto const begin = nextHops.begin();
  auto const end = nextHops.end();
  if (std::none_of(begin, end, isResolved)) return unresolved(agent, *begin);
  auto const useless = [&](auto const& hop) { return !isResolved(hop) || !hasPort(agent, hop); };
  if (!std::all_of(begin, end, useless)) return {};
  return noPortFor(*std::find_if(begin, end, isResolved));
}

Text missingRoute(Agent const& agent, Vane::VaneTunnelConfig const& wanted, TunnelReport const& report) {
  if (!report.adjId) {
    auto const why = agent.notes().unreachable.find(report.vtep);
    return why == agent.notes().unreachable.end() ? "no route" : why->second;
  }
  auto const adjacency = "adjacency " + Kiln::toText(report.adjId.value());
  if (!wanted.adjacencyHas(report.adjId.value())) return adjacency + " is not in the state";
  if (report.nextHops.empty()) return adjacency + " has no next hop";
  return missingNextHop(agent, report.nextHops);
}

/// What keeps a tunnel of a multicast type from having rows.
Text missingMcast(Agent const& agent, TunnelReport const& report) {
  auto const capabilities = agent.chip().profile()->feature<TesselCentral::VxlanCapabilityAttributes>();
  if (report.type == Vane::vxlanMcastTunnel_) {
    if (!capabilities || !capabilities->mcastTunnelSupported()) return "no multicast tunnels on this chip";
    if (auto const local = missingLocal(agent, report)) return local;
    return report.nextHops.empty() ? Text("no next hop") : missingNextHop(agent, report.nextHops);
  }
  bool const served = capabilities && capabilities->bumFloodSupported();
  if (report.type == Vane::vxlanMcastHer_ && !served) return "no head-end copies of multicast traffic on this chip";
  if (!agent.wantedTunnels(Vane::vxlanHerTunnel_)->tunnelHas(report.vtep)) return "no flood list has this VTEP";
  return report.encapId ? Text() : "no next hop of its flood tunnel";
}

/// Whether the chip has groups of underlay next hops, which unicast tunnels need.
bool hasGroups(Agent const& agent) { return agent.chip().store("EcmpGroup1Table") != nullptr; }

Text missingRow(Agent const& agent, std::vector<NeededRow> const& needed) {
  if (auto const row = firstUnwritten(needed)) return refusalOf(*row);
  WrittenRows written(agent.chip());
  for (auto const& row : needed) {
    if (row.row && written.has(row)) continue;
    if (row.row) return "no next hop";
    return absenceOf(agent.chip(), row.table);
  }
  return {};
}

/// Those that the copies to the report's VTEP were made from.
Vane::NextHopEntrySet copiesNextHops(Agent const& agent, TunnelReport const& report) {
  if (report.type != Vane::vxlanMcastHer_ && report.type != Vane::vxlanBum_) return report.nextHops;
  auto const flood = agent.wantedTunnels(Vane::vxlanHerTunnel_);
  auto const& tunnel = flood->tunnel(report.vtep);
  auto const adjacency = tunnel && tunnel->adjId() ? flood->adjacency(tunnel->adjId().value()) : nullptr;
  return adjacency ? adjacency->nextHops() : Vane::NextHopEntrySet();
}

/// Whether a tunnel's overlay entry leads to no next hop because the chip has no groups.
bool lacksGroups(Agent const& agent, Vane::TunnelType type, std::vector<NeededRow> const& needed) {
  if (!hasOverlay(type) || hasGroups(agent)) return false;
  WrittenRows written(agent.chip());
  return std::none_of(needed.begin(), needed.end(), [&](auto const& row) { return row.sends && written.has(row); });
}

/// Whether copies to this next hop leave by `port`.
bool leavesBy(Vane::NextHopEntry const& hop, Meshal::IntfId port) {
  return (hop.l2Intf().empty() ? hop.l3Intf() : hop.l2Intf()) == port;
}

}  // namespace

std::optional<std::string> halfResolved(Agent const& agent, TunnelReport const& report) {
  auto const all = weighedNextHops(report.nextHops);
  Text first;
  std::size_t useful = 0;
  for (auto const& [hop, weight] : all) {
    bool const resolved = isResolved(hop);
    if (resolved && hasPort(agent, hop)) {
      ++useful;
    } else if (!first) {
      first = resolved ? noPortFor(hop) : unresolved(agent, hop);
    }
  }
  if (!first) return std::nullopt;
  return Kiln::toText(useful) + " of " + Kiln::toText(all.size()) + " next hops; " + *first;
}

std::optional<std::string> copyFault(Agent const& agent, RowFinder const& rows, TunnelReport const& report) {
  if (!report.encapId) return std::nullopt;
  auto const nextHops = copiesNextHops(agent, report);
  auto const copies = rows.copies(report.vtep);
  for (auto const& hop : nextHops) {
    // A multicast tunnel sends to each next hop that has a row, others to the one that they have chosen.
    if (report.type != Vane::vxlanMcastTunnel_ || !isResolved(hop)) continue;
    bool const sent =
        std::any_of(copies.begin(), copies.end(), [&](auto const& copy) { return leavesBy(hop, copy.port); });
    if (!sent) return noPortFor(hop);
  }
  for (auto const& copy : copies) {
    auto const hop = std::find_if(nextHops.begin(), nextHops.end(), [&](Vane::NextHopEntry const& entry) {
      return isResolved(entry) && entry.addr() == copy.nextHop && leavesBy(entry, copy.port);
    });
    auto const mac = copy.row.row ? nextHopMac(*copy.row.row) : std::nullopt;
    if (hop == nextHops.end() || !mac || *mac == hop->ethAddr()) continue;
    return "copy by " + copy.port.name() + " goes to a former MAC of " + Kiln::toText(copy.nextHop);
  }
  return std::nullopt;
}

std::string whyNotProgrammed(Agent const& agent, Vane::VaneTunnelConfig const* wanted, TunnelReport const& report) {
  if (!wanted) {
    if (auto const mcast = missingMcast(agent, report)) return *mcast;
  } else if (auto const local = missingLocal(agent, report)) {
    return *local;
  } else if (auto const route = missingRoute(agent, *wanted, report)) {
    return *route;
  }
  RowFinder const rows(agent);
  auto const needed = rows.needed(report.type, report.vtep);
  if (auto const row = missingRow(agent, needed)) {
    return lacksGroups(agent, report.type, needed) ? "no groups of underlay next hops on this chip" : *row;
  }
  if (auto const stale = copyFault(agent, rows, report)) return *stale;
  return report.tunnelId ? "no next-hop id" : "no tunnel id";
}

}  // namespace Host
