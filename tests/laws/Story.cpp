#include "tests/laws/Story.h"

#include <algorithm>

#include "platform/asic/Store.h"

namespace AgentTest {

namespace {

constexpr unsigned adjacencies = 4, uplinks = 5, vteps = 4, firstVni = 10010;
constexpr std::uint32_t scratchAdjacency = 98;

/// Kinds that a story has or doesn't have together, and how often each of them happens.
struct Group {
  unsigned oneIn;  ///< Stories that have it; 1: all.
  std::vector<std::pair<Event::Kind, unsigned>> weights;
};
std::vector<Group> const groups{
    {1, {{Event::over, 12}, {Event::gone, 6}}},
    {2, {{Event::adjacency, 6}, {Event::noAdjacency, 1}}},
    {2, {{Event::generation, 4}}},
    {3, {{Event::vlans, 3}, {Event::vlanPorts, 2}}},
    {3, {{Event::formerHops, 2}, {Event::formersGone, 1}}},
    {3, {{Event::react, 4}}},
    {2, {{Event::source, 3}, {Event::source6, 1}}},
    {2, {{Event::udpPort, 3}}},
    {3, {{Event::vti, 2}}},
    {3, {{Event::learning, 1}, {Event::dscp, 1}, {Event::tos, 1}}},
    {3, {{Event::evpn, 3}, {Event::learning, 1}}},
    {4, {{Event::mlag, 2}, {Event::sourcePorts, 1}}},
    {2, {{Event::mapping, 4}, {Event::remote, 4}}},
    {4, {{Event::vfis, 1}}},
    {2, {{Event::vtepGroup, 4}}},
    {4, {{Event::route, 3}, {Event::ecn, 1}}},
    {3, {{Event::hold, 2}, {Event::release, 1}}},
    {3, {{Event::holdAll, 2}, {Event::deliver, 6}, {Event::release, 1}}},
    {3, {{Event::refuseTable, 2}, {Event::refuseNth, 3}, {Event::heal, 2}}},
    {4, {{Event::restart, 1}}},
};

class Writer {
 public:
  Writer(std::uint64_t seed, std::string const& profile, EventKinds allowed)
      : random_(seed),
        ipv6_(profile != "compact" && !oneIn(3)),
        members_(!oneIn(3)),
        floods_(!oneIn(3)),
        hasRoutes_(profile != "compact"),
        portless_(oneIn(profile.find("looding") == profile.npos ? 3 : 1)) {
    for (auto const& group : groups) {
      bool const has = oneIn(group.oneIn);
      for (auto const& [kind, weight] : group.weights) {
        if (kind == Event::route && !hasRoutes_) continue;
        if (has && allowed.test(kind)) kinds_.insert(kinds_.end(), weight, kind);
      }
    }
  }
  bool direct() { return oneIn(2); }
  Event next() {
    Event event{.kind = kinds_[below(static_cast<std::uint32_t>(kinds_.size()))]};
    event.vtep = ipv6_ && oneIn(4) ? 102 + below(2) : 2 + below(vteps);
    event.type = event.kind == Event::vlans ? flood : someType();
    if (event.type == mcast) event.vtep = 2 + below(2);
    event.more = event.kind < Event::react && oneIn(5);
    fill(event);
    return event;
  }

 private:
  std::uint32_t below(std::uint32_t n) { return static_cast<std::uint32_t>(random_() % n); }
  bool oneIn(std::uint32_t n) { return below(n) == 0; }

