#include "host/show/Explain.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <ostream>
#include <set>

#include "host/show/Columns.h"
#include "host/show/FieldText.h"
#include "host/show/HopRows.h"
#include "host/show/JsonReport.h"
#include "host/show/Mappings.h"
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
  if (!vtep.virtualPort.row && !vtep.overlay.row) return void(out << "\nno rows in the chip\n");
  out << "\nTo the VTEP\n";
  if (vtep.overlay.row) rows.print(0, "overlay entry", vtep.overlay);
  if (!vtep.overlay.row && vtep.virtualPort.row) rows.print(0, "virtual port", vtep.virtualPort);
  if (!vtep.overlay.row && wanted(true)) out << "no overlay entry\n";
  if (wanted(false)) printCopies(out, rows, vtep);
  out << "\nFrom the VTEP\n";
  rows.print(0, "packets from the VTEP", vtep.source);
  rows.print(0, "packets to the local VTEP", vtep.destination);
}

/// Whether the type's tunnels are led by adjacencies, and have no next hops of their own.
bool hasAdjacency(Vane::TunnelType type) {
  return type == Vane::vxlanTunnel_ || type == Vane::vxlanMemberTunnel_ || type == Vane::vxlanHerTunnel_;
}

std::string idText(std::optional<std::uint32_t> const& id) { return id ? Kiln::toText(*id) : "none"; }

void printHops(std::ostream& out, std::vector<HopRow> const& hops) {
  if (hops.empty()) return;
  using enum Columns::Align;
  Columns columns({left, left, left, left, left, left, left});
  columns.row({"    NEXT HOP", "MAC", "INTERFACE", "CHIP ROW", "CHIP MAC", "PORT", "STATE"});
  auto const orNone = [](std::string text) { return text.empty() ? "-" : text; };
  for (auto const& hop : hops) {
    auto const* const wanted = hop.wanted ? &*hop.wanted : nullptr;
    bool const resolved = wanted && wanted->type() != Vane::nextHopUnresolved;
    auto const weight = hop.weight > 1 ? fmt::format(" (weight {})", hop.weight) : "";
    columns.row({"    " + (wanted ? Kiln::toText(wanted->addr()) + weight : "-"),
                 resolved ? Kiln::toText(wanted->ethAddr()) : "-",
                 wanted ? std::string((wanted->l2Intf().empty() ? wanted->l3Intf() : wanted->l2Intf()).name()) : "-",
                 hop.row ? fmt::format("{} {}", hop.row->tableName(), rowText(hop.row->row())) : "-", orNone(hop.mac),
                 orNone(hop.port), hop.state});
  }
  columns.print(out);
}

void printTunnel(std::ostream& out, TunnelReport const& tunnel, std::vector<HopRow> const& hops) {
  out << Kiln::toText(tunnel.vtep) << ", " << tunnelTypeText(tunnel.type) << " generation " << tunnel.genId << ": "
      << (tunnel.programmed() ? "programmed" : "not programmed, " + *tunnel.reason) << '\n';
  out << "  from " << (tunnel.localVtep.isUnspecified() ? "no address yet" : Kiln::toText(tunnel.localVtep))
      << ", tunnel id " << idText(tunnel.tunnelId) << ", next-hop id " << idText(tunnel.nextHopId) << '\n';
  if (!tunnel.vlans.empty()) out << "  floods VLANs " << fmt::format("{}", fmt::join(tunnel.vlans, " ")) << '\n';
  if (hasAdjacency(tunnel.type)) {
    out << "  by " << (tunnel.adjId ? "adjacency " + adjacencyText(tunnel.adjId) : "no route") << '\n';
  }
  printHops(out, hops);
}

/// The VNIs that flooded frames from the VTEP arrive with, and their VLANs.
void printVnis(std::ostream& out, Agent const& agent, std::vector<TunnelReport> const& tunnels) {
  std::set<std::uint16_t> vlans;
  for (auto const& tunnel : tunnels) vlans.insert(tunnel.vlans.begin(), tunnel.vlans.end());
  if (vlans.empty()) return;
  for (auto const& mapping : mappingReports(agent)) {
    if (mapping.kind != MappingReport::Kind::local || !vlans.contains(mapping.vlan)) continue;
    out << "VNI " << Kiln::toText(mapping.vni.value()) << " to VLAN " << mapping.vlan << ": " << stateText(mapping)
        << '\n';
  }
}

std::vector<std::vector<HopRow>> hopsOf(Agent const& agent, std::vector<TunnelReport> const& tunnels) {
  std::vector<std::vector<HopRow>> hops;
  for (auto const& tunnel : tunnels) hops.push_back(hopRows(agent, tunnel));
  return hops;
}

}  // namespace

void printExplanation(std::ostream& out, Agent const& agent, Meshal::IpGenAddr const& vtep,
                      std::vector<TunnelReport> const& tunnels) {
  auto const hops = hopsOf(agent, tunnels);
  for (std::size_t i = 0; i < tunnels.size(); ++i) printTunnel(out, tunnels[i], hops[i]);
  printRows(out, RowFinder(agent).of(vtep), tunnels);
  printVnis(out, agent, tunnels);
  auto const verdict = verdictOf(tunnels, hops);
  out << '\n' << Kiln::toText(vtep) << ": " << verdict.text;
  if (verdict.gap && verdict.text.starts_with("programmed")) out << "; first gap: " << *verdict.gap;
  out << '\n';
}

void writeExplanation(JsonWriter& json, Agent const& agent, Meshal::IpGenAddr const& vtep,
                      std::vector<TunnelReport> const& tunnels) {
  json.key("vtep").text(std::string_view(Kiln::toText(vtep)));
  json.key("tunnels").array();
  for (auto const& tunnel : tunnels) writeTunnel(json, tunnel);
  json.arrayEnd();
  auto const hops = hopsOf(agent, tunnels);
  json.key("hops").array();
  for (std::size_t i = 0; i < tunnels.size(); ++i) {
    json.object();
    json.key("type").text(tunnelTypeText(tunnels[i].type));
    writeHops(json, hops[i]);
    json.objectEnd();
  }
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
  auto const verdict = verdictOf(tunnels, hops);
  json.key("verdict").text(std::string_view(verdict.text));
  json.key("gap").text(verdict.gap);
}

}  // namespace Host
