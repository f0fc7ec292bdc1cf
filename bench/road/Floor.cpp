#include "bench/road/Floor.h"

namespace RoadBench {

Floor::Floor(Road const& road, bool flat)
    : road_(road),
      flat_(flat),
      local_(Meshal::IpAddr(0x0a000001)),
      overlay_(road.has(Vane::vxlanTunnel_) || road.has(Vane::vxlanMemberTunnel_)),
      admitted_(road.has(Vane::vxlanTunnel_)),
      flood_(road.has(Vane::vxlanHerTunnel_) || road.has(Vane::vxlanMcastTunnel_)),
      copies_(road.has(Vane::vxlanMcastTunnel_) && !flat ? kNextHops : 1) {
  for (std::uint32_t n = 0; n < kAdjacencies; ++n) groups_.push_back({Road::nextHops(n)});
}

void Floor::create() {
  for (std::uint32_t n = 0; n < road_.tunnels; ++n) add(n);
}

void Floor::add(std::uint32_t tunnel) {
  auto const key = road_.key(tunnel);
  auto const& vtep = key.dst();
  auto const group = Road::adjacencyOf(tunnel);
  auto const header = headers_.add(vtep, {local_, vtep, 0, kUdpPort, {}});
  auto const port = ports_.add(vtep, {vtep.u64(0), header, 1, 1, static_cast<std::uint16_t>(header), {}});
  if (flood_) addFlood(vtep, port, group);
  if (!overlay_) return;
  auto const overlay = flat_ ? nextHops_.add(vtep, {0, port, 1, group, {}}) : overlays_.add(vtep, {port, group, 0, 1});
  ++groups_[group].users;
  if (admitted_) sips_.add(vtep, {port, static_cast<std::uint16_t>(port)});
  status_.emplace(key, Status{port, overlay, group});
}

void Floor::addFlood(Addr const& vtep, std::uint32_t port, std::uint32_t group) {
  auto const encapId = static_cast<std::uint32_t>(floodVteps_.size());
  auto& flood = floodVteps_.emplace(vtep, FloodVtep{encapId, 1, {}}).first->second;
  chooseCopies(vtep, flood, group);
  vtepOfEncapId_.emplace(encapId, vtep);
  floodStatus_.emplace(vtep, Status{port, port, group});
}

void Floor::chooseCopies(Addr const& vtep, FloodVtep& flood, std::uint32_t group) {
  auto const& nextHops = groups_[group].nextHops.entries();
  for (std::uint32_t n = 0; n < copies_; ++n) {
    auto const& nextHop = nextHops[copies_ == 1 ? vtep.v6Addr().hash() % nextHops.size() : n];
    auto const port = nextHop.l2Intf().id();
    flood.nextHops.emplace_back(port, nextHop.addr());
    copyRows_.emplace(vtep.u64(0) ^ port, Copy{port, group, 12});
  }
}

void Floor::removeFlood(Addr const& vtep) {
  auto const found = floodVteps_.find(vtep);
  for (auto const& [port, addr] : found->second.nextHops) copyRows_.erase(vtep.u64(0) ^ port);
  vtepOfEncapId_.erase(found->second.encapId);
  floodVteps_.erase(found);
  floodStatus_.erase(vtep);
}

void Floor::moveLocalVtep() {
  local_ = Meshal::IpAddr(0x0a000002);
  for (std::uint32_t n = 0; n < road_.tunnels; ++n) {
    auto const vtep = road_.vtep(n);
    headers_.at(vtep).sip = local_;
    auto& port = ports_.at(vtep);
    ++port.count1;
    ++port.count2;
  }
}

void Floor::update(std::vector<Road::Update> const& updates) {
  for (auto const& update : updates) {
    auto const key = road_.key(update.tunnel);
    auto& group = overlay_ ? status_.find(key)->second.group : floodStatus_.find(key.dst())->second.group;
    // The lists are new objects each time and are compared by their contents.
    if (groups_[group].nextHops == Vane::NextHopEntrySet(groups_[update.adjacency].nextHops)) continue;
    --groups_[group].users;
    ++groups_[update.adjacency].users;
    group = update.adjacency;
    if (flood_) {
      auto& flood = floodVteps_.find(key.dst())->second;
      for (auto const& [port, addr] : flood.nextHops) copyRows_.erase(key.dst().u64(0) ^ port);
      flood.nextHops.clear();
      chooseCopies(key.dst(), flood, group);
    }
    if (!overlay_) continue;
    if (flat_) {
      nextHops_.at(key.dst()).underlay = group;
    } else {
      overlays_.at(key.dst()).underlay = group;
    }
  }
}

void Floor::remove(std::vector<std::uint32_t> const& order) {
  for (auto const tunnel : order) remove(tunnel);
}

void Floor::replace(std::uint32_t tunnel) {
  remove(tunnel);
  add(tunnel);
}

void Floor::remove(std::uint32_t tunnel) {
  auto const key = road_.key(tunnel);
  auto const& vtep = key.dst();
  if (flood_) removeFlood(vtep);
  if (overlay_) {
    auto const found = status_.find(key);
    --groups_[found->second.group].users;
    status_.erase(found);
    if (admitted_) sips_.del(vtep);
    flat_ ? nextHops_.del(vtep) : overlays_.del(vtep);
  }
  ports_.del(vtep);
  headers_.del(vtep);
}

}  // namespace RoadBench
