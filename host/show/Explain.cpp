#include "host/show/Explain.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <ostream>
#include <set>

#include "host/show/Chain.h"
#include "host/show/FieldText.h"
#include "host/show/JsonReport.h"
#include "host/show/VtepRows.h"
#include "platform/kiln/Fmt.h"

namespace Host {

namespace {

constexpr std::array<std::pair<std::string_view, std::string_view>, 16> kFieldWords{{
    {"vpHandle", "virtual port"},
    {"egrL3TunnelTableHandle", "outer header"},
    {"ulEntryHandle", "underlay"},
    {"memberBlockHandle", "members"},
    {"nextHopHandle", "next hop"},
    {"l3Oif2Handle", "outgoing VLAN"},
    {"oif1Handle", "encapsulation"},
    {"destinationHandle", "destination"},
    {"svpHandle", "virtual port"},
    {"groupOptionHandle", "option"},
    {"dvpHandle", "virtual port"},
    {"nhHandle", "next hop"},
    {"virtualPortHandle", "virtual port"},
    {"l3NextHop2Handle", "next hop"},
    {"herNextHop2Handle", "next hop"},
    {"oifHandle", "outgoing VLAN"},
}};

std::string_view wordOf(std::string_view field) {
  for (auto const& [name, word] : kFieldWords) {
    if (name == field) return word;
  }
  return field;
}

/// What the last row of the chain sends its packets to; empty for other rows.
std::string portText(Asic::EntryHandle const& row) {
  // 1: all ports of a VLAN; 2: a port or a group of ports.
  auto const kind = numberOf(row, "destinationKind");
  if (kind == 1) return "VLAN " + Kiln::toText(numberOf(row, "vlanId"));
  if (kind != 2) return {};
  return (numberOf(row, "isLag") != 0 ? "LAG " : "port ") + Kiln::toText(numberOf(row, "destination"));
}

/// Prints rows with all that they lead to; of a row that was printed before, its first line alone.
class RowPrinter {
 public:
  explicit RowPrinter(std::ostream& out) : out_(out) {}

  void print(std::size_t depth, std::string_view word, Asic::EntryHandle const& row) {
    std::string const indent(2 * depth, ' ');
    bool const above = !printed_.insert(row.record()).second;
    out_ << indent << word << ": " << row.tableName() << ' ' << row.keyText() << ", " << rowText(row.row()) << ", "
         << stateText(row.state()) << (above ? ", as above\n" : "\n");
    if (above) return;
    if (auto const values = valuesOf(row); !values.empty()) out_ << indent << "    " << values << '\n';
    for (auto const& link : linksOf(row)) print(depth + 1, wordOf(link.field), *link.target);
    if (auto const port = portText(row); !port.empty()) out_ << indent << "  to " << port << '\n';
  }

  /// The same, or that there is none.
  void print(std::size_t depth, std::string_view word, NeededRow const& needed) {
    if (needed.row) return print(depth, word, *needed.row);
    out_ << std::string(2 * depth, ' ') << word << ": no row in " << needed.table << '\n';
  }

 private:
  std::ostream& out_;
  std::set<Asic::RecordBase const*> printed_;
};

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

void writeRow(JsonWriter& json, Asic::EntryHandle::PtrConst const& row) {
  if (!row) return json.null();
  json.object();
  json.key("table").text(row->tableName());
  json.key("key").text(std::string_view(row->keyText()));
  json.key("row").number(row->row() ? std::optional(row->row()->value()) : std::nullopt);
  json.key("state").number(static_cast<std::uint64_t>(row->state()));
  json.key("links").array();
  for (auto const& link : linksOf(*row)) {
    json.object();
    json.key("field").text(link.field);
    json.key("to");
    writeRow(json, link.target);
    json.objectEnd();
  }
  json.arrayEnd();
  json.objectEnd();
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
  writeRow(json.key("overlay"), rows.overlay.row);
  writeRow(json.key("virtualPort"), rows.virtualPort.row);
  json.key("encapId").number(rows.encapId);
  json.key("copies").array();
  for (auto const& copy : rows.copies) {
    json.object();
    json.key("port").text(std::string_view(copy.port.name()));
    json.key("nextHop").text(std::string_view(Kiln::toText(copy.nextHop)));
    writeRow(json.key("row"), copy.row.row);
    json.objectEnd();
  }
  json.arrayEnd();
  writeRow(json.key("source"), rows.source.row);
  writeRow(json.key("destination"), rows.destination.row);
  json.objectEnd();
}

}  // namespace Host