  Vane::TunnelType someType() {
    if (floods_ && oneIn(2)) return oneIn(2) ? flood : oneIn(3) ? bum : oneIn(4) ? mcastHer : mcast;
    return members_ && oneIn(3) ? member : unicast;
  }
  void fill(Event& event) {
    auto const& [n, m] = std::tie(event.n, event.m);
    auto const is = [&](auto... kinds) { return ((event.kind == kinds) || ...); };
    if (is(Event::over, Event::formerHops)) n = oneIn(8) ? 0 : 1 + below(adjacencies);
    if (is(Event::generation)) n = ++lastGenId_;
    if (is(Event::react)) n = below(Event::reactions), m = 1 + below(4);
    if (is(Event::adjacency)) event.hops = someHops();
    if (is(Event::adjacency, Event::noAdjacency)) n = 1 + below(adjacencies);
    if (is(Event::source, Event::source6)) n = oneIn(4) ? 0 : 101 + below(3);
    if (is(Event::udpPort)) n = oneIn(3) ? 0 : 4789 + below(2);
    if (is(Event::mlag)) n = oneIn(3) ? 0 : 101 + below(3), m = oneIn(2) ? 0 : 101 + below(3);
    if (is(Event::sourcePorts)) n = oneIn(2) ? 0 : 49152 + below(2);
    if (is(Event::tos)) n = below(4);
    if (is(Event::mapping)) n = 10 * (1 + below(3)), m = oneIn(3) ? 0 : firstVni + below(3);
    if (is(Event::remote)) n = firstVni + below(3), m = oneIn(3) ? 0 : 10 * (1 + below(4));
    if (is(Event::vtepGroup)) n = 1 + below(2), m = oneIn(4) ? 0 : below(1U << vteps);
    if (is(Event::route)) n = 1 + below(2), m = oneIn(3) ? 0 : 111 + below(2);
    if (is(Event::learning, Event::evpn, Event::dscp, Event::vti, Event::vfis, Event::ecn)) n = below(2);
    if (is(Event::vlans)) n = 1 + below(7);
    if (is(Event::vlanPorts)) n = 111 + below(2), m = below(4);
    if (is(Event::hold)) n = below(std::size(kHeldTables));
    if (is(Event::deliver)) n = 1 + below(3);
    if (is(Event::refuseTable)) n = below(std::size(kRefusingTables));
    if (is(Event::refuseNth)) n = 1 + below(8);
    if (is(Event::refuseTable, Event::refuseNth)) m = 4 + below(2);
  }
  Hops someHops() {
    Hops hops;
    for (unsigned n = 1; n <= uplinks; ++n) {
      if (oneIn(2)) hops.insert(Hop{n, !oneIn(5)});
    }
    if (portless_ && oneIn(8)) hops.insert(uplink(10));
    if (portless_ && oneIn(4)) hops.insert(uplink(11 + below(2)));
    return hops;
  }

