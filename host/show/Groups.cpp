#include "host/show/Groups.h"

#include <algorithm>

#include "host/show/Chain.h"
#include "platform/tessel/tables/VpLagTables.h"

namespace Host {

namespace {

using Meshal::IpGenAddr;
using TesselVxlan::VpLagEcmpMember0Table;
using TesselVxlan::VpLagGroupTable;
using Vane::VXLAN::VaneVtepGroupConfig;
using Vane::VXLAN::VaneVtepGroupConfigDir;
using Vane::VXLAN::VaneVtepGroupKey;
using Vane::VXLAN::VaneVtepGroupStatusDir;
using Text = std::optional<std::string>;

Asic::EntryHandle::PtrConst weak(Asic::EntryHandle::PtrConst const& handle) {
  auto* const record = handle ? handle->record() : nullptr;
  return record ? Asic::EntryHandle::PtrConst(&record->weak()) : nullptr;
}

NeededRow blockOf(NeededRow const& group) {
  NeededRow block{.table = Asic::shortName(VpLagEcmpMember0Table::kilnType().name())};
  if (!group.row) return block;
  for (auto const& link : linksOf(*group.row)) {
    if (link.field == "memberBlockHandle") block.row = weak(link.target);
  }
  return block;
}

/// The members of a block; none without one.
std::vector<VpLagEcmpMember0Table::Entry> membersOf(NeededRow const& block) {
  if (!block.row) return {};
  auto const& members = static_cast<VpLagEcmpMember0Table::Store::Record const*>(block.row->record())->key.members();
  return {members.begin(), members.end()};
}

/// Makes the reports.
class Collector {
 public:
  Collector(Agent const& agent, std::vector<TunnelReport> const& tunnels)
      : agent_(agent), status_(agent.state<VaneVtepGroupStatusDir>(kVtepGroupStatusPath)), written_(agent.chip()) {
    for (auto const& tunnel : tunnels) {
      if (tunnel.type == Vane::vxlanMemberTunnel_) tunnels_.try_emplace(tunnel.vtep, &tunnel);
    }
  }

  GroupReport of(VaneVtepGroupConfig const& config) {
    GroupReport report{.key = config.vaneVtepGroupKey(), .version = config.version()};
    if (auto const& status = status_->vaneVtepGroupStatus(report.key)) {
      report.tunnelId = usable(status->hwTunnelId());
      report.nextHopId = usable(status->hwNextHopId());
    }
    report.row = rowOf<VpLagGroupTable>(agent_.chip(), {report.key.swTunnelGroupId()});
    report.block = blockOf(report.row);
    auto const rows = membersOf(report.block);
    for (auto const& [vtep, unused] : config.vtepListColl()) report.members.push_back({vtep, memberGap(vtep, rows)});
    report.reason = gap(report, rows.size());
    return report;
  }

 private:
  using MemberRows = std::vector<VpLagEcmpMember0Table::Entry>;

  Text memberGap(IpGenAddr const& vtep, MemberRows const& rows) {
    auto const tunnel = tunnels_.find(vtep);
    if (tunnel == tunnels_.end()) return "no member tunnel to it";
    if (!tunnel->second->programmed()) return tunnel->second->reason;
    auto const text = Kiln::toText(vtep);
    auto const isIts = [&](auto const& row) { return row.dvpHandle && row.dvpHandle->keyText() == text; };
    auto const row = std::find_if(rows.begin(), rows.end(), isIts);
    if (row == rows.end()) return "the group has no row for it";
    NeededRow const underlay{.table = "EcmpGroup1Table", .row = weak(row->nhHandle), .sends = true};
    if (!underlay.row) return absenceOf(agent_.chip(), underlay.table);
    if (auto const unwritten = firstUnwritten({{.table = {}, .row = weak(row->dvpHandle)}, underlay}))
      return refusalOf(*unwritten);
    return written_.has(underlay) ? Text() : "no next hop";
  }

  Text gap(GroupReport const& report, std::size_t rows) const {
    if (!agent_.chip().store(report.row.table)) return "no VTEP groups on this chip";
    if (report.members.empty()) return "no members";
    auto const lacking = std::find_if(report.members.begin(), report.members.end(),
                                      [](auto const& member) { return !member.forwards(); });
    for (auto const* needed : {&report.row, &report.block}) {
      if (needed->row && needed->row->state() != Asic::EntryState::written) return refusalOf(*needed->row);
    }
    if (lacking != report.members.end()) return Kiln::toText(lacking->vtep) + ": " + *lacking->reason;
    if (rows != report.members.size()) return "a former member is still in " + std::string(report.block.table);
    return report.tunnelId ? Text() : "no tunnel id";
  }

  Agent const& agent_;
  Dovel::Ptr<VaneVtepGroupStatusDir> status_;
  WrittenRows written_;
  Kiln::HashMap<IpGenAddr, TunnelReport const*> tunnels_;
};

}  // namespace

std::vector<GroupReport> groupReports(Agent const& agent, std::vector<TunnelReport> const& tunnels) {
  auto const config = agent.state<VaneVtepGroupConfigDir>(kVtepGroupConfigPath);
  auto keys = Kiln::keysOf(config->vaneVtepGroupConfigColl());
  std::sort(keys.begin(), keys.end());
  Collector collector(agent, tunnels);
  std::vector<GroupReport> reports;
  for (auto const& key : keys) reports.push_back(collector.of(*config->vaneVtepGroupConfig(key)));
  return reports;
}

}  // namespace Host
