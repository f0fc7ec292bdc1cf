#include "platform/kiln/Clock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

using testing::ElementsAre;

class ActivityTest : public testing::Test {
 protected:
  ActivityTest() { manager.clockIs(&clock); }
  auto note(std::string text) {
    return [this, text] { notes.push_back(text); };
  }

  Kiln::VirtualClock clock;
  Kiln::ActivityManager manager;
  std::vector<std::string> notes;
};

TEST_F(ActivityTest, runsByTimeThenByOrderOfScheduling) {
  manager.schedule(2, note("c"));
  manager.schedule(1, note("a"));
  manager.schedule(1, note("b"));
  manager.schedule(-5, note("now"));
  EXPECT_EQ(manager.nextDue(), 0.0);
  EXPECT_EQ(manager.runDue(), 1U);
  EXPECT_EQ(manager.nextDue(), 1.0);
  EXPECT_EQ(manager.runDue(), 0U);
  clock.advance(2);
  EXPECT_EQ(manager.runDue(), 3U);
  EXPECT_THAT(notes, ElementsAre("now", "a", "b", "c"));
  EXPECT_EQ(manager.nextDue(), std::nullopt);
}

TEST_F(ActivityTest, whatIsScheduledByWorkWaitsForTheNextTurn) {
  std::function<void()> again = [&] {
    notes.push_back("again");
    manager.schedule(0, again);
  };
  manager.schedule(0, again);
  manager.schedule(0, note("other"));
  EXPECT_EQ(manager.runDue(), 2U);
  EXPECT_EQ(manager.runDue(), 1U);
  EXPECT_THAT(notes, ElementsAre("again", "other", "again"));
  EXPECT_EQ(manager.waiting(), 1U);
}

TEST_F(ActivityTest, cancelledWorkDoesNotRunAndIsReleased) {
  auto const owned = std::make_shared<int>(0);
  auto const kept = manager.schedule(1, note("kept"));
  auto const victim = manager.schedule(1, [owned] { ++*owned; });
  manager.schedule(0.5, [&] { EXPECT_TRUE(manager.cancel(victim)); });
  clock.advance(1);
  EXPECT_EQ(manager.runDue(), 2U);
  EXPECT_EQ(*owned, 0);
  EXPECT_EQ(owned.use_count(), 1);
  EXPECT_FALSE(manager.cancel(victim));
  EXPECT_FALSE(manager.cancel(kept));
  EXPECT_FALSE(manager.cancel(0));

  // Its place is used again, its name is not.
  manager.schedule(0, note("successor"));
  EXPECT_FALSE(manager.cancel(victim));
  EXPECT_FALSE(manager.cancel(kept));
  manager.runDue();
  EXPECT_THAT(notes, ElementsAre("kept", "successor"));
}

TEST_F(ActivityTest, aCallableMayScheduleWhenItIsReleased) {
  struct Parting {
    explicit Parting(std::function<void()> action) : action_(std::move(action)) {}
    ~Parting() { action_(); }
    std::function<void()> action_;
  };
  auto parting = std::make_shared<Parting>([&] { manager.schedule(0, note("parting")); });
  auto const id = manager.schedule(5, [held = std::move(parting)] {});
  EXPECT_TRUE(manager.cancel(id));
  EXPECT_EQ(manager.runDue(), 1U);
  EXPECT_THAT(notes, ElementsAre("parting"));
}

TEST_F(ActivityTest, aThousandReschedulingsKeepTheNextDueRight) {
  manager.schedule(50, note("base"));
  auto timer = manager.schedule(100, note("timer"));
  for (int i = 0; i < 1000; ++i) {
    ASSERT_TRUE(manager.cancel(timer));
    timer = manager.schedule(i % 2 ? 100 : 10, note("timer"));
    ASSERT_EQ(manager.nextDue(), i % 2 ? 50.0 : 10.0);
  }
  EXPECT_EQ(manager.waiting(), 2U);
  clock.advance(100);
  EXPECT_EQ(manager.runDue(), 2U);
  EXPECT_THAT(notes, ElementsAre("base", "timer"));
}

TEST(ClockTest, theProcessGoesByARealClockUntilAnotherIsSet) {
  auto* const real = Kiln::activityManager()->clock();
  ASSERT_TRUE(real);
  Kiln::Seconds const before = real->now();
  EXPECT_GE(before, 0);
  EXPECT_GE(real->now(), before);
  {
    Kiln::VirtualClock clock;
    Kiln::ClockScope const scope(clock);
    clock.advance(3);
    EXPECT_EQ(Kiln::activityManager()->clock()->now(), 3.0);
  }
  EXPECT_EQ(Kiln::activityManager()->clock(), real);
}

}  // namespace
