#include "host/graph/Graph.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/show/FieldText.h"
#include "host/show/HopRows.h"
#include "host/show/VtepRows.h"

namespace Host {

namespace {

using Kind = Drawing::Kind;

/// Adds a row, or that there is none, below `from`.
void addNeeded(Drawing& drawing, Asic::Chip const& chip, std::size_t from, NeededRow const& needed, std::string label) {
  auto const to = needed.row ? drawing.row(*needed.row) : drawing.node(Kind::gap, absenceOf(chip, needed.table));
  drawing.edge(from, to, std::move(label));
}

void addHops(Drawing& drawing, std::size_t tunnel, std::vector<HopRow> const& hops) {
  for (auto const& hop : hops) {
    if (!hop.wanted) continue;
    auto const node = drawing.node(Kind::wish, "next hop " + hop.name());
    drawing.edge(tunnel, node, "wanted");
    if (hop.row) drawing.edge(node, drawing.row(*hop.row), hop.state);
    if (!hop.good) drawing.edge(node, drawing.node(Kind::gap, hop.state));
  }
}

}  // namespace

Drawing vtepGraph(Agent const& agent, Meshal::IpGenAddr const& vtep, std::vector<TunnelReport> const& tunnels) {
  Drawing drawing;
  auto const rows = RowFinder(agent).of(vtep);
  for (auto const& tunnel : tunnels) {
    auto const node = drawing.node(Kind::wish, fmt::format("{}\n{}", tunnelTypeText(tunnel.type), Kiln::toText(vtep)));
    if (!tunnel.programmed()) drawing.edge(node, drawing.node(Kind::gap, *tunnel.reason), "not programmed");
    if (hasOverlay(tunnel.type)) {
      addNeeded(drawing, agent.chip(), node, rows.overlay, "overlay entry");
    } else {
      for (auto const& copy : rows.copies)
        addNeeded(drawing, agent.chip(), node, copy.row, "copy by " + copy.port.name());
    }
    addHops(drawing, node, hopRows(agent, tunnel));
  }
  auto const from = drawing.node(Kind::wish, "packets from\n" + Kiln::toText(vtep));
  if (tunnels.empty()) drawing.edge(from, drawing.node(Kind::gap, "no input has a tunnel to it"));
  if (tunnels.empty()) return drawing;
  addNeeded(drawing, agent.chip(), from, rows.source, "by source");
  addNeeded(drawing, agent.chip(), from, rows.destination, "by destination");
  return drawing;
}

Drawing vniGraph(Agent const& agent, Vxlan::VniExt vni, std::vector<MappingReport> const& mappings) {
  Drawing drawing;
  MappingRows const rows(agent);
  auto const node = drawing.node(Kind::wish, "VNI " + Kiln::toText(vni));
  if (mappings.empty()) drawing.edge(node, drawing.node(Kind::gap, "no input maps it"));
  if (!mappings.empty() && !rows.hasPortGroups()) addNeeded(drawing, agent.chip(), node, rows.ingress(vni), "in");
  for (auto const& mapping : mappings) {
    auto const text = fmt::format("{} mapping\nVLAN {}", kindText(mapping.kind), mapping.vlan);
    auto const from = drawing.node(Kind::wish, text);
    drawing.edge(node, from);
    if (!mapping.isAsWanted())
      drawing.edge(from, drawing.node(Kind::gap, mapping.reason.value_or("")), "not programmed");
    if (mapping.kind != MappingReport::Kind::local) continue;
    for (auto const& row : rows.egress(mapping.vlan)) addNeeded(drawing, agent.chip(), from, row, "out");
    for (auto const& tunnel : tunnelReports(agent)) {
      auto const isIts = [&](auto const& vlan) { return static_cast<std::uint16_t>(vlan) == mapping.vlan; };
      if (std::none_of(tunnel.vlans.begin(), tunnel.vlans.end(), isIts)) continue;
      auto const to = drawing.node(Kind::wish, "VTEP " + Kiln::toText(tunnel.vtep));
      drawing.edge(from, to, "floods");
      if (!tunnel.programmed()) drawing.edge(to, drawing.node(Kind::gap, *tunnel.reason), "not programmed");
    }
  }
  return drawing;
}

}  // namespace Host
