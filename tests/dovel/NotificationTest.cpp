#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "platform/kiln/AttributeDefinitions.h"
#include "platform/kiln/Sm.h"
#include "platform/kiln/Trace.h"
#include "tests/support/Watch.h"

KILN_TRACE_FILE("NotificationTest");

namespace NotificationTest {

using Dovel::Change;

class Bell final : public Dovel::PublishingNode {
  KILN_BASE_TYPE(NotificationTest::Bell)

 public:
  void ring(std::uint16_t id) { kilnChanged(id); }
  bool silent() const { return publisher()->empty(); }
};
KILN_DESCRIBE(Bell)

/// Records its name and the changes, and then does what the test wants.
class Ear final : public Dovel::Subscriber {
 public:
  Ear(std::string name, std::string& heard, std::function<void(std::uint16_t)> action = nullptr,
      Dovel::AttributeSet interest = Dovel::kAllAttributes)
      : Dovel::Subscriber([](Dovel::Subscriber& self, Change const& change) { static_cast<Ear&>(self).hear(change); },
                          interest),
        name_(std::move(name)),
        heard_(heard),
        action_(std::move(action)) {}
  ~Ear() { leave(); }

  void listen(Bell& bell) {
    bell_ = &bell;
    bell.publisher()->subscriberAdd(*this);
  }
  void leave() {
    if (subscribed()) bell_->publisher()->subscriberRemove(*this);
  }

 private:
  void hear(Change const& change) {
    heard_ += name_ + std::to_string(change.id) + " ";
    // What the action does may end this object.
    auto const action = action_;
    if (action) action(change.id);
  }

  std::string name_;
  std::string& heard_;
  std::function<void(std::uint16_t)> action_;
  Bell* bell_ = nullptr;
};

class Notification : public testing::Test {
 protected:
  void listen(std::initializer_list<Ear*> ears) {
    for (auto* ear : ears) ear->listen(*bell);
  }
  std::string ring(std::uint16_t id = 1) {
    heard.clear();
    bell->ring(id);
    return heard;
  }

  Dovel::Ptr<Bell> bell = Dovel::make<Bell>();
  std::string heard;
};

// Each of four subscribers in turn removes each set of the others, or itself: a removed one behind it is not called,
// one before it was called already, and the list is whole afterwards.
TEST_F(Notification, RunsInOrderOfSubscriptionWithoutThoseThatAreRemovedMeanwhile) {
  for (unsigned remover = 0; remover < 4; ++remover) {
    for (unsigned removed = 0; removed < 16; ++removed) {
      std::vector<std::unique_ptr<Ear>> ears;
      std::string expected, left;
      for (unsigned i = 0; i < 4; ++i) {
        auto const name = std::string(1, static_cast<char>('a' + i));
        ears.push_back(std::make_unique<Ear>(name, heard, [&, i](std::uint16_t) {
          if (i != remover) return;
          for (unsigned other = 0; other < 4; ++other) {
            if (removed & (1U << other)) ears[other]->leave();
          }
        }));
        listen({ears[i].get()});
        bool const gone = removed & (1U << i);
        if (!gone) left += name + "1 ";
        if (!gone || i <= remover) expected += name + "1 ";
      }
      EXPECT_EQ(ring(), expected) << "remover " << remover << " removed " << removed;
      // The remover has nothing more to remove, so that this is the plain list.
      EXPECT_EQ(ring(), left) << "remover " << remover << " removed " << removed;
      ears.clear();
      EXPECT_TRUE(bell->silent());
    }
  }
}

TEST_F(Notification, OneThatIsAddedOrMovedDuringTheWalkIsNew) {
  Ear late("late", heard), last("last", heard);
  Ear* mover = &late;
  Ear first("first", heard, [&](std::uint16_t) {
    mover->leave();
    listen({mover});
  });
  listen({&first, &last});
  EXPECT_EQ(ring(1), "first1 last1 ");
  EXPECT_EQ(ring(2), "first2 last2 ");
  // Last in the list again: without a fixed end it would be called in the walk that moved it, for ever.
  mover = &first;
  EXPECT_EQ(ring(), "first1 last1 late1 ");
  EXPECT_EQ(ring(), "last1 late1 first1 ");
}

TEST_F(Notification, AWriteInsideAWalkIsHeardToItsEndFirstAndItsRemovalsHoldForTheOuterWalk) {
  auto gone = std::make_unique<Ear>("gone", heard);
  auto last = std::make_unique<Ear>("last", heard);
  Ear a("a", heard, [&](std::uint16_t id) {
    if (id == 1) return bell->ring(2);
    gone->leave();
    last->leave();
    // The memory is reused, so that a walk that still refers to it would show.
    gone = std::make_unique<Ear>("new", heard);
    last.reset();
    listen({gone.get()});
  });
  Ear b("b", heard);
  listen({&a, gone.get(), &b, last.get()});
  EXPECT_EQ(ring(), "a1 a2 b2 b1 ");
  gone->leave();
}

TEST_F(Notification, ThePublisherLivesUntilItsPublishReturns) {
  auto const before = Dovel::Node::aliveCount();
  Ear b("b", heard);
  Ear a("a", heard, [&](std::uint16_t) {
    bell = nullptr;
    EXPECT_EQ(Dovel::Node::aliveCount(), before);
  });
  listen({&a, &b});
  bell->ring(1);
  EXPECT_EQ(heard, "a1 b1 ");
  EXPECT_EQ(Dovel::Node::aliveCount(), before - 1);
  EXPECT_FALSE(a.subscribed() || b.subscribed());
}

TEST_F(Notification, IsLimitedToTheAttributesOfInterest) {
  Ear two("two", heard, nullptr, Dovel::attributes(0x102, 0x104)), none("none", heard, nullptr, 0), all("all", heard);
  listen({&two});
  EXPECT_EQ(ring(0x103) + ring(0x104), "two260 ");
  listen({&none, &all});
  EXPECT_EQ(ring(0x102) + ring(0x103), "two258 all258 all259 ");
  // What a removed subscriber was interested in is forgotten with the last one.
  for (auto* one : {&all, &two}) one->leave();
  listen({&two});
  EXPECT_EQ(ring(0x103), "");
  for (auto* one : {&none, &two}) one->leave();
  listen({&none});
  EXPECT_EQ(ring(0x102), "");
}

TEST(NotificationDeathTest, AnExceptionThatLeavesAHandlerEndsTheProcessWithTheLastTraces) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  Kiln::TraceCapture capture("NotificationTest");
  auto const dies = [](auto what) {
    auto const bell = Dovel::make<Bell>();
    Support::Watch const watch(*bell, [&](Change const&) {
      TRACE(1, "before the end");
      throw what;
    });
    try {
      bell->ring(1);
    } catch (...) {
    }
  };
  EXPECT_DEATH(dies(std::runtime_error("no room")),
               "Uncaught exception std::runtime_error: no room\nLast traces:\n(.*\n)*.*before the end\n");
  EXPECT_DEATH(dies(1), "Uncaught exception int\nLast traces:\n");
}

