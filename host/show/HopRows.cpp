#include "host/show/HopRows.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

#include "host/show/Chain.h"
#include "host/show/FieldText.h"
#include "host/show/NextHops.h"
#include "platform/tessel/tables/HerNextHopTables.h"
#include "platform/tessel/tables/L3NextHop2Table.h"

namespace Host {

namespace {

using Handle = Asic::EntryHandle::PtrConst;
using TesselL3Common::L3NextHop2Table;
using TesselVxlan::HerNextHop2Table;

/// A row of an underlay next hop, with its key.
struct ChipHop {
  Handle row;
  Meshal::EthAddr mac;
  Meshal::IntfId interface;
  bool taken = false;
};

class ChipHops {
 public:
  explicit ChipHops(std::vector<NeededRow> const& tops) {
    for (auto const& top : tops) {
      if (top.row) add(top.row);
    }
  }
  std::vector<ChipHop> take() { return std::move(hops_); }

 private:
  void add(Handle const& handle) {
    auto* const record = handle->record();
    if (!record || !seen_.insert(record).second) return;
    Handle const weak(&record->weak());
    if (handle->tableName() == Asic::shortName(L3NextHop2Table::kilnType().name())) {
      auto const& key = static_cast<L3NextHop2Table::Store::Record const*>(record)->key;
      hops_.push_back({weak, key.macAddr(), key.intfId()});
    } else if (handle->tableName() == Asic::shortName(HerNextHop2Table::kilnType().name())) {
      auto const& key = static_cast<HerNextHop2Table::Store::Record const*>(record)->key;
      hops_.push_back({weak, key.macAddr, key.intfId});
    }
    for (auto const& link : linksOf(*handle)) add(link.target);
  }

