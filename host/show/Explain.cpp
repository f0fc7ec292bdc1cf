#include "host/show/Explain.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <ostream>

#include "host/show/JsonReport.h"
#include "host/show/RowPrinter.h"
#include "host/show/VtepRows.h"
#include "platform/kiln/Fmt.h"

namespace Host {

namespace {

void printCopies(std::ostream& out, RowPrinter& rows, VtepRows const& vtep) {
  if (!vtep.encapId) return void(out << "no flood copies\n");
  out << "flood copies, encapsulation id " << *vtep.encapId << '\n';
  for (auto const& copy : vtep.copies) {
    rows.print(1, "by " + copy.port.name() + " to " + Kiln::toText(copy.nextHop), copy.row);
  }
}

void printRows(std::ostream& out, VtepRows const& vtep, std::vector<TunnelReport> const& tunnels) {
  auto const wanted = [&](bool overlay) {
    return std::any_of(tunnels.begin(), tunnels.end(), [&](auto const& t) { return hasOverlay(t.type) == overlay; });
  };
  RowPrinter rows(out);
  if (!vtep.virtualPort.row && !vtep.overlay.row) return void(out << "no rows in the chip\n");
  if (vtep.overlay.row) rows.print(0, "overlay entry", vtep.overlay);
  if (!vtep.overlay.row && vtep.virtualPort.row) rows.print(0, "virtual port", vtep.virtualPort);
  if (!vtep.overlay.row && wanted(true)) out << "no overlay entry\n";
  if (wanted(false)) printCopies(out, rows, vtep);
  rows.print(0, "packets from the VTEP", vtep.source);
  rows.print(0, "packets to the local VTEP", vtep.destination);
}

/// Whether the type's tunnels are led by adjacencies, and have no next hops of their own.
bool hasAdjacency(Vane::TunnelType type) {
  return type == Vane::vxlanTunnel_ || type == Vane::vxlanMemberTunnel_ || type == Vane::vxlanHerTunnel_;
}

std::string idText(std::optional<std::uint32_t> const& id) { return id ? Kiln::toText(*id) : "none"; }

void printTunnel(std::ostream& out, TunnelReport const& tunnel) {
  out << Kiln::toText(tunnel.vtep) << ", " << tunnelTypeText(tunnel.type) << " generation " << tunnel.genId << ": "
      << (tunnel.programmed() ? "programmed" : "not programmed, " + *tunnel.reason) << '\n';
  out << "  from " << (tunnel.localVtep.isUnspecified() ? "no address yet" : Kiln::toText(tunnel.localVtep))
      << ", tunnel id " << idText(tunnel.tunnelId) << ", next-hop id " << idText(tunnel.nextHopId) << '\n';
  if (!tunnel.vlans.empty()) out << "  floods VLANs " << fmt::format("{}", fmt::join(tunnel.vlans, " ")) << '\n';
  if (hasAdjacency(tunnel.type)) {
    out << "  by " << (tunnel.adjId ? "adjacency " + Kiln::toText(tunnel.adjId.value()) : "no route") << '\n';
  }
  for (auto const& hop : tunnel.nextHops) {
    out << "    " << Kiln::toText(hop.addr()) << ", "
        << (hop.type() == Vane::nextHopUnresolved ? "unresolved" : Kiln::toText(hop.ethAddr())) << ", "
        << (hop.l2Intf().empty() ? hop.l3Intf() : hop.l2Intf()).name() << '\n';
  }
}

}  // namespace

void printExplanation(std::ostream& out, Agent const& agent, Meshal::IpGenAddr const& vtep,
                      std::vector<TunnelReport> const& tunnels) {
  for (auto const& tunnel : tunnels) printTunnel(out, tunnel);
  out << '\n';
  printRows(out, RowFinder(agent).of(vtep), tunnels);
}

void writeExplanation(JsonWriter& json, Agent const& agent, Meshal::IpGenAddr const& vtep,
                      std::vector<TunnelReport> const& tunnels) {
  json.key("vtep").text(std::string_view(Kiln::toText(vtep)));
  json.key("tunnels").array();
  for (auto const& tunnel : tunnels) writeTunnel(json, tunnel);
  json.arrayEnd();
  auto const rows = RowFinder(agent).of(vtep);
  json.key("chain").object();
  writeChain(json.key("overlay"), rows.overlay.row);
  writeChain(json.key("virtualPort"), rows.virtualPort.row);
  json.key("encapId").number(rows.encapId);
  json.key("copies").array();
  for (auto const& copy : rows.copies) {
    json.object();
    json.key("port").text(std::string_view(copy.port.name()));
    json.key("nextHop").text(std::string_view(Kiln::toText(copy.nextHop)));
    writeChain(json.key("row"), copy.row.row);
    json.objectEnd();
  }
  json.arrayEnd();
  writeChain(json.key("source"), rows.source.row);
  writeChain(json.key("destination"), rows.destination.row);
  json.objectEnd();
}

}  // namespace Host
