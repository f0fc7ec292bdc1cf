#include "host/show/ExplainVni.h"

#include <algorithm>
#include <ostream>

#include "host/show/JsonReport.h"
#include "host/show/RowPrinter.h"

namespace Host {

namespace {

using VaneHelper::VaneHelperVniStatus;
using VaneHelper::VaneHelperVniStatusEntry;

/// The first mapping that is to be programmed and is not; null if there is none.
MappingReport const* firstMissing(std::vector<MappingReport> const& mappings) {
  auto const found = std::find_if(mappings.begin(), mappings.end(), [](auto const& m) { return !m.isAsWanted(); });
  return found == mappings.end() ? nullptr : &*found;
}

/// What the feature has published of a mapping.
std::string publishedText(Agent const& agent, MappingReport const& mapping) {
  auto const status = agent.state<VaneHelperVniStatus>(kVniStatusPath);
  bool const local = mapping.kind == MappingReport::Kind::local;
  auto const entry = local ? status->statusEntry({mapping.vti, mapping.vlan})
                           : status->remoteVniStatusEntry({mapping.vti, Vxlan::VniExt(mapping.vni.value())});
  if (entry == VaneHelperVniStatusEntry()) return "none";
  bool const pending = entry.action() == VaneHelperVniStatusEntry::pending;
  return "VLAN " + Kiln::toText(entry.vlanId()) + (pending ? ", pending" : ", programmed");
}

void printMapping(std::ostream& out, Agent const& agent, MappingReport const& mapping) {
  out << kindText(mapping.kind) << " mapping, " << mapping.vti.name() << " VLAN " << mapping.vlan << ": "
      << stateText(mapping) << "\n  status: " << publishedText(agent, mapping) << '\n';
}

/// The VLANs of the local mappings.
std::vector<std::uint16_t> egressVlans(std::vector<MappingReport> const& mappings) {
  std::vector<std::uint16_t> vlans;
  for (auto const& mapping : mappings) {
    if (mapping.kind == MappingReport::Kind::local) vlans.push_back(mapping.vlan);
  }
  return vlans;
}

/// The tunnels of flooded frames of these VLANs, by VTEP.
std::vector<TunnelReport> floodsOf(Agent const& agent, std::vector<std::uint16_t> const& vlans) {
  auto tunnels = tunnelReports(agent);
  std::erase_if(tunnels, [&](TunnelReport const& tunnel) {
    return std::none_of(tunnel.vlans.begin(), tunnel.vlans.end(), [&](auto const& vlan) {
      return std::find(vlans.begin(), vlans.end(), static_cast<std::uint16_t>(vlan)) != vlans.end();
    });
  });
  return tunnels;
}

void printFloods(std::ostream& out, std::vector<TunnelReport> const& tunnels) {
  out << "flooded to" << (tunnels.empty() ? " no VTEP\n" : "\n");
  for (auto const& tunnel : tunnels) {
    out << "  " << Kiln::toText(tunnel.vtep) << ": "
        << (tunnel.programmed() ? "programmed" : "not programmed: " + *tunnel.reason) << '\n';
  }
}

void printRows(std::ostream& out, MappingRows const& rows, Vxlan::VniExt vni, std::vector<std::uint16_t> const& vlans) {
  RowPrinter printer(out);
  if (!rows.hasPortGroups()) printer.print(0, "packets in", rows.ingress(vni));
  for (auto const vlan : vlans) {
    auto const word = rows.hasPortGroups() ? "port group of VLAN " : "packets out of VLAN ";
    auto const egress = rows.egress(vlan);
    for (std::size_t i = 0; i < egress.size(); ++i) {
      auto const chip = egress.size() > 1 ? ", logical chip " + Kiln::toText(i) : "";
      printer.print(0, word + Kiln::toText(vlan) + chip, egress[i]);
    }
  }
  auto const vlan = rows.driverVlan(vni);
  out << "packet driver: " << (vlan == 0 ? "no VLAN" : "VLAN " + Kiln::toText(vlan)) << '\n';
}

}  // namespace

void printVniExplanation(std::ostream& out, Agent const& agent, Vxlan::VniExt vni,
                         std::vector<MappingReport> const& mappings) {
  for (auto const& mapping : mappings) printMapping(out, agent, mapping);
  out << '\n';
  auto const vlans = egressVlans(mappings);
  printRows(out, MappingRows(agent), vni, vlans);
  printFloods(out, floodsOf(agent, vlans));
  auto const* const missing = firstMissing(mappings);
  out << "\nVNI " << Kiln::toText(vni) << ": "
      << (missing ? "not programmed, " + missing->reason.value_or("") : "as wanted") << '\n';
}

void writeVniExplanation(Kiln::JsonWriter& json, Agent const& agent, Vxlan::VniExt vni,
                         std::vector<MappingReport> const& mappings) {
  MappingRows const rows(agent);
  json.key("vni").number(std::uint64_t{vni.value()});
  json.key("mappings").array();
  for (auto const& mapping : mappings) writeMapping(json, mapping);
  json.arrayEnd();
  json.key("chain").object();
  writeChain(json.key("ingress"), rows.ingress(vni).row);
  json.key("egress").array();
  for (auto const vlan : egressVlans(mappings)) {
    for (auto const& row : rows.egress(vlan)) writeChain(json, row.row);
  }
  json.arrayEnd();
  auto const vlan = rows.driverVlan(vni);
  json.key("packetDriver").number(vlan == 0 ? std::nullopt : std::optional<std::uint32_t>(vlan));
  json.objectEnd();
  json.key("floods").array();
  for (auto const& tunnel : floodsOf(agent, egressVlans(mappings))) {
    json.object();
    json.key("vtep").text(std::string_view(Kiln::toText(tunnel.vtep)));
    json.key("programmed").boolean(tunnel.programmed());
    json.key("reason").text(tunnel.reason);
    json.objectEnd();
  }
  json.arrayEnd();
  auto const* const missing = firstMissing(mappings);
  bool const asWanted = !mappings.empty() && !missing;
  json.key("verdict").text(std::string_view(asWanted           ? "as wanted"
                                            : mappings.empty() ? "not mapped"
                                                               : "not programmed"));
  json.key("gap").text(missing            ? missing->reason
                       : mappings.empty() ? std::optional<std::string>("not mapped")
                                          : std::nullopt);
}

}  // namespace Host
