#include "host/show/Tunnels.h"

#include <algorithm>
#include <unordered_map>

#include "host/show/Chain.h"
#include "host/show/Reason.h"
#include "platform/tessel/central/VxlanToL2State.h"

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

template <class Id>
std::optional<std::uint32_t> usable(Id const& id) {
  return id.valid() && id.value() != 0xFFFFFFFE ? std::optional(id.value()) : std::nullopt;
}

/// Gathers the reports of the tunnels of one type.
class Collector {
 public:
  Collector(Agent const& agent, Vane::TunnelType type)
      : agent_(agent),
        type_(type),
        wanted_(agent.wantedTunnels(type)),
        published_(agent.publishedTunnels(type)),
        maps_(agent.state<TesselCentral::VxlanToL2State>(kVxlanToL2StatePath)),
        genIds_(genIdsOf(*agent.hwTunnelConfig(type))),
        carried_(agent.chip()) {}

  Vane::VaneTunnelConfig const& wanted() const { return *wanted_; }

  TunnelReport of(Vane::VaneTunnelConfigEntry const& tunnel) {
    TunnelReport report;
    report.type = type_;
    report.vtep = tunnel.vtep();
    report.adjId = tunnel.adjId();
    if (auto const found = genIds_.find(tunnel.vtep()); found != genIds_.end()) report.genId = found->second;
    auto const& map = maps_->vtepIpToTnlIdNhIdMap(tunnel.vtep());
    if (map && map->tnlKeysHas(type_)) report.localVtep = map->getLocalVtep(tunnel.vtep().af());
    if (auto const& status = published_->tunnelStatusEntry(tunnel.vtep())) {
      report.tunnelId = usable(status->hwTunnelId());
      report.nextHopId = usable(status->hwNextHopId());
    }
    if (auto const& adjacency = wanted_->adjacency(tunnel.adjId().value()); tunnel.adjId() && adjacency) {
      report.nextHops = adjacency->nextHops();
    }
    bool const programmed = report.tunnelId && report.nextHopId && carried_.carries(report.vtep);
    if (!programmed) report.reason = whyNotProgrammed(agent_, *wanted_, report);
    return report;
  }

 private:
  Agent const& agent_;
  Vane::TunnelType type_;
  Dovel::Ptr<Vane::VaneTunnelConfig> wanted_;
  Dovel::Ptr<Vane::VaneTunnelStatus> published_;
  Dovel::Ptr<TesselCentral::VxlanToL2State> maps_;
  GenIds genIds_;
  CarriedVteps carried_;
};

constexpr std::array kShownTypes{Vane::vxlanTunnel_, Vane::vxlanMemberTunnel_};

}  // namespace

std::vector<TunnelReport> tunnelReports(Agent const& agent) {
  std::vector<TunnelReport> reports;
  for (auto const type : kShownTypes) {
    Collector collector(agent, type);
    auto const begin = static_cast<std::ptrdiff_t>(reports.size());
    for (auto const& tunnel : collector.wanted().tunnelColl()) reports.push_back(collector.of(*tunnel));
    std::sort(reports.begin() + begin, reports.end(), [](auto const& a, auto const& b) { return a.vtep < b.vtep; });
  }
  return reports;
}

std::vector<TunnelReport> tunnelReports(Agent const& agent, Meshal::IpGenAddr const& vtep) {
  std::vector<TunnelReport> reports;
  for (auto const type : kShownTypes) {
    Collector collector(agent, type);
    if (auto const& tunnel = collector.wanted().tunnel(vtep)) reports.push_back(collector.of(*tunnel));
  }
  return reports;
}

std::string_view tunnelTypeText(Vane::TunnelType type) {
  for (auto const& [known, name] : kTunnelTypes) {
    if (known == type) return name;
  }
  return {};
}

}  // namespace Host
