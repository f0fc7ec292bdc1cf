#include "bench/road/Floor.h"

namespace RoadBench {

Floor::Floor(Road const& road, bool flat) : road_(road), flat_(flat), local_(Meshal::IpAddr(0x0a000001)) {
  for (std::uint32_t n = 0; n < kAdjacencies; ++n) groups_.push_back({Road::nextHops(n)});
}

void Floor::create() {
  for (std::uint32_t n = 0; n < road_.tunnels; ++n) add(n);
}

void Floor::add(std::uint32_t tunnel) {
  auto const key = road_.key(tunnel);
  auto const group = Road::adjacencyOf(tunnel);
  auto const dst = key.dst();
  config_.emplace(key, group);
  auto const header = headers_.take({local_, dst, 0, kUdpPort, {}});
  headerOf_.emplace(dst, header);
  auto const port = ports_.take({dst.u64(0), header, 1, 1, static_cast<std::uint16_t>(header), {}});
  portOf_.emplace(dst, port);
  auto const overlay = overlayTake(port, group);
  overlayOf_.emplace(dst, overlay);
  ++groups_[group].users;
  auto const sip = sips_.take({port, static_cast<std::uint16_t>(port)});
  sipOf_.emplace(dst, sip);
  vteps_.emplace(dst, Vtep{local_, key, header, port, overlay, sip, group + 1});
  status_.emplace(key, Status{port, overlay, group + 1});
}

std::uint32_t Floor::overlayTake(std::uint32_t port, std::uint32_t group) {
  return flat_ ? nextHops_.take({0, port, 1, group, {}}) : overlays_.take({port, group, 0, 1});
}

void Floor::moveLocalVtep() {
  local_ = Meshal::IpAddr(0x0a000002);
  for (auto const& [key, group] : config_) {
    auto& vtep = vteps_.find(key.dst())->second;
    vtep.localVtep = local_;
    headers_.rows[vtep.header].sip = local_;
    auto& port = ports_.rows[vtep.port];
    ++port.count1;
    ++port.count2;
  }
}

void Floor::update(std::vector<Road::Update> const& updates) {
  for (auto const& update : updates) {
    auto const key = road_.key(update.tunnel);
    auto& group = config_.find(key)->second;
    // The lists come new each time and are told apart by their contents.
    if (groups_[group].nextHops == Vane::NextHopEntrySet(groups_[update.adjacency].nextHops)) continue;
    --groups_[group].users;
    ++groups_[update.adjacency].users;
    group = update.adjacency;
    auto& vtep = vteps_.find(key.dst())->second;
    vtep.adjId = group + 1;
    if (flat_) {
      nextHops_.rows[vtep.overlay].underlay = group;
    } else {
      overlays_.rows[vtep.overlay].underlay = group;
    }
    status_.find(key)->second.adjacency = group + 1;
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
  auto const found = vteps_.find(key.dst());
  auto const& vtep = found->second;
  sips_.give(vtep.sip);
  flat_ ? nextHops_.give(vtep.overlay) : overlays_.give(vtep.overlay);
  ports_.give(vtep.port);
  headers_.give(vtep.header);
  --groups_[vtep.adjId - 1].users;
  for (auto* const rows : {&headerOf_, &portOf_, &overlayOf_, &sipOf_}) rows->erase(key.dst());
  status_.erase(key);
  config_.erase(key);
  vteps_.erase(found);
}

}  // namespace RoadBench
