#include "bench/road/RoadAgent.h"

#include <algorithm>

#include "platform/kilnsharedmem/EntityManager.h"
#include "platform/stateway/EntityManager.h"
#include "platform/vxlan/VxlanConfig.h"

namespace RoadBench {

namespace {

Host::Agent::Options optionsOf(Road const& road, std::string const& profile, Asic::Completion completion) {
  Host::Agent::Options options;
  options.profile = profile;
  options.completion = completion;
  options.virtualClock = true;
  options.producers = road.kind == Kind::flood;
  return options;
}

}  // namespace

RoadAgent::RoadAgent(Road const& road, std::string const& profile, Asic::Completion completion)
    : road_(road), agent_(optionsOf(road, profile, completion)), active_(road.tunnels) {
  agent_.apply(road.document(false), "switch");
  for (auto const type : road.types()) {
    auto& tunnels = all_.emplace_back(Tunnels{type, {}, {}, {}, {}});
    for (std::uint32_t n = 0; n < kAdjacencies; ++n) {
      tunnels.lists.push_back(Dovel::make<Vane::NextHopEntryList>(n + 1, Road::nextHops(n, type)));
    }
    for (std::uint32_t n = 0; n < road.tunnels; ++n) {
      auto const entry = Dovel::make<Vane::HwTunnelConfigEntry>(road.key(n));
      entry->nextHopEntryListIs(tunnels.lists[Road::adjacencyOf(n)]);
      tunnels.entries.push_back(entry);
    }
  }
  bind();
  writes();
}

void RoadAgent::bind() {
  for (auto& tunnels : all_) {
    bool const mcast = tunnels.type == Vane::vxlanMcastTunnel_;
    auto const configs = mcast ? "l3/hwMcastTunnelConfigDir" : Host::kHwTunnelConfigPath;
    auto const statuses = mcast ? "l3/hwMcastTunnelStatusDir" : Host::kHwTunnelStatusPath;
    tunnels.config = agent_.local<Vane::HwTunnelConfigDir>(configs)->hwTunnelConfig(tunnels.type);
    tunnels.status = agent_.local<Vane::HwTunnelStatusDir>(statuses)->hwTunnelStatus(tunnels.type);
    tunnels.config->hwInitIs(1);
  }
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

L2Rib::FloodSet& RoadAgent::floodSet() {
  auto const& wanted = agent_.wantedTunnels(Vane::vxlanHerTunnel_);
  for (std::uint32_t n = 0; n < kAdjacencies && !wanted->adjacencyHas(n + 1); ++n) {
    wanted->adjacencyIs(n + 1)->nextHopsIs(Road::nextHops(n));
  }
  auto const lists = agent_.stores().shmem->getEntity<L2Rib::FloodSetOutput>("bridging/l2Rib/floodOutput");
  return *lists->floodSetIs(Bridging::VlanId(10));
}

void RoadAgent::add(std::uint32_t tunnel) {
  if (road_.kind == Kind::flood) {
    auto const vtep = road_.vtep(tunnel);
    agent_.state<VxlanController::VtepStatusDirV2>("vxlan/version2/vtepStatusDir")
        ->vtepAdjacencyIs(vtep, Vane::AdjIdOrNone(Road::adjacencyOf(tunnel) + 1));
    floodSet().vtepIs(vtep, true);
    return;
  }
  for (auto const& tunnels : all_) tunnels.config->hwTunnelConfigListIs(tunnels.entries[tunnel]);
}

void RoadAgent::activate(std::uint32_t tunnel) {
  auto const& tunnels = all_.front();
  if (tunnels.type != Vane::vxlanTunnel_) return;
  auto const& entry = tunnels.status->tunnelStatus(road_.key(tunnel));
  if (!entry) return;
  active_[tunnel] = entry->hwNextHopStatusEntry().hwNextHopId();
  tunnels.config->activeNextHopIdListIs(active_[tunnel], true);
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
    if (road_.kind == Kind::flood) {
      agent_.state<VxlanController::VtepStatusDirV2>("vxlan/version2/vtepStatusDir")
          ->vtepAdjacencyIs(road_.vtep(update.tunnel), Vane::AdjIdOrNone(update.adjacency + 1));
      continue;
    }
    for (auto const& tunnels : all_) {
      auto const& list = tunnels.lists[update.adjacency];
      tunnels.entries[update.tunnel]->nextHopEntryListIs(
          Dovel::make<Vane::NextHopEntryList>(list->adjId(), list->nextHopEntry()));
    }
    if (++written % kBurst == 0) agent_.settle();
  }
  agent_.settle();
}

void RoadAgent::flap() {
  Meshal::IntfId const uplink("Ethernet0");
  changeListsOver(uplink, [&](Vane::NextHopEntryList const& former) {
    auto left = former.nextHopEntry();
    for (auto const& nextHop : former.nextHopEntry()) {
      if (nextHop.l2Intf() == uplink) left.erase(nextHop);
    }
    return Dovel::make<Vane::NextHopEntryList>(former.adjId(), left);
  });
  agent_.settle();
  changeListsOver(uplink, [](Vane::NextHopEntryList const& former) {
    return Dovel::make<Vane::NextHopEntryList>(former.adjId(), former.nextHopEntry());
  });
  agent_.settle();
}

template <class ListOf>
void RoadAgent::changeListsOver(Meshal::IntfId uplink, ListOf&& listOf) {
  for (auto const& tunnels : all_) {
    for (std::uint32_t adjacency = 0; adjacency < kAdjacencies; ++adjacency) {
      auto const& nextHops = tunnels.lists[adjacency]->nextHopEntry();
      if (std::none_of(nextHops.begin(), nextHops.end(), [&](auto const& hop) { return hop.l2Intf() == uplink; })) {
        continue;
      }
      auto const list = listOf(*tunnels.lists[adjacency]);
      if (road_.kind == Kind::flood) {
        agent_.wantedTunnels(tunnels.type)->adjacencyIs(adjacency + 1)->nextHopsIs(list->nextHopEntry());
        continue;
      }
      for (auto n = adjacency; n < road_.tunnels; n += kAdjacencies) tunnels.entries[n]->nextHopEntryListIs(list);
    }
  }
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
  if (road_.kind == Kind::flood) {
    floodSet().vtepDel(road_.vtep(tunnel));
    return;
  }
  if (active_[tunnel].valid()) all_.front().config->activeNextHopIdListDel(active_[tunnel]);
  for (auto const& tunnels : all_) tunnels.config->hwTunnelConfigListDel(road_.key(tunnel));
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
  for (auto& tunnels : all_) {
    tunnels.config = nullptr;
    tunnels.status = nullptr;
  }
  agent_.stopFeature();
  agent_.startFeature();
  bind();
  create();
}

bool RoadAgent::allProgrammed() const {
  if (road_.kind == Kind::flood) {
    auto const published = agent_.publishedTunnels(Vane::vxlanHerTunnel_);
    return published->tunnelStatusEntryColl().size() == road_.tunnels;
  }
  for (auto const& tunnels : all_) {
    for (std::uint32_t n = 0; n < road_.tunnels; ++n) {
      auto const& entry = tunnels.status->tunnelStatus(road_.key(n));
      if (!entry || entry->hwTunnelId() == Vane::VaneTunnelId::unprogrammed() || !entry->hwTunnelId().valid()) {
        return false;
      }
      auto const nhId = entry->hwNextHopStatusEntry().hwNextHopId();
      if (nhId == Vane::VaneNextHopId::unprogrammed() || !nhId.valid()) return false;
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