  std::mt19937_64 random_;
  bool ipv6_, members_, floods_, hasRoutes_, portless_;
  std::uint32_t lastGenId_ = 0;
  std::vector<Event::Kind> kinds_;
};

}  // namespace

std::string Story::text() const {
  std::string lines = drive == Drive::test ? "(configuration entries written directly)\n" : "";
  for (auto const& event : events) lines += AgentTest::text(event) + '\n';
  return lines;
}

Story storyOf(std::uint64_t seed, std::string const& profile, EventKinds allowed, unsigned length) {
  Writer writer(seed, profile, allowed);
  Story story{writer.direct() ? Drive::test : Drive::documents, {}};
  while (story.events.size() < length) story.events.push_back(writer.next());
  return story;
}

/// One for each bit.
std::set<unsigned> chosen(std::initializer_list<unsigned> from, std::uint32_t bits) {
  std::set<unsigned> some;
  for (auto const n : from) {
    if (bits & 1) some.insert(n);
    bits >>= 1;
  }
  return some;
}

Wish usualWish() {
  Wish wish;
  wish.localVtep = vtep(1);
  wish.localVtep6 = vtep6(1);
  wish.udpPort = 4789;
  for (std::uint32_t id = 1; id <= adjacencies; ++id) wish.adjacencies[id] = {uplink(id), uplink(id + 1)};
  return wish;
}

Player::Player(AgentWorld& agent, ChipKind const& kind, Drive drive, Wish wish)
    : agent_(agent),
      drive_(drive),
      wish_(std::move(wish)),
      small_(kind.profile.starts_with("tiny") || kind.profile == "fewMembers") {
  for (auto const type : {unicast, member, flood, mcast}) {
    if (!direct()) break;
    auto const heard = [this, type](std::string const& address) { notified(type, address); };
    tunnels_.emplace(type, std::make_unique<DirectTunnels>(agent_.agent(), type, wish_, heard));
  }
  apply();
}

Player::~Player() {
  if (small_ || refused_) agent_.messages();
}

void Player::play(Story const& story) {
  for (auto const& event : story.events) play(event);
  apply();
}

void Player::play(Event const& event) {
  if (event.kind > Event::vti) return act(event);
  change(event);
  if (!event.more) apply();
}

void Player::change(Event const& event) {
  auto const [n, m] = std::pair(event.n, event.m);
  auto const is = [&](Event::Kind kind) { return event.kind == kind; };
  if (event.kind <= Event::gone) changeTunnel(event);
  if (is(Event::adjacency)) wish_.adjacencies[n] = event.hops;
  if (is(Event::noAdjacency)) wish_.adjacencies.erase(n);
  if (is(Event::source)) wish_.localVtep = n == 0 ? "" : vtep(n);
  if (is(Event::source6)) wish_.localVtep6 = n == 0 ? "" : vtep6(n);
  if (is(Event::mlag)) wish_.mlagVtep = n == 0 ? "" : vtep(n), wish_.mlagVtep6 = m == 0 ? "" : vtep6(m);
  if (is(Event::sourcePorts)) wish_.udpSrcPort = static_cast<std::uint16_t>(n), wish_.udpSrcPorts = n == 0 ? 0 : 1024;
  headersAreOld_ |= is(Event::mlag) || is(Event::sourcePorts);
  if (is(Event::udpPort)) wish_.udpPort = static_cast<std::uint16_t>(n);
  if (is(Event::learning)) wish_.learning = n != 0;
  if (is(Event::evpn)) wish_.evpn = n != 0;
  floodsAreOld_ |= is(Event::learning) || is(Event::evpn);
  if (is(Event::vlanPorts)) wish_.vlanPorts[n] = chosen({1, 2}, m);
  if (is(Event::dscp)) wish_.dscp = n != 0;
  if (is(Event::tos)) wish_.tos = static_cast<std::uint8_t>(n);
  if (is(Event::vti)) wish_.vti = n != 0;
  if (event.kind >= Event::mapping && event.kind <= Event::ecn) changeOverlay(event);
}

void Player::changeOverlay(Event const& event) {
  auto const n = event.n, m = event.m;
  auto const is = [&](Event::Kind kind) { return event.kind == kind; };
  auto const put = [&](auto& map) { m == 0 ? void(map.erase(n)) : void(map[n] = m); };
  // One VNI, one VLAN.
  if (is(Event::mapping)) std::erase_if(wish_.mappings, [&](auto const& mapping) { return mapping.second == m; });
  if (is(Event::mapping)) put(wish_.mappings);
  if (is(Event::remote)) put(wish_.remotes);
  if (is(Event::vfis)) wish_.vfis = n != 0;
  if (is(Event::route)) put(wish_.routes);
  if (is(Event::ecn)) wish_.ecn = n != 0;
  if (!is(Event::vtepGroup)) return;
  wish_.groups[n] = chosen({2, 3, 4, 5, 6, 7, 8, 9}, m);
  if (m == 0) wish_.groups.erase(n);
}

void Player::changeTunnel(Event const& event) {
  std::pair const key(event.type, addressOf(event));
  if (event.kind == Event::gone) return void(wish_.tunnels.erase(key));
  if (event.kind == Event::generation && hasVersion(event.type)) return;
  auto& tunnel = wish_.tunnels[key];
  if (event.type != member) hadOther_.insert(key.second);
  if (event.kind == Event::vlans) return void(tunnel.vlans = chosen({10, 20, 30}, event.n));
  if (event.kind == Event::generation) return void(tunnel.genId = ++lastGenId_);
  tunnel.adjId.reset();
  if (event.n != 0) tunnel.adjId = event.n;
}

void Player::act(Event const& event) {
  auto const is = [&](Event::Kind kind) { return event.kind == kind; };
  bool const isDirect = tunnels_.contains(event.type);
  if (is(Event::formerHops) && isDirect) tunnels(event.type).formerHops(addressOf(event), event.n);
  if (is(Event::formersGone) && isDirect) tunnels(event.type).formersGone(addressOf(event));
  if (is(Event::react) && isDirect) armed_.push_back({event, event.m});
  if (is(Event::hold)) agent_.hold(kHeldTables[event.n]);
  if (is(Event::holdAll)) holdAll();
  if (is(Event::deliver)) deliver(event.n);
  if (is(Event::release)) release();
  if (is(Event::refuseTable) || is(Event::refuseNth)) refuse(event);
  if (is(Event::heal)) agent_.hardware().refuseNone();
  if (is(Event::restart)) restart();
  settle();
}

void Player::holdAll() {
  heldAll_ = true;
  for (auto const* store : agent_.agent().chip().stores()) agent_.hold(store->name());
}

void Player::release() {
  heldAll_ = false;
  agent_.release();
}

void Player::deliver(unsigned count) {
  auto& chip = agent_.agent().chip();
  if (!heldAll_) return;
  chip.release();
  while (count-- > 0 && chip.deliverOne()) continue;
  holdAll();
}

void Player::refuse(Event const& event) {
  refused_ = true;
  auto const with = event.m == 5 ? Asic::EntryState::full : Asic::EntryState::failed;
  if (event.kind == Event::refuseNth) {
    agent_.hardware().refuseNth(event.n, with);
  } else {
    agent_.hardware().refuseTable(kRefusingTables[event.n], with);
  }
}

void Player::restart() {
  agent_.hardware().refuseNone();
  release();
  agent_.restart();
  if (!direct()) return;
  for (auto const& [type, tunnels] : tunnels_) tunnels->restarted();
  settle();
}

void Player::notified(Vane::TunnelType type, std::string const& address) {
  for (auto& armed : armed_) {
    if (armed.event.type != type || addressOf(armed.event) != address || armed.left == 0) continue;
    if (--armed.left == 0) return react(armed.event);
  }
}

void Player::react(Event const& event) {
  auto const vtep = addressOf(event);
  std::pair const key(event.type, vtep);
  auto const reaction = event.n;
  auto& tunnels = this->tunnels(event.type);
  if (reaction == Event::remove) {
    wish_.tunnels.erase(key);
    return tunnels.sync(vtep);
  }
  auto& tunnel = wish_.tunnels[key];
  if (event.type != member) hadOther_.insert(vtep);
  if (reaction == Event::removeAndReturn) return tunnels.again(vtep);
  if (reaction == Event::newGeneration && !hasVersion(event.type)) tunnel.genId = ++lastGenId_;
  if (reaction == Event::otherHops) tunnel.adjId = tunnel.adjId.value_or(0) % adjacencies + 1;
  tunnels.sync(vtep);
}

AgentWorld& Player::wish(Wish const& wish) {
  wish_ = wish;
  apply();
  return agent_;
}

void Player::apply() {
  if (!direct()) {
    agent_.want(wish_);
  } else {
    auto rest = wish_;
    // Flood lists and tunnels without programmer are in documents either way.
    std::erase_if(rest.tunnels, [&](auto const& tunnel) {
      return tunnel.first.first != flood && tunnels_.contains(tunnel.first.first);
    });
    if (rest.tunnels.empty()) rest.adjacencies.clear();
    agent_.want(rest);
    for (auto const& [type, tunnels] : tunnels_) tunnels->sync();
  }
  settle();
}

void Player::settle() {
  agent_.settle();
  auto const activate = [this] {
    return std::ranges::any_of(tunnels_, [](auto const& tunnels) { return tunnels.second->activate(); });
  };
  while (activate()) agent_.settle();
  if (small_ || refused_) agent_.messages();
}

void Player::end() {
  calm();
  Wish none;
  if (refused_) {
    // The default ports and congestion marks that were refused are written again with a change of learning and of ECN.
    none.learning = none.ecn = true;
    wish(none);
    none.learning = none.ecn = false;
  }
  wish(none);
}

namespace {

/// Whether a group of these members is the same whatever happened before. One with a member without tunnel is left as
/// it was, and the record of a VTEP keeps an adjacency that is not known any more, and of two tunnels that of the last.
bool isSteady(Wish const& wish, std::set<unsigned> const& members) {
  auto const isResolved = [&](auto const& tunnel) {
    auto const found = wish.adjacencies.find(tunnel.second.adjId.value_or(0));
    return found != wish.adjacencies.end() &&
           std::ranges::any_of(found->second, [](Hop const& hop) { return hop.resolved; });
  };
  auto const isMember = [&](unsigned n) {
    unsigned others = 0, own = 0;
    for (auto const& tunnel : wish.tunnels) {
      if (tunnel.first.second != vtep(n)) continue;
      auto const type = tunnel.first.first;
      ++((type == unicast || type == member) && isResolved(tunnel) ? own : others);
    }
    return own == 1 && others == 0;
  };
  return !members.empty() && std::ranges::all_of(members, isMember);
}

}  // namespace

void Player::close() {
  calm();
  auto last = closed();
  wish(last);
  std::erase_if(last.groups, [&](auto const& group) { return !isSteady(last, group.second); });
  refresh(last);
  wish(last);
}

void Player::calm() {
  armed_.clear();
  agent_.hardware().refuseNone();
  release();
  for (auto const& [type, tunnels] : tunnels_) tunnels->formersGone();
}

/// The wish with what tunnels need, and no more tunnels than a small chip has rows for.
Wish Player::closed() const {
  auto wish = wish_;
  wish.vti = true;
  if (wish.localVtep.empty()) wish.localVtep = vtep(1);
  if (wish.localVtep6.empty()) wish.localVtep6 = vtep6(1);
  if (wish.udpPort == 0) wish.udpPort = 4789;
  if (!small_) return wish;
  wish.adjacencies = {{1, {uplink(1), uplink(2)}}, {2, {uplink(2), unresolved(3)}}};
  std::erase_if(wish.tunnels, [](auto const& tunnel) {
    return tunnel.first.second != vtep(2) && tunnel.first.second != vtep(4) && tunnel.first.second != vtep6(2) &&
           tunnel.first.second != group(2);
  });
  for (auto* const few : {&wish.mappings, &wish.remotes, &wish.routes}) {
    while (few->size() > 1) few->erase(few->begin());
  }
  std::erase_if(wish.groups, [](auto const& group) { return group.first != 1 || group.second.size() > 2; });
  return wish;
}

/// What the feature reads only at certain events gets those: see the exceptions.
void Player::refresh(Wish const& last) {
  auto moved = last;
  // Over a next hop that no other adjacency has: its write is accepted, and those that the chip refused are sent again.
  moved.adjacencies[scratchAdjacency] = {uplink(uplinks + 1)};
  std::erase_if(moved.tunnels, [&](auto const& tunnel) {
    auto const type = tunnel.first.first;
    bool const floods = type == flood || type == mcast;
    return type == bum || type == mcastHer || (floods && (floodsAreOld_ || small_ || refused_));
  });
  auto const isGrouped = [&](std::string const& address) {
    return std::ranges::any_of(last.groups, [&](auto const& group) {
      return std::ranges::any_of(group.second, [&](unsigned n) { return vtep(n) == address; });
    });
  };
  for (auto& [key, tunnel] : moved.tunnels) {
    bool const alone = !last.tunnels.contains({unicast, key.second});
    bool const stale = key.first == member && alone && hadOther_.contains(key.second);
    if (stale || isGrouped(key.second) || small_ || refused_) tunnel.adjId = scratchAdjacency;
    // Beyond the generations that the agent numbers by itself.
    if (refused_) tunnel.genId = lastGenId_ += 1000;
  }
  moved.groups.clear();
  if (small_ || refused_) {
    moved.mappings.clear();
    moved.remotes.clear();
    moved.routes.clear();
    moved.ecn = !moved.ecn;
  }
  if (headersAreOld_ || refused_) moved.dscp = !moved.dscp;
  if (refused_) {
    moved.localVtep = vtep(150);
    moved.localVtep6 = vtep6(150);
    moved.learning = !moved.learning;
    moved.mlagVtep = moved.mlagVtep6 = "";
    wish(moved);
    moved.mlagVtep = last.mlagVtep;
    moved.mlagVtep6 = last.mlagVtep6;
  }
  wish(moved);
}

}  // namespace AgentTest
