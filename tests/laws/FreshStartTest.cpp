#include <algorithm>
#include <functional>

#include "platform/asic/Store.h"
#include "tests/laws/RandomStory.h"

namespace AgentTest {

namespace {

/// The agent's chip and status are those of an agent that was started and told the same wish at once.
void expectAsFresh(AgentWorld const& agent, ChipKind const& kind) {
  AgentWorld fresh(kind);
  fresh.want(agent.wish());
  EXPECT_EQ(agent.chip(), fresh.chip());
  EXPECT_EQ(agent.statusByKey(), fresh.statusByKey());
}

class Laws : public testing::TestWithParam<ChipKind> {};
INSTANTIATE_TEST_SUITE_P(Chips, Laws, testing::ValuesIn(chipKinds({"cascaded", "flat", "compact"})), kindName);

TEST_P(Laws, whateverHappensTheChipIsThatOfAFreshStart) {
  for (auto const seed : seeds(4)) {
    AgentWorld agent(GetParam());
    RandomStory story(agent, seed);
    for (unsigned leg = 0; leg < 5 && !HasFailure(); ++leg) {
      story.run(40);
      story.close();
      SCOPED_TRACE("TESSEL_SEED=" + std::to_string(seed) + '\n' + story.told());
      expectAsFresh(agent, GetParam());
    }
    if (HasFailure()) return;
  }
}

TEST_P(Laws, aRestartOverTheSameStateChangesNothing) {
  for (auto const seed : seeds(2)) {
    AgentWorld agent(GetParam());
    RandomStory story(agent, seed);
    story.run(60);
    story.close();
    SCOPED_TRACE("TESSEL_SEED=" + std::to_string(seed) + '\n' + story.told());
    auto const before = agent.chip();
    auto const statusBefore = agent.statusByKey();
    agent.restart();
    EXPECT_EQ(agent.chip(), before);
    EXPECT_EQ(agent.statusByKey(), statusBefore);
  }
}

TEST_P(Laws, takingEverythingAwayLeavesNothing) {
  for (auto const seed : seeds(3)) {
    AgentWorld agent(GetParam());
    auto const start = agent.chip();
    auto const alive = Dovel::Node::aliveCount();
    RandomStory story(agent, seed);
    story.run(80);
    SCOPED_TRACE("TESSEL_SEED=" + std::to_string(seed) + '\n' + story.told());
    agent.release().want({});
    EXPECT_EQ(agent.chip(), start);
    EXPECT_EQ(agent.statusByKey(), "");
    EXPECT_EQ(Dovel::Node::aliveCount(), alive);
  }
}

// But for groups that come to nothing: one of which a member has no port, and that of a member tunnel whose VTEP has a
// unicast tunnel too. Their rows are written and go again when nobody takes them.
TEST_P(Laws, theSameAgainWritesNothing) {
  for (auto const seed : seeds(3)) {
    AgentWorld agent(GetParam());
    RandomStory story(agent, seed, {.bothTypes = false, .portless = false});
    story.run(60);
    story.close();
    SCOPED_TRACE("TESSEL_SEED=" + std::to_string(seed) + '\n' + story.told());
    agent.writes();
    agent.want(agent.wish());
    EXPECT_EQ(agent.writes(), "");
    // The same next hops in new lists: every tunnel is looked at, and nothing differs.
    for (auto const type : {unicast, member}) {
      for (auto const& entry : agent.agent().hwTunnelConfig(type)->hwTunnelConfigListColl()) {
        auto const list = entry->nextHopEntryList();
        if (list) entry->nextHopEntryListIs(Dovel::make<Vane::NextHopEntryList>(list->adjId(), list->nextHopEntry()));
      }
    }
    agent.settle();
    EXPECT_EQ(agent.writes(), "");
  }
}

TEST(LawOfCompletion, bothWaysEndAlike) {
  for (auto const* profile : {"cascaded", "flat"}) {
    for (auto const seed : seeds(3)) {
      std::string ends[2];
      for (auto const& kind : chipKinds({profile})) {
        AgentWorld agent(kind);
        RandomStory story(agent, seed);
        story.run(80);
        agent.release();
        ends[kind.completion == Asic::Completion::direct ? 0 : 1] = agent.chip() + agent.statusByKey();
      }
      EXPECT_EQ(ends[0], ends[1]) << profile << " TESSEL_SEED=" << seed;
    }
  }
}

/// Changes that have nothing to do with each other.
std::vector<std::function<void(AgentWorld&)>> independentSteps() {
  return {
      [](AgentWorld& agent) { agent.localVtep(vtep(1)); },
      [](AgentWorld& agent) { agent.localVtep(vtep6(1)); },
      [](AgentWorld& agent) { agent.udpPort(4789); },
      [](AgentWorld& agent) { agent.learning(true); },
      [](AgentWorld& agent) { agent.dscp(true); },
      [](AgentWorld& agent) { agent.tos(5); },
      [](AgentWorld& agent) {
        agent.adjacency(1, {uplink(1), uplink(2)});
      },
      [](AgentWorld& agent) {
        agent.adjacency(2, {uplink(2), unresolved(3)});
      },
      [](AgentWorld& agent) { agent.adjacency(3, {unresolved(1)}); },
      [](AgentWorld& agent) { agent.tunnel(unicast, vtep(2)).over(1); },
      [](AgentWorld& agent) { agent.tunnel(unicast, vtep(3)).over(1); },
      [](AgentWorld& agent) { agent.tunnel(unicast, vtep(4)).over(3); },
      [](AgentWorld& agent) { agent.tunnel(unicast, vtep(5)).withoutRoute(); },
      [](AgentWorld& agent) { agent.tunnel(member, vtep(6)).over(1); },
      [](AgentWorld& agent) { agent.tunnel(member, vtep(7)).over(2); },
      [](AgentWorld& agent) { agent.tunnel(member, vtep(8)).over(3); },
  };
}

TEST_P(Laws, theOrderOfIndependentEventsDoesNotMatter) {
  auto steps = independentSteps();
  if (GetParam().profile != "compact") {
    steps.push_back([](AgentWorld& agent) { agent.tunnel(unicast, vtep6(2)).over(2); });
  }
  std::string first;
  for (auto const seed : seeds(8)) {
    std::mt19937_64 random(seed);
    std::shuffle(steps.begin(), steps.end(), random);
    AgentWorld agent(GetParam());
    for (auto const& step : steps) step(agent);
    auto const end = agent.chip() + agent.statusByKey();
    if (first.empty()) first = end;
    EXPECT_EQ(end, first) << "TESSEL_SEED=" << seed;
  }
}

}  // namespace

}  // namespace AgentTest
