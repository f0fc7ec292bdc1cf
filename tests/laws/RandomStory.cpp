#include "tests/laws/RandomStory.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cstdlib>

namespace AgentTest {

namespace {

constexpr std::uint32_t scratchAdjacency = 99;

std::string text(Hops const& hops) {
  std::string all;
  for (auto const& hop : hops) all += fmt::format(" {}{}", hop.uplink, hop.resolved ? "" : "?");
  return all;
}

}  // namespace

std::vector<std::uint64_t> seeds(unsigned count) {
  if (auto const* fixed = std::getenv("TESSEL_SEED")) return {std::strtoull(fixed, nullptr, 10)};
  std::vector<std::uint64_t> all;
  for (unsigned seed = 1; seed <= count; ++seed) all.push_back(seed);
  return all;
}

RandomStory::RandomStory(AgentWorld& agent, std::uint64_t seed, Setting const& setting)
    : agent_(agent), setting_(setting), random_(seed) {
  Wish wish;
  wish.localVtep = vtep(1);
  wish.localVtep6 = vtep6(1);
  wish.udpPort = 4789;
  for (std::uint32_t id = 1; id <= setting_.adjacencies; ++id) wish.adjacencies[id] = someHops();
  agent_.want(wish);
}

void RandomStory::run(unsigned steps) {
  for (unsigned i = 0; i < steps; ++i) step();
}

void RandomStory::step() {
  if (oneIn(12)) return changeChip();
  auto wish = agent_.wish();
  // Now and then several changes are one document.
  do {
    change(wish);
  } while (oneIn(4));
  agent_.want(wish);
}

void RandomStory::change(Wish& wish) {
  switch (below(10)) {
    case 0:
    case 1:
    case 2:
    case 3:
    case 4:
      return changeTunnel(wish);
    case 5:
    case 6:
      return changeAdjacency(wish);
    case 7:
      return changeLocalVtep(wish);
    default:
      return changeSetting(wish);
  }
}

std::string RandomStory::someVtep() {
  auto const n = below(setting_.vteps + (setting_.ipv6 ? 1 : 0));
  return n == setting_.vteps ? vtep6(2) : vtep(2 + n);
}

Hops RandomStory::someHops() {
  Hops hops;
  for (unsigned n = 1; n <= setting_.uplinks; ++n) {
    if (oneIn(2)) hops.insert(Hop{n, !oneIn(5)});
  }
  if (oneIn(15)) hops.insert(uplink(10));
  return hops;
}

void RandomStory::changeTunnel(Wish& wish) {
  auto const type = setting_.bothTypes && oneIn(3) ? member : unicast;
  auto const remote = someVtep();
  std::pair const key(type, remote);
  auto const name = fmt::format("{} {}", type == unicast ? "unicast" : "member", remote);
  if (wish.tunnels.contains(key) && oneIn(3)) {
    wish.tunnels.erase(key);
    return tell(name + " gone");
  }
  auto& tunnel = wish.tunnels[key];
  if (type == unicast) hadUnicast_.insert(remote);
  if (oneIn(6)) {
    tunnel.genId = ++lastGenId_;
    return tell(fmt::format("{} generation {}", name, tunnel.genId));
  }
  tunnel.adjId.reset();
  if (!oneIn(8)) tunnel.adjId = 1 + below(setting_.adjacencies);
  tell(fmt::format("{} over {}", name, tunnel.adjId.value_or(0)));
}

void RandomStory::changeAdjacency(Wish& wish) {
  auto const id = 1 + below(setting_.adjacencies);
  if (oneIn(8)) {
    wish.adjacencies.erase(id);
    return tell(fmt::format("adjacency {} gone", id));
  }
  wish.adjacencies[id] = someHops();
  tell(fmt::format("adjacency {}:{}", id, text(wish.adjacencies[id])));
}

void RandomStory::changeLocalVtep(Wish& wish) {
  bool const v6 = oneIn(3);
  auto& local = v6 ? wish.localVtep6 : wish.localVtep;
  auto const next = below(4);
  local = next == 0 ? "" : v6 ? vtep6(100 + next) : vtep(100 + next);
  tell(fmt::format("local VTEP{} \"{}\"", v6 ? "6" : "", local));
}

void RandomStory::changeSetting(Wish& wish) {
  switch (below(5)) {
    case 0:
      wish.udpPort = static_cast<std::uint16_t>(oneIn(4) ? 0 : 4789 + below(3));
      return tell(fmt::format("UDP port {}", wish.udpPort));
    case 1:
      wish.learning = !wish.learning;
      return tell("learning changes");
    case 2:
      wish.dscp = !wish.dscp;
      return tell("DSCP changes");
    case 3:
      wish.tos = static_cast<std::uint8_t>(below(4));
      return tell(fmt::format("TOS {}", wish.tos));
    default:
      wish.vti = !wish.vti;
      return tell(wish.vti ? "VTI back" : "VTI away");
  }
}

void RandomStory::changeChip() {
  if (setting_.restarts && oneIn(4)) {
    tell("restart");
    hadUnicast_.clear();
    agent_.release().restart();
    return;
  }
  if (!setting_.late || oneIn(2)) {
    tell("all answers in");
    agent_.release();
    return;
  }
  static constexpr std::string_view tables[] = {"VirtualPortTableMerged", "IngL3EcmpMember0Table", "L3NextHop1Table",
                                                "L3NextHop2Table",        "EgrL3Ipv4TunnelTable",  "EcmpGroup1Table"};
  auto const table = tables[below(std::size(tables))];
  tell(fmt::format("{} answers late", table));
  agent_.hold(table);
}

void RandomStory::close() {
  agent_.release();
  auto wish = agent_.wish();
  wish.vti = true;
  if (wish.localVtep.empty()) wish.localVtep = vtep(1);
  if (wish.localVtep6.empty()) wish.localVtep6 = vtep6(1);
  if (wish.udpPort == 0) wish.udpPort = 4789;
  agent_.want(wish);
  // A member tunnel that stays behind a unicast one writes its own row with its next change.
  auto moved = wish;
  moved.adjacencies[scratchAdjacency] = {uplink(1)};
  for (auto& [key, tunnel] : moved.tunnels) {
    bool const alone = !wish.tunnels.contains({unicast, key.second});
    if (key.first == member && alone && hadUnicast_.contains(key.second)) tunnel.adjId = scratchAdjacency;
  }
  agent_.want(moved).want(wish);
}

std::string RandomStory::told() const {
  constexpr std::size_t most = 60;
  auto const from = told_.size() > most ? told_.size() - most : 0;
  return fmt::format("{} events, the last:\n{}\n", told_.size(),
                     fmt::join(told_.begin() + static_cast<std::ptrdiff_t>(from), told_.end(), "\n"));
}

}  // namespace AgentTest
