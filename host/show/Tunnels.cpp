#include "host/show/Tunnels.h"

#include <algorithm>
#include <unordered_map>

#include "host/notes/OwnIds.h"
#include "host/show/Chain.h"
#include "host/show/Reason.h"
#include "host/show/VtepRows.h"
#include "platform/tessel/central/VxlanToL2State.h"
#include "platform/vane/HerVtep.h"
#include "platform/vane/McastTunnel.h"

namespace Host {

namespace {

using GenIds = std::unordered_map<Meshal::IpGenAddr, std::uint64_t, Kiln::Hash<Meshal::IpGenAddr>>;

GenIds genIdsOf(Vane::HwTunnelConfig const& config) {
  GenIds newest;
  for (auto const& entry : config.hwTunnelConfigListColl()) {
    auto& genId = newest[entry->tunnelKey().dst()];
    genId = std::max(genId, entry->tunnelKey().genId());
  }
  return newest;
}

bool isPublished(TunnelReport const& report) {
  // Of these the next-hop id alone, which counts the changes of what their packets go to.
  bool const countsOnly = report.type == Vane::vxlanMcastHer_ || report.type == Vane::vxlanBum_;
  return report.nextHopId && (report.tunnelId || countsOnly);
}

std::vector<Bridging::VlanId> vlansOf(Agent const& agent, Meshal::IpGenAddr const& vtep) {
  auto const statuses = agent.state<Vane::VXLAN::VaneVxlanHwHerVtepStatusDir>(kHerVtepStatusPath);
  auto const status = statuses ? statuses->vaneVxlanHwHerVtepStatus(vtep) : nullptr;
  if (!status) return {};
  auto vlans = Kiln::keysOf(status->vlanListColl());
  std::sort(vlans.begin(), vlans.end());
  return {vlans.begin(), vlans.end()};
}

/// Completes reports with what does not depend on the kind of tunnel.
class Completion {
 public:
  explicit Completion(Agent const& agent) : agent_(agent), rows_(agent), written_(agent.chip()) {}

  TunnelReport of(TunnelReport report, Vane::VaneTunnelConfig const* wanted) {
    if (!hasOverlay(report.type)) report.encapId = rows_.encapId(report.vtep);
    auto const needed = rows_.needed(report.type, report.vtep);
    bool const written =
        std::all_of(needed.begin(), needed.end(), [&](NeededRow const& row) { return written_.has(row); });
    bool const programmed = isPublished(report) && written && !copyFault(agent_, rows_, report);
    if (programmed) {
      report.remark = halfResolved(agent_, report);
    } else {
      report.reason = whyNotProgrammed(agent_, wanted, report);
    }
    return report;
  }
  Meshal::IpGenAddr localVtep(Meshal::IpGenAddr const& vtep) const { return rows_.localVtep(vtep); }

 private:
  Agent const& agent_;
  RowFinder rows_;
  WrittenRows written_;
};

/// Gathers the reports of the tunnels of one type of the forwarding abstraction.
class Collector {
 public:
  Collector(Agent const& agent, Vane::TunnelType type, Completion& completion)
      : agent_(agent),
        type_(type),
        completion_(completion),
        wanted_(agent.wantedTunnels(type)),
        published_(agent.publishedTunnels(type)),
        maps_(agent.state<TesselCentral::VxlanToL2State>(kVxlanToL2StatePath)),
        genIds_(genIdsOf(*agent.hwTunnelConfig(type))) {}

  template <class Visit>
  void each(Visit visit) const {
    for (auto const& tunnel : wanted_->tunnelColl()) visit(tunnel->vtep());
  }
  bool has(Meshal::IpGenAddr const& vtep) const { return wanted_->tunnelHas(vtep); }
  std::size_t size() const { return wanted_->tunnelColl().size(); }

