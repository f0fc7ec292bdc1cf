#include <algorithm>

#include "tests/laws/Trials.h"

namespace AgentTest {

namespace {

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
  EXPECT_EQ(agent.whole(), fresh.whole());
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
  EXPECT_EQ(agent.whole(), before);
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
    EXPECT_EQ(agent.whole(), start);
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

void bothCompletions(ChipKind const& kind, Story const& story) {
  std::string ends[2];
  for (auto const completion : {Asic::Completion::direct, Asic::Completion::deferred}) {
    AgentWorld agent({.profile = kind.profile, .completion = completion}, story.drive);
    Player player(agent, kind, story.drive);
    player.play(story);
    player.close();
    ends[static_cast<unsigned>(completion)] = agent.whole();
  }
  EXPECT_EQ(ends[0], ends[1]);
}
TEST_P(Laws, bothWaysOfCompletionEndAlike) {
  tryLaw({.law = bothCompletions, .story = storiesOf(without({Event::react}))}, GetParam());
}

// But for groups that come to nothing: one of which a member has no port, and that of a member tunnel whose VTEP has a
// unicast tunnel too. Their rows are written and go again when nobody takes them.
void sameAgain(ChipKind const& kind, Story const& story) {
  AgentWorld agent(kind);
  Player player(agent, kind, Drive::documents);
  for (auto event : story.events) {
    std::erase_if(event.hops, [](Hop const& hop) { return hop.uplink > 9; });
    event.type = unicast;
    player.play(event);
  }
  player.close();
  agent.writes();
  agent.want(agent.wish());
  EXPECT_EQ(agent.writes(), "");
  // The same next hops in new lists: every tunnel is looked at, and nothing differs.
  for (auto const& entry : agent.agent().hwTunnelConfig(unicast)->hwTunnelConfigListColl()) {
    auto const list = entry->nextHopEntryList();
    if (list) entry->nextHopEntryListIs(Dovel::make<Vane::NextHopEntryList>(list->adjId(), list->nextHopEntry()));
  }
  agent.settle();
  EXPECT_EQ(agent.writes(), "");
}
TEST_P(Laws, theSameAgainWritesNothing) { tryLaw({.law = sameAgain, .story = storiesOf(all)}, GetParam()); }

/// Stories that broke a law once, whatever chip they are tried on.
std::vector<Story> const onceBroken{
    // A generation that is replaced on the stack of its own status while that of an earlier one remains.
    {Drive::test,
     {{.kind = Event::over, .type = member, .vtep = 4},
      {.kind = Event::react, .type = member, .vtep = 4, .n = Event::newGeneration, .m = 1},
      {.kind = Event::generation, .type = member, .vtep = 4, .n = 3}}},
    {Drive::test,
     {{.kind = Event::over, .vtep = 2, .n = 1},
      {.kind = Event::react, .vtep = 2, .n = Event::newGeneration, .m = 2},
      {.kind = Event::generation, .vtep = 2, .n = 4}}},
    // Learning reaches an IPv6 tunnel that is sourced from an MLAG address of IPv4.
    {Drive::documents,
     {{.kind = Event::mlag, .n = 103}, {.kind = Event::over, .vtep = 102, .n = 1}, {.kind = Event::learning, .n = 1}}},
    // A unicast tunnel is removed on the stack of its status, and a member tunnel of its VTEP is not.
    {Drive::test,
     {{.kind = Event::over, .type = member, .vtep = 2, .n = 1},
      {.kind = Event::react, .vtep = 2, .n = Event::remove, .m = 3},
      {.kind = Event::over, .vtep = 2, .n = 1}}},
    // The row that admits a VTEP's traffic is refused: by both drives.
    {Drive::test, {{.kind = Event::refuseTable, .n = 13, .m = 4}, {.kind = Event::over, .vtep = 2, .n = 1}}},
    {Drive::documents, {{.kind = Event::refuseTable, .n = 13, .m = 4}, {.kind = Event::over, .vtep = 2, .n = 1}}},
};
TEST(KnownStories, keepTheLaws) {
  for (auto const& story : onceBroken) {
    for (auto const& kind : chipKinds({"cascaded", "flat", "flooding"})) {
      SCOPED_TRACE(kindText(kind) + '\n' + story.text());
      for (auto const law : {freshStart, restart, nothingLeft}) law(kind, story);
    }
  }
}

/// Events that have nothing to do with each other, in random order.
Story independentEvents(std::uint64_t seed, std::string const& profile) {
  std::vector<Event> events{
      {.kind = Event::source, .n = 101},
      {.kind = Event::source6, .n = 102},
      {.kind = Event::udpPort, .n = 4790},
      {.kind = Event::learning, .n = 1},
      {.kind = Event::dscp, .n = 1},
      {.kind = Event::tos, .n = 5},
      {.kind = Event::adjacency, .n = 1, .hops = {uplink(1), uplink(2)}},
      {.kind = Event::adjacency, .n = 2, .hops = {uplink(2), unresolved(3)}},
      {.kind = Event::adjacency, .n = 3, .hops = {unresolved(1)}},
  };
  unsigned vtep = 2;
  for (auto const type : {unicast, member}) {
    for (auto const adjId : {1U, 1U, 2U, 3U, 0U}) {
      events.push_back({.kind = Event::over, .type = type, .vtep = vtep++, .n = adjId});
    }
  }
  if (profile != "compact") events.push_back({.kind = Event::over, .vtep = 102, .n = 2});
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
          .profiles = {"cascaded", "flat", "compact", "oneHeader", "flooding"}},
         GetParam());
}

}  // namespace

}  // namespace AgentTest