/// Hands out references to itself while it is constructed and while it ends, and keeps none.
class Mortal final : public Dovel::PublishingNode {
  KILN_BASE_TYPE(NotificationTest::Mortal)

 public:
  explicit Mortal(std::string& log) : log_(log) {
    Dovel::Ptr<Mortal> const self(this);
    Dovel::Ptr<Mortal const>(self).swap(former_);
    former_ = nullptr;
    kilnChanged(1);
  }
  ~Mortal() override {
    Dovel::Ptr<Mortal const> const passing(this);
    log_ += "deleted ";
  }

 protected:
  void lastUserGone() override {
    log_ += "lastUserGone ";
    Dovel::Ptr<Mortal> const passing(this);
  }

 private:
  std::string& log_;
  Dovel::Ptr<Mortal const> former_;
};
KILN_DESCRIBE(Mortal)

TEST(Node, IsDeletedOnceWithItsLastUser) {
  std::string log;
  auto const before = Dovel::Node::aliveCount();
  {
    auto const a = Dovel::make<Mortal>(log);
    EXPECT_EQ(a->useCount(), 1U);
    Dovel::Ptr<Dovel::Node const> b = a;
    auto const c = std::move(b);
    a->hasNotificationActiveIs(true);
    a->kilnDoZombieReactors(true);
    EXPECT_EQ(a->useCount(), 2U);
    a->kilnDoZombieReactors(false);
    EXPECT_TRUE(a->hasNotificationActive() && !a->isZombie());
    EXPECT_EQ(Dovel::Node::aliveCount(), before + 1);
  }
  EXPECT_EQ(log, "lastUserGone deleted ");
  EXPECT_EQ(Dovel::Node::aliveCount(), before);
}

TEST(Node, CountsAndFlagsOfSharedNodesAreExactOnceThreadsAreAnnounced) {
  Dovel::ThreadControl::tsp_ = 1;
  auto const bell = Dovel::make<Bell>();
  {
    std::atomic<bool> done = false;
    std::jthread const other([&] {
      for (int i = 0; i < 1'000'000; ++i) Dovel::Ptr<Bell const> const copy = bell;
      done = true;
    });
    for (bool active = false; !done; active = !active) bell->hasNotificationActiveIs(active);
  }
  bell->hasNotificationActiveIs(false);
  Dovel::ThreadControl::tsp_ = 0;
  EXPECT_EQ(bell->useCount(), 1U);
  EXPECT_FALSE(bell->hasNotificationActive());
}

}  // namespace NotificationTest
