#include "host/import/Underlay.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>

#include "host/Unicast.h"
#include "host/notes/OwnIds.h"

namespace Host::Import {

namespace {

constexpr std::size_t maxRecursion = 16;

bool isV6Address(std::optional<JsonIn> at) { return at && ipAddr(*at).isIpv6(); }

/// "default" does not say its family; other members of the route do.
bool isV6Default(JsonIn at) {
  if (has(at, "pref")) return true;  // only IPv6 has router preferences
  if (isV6Address(at.find("gateway"))) return true;
  auto const hops = at.find("nexthops");
  if (!hops) return false;
  auto const all = objects(*hops);
  return !all.empty() && isV6Address(all.front().find("gateway"));
}

Prefix destination(JsonIn at) {
  auto const dst = at.member("dst");
  if (dst.text() != "default") return prefix(dst);
  return {isV6Default(at) ? IpGenAddr(Meshal::Ip6Addr()) : IpGenAddr(Meshal::IpAddr()), 0};
}

std::vector<RouteHop> routeHops(JsonIn at, NextHopObjects const& nextHops) {
  std::vector<RouteHop> hops;
  auto const several = at.find("nexthops");
  auto const nhid = at.find("nhid");
  // The members in the route itself have precedence over the object that it names: an id can be reassigned later.
  if (several) {
    for (auto const each : objects(*several)) hops.push_back(routeHop(each));
  } else if (has(at, "dev") || has(at, "gateway") || has(at, "via") || !nhid) {
    hops.push_back(routeHop(at));
  } else {
    hops = nextHops.members(*nhid);
  }
  return hops;
}

std::string tableOf(JsonIn at) {
  auto const table = at.find("table");
  if (!table) return "main";
  return tableName(table->isText() ? std::string(table->text()) : Kiln::toText(number(*table)));
}

std::string typeOf(JsonIn at) {
  auto const type = text(at, "type").value_or("unicast");
  static std::map<std::string, std::string> const numbers{{"1", "unicast"},     {"2", "local"},     {"3", "broadcast"},
                                                          {"4", "anycast"},     {"5", "multicast"}, {"6", "blackhole"},
                                                          {"7", "unreachable"}, {"8", "prohibit"},  {"9", "throw"}};
  auto const name = numbers.find(type);
  return name == numbers.end() ? type : name->second;
}

std::string joined(std::vector<IpGenAddr> const& chain) {
  std::string text;
  for (auto const& address : chain) text += (text.empty() ? "" : " -> ") + Kiln::toText(address);
  return text;
}

bool contains(Prefix const& prefix, IpGenAddr const& address) {
  return address.isIpv6() == prefix.network.isIpv6() && network(address, prefix.length) == prefix.network;
}

/// What a route of a type other than unicast ends a search with.
std::string endOf(std::string const& type, JsonIn at) {
  if (type == "local") return "an address of this host";
  return fmt::format("{} route {}", type, at.member("dst").text());
}

bool hasZeroTos(JsonIn at) {
  auto const tos = at.find("tos");
  if (!tos) return true;
  return tos->isText() ? tos->text() == "0" || tos->text() == "0x00" || tos->text() == "default" : number(*tos) == 0;
}

bool isLinkLocal(IpGenAddr const& address) {
  return address.isIpv6() && network(address, 10) == Kiln::fromText<IpGenAddr>("fe80::").value();
}

/// Whether only next hops over the device that a packet is bound to serve it.
///
/// Of IPv6 only where the kernel chooses the source address, or the destination is valid on one link alone. A device in
/// a VRF that no packet can leave by names the VRF alone.
bool isConfined(Query const& query) {
  if (!query.device || query.device->kind == DeviceKind::vrf) return false;
  bool const inside = query.device->kind == DeviceKind::dummy || query.device->kind == DeviceKind::loopback;
  if (inside && !query.device->table.empty()) return false;
  return !query.to.isIpv6() || !query.from || isLinkLocal(query.to);
}

std::string ratio(Hops const& hops) {
  std::string text;
  for (auto const& [hop, weight] : hops) text += (text.empty() ? "" : ":") + Kiln::toText(weight);
  return text;
}

void reduce(Hops& hops) {
  std::uint32_t divisor = 0;
  for (auto const& [hop, weight] : hops) divisor = std::gcd(divisor, weight);
  for (auto& [hop, weight] : hops) weight /= divisor;
}

double sumOf(Hops const& hops) {
  return std::accumulate(hops.begin(), hops.end(), 0.0, [](double sum, auto& each) { return sum + each.second; });
}

/// Scaled to about `rows`, at least one row each.
Hops scaled(Hops hops, double rows) {
  auto const sum = sumOf(hops);
  for (auto& [hop, weight] : hops) {
    weight = std::max(1U, static_cast<std::uint32_t>(std::lround(weight * rows / sum)));
  }
  return hops;
}

/// The largest relative deviation of a share.
double deviation(Hops const& from, Hops const& to) {
  auto const sum = sumOf(from), other = sumOf(to);
  double largest = 0;
  for (auto const& [hop, weight] : from) {
    largest = std::max(largest, std::abs(to.at(hop) / other / (weight / sum) - 1));
  }
  return largest;
}

}  // namespace

Underlay::Underlay(Files const& files, Rules const& rules, NextHopObjects const& nextHops, Links const& links,
                   L3Numbers const& numbers, Warnings& warnings)
    : rules_(rules), settings_(files.settings), links_(links), numbers_(numbers), warnings_(warnings) {
  for (bool const v6 : {false, true}) {
    for (auto const& name : rules.tables(v6)) tables_[v6].try_emplace(name);
  }
  if (!files.routes) return;
  routesFile_ = files.routes->source();
  for (auto const at : objects(files.routes->root())) {
    auto const name = tableOf(at);
    if (!tables_[false].contains(name) && !tables_[true].contains(name)) continue;
    auto const to = destination(at);
    auto& tables = tables_[to.network.isIpv6()];
    auto const table = tables.find(name);
    if (table != tables.end() && hasZeroTos(at)) add(at, table->second[to.length][to.network], nextHops);
  }
}

void Underlay::add(JsonIn at, std::vector<Route>& routes, NextHopObjects const& nextHops) {
  auto const from = at.find("from");
  Route route{.at = at,
              .metric = number(at, "metric").value_or(0),
              .type = typeOf(at),
              .nhid = number(at, "nhid"),
              .from = from ? std::optional(prefix(*from)) : std::nullopt,
              .hops = {}};
  if (route.type == "unicast") route.hops = routeHops(at, nextHops);
  auto const isBefore = [](Route const& a, Route const& b) {
    auto const lengths = std::pair(a.from ? a.from->length : 0, b.from ? b.from->length : 0);
    return lengths.first != lengths.second ? lengths.first > lengths.second : a.metric < b.metric;
  };
  routes.insert(std::upper_bound(routes.begin(), routes.end(), route, isBefore), std::move(route));
}

bool Underlay::isInService(RouteHop const& hop, bool v6, Walk& walk) const {
  if (!hop.dead && !hop.linkdown) return true;
  auto const skips = hop.dead ? std::optional(true) : settings_.skipsLinkdown(hop.device, v6);
  if (!skips) {
    warnings_.add("link-down", hop.at.member("flags"),
                  "the link has no carrier, and sysctl.json does not say whether the host skips it",
                  "packets are sent over " + hop.device + ": hosts that skip it mark the next hop as dead");
  }
  if (!skips.value_or(false)) return true;
  if (walk.why.empty()) walk.why = "link down: " + hop.device;
  return false;
}

bool Underlay::isEqual(Route const& a, Route const& b) {
  return a.metric == b.metric && (a.from ? a.from->length : 0) == (b.from ? b.from->length : 0);
}

std::vector<RouteHop const*> Underlay::usable(Route const& route, Query const& query, Walk& walk) const {
  std::vector<RouteHop const*> hops;
  bool const confined = isConfined(query);
  for (auto const& hop : route.hops) {
    if (confined && hop.device != query.device->name) continue;
    if (isInService(hop, query.to.isIpv6(), walk)) hops.push_back(&hop);
  }
  if (confined && !query.to.isIpv6() && hops.size() > 1) hops.resize(1);
  return hops;
}

std::optional<Underlay::Found> Underlay::firstOf(std::vector<Route> const& routes, Query const& query,
                                                 Walk& walk) const {
  std::optional<Found> first;
  auto const serves = [&](Route const& route) {
    return !route.from || (query.from && contains(*route.from, *query.from));
  };
  // A prefix with routes for certain sources alone and others has none for other sources.
  if (routes.front().from &&
      std::none_of(routes.begin(), routes.end(), [&](auto const& route) { return route.from && serves(route); })) {
    return std::nullopt;
  }
  for (auto const& route : routes) {
    if (!serves(route)) continue;
    if (first && (!isEqual(route, *first->route) || route.type != "unicast")) break;
    if (route.type != "unicast") return Found{&route, {}, route.type == "throw" ? "" : endOf(route.type, route.at)};
    auto hops = usable(route, query, walk);
    if (hops.empty()) continue;
    std::erase_if(hops, [](auto const* hop) { return hop->blackhole; });
    if (hops.empty()) return Found{&route, {}, endOf("blackhole", route.at)};
    auto const bound = [&](auto const* hop) { return !query.device || hop->device == query.device->name; };
    bool const preferred = std::any_of(hops.begin(), hops.end(), bound);
    if (!first || preferred) first = Found{&route, std::move(hops), ""};
    if (preferred) break;
  }
  return first;
}

std::optional<Underlay::Found> Underlay::findIn(Table const& table, Query const& query, Walk& walk) const {
  for (auto const& [length, networks] : table) {
    auto const same = networks.find(network(query.to, length));
    if (same == networks.end()) continue;
    auto found = firstOf(same->second, query, walk);
    if (!found) continue;
    bool const thrown = found->hops.empty() && found->why.empty();
    return thrown ? std::nullopt : found;
  }
  return std::nullopt;
}

bool Underlay::isSuppressed(Rules::Step const& step, Found const& found) const {
  if (found.hops.empty()) return false;
  if (step.suppressedLength && destination(found.route->at).length <= *step.suppressedLength) return true;
  auto const device = links_.device(found.hops.front()->device);
  if (step.suppressedGroup.empty() || !device) return false;
  auto const group = device->at.find("group");
  return (group && group->isText() ? std::string(group->text()) : "default") == step.suppressedGroup;
}

Underlay::Found Underlay::find(Query const& query, Walk& walk) const {
  for (auto const& step : rules_.steps(query)) {
    if (!step.end.empty()) return {nullptr, {}, step.end};
    auto const table = tables_.at(query.to.isIpv6()).find(step.table);
    if (table == tables_.at(query.to.isIpv6()).end()) continue;
    auto found = findIn(table->second, query, walk);
    if (found && !isSuppressed(step, *found)) return std::move(*found);
  }
  return {};
}

std::string Underlay::whyNot(RouteHop const& hop) const {
  if (hop.encap) return "route with encapsulation";
  auto const device = links_.device(hop.device);
  if (!device && links_.complete()) return "route over " + hop.device + ", which ip-link.json does not have";
  if (!device) return "route over " + hop.device + ", but ip-link.json is missing";
  if (device->kind == DeviceKind::vxlan) return "route over the VXLAN device " + hop.device;
  if (device->kind == DeviceKind::loopback) return "route over the loopback device " + hop.device;
  return numbers_.of(*device) ? "" : "route over " + hop.device + ", the port of a bridge";
}

void Underlay::addHop(RouteHop const& hop, IpGenAddr const& address, Walk& walk) const {
  if (auto const why = whyNot(hop); !why.empty()) {
    warnings_.add(hop.encap ? "encap" : "no-port", hop.at, "ignored: " + why, "no packets are sent there");
    if (walk.why.empty()) walk.why = why;
    return;
  }
  auto const& device = *links_.device(hop.device);
  if (numbers_.of(device) == L3Numbers::none) {
    device.at.member("ifname").fail("expected an earlier interface for the underlay: all VLAN ids are in use");
  }
  auto const nextHop = hop.gateway.value_or(address);
  if (auto const why = whyNotUnicast(nextHop); !why.empty()) {
    hop.at.fail(fmt::format("expected a unicast next hop, not the {} address {}", why, Kiln::toText(nextHop)));
  }
  walk.hops[{nextHop, hop.device}] += hop.weight;
}

void Underlay::resolve(Query const& query, Walk& walk) const {
  auto& chain = walk.chain;
  auto const found = find(query, walk);
  if (chain.empty()) walk.route = found.route;
  if (found.hops.empty()) {
    if (!found.why.empty()) walk.why = found.why;
    return;
  }
  bool const loop = std::find(chain.begin(), chain.end(), query.to) != chain.end();
  if (!loop && !walk.seen.insert(query.to).second) return;
  chain.push_back(query.to);
  auto const dst = found.route->at.member("dst");
  if (loop) dst.fail("expected no route loop: " + joined(chain));
  if (chain.size() > maxRecursion) {
    dst.fail(fmt::format("expected a next hop after at most {} lookups: {}", maxRecursion, joined(chain)));
  }
  for (auto const hop : found.hops) {
    if (!hop->device.empty()) {
      addHop(*hop, query.to, walk);
    } else if (hop->gateway) {
      resolve({*hop->gateway, query.from, nullptr}, walk);
    }
  }
  chain.pop_back();
}

void Underlay::onLink(Query const& query, Walk& walk) const {
  if (!isConfined(query) || query.to.isIpv6() || !query.device->table.empty() || !numbers_.of(*query.device)) return;
  auto const& name = query.device->name;
  warnings_.add("on-link", query.device->at.member("ifname"),
                "no route over this device leads to a VTEP of a VXLAN device that is bound to it",
                "as on the host, the VTEP is taken for a neighbour on " + name);
  walk.hops[{query.to, name}] = 1;
}

void Underlay::fit(Walk& walk) const {
  auto& hops = walk.hops;
  reduce(hops);
  if (sumOf(hops) <= maxGroupRows) return;
  auto const wanted = hops;
  while (hops.size() > maxGroupRows) hops.erase(std::prev(hops.end()));
  auto best = scaled(hops, 1);
  for (std::uint32_t rows = 1; rows <= maxGroupRows; ++rows) {
    auto const candidate = scaled(hops, rows);
    if (sumOf(candidate) <= maxGroupRows && deviation(hops, candidate) < deviation(hops, best)) best = candidate;
  }
  hops = best;
  reduce(hops);
  warnings_.add("weights", walk.route->at.member("dst"),
                fmt::format("the weights {} of its next hops need more than {} rows", ratio(wanted), maxGroupRows),
                "they are used in the ratio " + ratio(hops));
}

Path Underlay::path(Query const& query) const {
  Path path;
  if (routesFile_.empty()) return {{}, "no route: ip-route-all.json is missing", {}};
  Walk walk;
  resolve(query, walk);
  if (walk.hops.empty()) {
    walk.route = nullptr;
    onLink(query, walk);
  }
  if (walk.hops.empty()) return {{}, walk.why.empty() ? "no route" : walk.why, {}};
  fit(walk);
  bool const connected =
      std::any_of(walk.hops.begin(), walk.hops.end(), [&](auto const& each) { return each.first.address == query.to; });
  auto const nhid = walk.route ? walk.route->nhid : std::nullopt;
  if (!connected && nhid && *nhid < firstOwnId) path.id = nhid;
  path.hops = std::move(walk.hops);
  return path;
}

}  // namespace Host::Import
