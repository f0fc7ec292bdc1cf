#include "bench/road/RoadAgent.h"

#include "platform/vxlan/VxlanConfig.h"

namespace RoadBench {

namespace {

Host::Agent::Options optionsOf(std::string const& profile, Asic::Completion completion) {
  Host::Agent::Options options;
  options.profile = profile;
  options.completion = completion;
  options.virtualClock = true;
  options.producers = false;
  return options;
}

}  // namespace

RoadAgent::RoadAgent(Road const& road, std::string const& profile, Asic::Completion completion)
    : road_(road), agent_(optionsOf(profile, completion)), active_(road.tunnels) {
  agent_.apply(road.document(false), "switch");
  for (std::uint32_t n = 0; n < kAdjacencies; ++n) {
    lists_.push_back(Dovel::make<Vane::NextHopEntryList>(n + 1, Road::nextHops(n)));
  }
  for (std::uint32_t n = 0; n < road.tunnels; ++n) {
    entries_.push_back(Dovel::make<Vane::HwTunnelConfigEntry>(road.key(n)));
    entries_[n]->nextHopEntryListIs(lists_[Road::adjacencyOf(n)]);
  }
  bind();
  writes();
}

void RoadAgent::bind() {
  config_ = agent_.hwTunnelConfig(Vane::vxlanTunnel_);
  status_ = agent_.hwTunnelStatus(Vane::vxlanTunnel_);
  config_->hwInitIs(1);
  agent_.settle();
}

void RoadAgent::create() {
  for (std::uint32_t first = 0; first < road_.tunnels; first += kBurst) {
    auto const end = std::min(road_.tunnels, first + kBurst);
    for (auto n = first; n < end; ++n) add(n);
    agent_.settle();
    for (auto n = first; n < end; ++n) activate(n);
    agent_.settle();
  }
}

void RoadAgent::add(std::uint32_t tunnel) { config_->hwTunnelConfigListIs(entries_[tunnel]); }

void RoadAgent::activate(std::uint32_t tunnel) {
  auto const& entry = status_->tunnelStatus(road_.key(tunnel));
  if (!entry) return;
  active_[tunnel] = entry->hwNextHopStatusEntry().hwNextHopId();
  config_->activeNextHopIdListIs(active_[tunnel], true);
}

void RoadAgent::moveLocalVtep() {
  agent_.state<Vxlan::VtiStatusDir>(Host::kVtiStatusPath)
      ->vtiStatus(Meshal::IntfId("Vxlan1"))
      ->srcAddrIs(Meshal::IpAddr(0x0a000002));
  agent_.settle();
}

void RoadAgent::update(std::vector<Road::Update> const& updates) {
  std::uint32_t written = 0;
  for (auto const& update : updates) {
    entries_[update.tunnel]->nextHopEntryListIs(listOf(update.adjacency));
    if (++written % kBurst == 0) agent_.settle();
  }
  agent_.settle();
}

Dovel::Ptr<Vane::NextHopEntryList> RoadAgent::listOf(std::uint32_t adjacency) const {
  return Dovel::make<Vane::NextHopEntryList>(adjacency + 1, lists_[adjacency]->nextHopEntry());
}

void RoadAgent::remove(std::vector<std::uint32_t> const& order) {
  std::uint32_t removed = 0;
  for (auto const tunnel : order) {
    remove(tunnel);
    if (++removed % kBurst == 0) agent_.settle();
  }
  agent_.settle();
}

void RoadAgent::remove(std::uint32_t tunnel) {
  config_->activeNextHopIdListDel(active_[tunnel]);
  config_->hwTunnelConfigListDel(road_.key(tunnel));
}

void RoadAgent::replace(std::uint32_t tunnel) {
  remove(tunnel);
  agent_.settle();
  add(tunnel);
  agent_.settle();
  activate(tunnel);
  agent_.settle();
}

void RoadAgent::restart() {
  config_ = nullptr;
  status_ = nullptr;
  agent_.stopFeature();
  agent_.startFeature();
  bind();
  create();
}

bool RoadAgent::allProgrammed() const {
  for (std::uint32_t n = 0; n < road_.tunnels; ++n) {
    auto const& entry = status_->tunnelStatus(road_.key(n));
    if (!entry || entry->hwTunnelId() == Vane::VaneTunnelId::unprogrammed() || !entry->hwTunnelId().valid() ||
        active_[n] == Vane::VaneNextHopId::unprogrammed() || !active_[n].valid()) {
      return false;
    }
  }
  return true;
}

std::map<std::string, std::uint64_t> RoadAgent::writes() {
  std::map<std::string, std::uint64_t> all;
  for (auto const& report : agent_.chip().tables()) {
    auto& seen = writesSeen_[report.name];
    if (report.writes != seen) all[report.name] = report.writes - seen;
    seen = report.writes;
  }
  return all;
}

}  // namespace RoadBench
