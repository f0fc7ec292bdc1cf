#include "host/frr/Against.h"

#include <fmt/format.h>

#include <algorithm>
#include <ostream>

#include "host/show/Columns.h"
#include "host/show/HopRows.h"
#include "host/show/Tunnels.h"

namespace Host::Frr {

namespace {

using Meshal::IpGenAddr;

/// Only on one link, so that the interface is part of the name.
bool isLinkLocal(IpGenAddr const& address) { return address.isIpv6() && (address.u64(0) >> 54) == (0xfe80U >> 6); }

/// The entry of a next hop. The routing suite and the switch may name the interface of a VLAN differently.
Compared& entryOf(VtepComparison& vtep, IpGenAddr const& address, std::string const& interface) {
  auto const found = std::find_if(vtep.hops.begin(), vtep.hops.end(), [&](Compared const& hop) {
    return hop.address == address && (hop.interface == interface || !isLinkLocal(address));
  });
  return found != vtep.hops.end() ? *found : vtep.hops.emplace_back(Compared{address, interface});
}

void addSuite(VtepComparison& vtep, Route const* route) {
  if (!route) return;
  vtep.route = route->text + ' ' + route->protocol;
  for (auto const& hop : route->nextHops) {
    entryOf(vtep, hop.gateway.value_or(vtep.vtep), hop.interface).suite = true;
  }
}

void addTunnel(VtepComparison& vtep, Agent const& agent, TunnelReport const& tunnel) {
  for (auto const& hop : hopRows(agent, tunnel)) {
    if (!hop.wanted) continue;
    auto& entry = entryOf(vtep, hop.wanted->addr(), std::string(hop.wanted->l3Intf().name()));
    entry.kernel = true;
    entry.chip = hop.good;
  }
}

std::optional<std::string> gapOf(VtepComparison const& vtep) {
  if (vtep.route.empty()) return "the routing suite has no route";
  for (auto const& hop : vtep.hops) {
    if (hop.same()) continue;
    auto const name = fmt::format("{} by {}", Kiln::toText(hop.address), hop.interface);
    if (!hop.suite) return "the routing suite lacks " + name;
    return (hop.kernel ? "the chip lacks " : "the kernel lacks ") + name;
  }
  return std::nullopt;
}

/// Unicast tunnels tell of all next hops, flood tunnels of the one that copies take.
bool tellsMore(TunnelReport const& a, TunnelReport const& b) { return hasOverlay(a.type) && !hasOverlay(b.type); }

}  // namespace

std::vector<VtepComparison> compare(Agent const& agent, Routes const& routes) {
  std::map<IpGenAddr, TunnelReport> tunnels;
  for (auto& tunnel : tunnelReports(agent)) {
    if (tunnel.vtep.isIpv4() ? tunnel.vtep.v4Addr().isMulticast() : tunnel.vtep.v6Addr().isMulticast()) continue;
    auto const [known, isNew] = tunnels.try_emplace(tunnel.vtep, tunnel);
    if (!isNew && tellsMore(tunnel, known->second)) known->second = std::move(tunnel);
  }
  std::vector<VtepComparison> vteps;
  for (auto const& [address, tunnel] : tunnels) {
    auto& vtep = vteps.emplace_back();
    vtep.vtep = address;
    addSuite(vtep, routes.lookup(address));
    addTunnel(vtep, agent, tunnel);
    std::sort(vtep.hops.begin(), vtep.hops.end(), [](auto const& a, auto const& b) {
      return std::pair(a.address, a.interface) < std::pair(b.address, b.interface);
    });
    vtep.gap = gapOf(vtep);
  }
  return vteps;
}

void print(std::ostream& out, std::vector<VtepComparison> const& vteps) {
  using enum Columns::Align;
  Columns columns({left, left, left, left, left, left});
  columns.row({"VTEP", "NEXT HOP", "INTERFACE", "FRR", "KERNEL", "CHIP"});
  auto const mark = [](bool has) { return std::string(has ? "yes" : "-"); };
  for (auto const& vtep : vteps) {
    for (auto const& hop : vtep.hops) {
      columns.row({Kiln::toText(vtep.vtep), Kiln::toText(hop.address), hop.interface, mark(hop.suite), mark(hop.kernel),
                   mark(hop.chip)});
    }
  }
  columns.print(out);
  out << '\n';
  for (auto const& vtep : vteps) {
    if (vtep.gap) out << Kiln::toText(vtep.vtep) << ": " << *vtep.gap << '\n';
  }
  auto const different =
      std::count_if(vteps.begin(), vteps.end(), [](auto const& vtep) { return vtep.gap.has_value(); });
  out << fmt::format("{} VTEPs, {} differ\n", vteps.size(), different);
}

void write(Kiln::JsonWriter& json, std::vector<VtepComparison> const& vteps) {
  auto const text = [](std::string const& value) { return value.empty() ? std::nullopt : std::optional(value); };
  json.key("format").text(std::string_view("tessel-against/1"));
  json.key("against").text(std::string_view("frr"));
  json.key("same").boolean(same(vteps));
  json.key("vteps").array();
  for (auto const& vtep : vteps) {
    json.object();
    json.key("vtep").text(std::string_view(Kiln::toText(vtep.vtep)));
    json.key("route").text(text(vtep.route));
    json.key("nextHops").array();
    for (auto const& hop : vtep.hops) {
      json.object();
      json.key("address").text(std::string_view(Kiln::toText(hop.address)));
      json.key("interface").text(text(hop.interface));
      json.key("frr").boolean(hop.suite);
      json.key("kernel").boolean(hop.kernel);
      json.key("chip").boolean(hop.chip);
      json.objectEnd();
    }
    json.arrayEnd();
    json.key("gap").text(vtep.gap);
    json.objectEnd();
  }
  json.arrayEnd();
}

bool same(std::vector<VtepComparison> const& vteps) {
  return std::none_of(vteps.begin(), vteps.end(), [](auto const& vtep) { return vtep.gap.has_value(); });
}

}  // namespace Host::Frr
