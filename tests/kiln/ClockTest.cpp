#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <set>
#include <vector>

#include "platform/kiln/Clock.h"

namespace {

TEST(Activities, runByTimeThenByOrderOfSchedulingUnlessTheyAreCancelled) {
  Kiln::VirtualClock clock;
  Kiln::ActivityManager manager;
  manager.clockIs(&clock);
  std::mt19937 random(1);
  using Id = Kiln::ActivityManager::Id;
  std::set<std::pair<Kiln::Seconds, Id>> waiting;
  std::vector<Id> ran;
  auto const held = std::make_shared<int>();
  for (int step = 0; step < 3000; ++step) {
    auto const some = [&] {
      return std::next(waiting.begin(), static_cast<std::ptrdiff_t>(random() % waiting.size()));
    };
    // Now more is scheduled, now more is cancelled.
    if (random() % (step % 500 < 250 ? 2 : 8) == 0) {
      auto const delay = static_cast<Kiln::Seconds>(random() % 100) - 5;
      auto id = std::make_shared<Id>();
      *id = manager.schedule(delay, [&ran, id, held] { ran.push_back(*id); });
      waiting.emplace(clock.now() + std::max(delay, 0.0), *id);
    } else if (random() % 8 != 0 && !waiting.empty()) {
      auto const victim = some();
      EXPECT_TRUE(manager.cancel(victim->second) && !manager.cancel(victim->second) && !manager.cancel(Id{}));
      waiting.erase(victim);
    } else {
      clock.advance(static_cast<Kiln::Seconds>(random() % 10));
      ran.clear();
      auto const count = manager.runDue();
      EXPECT_EQ(count, ran.size());
      for (auto const id : ran) {
        ASSERT_TRUE(!waiting.empty() && waiting.begin()->first <= clock.now() && waiting.begin()->second == id);
        EXPECT_FALSE(manager.cancel(id));
        waiting.erase(waiting.begin());
      }
      ASSERT_TRUE(waiting.empty() || waiting.begin()->first > clock.now());
    }
    ASSERT_EQ(manager.nextDue(), waiting.empty() ? std::nullopt : std::optional(waiting.begin()->first));
    ASSERT_EQ(manager.waiting(), waiting.size());
    ASSERT_EQ(held.use_count(), waiting.size() + 1) << "what has run or was cancelled is released";
  }
}

TEST(Activities, thatAreScheduledByWorkOrByItsReleaseWaitForTheNextTurn) {
  Kiln::VirtualClock clock;
  Kiln::ActivityManager manager;
  manager.clockIs(&clock);
  unsigned again = 0, parted = 0;
  std::function<void()> const work = [&] {
    ++again;
    manager.schedule(0, work);
  };
  manager.schedule(0, work);
  std::shared_ptr<void> parting(nullptr, [&](void*) { manager.schedule(0, [&] { ++parted; }); });
  EXPECT_TRUE(manager.cancel(manager.schedule(5, [held = std::move(parting)] {})));
  for (unsigned const turn : {1, 2}) {
    manager.runDue();
    EXPECT_EQ(again, turn);
    EXPECT_EQ(parted, 1U);
  }
}

}  // namespace
