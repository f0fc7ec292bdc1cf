#include "host/import/Underlay.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <tuple>

#include "host/Unicast.h"
#include "host/agent/DocumentCheck.h"

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
  auto const addFrom = [&](JsonIn from) {
    if (auto const hop = routeHop(from)) hops.push_back(*hop);
  };
  auto const several = at.find("nexthops");
  auto const nhid = at.find("nhid");
  // The members in the route itself have precedence over the object that it names: an id can be reassigned later.
  if (several) {
    for (auto const each : objects(*several)) addFrom(each);
  } else if (has(at, "dev") || has(at, "gateway") || has(at, "via") || !nhid) {
    addFrom(at);
  } else {
    hops = nextHops.members(*nhid);
  }
  return hops;
}

std::string tableOf(JsonIn at) {
  auto table = text(at, "table").value_or("main");
  return table == "254" ? "main" : table;
}

std::string joined(std::vector<IpGenAddr> const& chain) {
  std::string text;
  for (auto const& address : chain) text += (text.empty() ? "" : " -> ") + Kiln::toText(address);
  return text;
}

}  // namespace

Underlay::Underlay(JsonDocument const* routes, std::string const& table, NextHopObjects const& nextHops,
                   Links const& links, L3Numbers const& numbers)
    : links_(links), numbers_(numbers) {
  if (!routes) return;
  for (auto const at : objects(routes->root())) {
    if (tableOf(at) == table) add(at, nextHops);
  }
  for (auto& [family, lengths] : routes_) {
    for (auto& [length, networks] : lengths) {
      for (auto& [network, same] : networks) {
        std::stable_sort(same.begin(), same.end(), [](auto& a, auto& b) { return a.metric < b.metric; });
      }
    }
  }
}

void Underlay::add(JsonIn at, NextHopObjects const& nextHops) {
  Route route{
      at, number(at, "metric").value_or(0), text(at, "type").value_or("unicast") == "unicast", number(at, "nhid"), {}};
  auto const to = destination(at);
  if (route.unicast) route.hops = routeHops(at, nextHops);
  routes_[to.network.isIpv6()][to.length][to.network].push_back(std::move(route));
}

Underlay::Route const* Underlay::lookup(IpGenAddr const& address) const {
  auto const family = routes_.find(address.isIpv6());
  if (family == routes_.end()) return nullptr;
  for (auto const& [length, networks] : family->second) {
    auto const same = networks.find(network(address, length));
    if (same == networks.end()) continue;
    auto const usable = [](Route const& route) { return !route.unicast || !route.hops.empty(); };
    auto const route = std::find_if(same->second.begin(), same->second.end(), usable);
    if (route != same->second.end()) return &*route;
  }
  return nullptr;
}

void Underlay::addHop(Route const& route, RouteHop const& hop, IpGenAddr const& address, std::set<Hop>& into) const {
  auto const device = links_.device(hop.device);
  if (!device) {
    route.at.fail(fmt::format("expected a route over a device that {} has, not over {}",
                              links_.complete() ? "ip-link.json" : "the missing ip-link.json", hop.device));
  }
  auto const number = numbers_.of(*device);
  // The loopback, a VXLAN device or the port of a bridge carries no underlay.
  if (!number) return;
  if (*number == L3Numbers::none) {
    device->at.member("ifname").fail("expected an earlier interface for the underlay: all VLAN ids are in use");
  }
  auto const nextHop = hop.gateway.value_or(address);
  if (auto const why = whyNotUnicast(nextHop); !why.empty()) {
    route.at.fail(fmt::format("expected a unicast next hop, not the {} address {}", why, Kiln::toText(nextHop)));
  }
  into.insert({nextHop, hop.device});
}

void Underlay::resolve(IpGenAddr const& address, std::vector<IpGenAddr>& chain, std::set<IpGenAddr>& seen,
                       std::set<Hop>& into) const {
  auto const route = lookup(address);
  if (!route) return;
  bool const loop = std::find(chain.begin(), chain.end(), address) != chain.end();
  if (!loop && !seen.insert(address).second) return;
  chain.push_back(address);
  if (loop) route->at.member("dst").fail("expected no route loop: " + joined(chain));
  if (chain.size() > maxRecursion) {
    route->at.member("dst").fail(
        fmt::format("expected a next hop after at most {} lookups: {}", maxRecursion, joined(chain)));
  }
  for (auto const& hop : route->hops) {
    if (hop.device.empty()) {
      resolve(*hop.gateway, chain, seen, into);
    } else {
      addHop(*route, hop, address, into);
    }
  }
  chain.pop_back();
}

Path Underlay::path(IpGenAddr const& vtep) const {
  Path path;
  std::vector<IpGenAddr> chain;
  std::set<IpGenAddr> seen;
  resolve(vtep, chain, seen, path.hops);
  bool const connected =
      std::any_of(path.hops.begin(), path.hops.end(), [&](Hop const& hop) { return hop.address == vtep; });
  if (path.hops.empty() || connected) return path;
  auto const nhid = lookup(vtep)->nhid;
  if (nhid && *nhid <= maxAdjId) path.id = nhid;
  return path;
}

}  // namespace Host::Import
