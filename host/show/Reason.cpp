#include "host/show/Reason.h"

#include <algorithm>

#include "host/show/Chain.h"
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
  // The common address of a pair of switches replaces its own, for unicast tunnels alone.
  if (state && report.type == Vane::vxlanTunnel_ && !state->mlagVtepAddr().isUnspecified())
    local = state->mlagVtepAddr();
  if (local.isUnspecified()) return vtep.isIpv6() ? "no local VTEP for IPv6" : "no local VTEP";
  return state->udpPort() == 0 ? Text("no UDP port") : Text();
}

bool hasPort(Agent const& agent, Vane::NextHopEntry const& nextHop) {
  auto const attributes = agent.profile().feature<TesselL3Unicast::L3NextHopAttributes>();
  bool const l2 = attributes && attributes->l2IfSupported();
  return !TesselL3Common::getDstPort(agent.world().fcsd, nextHop.l2Intf(), nextHop.type(), l2).isInvalid();
}

Text missingRoute(Agent const& agent, Vane::VaneTunnelConfig const& wanted, TunnelReport const& report) {
  if (!report.adjId) return "no route";
  auto const adjacency = "adjacency " + Kiln::toText(report.adjId.value());
  if (!wanted.adjacencyHas(report.adjId.value())) return adjacency + " is not in the state";
  if (report.nextHops.empty()) return adjacency + " has no next hop";
  auto const unresolved = [](auto const& hop) { return hop.type() != Vane::nextHopResolved; };
  auto const begin = report.nextHops.begin();
  auto const end = report.nextHops.end();
  if (std::all_of(begin, end, unresolved)) return "next hop unresolved: " + Kiln::toText(begin->addr());
  auto const useless = [&](auto const& hop) { return unresolved(hop) || !hasPort(agent, hop); };
  if (!std::all_of(begin, end, useless)) return {};
  auto const first = std::find_if_not(begin, end, unresolved);
  auto const intf = first->l2Intf().empty() ? first->l3Intf() : first->l2Intf();
  return "no port for the next hop's interface " + intf.name();
}

/// Whether the chip has groups of underlay next hops, which unicast tunnels need.
bool hasGroups(Agent const& agent) { return agent.chip().store("EcmpGroup1Table") != nullptr; }

Text missingRow(Chain const& chain) {
  if (auto const row = chain.firstUnwritten()) {
    auto const table = std::string(row->tableName());
    switch (row->state()) {
      case Asic::EntryState::full:
        return "table full: " + table;
      case Asic::EntryState::inProgress:
        return "write in progress: " + table;
      default:
        return "write failed: " + table;
    }
  }
  if (!chain.virtualPort()) return "no virtual port";
  if (!chain.overlay()) return "no overlay entry";
  return chain.nextHops() == 0 ? Text("no next hop") : Text();
}

}  // namespace

std::string whyNotProgrammed(Agent const& agent, Vane::VaneTunnelConfig const& wanted, TunnelReport const& report) {
  if (auto const local = missingLocal(agent, report)) return *local;
  if (auto const route = missingRoute(agent, wanted, report)) return *route;
  Chain const chain(agent.chip(), report.vtep);
  auto const row = missingRow(chain);
  if (row && chain.nextHops() == 0 && !hasGroups(agent)) return "no groups of underlay next hops on this chip";
  if (row) return *row;
  return report.tunnelId ? "no next-hop id" : "no tunnel id";
}

}  // namespace Host