  std::set<Asic::RecordBase const*> seen_;
  std::vector<ChipHop> hops_;
};

std::vector<NeededRow> topsOf(Agent const& agent, TunnelReport const& tunnel) {
  auto rows = RowFinder(agent).of(tunnel.vtep);
  if (hasOverlay(tunnel.type)) return {rows.overlay};
  std::vector<NeededRow> tops;
  for (auto& copy : rows.copies) tops.push_back(std::move(copy.row));
  return tops;
}

bool isBy(ChipHop const& hop, Vane::NextHopEntry const& wanted) {
  return hop.interface == wanted.l3Intf() || hop.interface == wanted.l2Intf();
}

/// The wanted next hops by address.
std::vector<HopRow> wantedOf(TunnelReport const& tunnel) {
  std::vector<HopRow> rows;
  for (auto const& [hop, weight] : weighedNextHops(tunnel.nextHops)) rows.push_back({.wanted = hop, .weight = weight});
  std::sort(rows.begin(), rows.end(), [](auto const& a, auto const& b) {
    return std::pair(a.wanted->addr(), a.wanted->l3Intf().name()) <
           std::pair(b.wanted->addr(), b.wanted->l3Intf().name());
  });
  return rows;
}

void setRow(HopRow& hop, ChipHop& chip) {
  chip.taken = true;
  hop.row = chip.row;
  hop.mac = Kiln::toText(chip.mac);
  hop.port = portText(*chip.row);
}

std::string unresolvedText(Agent const& agent, Vane::NextHopEntry const& hop) {
  auto const& known = agent.notes().unresolved;
  auto const why = known.find({hop.addr(), std::string(hop.l3Intf().name())});
  return why == known.end() ? "unresolved" : "unresolved: " + why->second;
}

void complete(HopRow& hop, std::vector<ChipHop>& chip, Agent const& agent, bool oneIsEnough) {
  auto const& wanted = *hop.wanted;
  if (wanted.type() == Vane::nextHopUnresolved) {
    hop.state = unresolvedText(agent, wanted);
    return;
  }
  auto const same = std::find_if(chip.begin(), chip.end(),
                                 [&](auto const& row) { return row.mac == wanted.ethAddr() && isBy(row, wanted); });
  if (same != chip.end()) {
    setRow(hop, *same);
    hop.good = same->row->state() == Asic::EntryState::written;
    hop.state = hop.good ? "programmed" : stateText(same->row->state());
    return;
  }
  auto const former =
      std::find_if(chip.begin(), chip.end(), [&](auto const& row) { return !row.taken && isBy(row, wanted); });
  if (former != chip.end() && !oneIsEnough) {
    setRow(hop, *former);
    hop.state = "former MAC";
    return;
  }
  hop.good = oneIsEnough && !chip.empty();
  hop.state = hop.good ? "not chosen" : "not in the chip";
}

/// The drop row has the broadcast address.
bool drops(ChipHop const& hop) { return hop.mac.u64() == 0xffffffffffff; }

}  // namespace

std::string HopRow::name() const {
  if (!wanted) return mac;
  auto const& interface = wanted->l3Intf().empty() ? wanted->l2Intf() : wanted->l3Intf();
  return fmt::format("{} by {}", Kiln::toText(wanted->addr()), interface.name());
}

std::string portText(Asic::EntryHandle const& row) {
  // 1: all ports of a VLAN; 2: a port or a group of ports.
  auto const kind = numberOf(row, "destinationKind");
  if (kind == 1) return "VLAN " + Kiln::toText(numberOf(row, "vlanId"));
  if (kind != 2) return {};
  return (numberOf(row, "isLag") != 0 ? "LAG " : "port ") + Kiln::toText(numberOf(row, "destination"));
}

std::vector<HopRow> hopRows(Agent const& agent, TunnelReport const& tunnel) {
  auto rows = wantedOf(tunnel);
  auto chip = ChipHops(topsOf(agent, tunnel)).take();
  bool const oneIsEnough = tunnel.type == Vane::vxlanHerTunnel_;
  for (auto& row : rows) complete(row, chip, agent, oneIsEnough);
  for (auto& hop : chip) {
    if (hop.taken || drops(hop)) continue;
    HopRow extra{.wanted = std::nullopt, .state = "not wanted"};
    setRow(extra, hop);
    rows.push_back(std::move(extra));
  }
  return rows;
}

Verdict verdictOf(std::vector<TunnelReport> const& tunnels, std::vector<std::vector<HopRow>> const& hops) {
  if (tunnels.empty()) return {"not wanted: no input has a tunnel to it", "no tunnel"};
  for (auto const& tunnel : tunnels) {
    if (!tunnel.programmed()) return {"not programmed: " + *tunnel.reason, tunnel.reason};
  }
  auto const isGood = [](HopRow const& hop) { return hop.good; };
  for (auto const& of : hops) {
    auto const bad = std::find_if_not(of.begin(), of.end(), isGood);
    if (bad == of.end()) continue;
    auto const wanted = std::count_if(of.begin(), of.end(), [](HopRow const& hop) { return hop.wanted.has_value(); });
    return {fmt::format("programmed, {} of {} next hops", std::count_if(of.begin(), of.end(), isGood), wanted),
            bad->name() + ": " + bad->state};
  }
  auto const count = hops.front().size();
  auto const text = fmt::format("programmed, {0} of {0} next hop{1}", count, count == 1 ? "" : "s");
  return {count == 0 ? "programmed" : text, std::nullopt};
}

void writeHops(Kiln::JsonWriter& json, std::vector<HopRow> const& hops) {
  json.key("nextHops").array();
  for (auto const& hop : hops) {
    auto const text = [](std::string value) { return value.empty() ? std::nullopt : std::optional(std::move(value)); };
    bool const resolved = hop.wanted && hop.wanted->type() != Vane::nextHopUnresolved;
    json.object();
    json.key("address").text(hop.wanted ? text(Kiln::toText(hop.wanted->addr())) : std::nullopt);
    json.key("mac").text(resolved ? text(Kiln::toText(hop.wanted->ethAddr())) : std::nullopt);
    json.key("interface").text(hop.wanted ? text(std::string(hop.wanted->l3Intf().name())) : std::nullopt);
    json.key("weight").number(std::uint64_t{hop.weight});
    json.key("chipTable").text(hop.row ? text(std::string(hop.row->tableName())) : std::nullopt);
    json.key("chipRow").number(hop.row && hop.row->row() ? std::optional(hop.row->row()->value()) : std::nullopt);
    json.key("chipMac").text(text(hop.mac));
    json.key("port").text(text(hop.port));
    json.key("state").text(std::string_view(hop.state));
    json.key("good").boolean(hop.good);
    json.objectEnd();
  }
  json.arrayEnd();
}

}  // namespace Host
