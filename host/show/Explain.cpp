#include "host/show/Explain.h"

#include <array>
#include <ostream>

#include "host/show/Chain.h"
#include "host/show/FieldText.h"
#include "host/show/JsonReport.h"

namespace Host {

namespace {

constexpr std::array<std::pair<std::string_view, std::string_view>, 12> kFieldWords{{
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
}};

std::string_view wordOf(std::string_view field) {
  for (auto const& [name, word] : kFieldWords) {
    if (name == field) return word;
  }
  return field;
}

/// What the last row of the chain sends its packets to; empty for other rows.
std::string portText(Asic::EntryHandle const& row) {
  // 2: a port or a group of ports; see the destination's kinds.
  if (numberOf(row, "destinationKind") != 2) return {};
  return (numberOf(row, "isLag") != 0 ? "LAG " : "port ") + Kiln::toText(numberOf(row, "destination"));
}

void printRow(std::ostream& out, std::size_t depth, std::string_view word, Asic::EntryHandle const& row) {
  std::string const indent(2 * depth, ' ');
  out << indent << word << ": " << row.tableName() << ' ' << row.keyText() << ", " << rowText(row.row()) << ", "
      << stateText(row.state()) << '\n';
  if (auto const values = valuesOf(row); !values.empty()) out << indent << "    " << values << '\n';
  for (auto const& link : linksOf(row)) printRow(out, depth + 1, wordOf(link.field), *link.target);
  if (auto const port = portText(row); !port.empty()) out << indent << "  to " << port << '\n';
}

std::string idText(std::optional<std::uint32_t> const& id) { return id ? Kiln::toText(*id) : "none"; }

void printTunnel(std::ostream& out, TunnelReport const& tunnel) {
  out << Kiln::toText(tunnel.vtep) << ", " << tunnelTypeText(tunnel.type) << " generation " << tunnel.genId << ": "
      << (tunnel.programmed() ? "programmed" : "not programmed, " + *tunnel.reason) << '\n';
  out << "  from " << (tunnel.localVtep.isUnspecified() ? "no address yet" : Kiln::toText(tunnel.localVtep))
      << ", tunnel id " << idText(tunnel.tunnelId) << ", next-hop id " << idText(tunnel.nextHopId) << '\n';
  out << "  by " << (tunnel.adjId ? "adjacency " + Kiln::toText(tunnel.adjId.value()) : "no route") << '\n';
  for (auto const& hop : tunnel.nextHops) {
    out << "    " << Kiln::toText(hop.addr()) << ", "
        << (hop.type() == Vane::nextHopResolved ? Kiln::toText(hop.ethAddr()) : "unresolved") << ", "
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
  Chain const chain(agent.chip(), vtep);
  out << '\n';
  if (chain.overlay()) printRow(out, 0, "overlay entry", *chain.overlay());
  if (!chain.overlay() && chain.virtualPort()) printRow(out, 0, "virtual port", *chain.virtualPort());
  if (!chain.overlay()) out << (chain.virtualPort() ? "no overlay entry\n" : "no rows in the chip\n");
}

void writeExplanation(JsonWriter& json, Agent const& agent, Meshal::IpGenAddr const& vtep,
                      std::vector<TunnelReport> const& tunnels) {
  json.key("vtep").text(std::string_view(Kiln::toText(vtep)));
  json.key("tunnels").array();
  for (auto const& tunnel : tunnels) writeTunnel(json, tunnel);
  json.arrayEnd();
  Chain const chain(agent.chip(), vtep);
  json.key("chain").object();
  json.key("overlay");
  writeRow(json, chain.overlay());
  json.key("virtualPort");
  writeRow(json, chain.virtualPort());
  json.objectEnd();
}

}  // namespace Host
