#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <set>
#include <string>

#include "platform/kiln/Clock.h"

namespace {

class ActivityTest : public testing::Test {
 protected:
  ActivityTest() { manager.clockIs(&clock); }
  auto note(std::string const& text) {
    return [this, text] { notes += text + " "; };
  }
  /// What is run after `seconds`.
  std::string after(Kiln::Seconds seconds) {
    clock.advance(seconds);
    notes.clear();
    manager.runDue();
    return notes;
  }

  Kiln::VirtualClock clock;
  Kiln::ActivityManager manager;
  std::string notes;
};

TEST_F(ActivityTest, runsByTimeThenByOrderOfScheduling) {
  manager.schedule(2, note("c"));
  manager.schedule(1, note("a"));
  manager.schedule(1, note("b"));
  manager.schedule(-5, note("now"));
  EXPECT_EQ(manager.nextDue(), 0.0);
  EXPECT_EQ(after(0), "now ");
  EXPECT_EQ(manager.nextDue(), 1.0);
  EXPECT_EQ(after(0.5), "");
  EXPECT_EQ(after(1.5), "a b c ");
  EXPECT_EQ(manager.nextDue(), std::nullopt);
}

TEST_F(ActivityTest, whatIsScheduledByWorkOrByItsReleaseWaitsForTheNextTurn) {
  std::function<void()> again = [&] {
    notes += "again ";
    manager.schedule(0, again);
  };
  manager.schedule(0, again);
  std::shared_ptr<int> parting(new int, [this](int* number) {
    manager.schedule(0, note("parting"));
    delete number;
  });
  auto const id = manager.schedule(5, [held = std::move(parting)] {});
  EXPECT_TRUE(manager.cancel(id));
  EXPECT_EQ(after(0), "again parting ");
  EXPECT_EQ(after(0), "again ");
  EXPECT_EQ(manager.waiting(), 1U);
}

TEST_F(ActivityTest, cancelledWorkDoesNotRunAndIsReleased) {
  auto const owned = std::make_shared<int>(0);
  auto const kept = manager.schedule(1, note("kept"));
  auto const victim = manager.schedule(1, [owned] { ++*owned; });
  manager.schedule(0.5, [&] { EXPECT_TRUE(manager.cancel(victim)); });
  EXPECT_EQ(after(1), "kept ");
  EXPECT_EQ(owned.use_count(), 1);
  // Its place is used again, its name is not.
  manager.schedule(0, note("successor"));
  for (auto const id : {victim, kept, decltype(kept){}}) EXPECT_FALSE(manager.cancel(id));
  EXPECT_EQ(after(0), "successor ");
}

TEST_F(ActivityTest, agreesWithAListAfterManyReschedulings) {
  std::mt19937 random(1);
  std::set<std::pair<Kiln::Seconds, decltype(manager.schedule(0, {}))>> naive;
  for (int i = 0; i < 1000; ++i) {
    if (random() % 3 == 0 && !naive.empty()) {
      auto const victim = std::next(naive.begin(), static_cast<std::ptrdiff_t>(random() % naive.size()));
      ASSERT_TRUE(manager.cancel(victim->second));
      naive.erase(victim);
    } else {
      auto const due = static_cast<Kiln::Seconds>(random() % 100);
      naive.emplace(due, manager.schedule(due, [] {}));
    }
    ASSERT_EQ(manager.nextDue(), naive.empty() ? std::optional<Kiln::Seconds>() : naive.begin()->first);
    ASSERT_EQ(manager.waiting(), naive.size());
  }
}

TEST(ClockTest, theProcessGoesByARealClockUntilAnotherIsSet) {
  auto* const real = Kiln::activityManager()->clock();
  ASSERT_TRUE(real);
  EXPECT_GE(real->now(), 0);
  {
    Kiln::VirtualClock clock;
    Kiln::ClockScope const scope(clock);
    clock.advance(3);
    EXPECT_EQ(Kiln::activityManager()->clock()->now(), 3.0);
  }
  EXPECT_EQ(Kiln::activityManager()->clock(), real);
}

}  // namespace