  TunnelReport of(Meshal::IpGenAddr const& vtep) const {
    TunnelReport report;
    report.type = type_;
    report.vtep = vtep;
    report.adjId = wanted_->tunnel(vtep)->adjId();
    if (auto const found = genIds_.find(vtep); found != genIds_.end()) report.genId = found->second;
    auto const& map = maps_->vtepIpToTnlIdNhIdMap(vtep);
    if (map && map->tnlKeysHas(type_)) report.localVtep = completion_.localVtep(vtep);
    if (auto const& status = published_->tunnelStatusEntry(vtep)) {
      report.tunnelId = usable(status->hwTunnelId());
      report.nextHopId = usable(status->hwNextHopId());
    }
    if (auto const& adjacency = wanted_->adjacency(report.adjId.value()); report.adjId && adjacency) {
      report.nextHops = adjacency->nextHops();
    }
    if (type_ == Vane::vxlanHerTunnel_) report.vlans = vlansOf(agent_, vtep);
    return completion_.of(std::move(report), wanted_.get());
  }

 private:
  Agent const& agent_;
  Vane::TunnelType type_;
  Completion& completion_;
  Dovel::Ptr<Vane::VaneTunnelConfig> wanted_;
  Dovel::Ptr<Vane::VaneTunnelStatus> published_;
  Dovel::Ptr<TesselCentral::VxlanToL2State> maps_;
  GenIds genIds_;
};

/// The same for a type of the multicast features.
class McastCollector {
 public:
  McastCollector(Agent const& agent, McastKind const& kind, Completion& completion)
      : type_(kind.type),
        completion_(completion),
        wanted_(agent.state<Multicast::Vxlan::TunnelConfigDir>(kind.configPath())),
        published_(agent.state<Multicast::Vxlan::TunnelStatusDir>(kind.statusPath())) {}

  template <class Visit>
  void each(Visit visit) const {
    for (auto const& tunnel : wanted_->tunnelColl()) visit(tunnel->addr());
  }
  bool has(Meshal::IpGenAddr const& addr) const { return wanted_->tunnelHas(addr); }
  std::size_t size() const { return wanted_->tunnelColl().size(); }

  TunnelReport of(Meshal::IpGenAddr const& addr) const {
    TunnelReport report;
    report.type = type_;
    report.vtep = addr;
    report.localVtep = completion_.localVtep(addr);
    report.nextHops = wanted_->tunnel(addr)->nextHops();
    if (auto const& status = published_->tunnel(addr)) {
      report.tunnelId = usable(status->hwTunnelId());
      report.nextHopId = usable(status->hwNextHopId());
    }
    return completion_.of(std::move(report), nullptr);
  }

 private:
  Vane::TunnelType type_;
  Completion& completion_;
  Dovel::Ptr<Multicast::Vxlan::TunnelConfigDir> wanted_;
  Dovel::Ptr<Multicast::Vxlan::TunnelStatusDir> published_;
};

/// Calls `visit` with the collector of each type.
template <class Visit>
void eachCollector(Agent const& agent, Visit visit) {
  Completion completion(agent);
  for (auto const& [type, name] : kTunnelTypes) visit(Collector(agent, type, completion));
  for (auto const& kind : kMcastKinds) visit(McastCollector(agent, kind, completion));
}

}  // namespace

std::vector<TunnelReport> tunnelReports(Agent const& agent) {
  std::size_t size = 0;
  eachCollector(agent, [&](auto const& collector) { size += collector.size(); });
  std::vector<TunnelReport> reports;
  reports.reserve(size);
  eachCollector(agent, [&](auto const& collector) {
    auto const begin = static_cast<std::ptrdiff_t>(reports.size());
    collector.each([&](Meshal::IpGenAddr const& vtep) { reports.push_back(collector.of(vtep)); });
    std::sort(reports.begin() + begin, reports.end(), [](auto const& a, auto const& b) { return a.vtep < b.vtep; });
  });
  return reports;
}

std::vector<TunnelReport> tunnelReports(Agent const& agent, Meshal::IpGenAddr const& vtep) {
  std::vector<TunnelReport> reports;
  eachCollector(agent, [&](auto const& collector) {
    if (collector.has(vtep)) reports.push_back(collector.of(vtep));
  });
  return reports;
}

std::string adjacencyText(Vane::AdjIdOrNone const& adjId) {
  if (!adjId) return "-";
  auto const id = adjId.value();
  return (id < firstOwnId ? "" : "own ") + Kiln::toText(id);
}

std::string_view tunnelTypeText(Vane::TunnelType type) {
  for (auto const& [known, name] : kTunnelTypes) {
    if (known == type) return name;
  }
  for (auto const& kind : kMcastKinds) {
    if (kind.type == type) return kind.name;
  }
  return {};
}

}  // namespace Host
