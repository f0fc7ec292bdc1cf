#include "host/compare/Snapshot.h"

#include "host/show/FieldText.h"
#include "host/show/NextHops.h"
#include "host/show/Report.h"
#include "host/show/Sections.h"
#include "platform/asic/Entry.h"
#include "platform/asic/Store.h"

namespace Host {

namespace {

std::string numberText(std::optional<std::uint32_t> const& number) { return number ? Kiln::toText(*number) : "-"; }

std::string stateLine(std::optional<std::string> const& reason) {
  return "state=" + (reason ? "not programmed: " + *reason : "programmed") + '\n';
}

std::string nextHopLine(WeighedNextHop const& weighed) {
  auto const& hop = weighed.hop;
  auto line = "next hop=" + Kiln::toText(hop.addr());
  line += ' ' + (hop.type() == Vane::nextHopUnresolved ? "unresolved" : Kiln::toText(hop.ethAddr()));
  return line + ' ' + std::string((hop.l2Intf().empty() ? hop.l3Intf() : hop.l2Intf()).name()) +
         (weighed.weight == 1 ? "\n" : " x" + Kiln::toText(weighed.weight) + '\n');
}

void add(ItemList& items, TunnelReport const& tunnel) {
  std::string lines;
  if (tunnel.adjId) lines += "adjacency=" + Kiln::toText(tunnel.adjId.value()) + '\n';
  lines += "local VTEP=" + Kiln::toText(tunnel.localVtep) + '\n';
  for (auto const& hop : weighedNextHops(tunnel.nextHops)) lines += nextHopLine(hop);
  for (auto const vlan : tunnel.vlans) lines += "VLAN=" + Kiln::toText(vlan) + '\n';
  lines += stateLine(tunnel.reason);
  items.add(tunnelTypeText(tunnel.type), Kiln::toText(tunnel.vtep), lines,
            numberText(tunnel.tunnelId) + ' ' + numberText(tunnel.nextHopId) + ' ' + numberText(tunnel.encapId));
}

void add(ItemList& items, MappingReport const& mapping) {
  bool const local = mapping.kind == MappingReport::Kind::local;
  auto const vlan = Kiln::toText(mapping.vlan);
  auto const vni = Kiln::toText(mapping.vni);
  auto const key = std::string(mapping.vti.name()) + (local ? " VLAN " + vlan : " VNI " + vni);
  items.add(kindText(mapping.kind), key,
            (local ? "VNI=" + vni : "VLAN=" + vlan) + "\nstate=" + stateText(mapping) + '\n', numberText(mapping.vfi));
}

void add(ItemList& items, GroupReport const& group) {
  std::string lines;
  for (auto const& member : group.members)
    lines += "member=" + Kiln::toText(member.vtep) + ' ' + member.reason.value_or("forwards") + '\n';
  items.add("group", Kiln::toText(group.key), lines + stateLine(group.reason),
            numberText(group.tunnelId) + ' ' + numberText(group.nextHopId));
}

/// The fields of a row as lines, and apart from these the numbers that the table has computed.
class RowLines final : public Asic::FieldVisitor {
 public:
  void number(std::string_view name, std::uint64_t value) override {
    if (value != 0) append(lines, name, value);
  }
  void computed(std::string_view name, std::uint64_t value) override { append(numbers, name, value); }
  void text(std::string_view name, std::string value) override {
    if (!value.empty()) begin(lines, name).append(value).append("\n");
  }
  void handle(std::string_view name, Asic::EntryHandle::PtrConst const& target) override {
    if (!target) return;
    Asic::appendHandleText(begin(lines, name), target);
    lines += '\n';
  }
  void groupBegin(std::string_view name) override {
    lengths_.push_back(prefix_.size());
    prefix_.append(name).append(".");
  }
  void groupEnd() override {
    prefix_.resize(lengths_.back());
    lengths_.pop_back();
  }
  void clear() {
    lines.clear();
    numbers.clear();
  }

  std::string lines;
  std::string numbers;

 private:
  std::string& begin(std::string& out, std::string_view name) const {
    return out.append(prefix_).append(name).append("=");
  }
  void append(std::string& out, std::string_view name, std::uint64_t value) const {
    Kiln::writeText(begin(out, name), value);
    out += '\n';
  }

  std::string prefix_;
  std::vector<std::size_t> lengths_;
};

void addRows(ItemList& items, Asic::StoreBase const& store) {
  RowLines fields;
  store.forEachEntry([&](Asic::EntryView const& entry) {
    fields.clear();
    entry.fields(fields);
    if (entry.state() != Asic::EntryState::written)
      fields.lines.append("state=").append(stateText(entry.state())).append("\n");
    fields.numbers += rowText(entry.row());
    items.add(store.name(), entry.key(), fields.lines, fields.numbers);
  });
}

}  // namespace

Snapshot Snapshot::of(Agent const& agent) {
  Snapshot snapshot;
  auto const report = reportOf(agent);
  snapshot.asWanted = agent.settled() && report.isAsWanted();
  for (auto const& tunnel : report.tunnels) add(snapshot.tunnels, tunnel);
  for (auto const& mapping : report.mappings) add(snapshot.mappings, mapping);
  for (auto const& group : report.groups) add(snapshot.groups, group);
  for (auto const* store : sortedStores(agent.chip())) addRows(snapshot.rows, *store);
  for (auto const& table : sortedChipTables(agent.chip()))
    snapshot.chip.add("table", table.name, "used=" + Kiln::toText(table.used) + '\n');
  for (auto* list : {&snapshot.tunnels, &snapshot.mappings, &snapshot.groups, &snapshot.rows, &snapshot.chip})
    list->sort();
  return snapshot;
}

}  // namespace Host
