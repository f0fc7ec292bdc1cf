#include "host/show/Mappings.h"

#include <algorithm>

#include "host/show/Chain.h"
#include "platform/tessel/central/VlanVfi.h"
#include "platform/tessel/tables/VniTables.h"

namespace Host {

namespace {

using TesselVxlan::EgrAdaptSinglePortGroupTable;
using TesselVxlan::EgrVfiToVniMappingTable;
using TesselVxlan::L2TunnelVnIdTable;
using Vane::VXLAN::VtiVlanKey;
using Vane::VXLAN::VtiVniKey;
using VaneHelper::VaneHelperVniConfig;
using VaneHelper::VaneHelperVniConfigEntry;
using VaneHelper::VaneHelperVniStatus;
using VaneHelper::VaneHelperVniStatusEntry;
using Vxlan::VniExtOrNone;
using Text = std::optional<std::string>;
using Kind = MappingReport::Kind;
using State = MappingReport::State;

template <class Table>
std::string_view nameOf() {
  return Asic::shortName(Table::kilnType().name());
}

/// What is wrong with a row that has to have `value` in its `field`; `word` names the field.
Text gapOf(Asic::Chip const& chip, NeededRow const& needed, std::string_view field, std::string_view word,
           std::uint64_t value) {
  if (!needed.row) return absenceOf(chip, needed.table);
  if (needed.row->state() != Asic::EntryState::written) return refusalOf(*needed.row);
  auto const found = numberOf(*needed.row, field);
  if (found == value) return {};
  return std::string(needed.table) + ' ' + needed.row->keyText() + " has " + std::string(word) + ' ' +
         Kiln::toText(found);
}

std::uint32_t numberIn(VtiVlanKey const& key) { return key.vlanId(); }
std::uint32_t numberIn(VtiVniKey const& key) { return key.vni().value(); }

template <class Coll>
auto sortedKeys(Coll const& coll) {
  auto keys = Kiln::keysOf(coll);
  std::sort(keys.begin(), keys.end(), [](auto const& a, auto const& b) {
    return std::pair(a.intfId().name(), numberIn(a)) < std::pair(b.intfId().name(), numberIn(b));
  });
  return keys;
}

/// Makes the reports.
class Collector {
 public:
  explicit Collector(Agent const& agent)
      : config_(agent.state<VaneHelperVniConfig>(kVniConfigPath)),
        status_(agent.state<VaneHelperVniStatus>(kVniStatusPath)),
        rows_(agent) {
    for (auto const& [key, entry] : config_->vlanVniMapColl()) holders_.try_emplace(entry.vni(), key);
  }

  /// Those for which `wanted(vni)`.
  template <class Wanted>
  std::vector<MappingReport> all(Wanted const& wanted) const {
    std::vector<MappingReport> reports;
    for (auto const& key : sortedKeys(config_->vlanVniMapColl())) {
      auto const entry = config_->vlanVniMap(key);
      if (wanted(entry.vni())) reports.push_back(local(key, entry));
    }
    for (auto const& key : sortedKeys(config_->remoteVniConfigColl())) {
      if (wanted(VniExtOrNone(key.vni()))) reports.push_back(remote(key, config_->remoteVniConfig(key)));
    }
    return reports;
  }

 private:
  MappingReport local(VtiVlanKey const& key, VaneHelperVniConfigEntry const& entry) const {
    MappingReport report{.kind = Kind::local, .vti = key.intfId(), .vlan = key.vlanId(), .vni = entry.vni()};
    return completed(std::move(report), entry.action());
  }

  MappingReport remote(VtiVniKey const& key, VaneHelperVniConfigEntry const& entry) const {
    MappingReport report{.kind = Kind::remote, .vti = key.intfId(), .vlan = entry.vlanId(), .vni = key.vni()};
    bool const pending = status_->remoteVniStatusEntry(key).action() == VaneHelperVniStatusEntry::pending;
    if (!pending || entry.action() != VaneHelperVniConfigEntry::add)
      return completed(std::move(report), entry.action());
    report.state = State::pending;
    report.reason = holderText(key.vni());
    return report;
  }

  MappingReport completed(MappingReport report, std::uint8_t action) const {
    report.vfi = vfiByRow(report);
    if (action != VaneHelperVniConfigEntry::add) {
      bool const noEffect = report.kind == Kind::remote && action == VaneHelperVniConfigEntry::remove;
      report.state = State::removed;
      report.reason =
          noEffect ? "action 1 has no effect on a remote mapping" : "removed by action " + Kiln::toText(action);
      return report;
    }
    report.reason = rows_.gap(report);
    report.state = report.reason ? State::missing : State::programmed;
    return report;
  }

