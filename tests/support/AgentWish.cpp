#include "tests/support/AgentWish.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "platform/kiln/Fmt.h"

namespace AgentTest {

namespace {

constexpr unsigned ports = 9, lag = 9, uplinks = 12;
constexpr unsigned overlayVlans = 40, firstVfi = 1000;

/// Members of a JSON object, or elements of an array.
using List = std::vector<std::string>;

std::string object(List const& members) { return fmt::format("{{{}}}", fmt::join(members, ",")); }

std::string hopText(Vane::NextHopEntry const& hop) {
  return fmt::format(R"({{"type":"{}","addr":"{}","ethAddr":"{}","l2Intf":"{}","l3Intf":"{}"}})", hop.type(),
                     hop.addr(), hop.ethAddr(), hop.l2Intf(), hop.l3Intf());
}

std::string vtiText(Wish const& wish) {
  if (!wish.vti) return "{}";
  List fields{fmt::format(R"("udpPort":{})", wish.udpPort)};
  for (auto const& [name, addr] : {std::pair("srcAddr", wish.localVtep),
                                   {"srcAddrV6", wish.localVtep6},
                                   {"mlagVtepAddr", wish.mlagVtep},
                                   {"mlagVtepAddr6", wish.mlagVtep6}}) {
    if (!addr.empty()) fields.push_back(fmt::format(R"("{}":"{}")", name, addr));
  }
  if (wish.udpSrcPorts != 0)
    fields.push_back(fmt::format(R"("udpSrcPort":{},"udpSrcPortLength":{})", wish.udpSrcPort, wish.udpSrcPorts));
  return R"({"Vxlan1":)" + object(fields) + '}';
}

std::string nextHopsText(Hops const& hops) {
  List entries;
  for (auto const& hop : entriesOf(hops)) entries.push_back(hopText(hop));
  return fmt::format(R"({{"nextHops":[{}]}})", fmt::join(entries, ","));
}

std::string adjacenciesText(Wish const& wish, Vane::TunnelType type) {
  List adjacencies;
  auto const first = wish.tunnels.lower_bound({type, ""});
  if (first == wish.tunnels.end() || first->first.first != type) return "{}";
  for (auto const& [id, hops] : wish.adjacencies)
    adjacencies.push_back(fmt::format(R"("{}":{})", id, nextHopsText(hops)));
  return object(adjacencies);
}

std::string tunnelsText(Wish const& wish, Vane::TunnelType type) {
  List tunnels;
  for (auto const& [key, tunnel] : wish.tunnels) {
    if (key.first != type) continue;
    List fields;
    if (tunnel.adjId) fields.push_back(fmt::format(R"("adjId":{})", *tunnel.adjId));
    if (tunnel.genId != 0) fields.push_back(fmt::format(R"("genId":{})", tunnel.genId));
    tunnels.push_back(fmt::format(R"("{}":{})", key.second, object(fields)));
  }
  return fmt::format(R"({{"adjacency":{},"tunnel":{}}})", adjacenciesText(wish, type), object(tunnels));
}

std::string floodListsText(Wish const& wish) {
  std::map<unsigned, List> lists;
  for (auto const& [key, tunnel] : wish.tunnels) {
    if (key.first != flood) continue;
    for (auto const vlan : tunnel.vlans) lists[vlan].push_back(fmt::format(R"("{}":true)", key.second));
  }
  List members;
  for (auto const& [vlan, vteps] : lists) members.push_back(fmt::format(R"("{}":{{"vtep":{}}})", vlan, object(vteps)));
  return object(members);
}

std::string floodRoutesText(Wish const& wish) {
  List routes;
  for (auto const& [key, tunnel] : wish.tunnels) {
    if (key.first == flood && tunnel.adjId) routes.push_back(fmt::format(R"("{}":{})", key.second, *tunnel.adjId));
  }
  return object(routes);
}

/// The tunnels of a type that has its next hops in them.
std::string ownHopsText(Wish const& wish, Vane::TunnelType type) {
  List tunnels;
  for (auto const& [key, tunnel] : wish.tunnels) {
    if (key.first != type) continue;
    auto const found = tunnel.adjId ? wish.adjacencies.find(*tunnel.adjId) : wish.adjacencies.end();
    tunnels.push_back(
        fmt::format(R"("{}":{})", key.second, found == wish.adjacencies.end() ? "{}" : nextHopsText(found->second)));
  }
  return object(tunnels);
}

std::string vlanPortsText(Wish const& wish) {
  List vlans;
  for (auto const& [vlan, members] : wish.vlanPorts) {
    List states;
    for (auto const port : members) states.push_back(fmt::format(R"("Ethernet{}":1)", port));
    vlans.push_back(fmt::format(R"("{}":{{"portState":{}}})", vlan, object(states)));
  }
  return object(vlans);
}

std::string switchText(Wish const& wish) {
  List port, l3Intf;
  for (unsigned n = 1; n <= ports; ++n) {
    port.push_back(fmt::format(R"("Ethernet{}":{{"kind":"{}","number":{}}})", n, n == lag ? "lag" : "port",
                               n == 1 ? wish.firstPort : n));
  }
  for (unsigned n = 1; n <= uplinks; ++n) l3Intf.push_back(fmt::format(R"("Vlan{}":{})", 100 + n, 100 + n));
  return fmt::format(R"("hardware/tessel/port/config":{{"port":{}}},"vane/l3IntfTable":{{"l3Intf":{}}})", object(port),
                     object(l3Intf));
}

/// What is there of the overlay; nothing else, so that a document without it resets it.
std::string overlayText(Wish const& wish) {
  auto text = fmt::format(
      R"("vxlan/ecnConfig":{{"enabled":{}}},"qos/hardware/tessel/trust/status/slice/1":{{"tosBasePtr":{}}},)", wish.ecn,
      wish.tos);
  List local, remote, toVfi, toVlan;
  for (auto const& [vlan, vni] : wish.mappings)
    local.push_back(fmt::format(R"("Vxlan1, vlanId:{0}":{{"vlanId":{0},"vni":{1},"action":0}})", vlan, vni));
  for (auto const& [vni, vlan] : wish.remotes)
    remote.push_back(fmt::format(R"("Vxlan1, vni:{1}":{{"vlanId":{0},"vni":{1},"action":0}})", vlan, vni));
  text += fmt::format(R"("hardware/tessel/tunnel/vxlan/helperVniConfig":{{"vlanVniMap":{},"remoteVniConfig":{}}},)",
                      object(local), object(remote));
  if (!wish.vfis) return text;
  for (unsigned vlan = 1; vlan <= overlayVlans; ++vlan) {
    toVfi.push_back(fmt::format(R"("{}":{})", vlan, vlan + firstVfi));
    toVlan.push_back(fmt::format(R"("{}":{})", vlan + firstVfi, vlan));
  }
  return text + fmt::format(R"("hardware/tessel/centralStatus/vfiCapabilityStatus":{{"vfiEnabled":true,)"
                            R"("vfiMappingEnabled":true,"vlan4095Vfi":4001,"vlan0Vfi":4000}},)"
                            R"("hardware/tessel/vfi/l2Status/vlanVfiMap":{{"vlanToVfi":{},"vfiToVlan":{}}},)",
                            object(toVfi), object(toVlan));
}

/// Not every agent has routes.
std::string routesText(Wish const& wish) {
  if (wish.routes.empty()) return "";
  List routes;
  for (auto const& [n, vlan] : wish.routes) routes.push_back(fmt::format(R"("10.0.0.9, group:{}":{})", group(n), vlan));
  return fmt::format(R"(,"routing/multicast/vxlanDecap":{{"mroute":{}}})", object(routes));
}

}  // namespace

Vane::NextHopEntrySet entriesOf(Hops const& hops, Vane::TunnelType type) {
  Vane::NextHopEntrySet entries;
  auto const resolved = type == mcast ? Vane::nextHopMcastTunnel() : Vane::nextHopResolved;
  for (auto const& hop : hops) {
    if (type == mcast && !hop.resolved) continue;
    Vane::NextHopEntry entry;
    entry.typeIs(hop.resolved ? resolved : Vane::nextHopUnresolved);
    entry.addrIs(Meshal::IpGenAddr(fmt::format("10.1.{}.1", hop.uplink)));
    if (hop.resolved) entry.ethAddrIs(Meshal::EthAddr(0x020000000000 + hop.uplink));
    if (hop.uplink <= 10) entry.l2IntfIs(Meshal::IntfId(fmt::format("Ethernet{}", hop.uplink)));
    entry.l3IntfIs(Meshal::IntfId(fmt::format("Vlan{}", 100 + hop.uplink)));
    entries.insert(entry);
  }
  return entries;
}

std::string Wish::document() const {
  return fmt::format(
      R"({{"stateway":{{{}{},"interface/status/eth/vxlan":{{"vtiStatus":{}}},"vxlan/config":{{"dscpPropagation":{}}},)"
      R"("hardware/tessel/tunnel/vxlan/vxlanInfo/vaneGlobalVtiStatus":{{"dataPathLearning":{}}},)"
      R"("evpn/status":{{"evpnEnabled":{}}},)"
      R"("hardware/tessel/tunnel/configDir/vxlanTunnel":{},"hardware/tessel/tunnel/configDir/vxlanMemberTunnel":{},)"
      R"("hardware/tessel/tunnel/configDir/vxlanHwHerTunnel":{{"adjacency":{}}},)"
      R"("vxlan/version2/vtepStatusDir":{{"vtepAdjacency":{}}},"vxlan/multicast/tunnel/config":{{"tunnel":{}}},)"
      R"("vxlan/multicast/herTunnel/config":{{"tunnel":{}}},"vxlan/multicast/bumTunnel/config":{{"tunnel":{}}}}},)"
      R"("shmem":{{"bridging/l2Rib/floodOutput":{{"floodSet":{}}}{}}},)"
      R"("local":{{"l3/vlanStatusDir":{{"vlanStatus":{}}}}}}})",
      overlayText(*this), switchText(*this), vtiText(*this), dscp, learning, evpn, tunnelsText(*this, unicast),
      tunnelsText(*this, member), adjacenciesText(*this, flood), floodRoutesText(*this), ownHopsText(*this, mcast),
      ownHopsText(*this, mcastHer), ownHopsText(*this, bum), floodListsText(*this), routesText(*this),
      vlanPortsText(*this));
}

}  // namespace AgentTest
