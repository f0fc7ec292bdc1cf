#include "host/show/TextReport.h"

#include <algorithm>
#include <ostream>

#include "host/show/Columns.h"
#include "host/show/FieldText.h"
#include "host/show/NextHops.h"
#include "host/show/Resource.h"
#include "host/show/Sections.h"
#include "platform/asic/Store.h"
#include "platform/kiln/JsonOut.h"
#include "platform/tessel/l3common/TesselVxlanState.h"

namespace Host {

namespace {

using Align = Columns::Align;

std::string numberOrDash(std::optional<std::uint32_t> const& number) { return number ? Kiln::toText(*number) : "-"; }

std::string addressOrNone(Meshal::IpGenAddr const& address) {
  return address.isUnspecified() ? "none" : Kiln::toText(address);
}

void addNextHop(std::vector<std::string>& cells, Vane::NextHopEntry const& hop, unsigned weight) {
  cells.push_back(Kiln::toText(hop.addr()));
  cells.push_back(hop.type() == Vane::nextHopResolved ? Kiln::toText(hop.ethAddr()) : "unresolved");
  auto const interface = (hop.l2Intf().empty() ? hop.l3Intf() : hop.l2Intf()).name();
  cells.push_back(weight == 1 ? interface : interface + ", weight " + Kiln::toText(weight));
}

void printHeader(std::ostream& out, Agent const& agent) {
  auto const state = agent.local<TesselL3Common::TesselVxlanState>(kVxlanStatePath);
  if (!state) return;
  out << "Profile " << agent.profile().name() << ", local VTEP " << addressOrNone(state->localVtep());
  if (!state->localVtep6().isUnspecified()) out << " and " << Kiln::toText(state->localVtep6());
  out << ", UDP port " << (state->udpPort() == 0 ? "none" : Kiln::toText(state->udpPort())) << "\n\n";
}

std::string vlansText(TunnelReport const& tunnel) {
  std::string text;
  for (auto const vlan : tunnel.vlans) text += (text.empty() ? "" : " ") + Kiln::toText(vlan);
  return text.empty() ? "-" : text;
}

/// What sets a tunnel apart from a unicast tunnel; empty for those.
std::string kindText(TunnelReport const& tunnel) {
  switch (tunnel.type) {
    case Vane::vxlanTunnel_:
      return {};
    case Vane::vxlanMemberTunnel_:
      return "  member tunnel";
    case Vane::vxlanHerTunnel_:
      return "  flood tunnel, VLANs " + vlansText(tunnel);
    case Vane::vxlanMcastTunnel_:
      return "  multicast tunnel";
    case Vane::vxlanMcastHer_:
      return "  head-end copies of multicast traffic";
    case Vane::vxlanBum_:
      return "  broadcast, unknown and multicast traffic";
  }
  return {};
}

void addTunnel(Columns& columns, TunnelReport const& tunnel) {
  std::vector<std::string> cells{Kiln::toText(tunnel.vtep), numberOrDash(tunnel.tunnelId),
                                 numberOrDash(tunnel.nextHopId), adjacencyText(tunnel.adjId)};
  for (auto const& [hop, weight] : weighedNextHops(tunnel.nextHops)) {
    addNextHop(cells, hop, weight);
    columns.row(std::move(cells));
    cells = std::vector<std::string>(4);
  }
  if (tunnel.nextHops.empty()) columns.row(std::move(cells));
  auto line = kindText(tunnel);
  if (tunnel.reason) line += "  not programmed: " + *tunnel.reason;
  if (tunnel.remark) line += "  " + *tunnel.remark;
  if (!line.empty()) columns.line(line);
}

void printLogs(std::ostream& out, Agent const& agent) {
  for (auto const& record : agent.logs().records()) {
    out << "%TESSEL-" << record.severity << '-' << record.name << ": " << record.text << '\n';
  }
}

std::string countText(std::size_t count, std::string_view one) {
  return Kiln::toText(count) + ' ' + std::string(one) + (count == 1 ? ", " : "s, ");
}

template <class Reports>
std::size_t programmedIn(Reports const& reports) {
  return std::count_if(reports.begin(), reports.end(), [](auto const& report) { return report.programmed(); });
}

void printMappingSummary(std::ostream& out, std::vector<MappingReport> const& mappings) {
  if (mappings.empty()) return;
  auto const count = [&](MappingReport::State state) {
    return std::count_if(mappings.begin(), mappings.end(), [&](auto const& mapping) { return mapping.state == state; });
  };
  out << countText(mappings.size(), "VNI mapping") << programmedIn(mappings) << " programmed";
  for (auto const& [state, word] :
       {std::pair(MappingReport::State::pending, "pending"), std::pair(MappingReport::State::removed, "removed")}) {
    if (auto const number = count(state)) out << ", " << number << ' ' << word;
  }
  out << '\n';
  for (auto const& mapping : mappings) {
    if (mapping.isAsWanted()) continue;
    out << "  VNI " << Kiln::toText(mapping.vni) << ", " << kindText(mapping.kind) << ", VLAN " << mapping.vlan << ": "
        << stateText(mapping) << '\n';
  }
}

void printGroupSummary(std::ostream& out, std::vector<GroupReport> const& groups) {
  if (groups.empty()) return;
  out << countText(groups.size(), "VTEP group") << programmedIn(groups) << " programmed\n";
  for (auto const& group : groups) {
    if (!group.programmed())
      out << "  group " << Kiln::toText(group.key) << ": not programmed: " << *group.reason << '\n';
  }
}

void printSummary(std::ostream& out, Agent const& agent, Report const& report) {
  auto const& tunnels = report.tunnels;
  printHeader(out, agent);
  Columns columns({Align::left, Align::right, Align::right, Align::right, Align::left, Align::left, Align::left});
  columns.row({"VTEP", "TUNNEL", "NEXT HOP", "ADJACENCY", "UNDERLAY", "MAC", "INTERFACE"});
  for (auto const& tunnel : tunnels) addTunnel(columns, tunnel);
  if (!tunnels.empty()) columns.print(out), out << '\n';
  out << countText(tunnels.size(), "tunnel") << programmedIn(tunnels) << " programmed\n";
  printMappingSummary(out, report.mappings);
  printGroupSummary(out, report.groups);
  if (!agent.settled())
    out << "Not settled: writes to the chip are still pending, or the agent does not come to rest\n";
  printLogTotals(out, agent.logs());
}

void printTunnels(std::ostream& out, std::vector<TunnelReport> const& tunnels) {
  Columns columns({Align::left, Align::left, Align::right, Align::left, Align::right, Align::right, Align::right,
                   Align::left, Align::left});
  columns.row({"TYPE", "VTEP", "GENERATION", "LOCAL VTEP", "ADJACENCY", "TUNNEL", "NEXT HOP", "VLANS", "STATE"});
  for (auto const& tunnel : tunnels) {
    columns.row({std::string(tunnelTypeText(tunnel.type)), Kiln::toText(tunnel.vtep), Kiln::toText(tunnel.genId),
                 addressOrNone(tunnel.localVtep), adjacencyText(tunnel.adjId), numberOrDash(tunnel.tunnelId),
                 numberOrDash(tunnel.nextHopId), vlansText(tunnel), tunnel.reason ? *tunnel.reason : "programmed"});
  }
  columns.print(out);
}

void printMappings(std::ostream& out, std::vector<MappingReport> const& mappings) {
  Columns columns({Align::right, Align::left, Align::left, Align::right, Align::right, Align::left});
  columns.row({"VNI", "MAPPING", "INTERFACE", "VLAN", "VFI", "STATE"});
  for (auto const& mapping : mappings) {
    columns.row({Kiln::toText(mapping.vni), std::string(kindText(mapping.kind)), std::string(mapping.vti.name()),
                 Kiln::toText(mapping.vlan), numberOrDash(mapping.vfi), stateText(mapping)});
  }
  columns.print(out);
}

std::string rowOrDash(NeededRow const& needed) {
  auto const row = needed.row ? needed.row->row() : std::nullopt;
  return row ? Kiln::toText(row->value()) : "-";
}

void printGroups(std::ostream& out, std::vector<GroupReport> const& groups) {
  Columns columns({Align::right, Align::right, Align::right, Align::right, Align::right, Align::left, Align::left});
  columns.row({"GROUP", "VERSION", "TUNNEL", "ROW", "BLOCK", "MEMBER", "STATE"});
  for (auto const& group : groups) {
    columns.row({Kiln::toText(group.key), Kiln::toText(group.version), numberOrDash(group.tunnelId),
                 rowOrDash(group.row), rowOrDash(group.block), "",
                 group.reason ? "not programmed: " + *group.reason : "programmed"});
    for (auto const& member : group.members) {
      columns.row({"", "", "", "", "", Kiln::toText(member.vtep), member.reason.value_or("forwards")});
    }
  }
  columns.print(out);
}

void printEntry(std::ostream& out, Asic::EntryView const& entry) {
  FieldText fields(FieldText::Handles::shown);
  entry.fields(fields);
  auto const text = fields.take();
  out << "  " << nameOf(entry.key()) << ": " << rowText(entry.row());
  if (entry.state() != Asic::EntryState::written) out << ", " << stateText(entry.state());
  out << (text.empty() ? "" : ", ") << text << '\n';
}

void printTables(std::ostream& out, Asic::Chip const& chip) {
  for (auto const* store : sortedStores(chip)) {
    out << store->name() << ": " << store->used() << " of " << store->capacity() << " rows used";
    if (store->waiting() != 0) out << ", " << store->waiting() << " waiting";
    out << '\n';
    store->forEachEntry([&](Asic::EntryView const& entry) { printEntry(out, entry); });
  }
}

void printChip(std::ostream& out, Asic::Chip const& chip) {
  Columns columns({Align::left, Align::right, Align::right, Align::right, Align::right});
  columns.row({"CHIP TABLE", "ROWS", "USED", "WRITES", "REFUSED"});
  for (auto const& table : sortedChipTables(chip)) {
    columns.row({table.name, Kiln::toText(table.rows), Kiln::toText(table.used), Kiln::toText(table.writes),
                 Kiln::toText(table.refused)});
  }
  columns.print(out);
  out << chip.writes() << " writes\n";
}

/// Whether a JSON text says nothing: null, or no member, element or character.
bool isEmpty(std::string_view json) { return json == "null" || json == "{}" || json == "[]" || json == "\"\""; }

void printEntity(std::ostream& out, Kiln::Entity const& entity) {
  for (auto const* attribute : entity.typeData().attributes()) {
    auto const value = Kiln::jsonText([&](Kiln::JsonOut place) { attribute->toJson(entity, place); });
    if (!isEmpty(value)) out << "  " << attribute->name << '=' << value << '\n';
  }
}

void printState(std::ostream& out, Stateway::AgentStores const& stores) {
  for (auto const store : kStores) {
    forEachEntity(stores, store, [&](std::string const& path, Kiln::Entity const& entity) {
      out << store << ' ' << path << '\n';
      printEntity(out, entity);
    });
  }
}

}  // namespace

void printSection(std::ostream& out, std::string_view section, Agent const& agent, Report const& report) {
  if (section == "summary") return printSummary(out, agent, report);
  if (section == "tunnels") return printTunnels(out, report.tunnels);
  if (section == "vni") return printMappings(out, report.mappings);
  if (section == "groups") return printGroups(out, report.groups);
  if (section == "tables") return printTables(out, agent.chip());
  if (section == "chip") return printChip(out, agent.chip());
  if (section == "resource") return printResources(out, agent.chip());
  if (section == "logs") return printLogs(out, agent);
  printState(out, agent.stores());
}

}  // namespace Host