  /// That of the row of a mapping, unless the row is another mapping's.
  std::optional<std::uint32_t> vfiByRow(MappingReport const& report) const {
    auto const egress = rows_.hasPortGroups() ? rows_.egress(report.vlan) : std::vector<NeededRow>();
    auto const& row = egress.empty() ? rows_.ingress(report.vni).row : egress.front().row;
    bool const has = row && numberOf(*row, "vfi") == rows_.vfiOf(report.vlan);
    return has ? std::optional<std::uint32_t>(rows_.vfiOf(report.vlan)) : std::nullopt;
  }

  /// Which local mapping has a VNI that a remote one waits for.
  std::string holderText(Vxlan::VniExt vni) const {
    auto const holder = holders_.find(VniExtOrNone(vni));
    if (holder == holders_.end()) return "a local mapping has the VNI";
    auto const text = "the local mapping of VLAN " + Kiln::toText(holder->second.vlanId()) + " has the VNI";
    bool const removed = config_->vlanVniMap(holder->second).action() != VaneHelperVniConfigEntry::add;
    return removed ? text + " until it is deleted" : text;
  }

  Dovel::Ptr<VaneHelperVniConfig> config_;
  Dovel::Ptr<VaneHelperVniStatus> status_;
  MappingRows rows_;
  Kiln::HashMap<VniExtOrNone, VtiVlanKey> holders_;
};

}  // namespace

MappingRows::MappingRows(Agent const& agent)
    : chip_(agent.chip()),
      hasPortGroups_(chip_.store(nameOf<EgrAdaptSinglePortGroupTable>()) != nullptr),
      vfiCapabilities_(agent.state<TesselCentral::VfiCapabilityStatus>(kVfiCapabilitiesPath)),
      vlanVfiDir_(agent.state<TesselCentral::VlanVfiDir>(kVlanVfiPath)),
      packetDriver_(agent.state<Anvil::IoctlDrvFab>(kPacketDriverPath)) {}

NeededRow MappingRows::ingress(VniExtOrNone vni) const {
  if (vni.isNone()) return {.table = nameOf<L2TunnelVnIdTable>()};
  return rowOf<L2TunnelVnIdTable>(chip_, {U24(vni.value())});
}

std::vector<NeededRow> MappingRows::egress(std::uint16_t vlan) const {
  auto const table = hasPortGroups_ ? nameOf<EgrAdaptSinglePortGroupTable>() : nameOf<EgrVfiToVniMappingTable>();
  std::vector<NeededRow> rows;
  for (auto const* store : chip_.stores()) {
    if (store->name() != table) continue;
    rows.push_back(hasPortGroups_ ? rowIn<EgrAdaptSinglePortGroupTable>(
                                        *store, EgrAdaptSinglePortGroupTable::keyOfAllPorts(vfiOf(vlan)))
                                  : rowIn<EgrVfiToVniMappingTable>(*store, {vlan}));
  }
  if (rows.empty()) rows.push_back({.table = table});
  return rows;
}

std::uint16_t MappingRows::driverVlan(VniExtOrNone vni) const { return packetDriver_->vniToVlan(vni.value()); }

std::uint16_t MappingRows::vfiOf(std::uint16_t vlan) const {
  return TesselCommon::vlanToVfi(*vfiCapabilities_, *vlanVfiDir_, vlan);
}

Text MappingRows::gap(MappingReport const& mapping) const {
  bool const local = mapping.kind == Kind::local;
  auto const vfi = vfiOf(mapping.vlan);
  if (hasPortGroups_ && !local) return "no remote mappings on this chip";
  if (!hasPortGroups_) {
    if (auto const text = gapOf(chip_, ingress(mapping.vni), "vfi", "VFI", vfi)) return text;
  }
  for (auto const& row : local ? egress(mapping.vlan) : std::vector<NeededRow>()) {
    auto const text =
        hasPortGroups_ ? gapOf(chip_, row, "vfi", "VFI", vfi) : gapOf(chip_, row, "vni", "VNI", mapping.vni.value());
    if (text) return text;
  }
  if (hasPortGroups_ || driverVlan(mapping.vni) == mapping.vlan) return {};
  auto const vlan = driverVlan(mapping.vni);
  return "the packet driver has " + (vlan == 0 ? "no VLAN" : "VLAN " + Kiln::toText(vlan)) + " for the VNI";
}

std::vector<MappingReport> mappingReports(Agent const& agent) {
  return Collector(agent).all([](auto) { return true; });
}

std::vector<MappingReport> mappingReports(Agent const& agent, Vxlan::VniExt vni) {
  return Collector(agent).all([&](VniExtOrNone other) { return other == VniExtOrNone(vni); });
}

std::string_view kindText(Kind kind) { return kind == Kind::local ? "local" : "remote"; }

std::string stateText(MappingReport const& mapping) {
  if (mapping.programmed()) return "programmed";
  return (mapping.pending() ? "pending: " : "not programmed: ") + mapping.reason.value_or("");
}

}  // namespace Host
