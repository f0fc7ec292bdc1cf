#include <algorithm>
#include <fstream>

#include "tests/laws/Trials.h"

namespace AgentTest {

constexpr unsigned storyLength = 40;

EventKinds const all = EventKinds().set();
EventKinds without(std::initializer_list<Event::Kind> kinds) {
  auto left = all;
  for (auto const kind : kinds) left.reset(kind);
  return left;
}
auto storiesOf(EventKinds kinds) {
  return [kinds](std::uint64_t seed, std::string const& profile) { return storyOf(seed, profile, kinds, storyLength); };
}

class Laws : public testing::TestWithParam<unsigned> {};
INSTANTIATE_TEST_SUITE_P(Shares, Laws, testing::Range(0U, kShares));

/// The agent's state is that of one that was started and given the same wish at once.
void expectAsFresh(AgentWorld const& agent, ChipKind const& kind, Drive drive, Wish const& wish) {
  AgentWorld fresh(kind, drive);
  Player const player(fresh, kind, drive, wish);
  EXPECT_EQ(difference(agent.whole(), fresh.whole()), "");
}

void freshStart(ChipKind const& kind, Story const& story) {
  AgentWorld agent(kind, story.drive);
  Player player(agent, kind, story.drive);
  player.play(story);
  player.close();
  expectAsFresh(agent, kind, story.drive, player.wish());
}
TEST_P(Laws, whateverHappensTheStateIsThatOfAFreshStart) {
  tryLaw({.law = freshStart, .story = storiesOf(all)}, GetParam());
}

void restart(ChipKind const& kind, Story const& story) {
  AgentWorld agent(kind, story.drive);
  Player player(agent, kind, story.drive);
  player.play(story);
  player.close();
  auto const before = agent.whole();
  player.restart();
  EXPECT_EQ(difference(agent.whole(), before), "");
}
TEST_P(Laws, aRestartOverTheSameStateChangesNothing) { tryLaw({.law = restart, .story = storiesOf(all)}, GetParam()); }

void nothingLeft(ChipKind const& kind, Story const& story) {
  AgentWorld agent(kind, story.drive);
  auto const start = agent.whole();
  auto const alive = Dovel::Node::aliveCount();
  {
    Player player(agent, kind, story.drive);
    player.play(story);
    player.end();
    EXPECT_EQ(difference(agent.whole(), start), "");
  }
  EXPECT_EQ(Dovel::Node::aliveCount(), alive) << "objects alive";
}
TEST_P(Laws, takingEverythingAwayLeavesNothing) { tryLaw({.law = nothingLeft, .story = storiesOf(all)}, GetParam()); }

/// The end of the world looks for objects that are alive after the stop.
void stop(ChipKind const& kind, Story const& story) {
  AgentWorld agent(kind, story.drive);
  Player(agent, kind, story.drive).play(story);
}
TEST_P(Laws, stoppingAnywhereLeavesNoObject) { tryLaw({.law = stop, .story = storiesOf(all)}, GetParam()); }

// Completions, reviews and new writes are all half done when the agent stops.
TEST(Stop, betweenTurnsLeavesNoObject) {
  for (unsigned turns = 0; turns < 32; ++turns) {
    AgentWorld agent(chipKinds({"cascaded", "flat"})[turns % 4]);
    agent.hold("VirtualPortTableMerged").hold(agent.overlayTable()).hold("L3NextHop2Table");
    agent.together([](AgentWorld& a) { a.localVtep(vtep(1)).udpPort(4789); });
    agent.tunnel(unicast, vtep(2)).via(uplink(1), uplink(2));
    agent.tunnel(member, vtep(3)).via(uplink(1));
    agent.agent().chip().release();
    auto const& wanted = agent.agent().wantedTunnels(unicast);
    wanted->tunnelDel(Meshal::IpGenAddr(vtep(2)));
    wanted->tunnelIs(Meshal::IpGenAddr(vtep(4)))->adjIdIs(Vane::AdjIdOrNone(101));
    for (unsigned turn = 0; turn < turns / 4; ++turn) agent.agent().turn();
    agent.messages();
  }
}

void bothCompletions(ChipKind const& kind, Story const& story) {
  std::string ends[2];
  for (auto const completion : {Asic::Completion::direct, Asic::Completion::deferred}) {
    AgentWorld agent({.profile = kind.profile, .completion = completion}, story.drive);
    Player player(agent, kind, story.drive);
    player.play(story);
    player.close();
    ends[static_cast<unsigned>(completion)] = agent.whole();
  }
  EXPECT_EQ(difference(ends[0], ends[1]), "");
}
TEST_P(Laws, bothWaysOfCompletionEndAlike) {
  tryLaw({.law = bothCompletions, .story = storiesOf(without({Event::react}))}, GetParam());
}

// But for groups that come to nothing: one of which a member has no port, and that of a member tunnel whose VTEP has a
// unicast tunnel too. Their rows are written and go again when nobody takes them. And but for multicast tunnels on a
// chip that has one row for all their next hops: each is written, and the last stays. And but for flood tunnels on a
// chip that has no tables for them, where nothing holds their next hops.
void sameAgain(ChipKind const& kind, Story const& story) {
  AgentWorld agent(kind);
  Player player(agent, kind, Drive::documents);
  for (auto event : story.events) {
    std::erase_if(event.hops, [](Hop const& hop) { return hop.uplink > 9; });
    event.type = event.type == flood && kind.profile != "compact" ? flood : unicast;
    player.play(event);
  }
  player.close();
  agent.writes();
  agent.want(agent.wish());
  EXPECT_EQ(agent.writes(), "");
  // The same next hops in new lists: every tunnel is looked at, and nothing differs.
  for (auto const type : {unicast, flood}) {
    for (auto const& entry : agent.agent().hwTunnelConfig(type)->hwTunnelConfigListColl()) {
      auto const list = entry->nextHopEntryList();
      if (list) entry->nextHopEntryListIs(Dovel::make<Vane::NextHopEntryList>(list->adjId(), list->nextHopEntry()));
    }
  }
  agent.settle();
  EXPECT_EQ(agent.writes(), "");
}
TEST_P(Laws, theSameAgainWritesNothing) { tryLaw({.law = sameAgain, .story = storiesOf(all)}, GetParam()); }

Event atVtep(Event::Kind kind, unsigned vtep, std::uint32_t n = 0, Vane::TunnelType type = unicast) {
  return {.kind = kind, .type = type, .vtep = vtep, .n = n};
}
Event reaction(unsigned vtep, Event::Reaction to, std::uint32_t notification, Vane::TunnelType type = unicast) {
  return {.kind = Event::react, .type = type, .vtep = vtep, .n = to, .m = notification};
}
Event set(Event::Kind kind, std::uint32_t n = 0, std::uint32_t m = 0) { return {.kind = kind, .n = n, .m = m}; }

/// Stories that broke a law once, whatever chip they are tried on.
std::vector<Story> const onceBroken{
    // A generation without a header is removed.
    {Drive::documents,
     {atVtep(Event::over, 2, 1), set(Event::udpPort), atVtep(Event::generation, 2), atVtep(Event::gone, 2),
      set(Event::udpPort, 4789)}},
    // A generation gets its status before its header, and both types wait for a port while their next hops change.
    {Drive::documents,
     {atVtep(Event::over, 2, 1), set(Event::udpPort), set(Event::source, 103), atVtep(Event::generation, 2),
      atVtep(Event::over, 3, 1), atVtep(Event::over, 3, 1, member), atVtep(Event::over, 2, 2), set(Event::vti),
      set(Event::udpPort, 4789), set(Event::vti, 1), set(Event::learning, 1)}},
    // A flood tunnel is shown as up without an address, and another generation is the first to be recorded.
    {Drive::test,
     {set(Event::source),
      atVtep(Event::over, 4, 1, flood),
      {.kind = Event::source, .n = 103, .more = true},
      set(Event::udpPort),
      atVtep(Event::generation, 4, 0, flood)}},
    // Learning reaches an IPv6 tunnel that is sourced from an MLAG address of IPv4.
    {Drive::documents, {set(Event::mlag, 103), atVtep(Event::over, 102, 1), set(Event::learning, 1)}},
    // A unicast tunnel is removed on the stack of its status, and a member tunnel of its VTEP is not.
    {Drive::test, {atVtep(Event::over, 2, 1, member), reaction(2, Event::remove, 3), atVtep(Event::over, 2, 1)}},
    // The row that admits a VTEP's traffic is refused: by both drives.
    {Drive::test, {set(Event::refuseTable, 13, 4), atVtep(Event::over, 2, 1)}},
    {Drive::documents, {set(Event::refuseTable, 13, 4), atVtep(Event::over, 2, 1)}},
    // Two VLANs exchange their VNIs.
    {Drive::documents,
     {set(Event::mapping, 10, 10010),
      set(Event::mapping, 20, 10011),
      {.kind = Event::mapping, .n = 10, .m = 10011, .more = true},
      set(Event::mapping, 20, 10010)}},
    // A multicast tunnel returns before the publisher of its version has noticed that it was removed.
    {Drive::test,
     {reaction(2, Event::removeAndReturn, 1, mcast), reaction(2, Event::removeAndReturn, 1, mcast),
      atVtep(Event::over, 2, 1, mcast)}},
};
TEST(KnownStories, keepTheLaws) {
  for (auto const& story : onceBroken) {
    for (auto const& kind : chipKinds({"cascaded", "flat", "flooding", "flatFlooding"})) {
      SCOPED_TRACE(kindText(kind) + '\n' + story.text());
      for (auto const law : {freshStart, restart, nothingLeft}) law(kind, story);
    }
  }
}

// Of a tunnel that is added, gets another generation and is removed: in each of its notifications. What comes later may
// mend what went wrong before, so that each beginning is a story.
TEST(KnownStories, anyReactionKeepsTheLaws) {
  for (auto const type : {unicast, member, flood, mcast}) {
    Event const events[] = {atVtep(Event::over, 2, 1, type), atVtep(Event::generation, 2, 0, type),
                            atVtep(Event::gone, 2, 0, type)};
    for (std::uint32_t to = 0; to < Event::reactions; ++to) {
      for (std::uint32_t at = 1; at <= 6; ++at) {
        Story story{Drive::test, {reaction(2, Event::Reaction(to), at, type)}};
        for (auto const& event : events) {
          story.events.push_back(event);
          SCOPED_TRACE(story.text());
          freshStart({.profile = "cascaded"}, story);
          nothingLeft({.profile = "flat", .completion = Asic::Completion::deferred}, story);
        }
      }
    }
  }
}

/// Events that have nothing to do with each other, in random order.
Story independentEvents(std::uint64_t seed, std::string const& profile) {
  std::vector<Event> events{
      set(Event::source, 101),
      set(Event::source6, 102),
      set(Event::udpPort, 4790),
      set(Event::learning, 1),
      set(Event::dscp, 1),
      set(Event::tos, 5),
      {.kind = Event::adjacency, .n = 1, .hops = {uplink(1), uplink(2)}},
      {.kind = Event::adjacency, .n = 2, .hops = {uplink(2), unresolved(3)}},
      {.kind = Event::adjacency, .n = 3, .hops = {unresolved(1)}},
  };
  unsigned vtep = 2;
  for (auto const type : {unicast, member, flood, mcast}) {
    for (auto const adjId : {1U, 1U, 2U, 3U, 0U}) {
      events.push_back(atVtep(Event::over, vtep++, adjId, type));
    }
  }
  for (auto const at : {2U, 7U, 12U}) events.push_back(atVtep(Event::over, at, 2, bum));
  for (auto const at : {1U, 2U, 3U}) events.push_back(set(Event::mapping, 10 * at, 10010 + at));
  for (auto const at : {1U, 3U, 4U}) events.push_back(set(Event::remote, 10010 + at, 40 - 10 * at % 40));
  events.push_back(set(Event::vfis, 1));
  events.push_back(set(Event::vtepGroup, 1, 0x60));
  events.push_back(set(Event::vtepGroup, 2, 0x80));
  events.push_back(set(Event::ecn, 1));
  if (profile != "compact") events.push_back(atVtep(Event::over, 102, 2));
  if (profile != "compact") events.push_back(set(Event::route, 1, 111));
  std::mt19937_64 random(seed);
  std::shuffle(events.begin(), events.end(), random);
  return {seed % 2 == 0 ? Drive::documents : Drive::test, events};
}
void anyOrder(ChipKind const& kind, Story const& story) {
  AgentWorld agent(kind, story.drive);
  Player player(agent, kind, story.drive);
  player.play(story);
  expectAsFresh(agent, kind, story.drive, player.wish());
}
TEST_P(Laws, theOrderOfIndependentEventsDoesNotMatter) {
  tryLaw({.law = anyOrder,
          .story = independentEvents,
          .profiles = {"cascaded", "flat", "compact", "oneHeader", "flooding", "flatFlooding"}},
         GetParam());
}

/// The rows of a whole state on each kind of chip and what is published, as tests/data/states says them: what no
/// comparison of two agents sees, since both run the same code.
class WholeStates : public testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(Chips, WholeStates,
                         testing::Values("cascaded", "flat", "compact", "oneHeader", "flooding", "flatFlooding"),
                         [](auto const& test) { return test.param; });

Wish wishOn(std::string const& profile) {
  Wish wish;
  bool const floods = profile == "flooding" || profile == "flatFlooding";
  wish.localVtep = vtep(1);
  wish.udpPort = 4790;
  wish.udpSrcPort = 49152;
  wish.udpSrcPorts = 1024;
  wish.learning = true;
  wish.dscp = true;
  wish.tos = 5;
  wish.adjacencies = {{1, {uplink(1), uplink(floods ? 11 : 9)}}, {2, {unresolved(2)}}, {3, {uplink(3)}}};
  wish.tunnels = {{{unicast, vtep(2)}, {.adjId = 1}}, {{unicast, vtep(3)}, {.adjId = 2}},
                  {{member, vtep(4)}, {.adjId = 3}},  {{flood, vtep(2)}, {.adjId = 1}},
                  {{flood, vtep(5)}, {.adjId = 1}},   {{flood, vtep(6)}, {.adjId = 2}},
                  {{mcast, group(1)}, {.adjId = 1}}};
  wish.mappings = {{10, 10010}, {20, 10020}};
  wish.remotes = {{10020, 30}, {10030, 40}};
  wish.vfis = true;
  wish.groups = {{1, {4}}, {2, {2, 4}}};
  wish.ecn = true;
  if (profile != "compact") {
    wish.routes = {{1, 111}};
    wish.localVtep6 = vtep6(1);
    wish.tunnels[{unicast, vtep6(2)}] = {.adjId = 1};
  }
  return wish;
}

TEST_P(WholeStates, areAsWrittenDown) {
  std::ifstream in(TESSEL_SOURCE_DIR "/tests/data/states/" + GetParam() + ".txt");
  std::string const expected{std::istreambuf_iterator<char>(in), {}};
  ASSERT_NE(expected, "");
  for (auto const& kind : chipKinds({GetParam()})) {
    AgentWorld agent(kind);
    agent.want(wishOn(GetParam()));
    EXPECT_EQ(agent.whole(), expected);
  }
}

}  // namespace AgentTest
