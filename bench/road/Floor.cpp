#include "bench/road/Floor.h"

namespace RoadBench {

template <class Row>
std::uint32_t Floor::Rows<Row>::add(Addr const& vtep, Row const& row) {
  auto number = static_cast<std::uint32_t>(rows.size());
  if (free.empty()) {
    rows.push_back(row);
  } else {
    number = free.back();
    free.pop_back();
    rows[number] = row;
  }
  numbers.emplace(vtep, number);
  return number;
}

template <class Row>
void Floor::Rows<Row>::del(Addr const& vtep) {
  auto const found = numbers.find(vtep);
  rows[found->second] = {};
  free.push_back(found->second);
  numbers.erase(found);
}

Floor::Floor(Road const& road, bool flat) : road_(road), flat_(flat), local_(Meshal::IpAddr(0x0a000001)) {
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
  auto const overlay = flat_ ? nextHops_.add(vtep, {0, port, 1, group, {}}) : overlays_.add(vtep, {port, group, 0, 1});
  ++groups_[group].users;
  sips_.add(vtep, {port, static_cast<std::uint16_t>(port)});
  status_.emplace(key, Status{port, overlay, group});
}

void Floor::moveLocalVtep() {
  local_ = Meshal::IpAddr(0x0a000002);
  for (auto const& [key, status] : status_) {
    headers_.at(key.dst()).sip = local_;
    auto& port = ports_.at(key.dst());
    ++port.count1;
    ++port.count2;
  }
}

void Floor::update(std::vector<Road::Update> const& updates) {
  for (auto const& update : updates) {
    auto const key = road_.key(update.tunnel);
    auto& group = status_.find(key)->second.group;
    // The lists are new objects each time and are compared by their contents.
    if (groups_[group].nextHops == Vane::NextHopEntrySet(groups_[update.adjacency].nextHops)) continue;
    --groups_[group].users;
    ++groups_[update.adjacency].users;
    group = update.adjacency;
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
  auto const found = status_.find(key);
  --groups_[found->second.group].users;
  status_.erase(found);
  sips_.del(vtep);
  flat_ ? nextHops_.del(vtep) : overlays_.del(vtep);
  ports_.del(vtep);
  headers_.del(vtep);
}

}  // namespace RoadBench
