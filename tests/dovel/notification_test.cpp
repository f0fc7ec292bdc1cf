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

KILN_TRACE_FILE("NotificationTest");

namespace NotificationTest {
namespace {

using Dovel::Change;

/// Publishes when it is told to.
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
  void listen(Ear& ear) { ear.listen(*bell); }
  std::string ring(std::uint16_t id = 1) {
    heard.clear();
    bell->ring(id);
    return heard;
  }

  Dovel::Ptr<Bell> bell = Dovel::make<Bell>();
  std::string heard;
};

TEST_F(Notification, RunsInOrderOfSubscription) {
  Ear a("a", heard), b("b", heard), c("c", heard);
  for (auto* ear : {&b, &a, &c}) listen(*ear);
  EXPECT_EQ(ring(), "b1 a1 c1 ");
  a.leave();
  listen(a);
  EXPECT_EQ(ring(), "b1 c1 a1 ");
  for (auto* ear : {&b, &a, &c}) ear->leave();
  EXPECT_EQ(ring(), "");
  EXPECT_TRUE(bell->silent());
}

// Each of four subscribers in turn removes each set of the others, or itself: a removed one behind it is not called,
// one before it was called already, and the list is whole afterwards.
TEST_F(Notification, OneRemovedDuringTheWalkIsNotCalled) {
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
        listen(*ears[i]);
        bool const gone = removed & (1U << i);
        if (!gone) left += name + "1 ";
        if (!gone || i <= remover) expected += name + "1 ";
      }
      EXPECT_EQ(ring(), expected) << "remover " << remover << " removed " << removed;
      // The remover has nothing more to remove, so that this is the plain list.
      EXPECT_EQ(ring(), left) << "remover " << remover << " removed " << removed;
      for (auto& ear : ears) ear->leave();
    }
  }
}

TEST_F(Notification, OneThatComesDuringTheWalkHearsTheNextChange) {
  Ear late("late", heard);
  Ear early("early", heard, [&](std::uint16_t) {
    if (!late.subscribed()) listen(late);
  });
  listen(early);
  EXPECT_EQ(ring(1), "early1 ");
  EXPECT_EQ(ring(2), "early2 late2 ");
}

TEST_F(Notification, OneThatGoesAndComesBackDuringTheWalkIsNew) {
  Ear* mover = nullptr;
  Ear first("first", heard, [&](std::uint16_t) {
    mover->leave();
    listen(*mover);
  });
  Ear second("second", heard);
  Ear last("last", heard);
  listen(first);
  listen(second);
  listen(last);
  mover = &second;
  EXPECT_EQ(ring(), "first1 last1 ");
  // Last in the list again: without a fixed end it would be called in the walk that moved it, for ever.
  mover = &first;
  EXPECT_EQ(ring(), "first1 last1 second1 ");
  EXPECT_EQ(ring(), "last1 second1 first1 ");
}

TEST_F(Notification, AWriteInsideAWalkIsHeardToItsEndFirst) {
  Ear a("a", heard, [&](std::uint16_t id) {
    if (id == 1) bell->ring(2);
  });
  Ear b("b", heard);
  listen(a);
  listen(b);
  EXPECT_EQ(ring(), "a1 a2 b2 b1 ");
}

TEST_F(Notification, RemovalInAnInnerWalkHoldsForTheOuterOne) {
  auto gone = std::make_unique<Ear>("gone", heard);
  auto last = std::make_unique<Ear>("last", heard);
  Ear a("a", heard, [&](std::uint16_t id) {
    if (id == 1) return bell->ring(2);
    gone->leave();
    last->leave();
    // The memory is reused, so that a walk that still refers to it would show.
    gone = std::make_unique<Ear>("new", heard);
    last.reset();
    listen(*gone);
  });
  Ear b("b", heard);
  listen(a);
  listen(*gone);
  listen(b);
  listen(*last);
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
  listen(a);
  listen(b);
  bell->ring(1);
  EXPECT_EQ(heard, "a1 b1 ");
  EXPECT_EQ(Dovel::Node::aliveCount(), before - 1);
  EXPECT_FALSE(a.subscribed() || b.subscribed());
}

TEST_F(Notification, WalksOfSeveralPublishersDontMeet) {
  auto const other = Dovel::make<Bell>();
  Ear far("far", heard);
  Ear b("b", heard);
  Ear a("a", heard, [&](std::uint16_t) {
    other->ring(7);
    far.leave();
    listen(far);
  });
  listen(a);
  listen(b);
  far.listen(*other);
  EXPECT_EQ(ring(), "a1 far7 b1 ");
  EXPECT_TRUE(other->silent());
}

TEST_F(Notification, IsLimitedToTheAttributesOfInterest) {
  auto const ear = [&](char const* name, Dovel::AttributeSet interest) {
    return std::make_unique<Ear>(name, heard, nullptr, interest);
  };
  auto const two = ear("two", Dovel::attributes(0x102, 0x104)), none = ear("none", 0), all = ear("all", ~0U);
  listen(*two);
  EXPECT_EQ(ring(0x103) + ring(0x104), "two260 ");
  for (auto* other : {none.get(), all.get()}) listen(*other);
  EXPECT_EQ(ring(0x102) + ring(0x103), "two258 all258 all259 ");
  // What a removed subscriber was interested in is forgotten with the last one.
  for (auto* one : {all.get(), two.get()}) one->leave();
  listen(*two);
  EXPECT_EQ(ring(0x103), "");
  none->leave();
  two->leave();
  listen(*none);
  EXPECT_EQ(ring(0x102), "");
}

/// Throws, in the way that the test wants, when its bell rings or when it is bound to another.
class Thrower final : public Kiln::Sm {
  void bellDispatch(Dovel::Change const&) { act(); }
  void bellCatchUp() { act(); }

  KILN_BASE_TYPE(NotificationTest::Thrower)
  KILN_WATCHED(0x102, Bell, bell, &KilnSelf::bellDispatch, &KilnSelf::bellCatchUp)

 public:
  Thrower(Dovel::Ptr<Bell> const& bell, std::function<void()> how)
      : bell_(*this, bell, Kiln::SubscribeOnly{}), act(std::move(how)) {}

 private:
  std::function<void()> act;
};
KILN_DESCRIBE(Thrower)

TEST(NotificationDeathTest, AnExceptionThatLeavesAHandlerEndsTheProcessWithTheLastTraces) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  Kiln::TraceCapture capture("NotificationTest");
  auto const bell = Dovel::make<Bell>();
  auto const handled = [](auto act) {
    try {
      act();
    } catch (...) {
    }
  };
  auto const text = Dovel::make<Thrower>(bell, [] {
    TRACE(1, "before the end");
    throw std::runtime_error("no room");
  });
  auto const died = "Uncaught exception std::runtime_error: no room\nLast traces:\n(.*\n)*.*before the end\n";
  EXPECT_DEATH(handled([&] { bell->ring(1); }), died);
  EXPECT_DEATH(handled([&] { text->bellIs(Dovel::make<Bell>()); }), died);
  auto const number = Dovel::make<Thrower>(Dovel::make<Bell>(), [] { throw 1; });
  EXPECT_DEATH(handled([&] { number->bell()->ring(1); }), "Uncaught exception int\nLast traces:\n");
}

/// Records its end and what its flags are then.
class Mortal final : public Dovel::Node {
  KILN_BASE_TYPE(NotificationTest::Mortal)

 public:
  explicit Mortal(std::string& log) : log_(log) {}
  ~Mortal() override { log_ += "deleted "; }

 protected:
  void lastUserGone() override {
    log_ += "lastUserGone ";
    Dovel::Ptr<Mortal> const passing(this);
  }

 private:
  std::string& log_;
};
KILN_DESCRIBE(Mortal)

/// Hands out references to itself while it is constructed, and keeps none.
class Early final : public Dovel::PublishingNode {
  KILN_BASE_TYPE(NotificationTest::Early)

 public:
  Early() {
    Dovel::Ptr<Early> const self(this);
    Dovel::Ptr<Early const>(self).swap(former_);
    former_ = nullptr;
    kilnChanged(1);
  }
  ~Early() override { Dovel::Ptr<Early const> const passing(this); }

 private:
  Dovel::Ptr<Early const> former_;
};
KILN_DESCRIBE(Early)

TEST(Node, IsNotDeletedByItsConstructor) {
  auto const before = Dovel::Node::aliveCount();
  auto early = Dovel::make<Early>();
  EXPECT_EQ(Dovel::Node::aliveCount(), before + 1);
  EXPECT_EQ(early->useCount(), 1U);
  early = nullptr;
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

TEST(Node, GoesOnceWithItsLastUser) {
  std::string log;
  auto const before = Dovel::Node::aliveCount();
  {
    auto const a = Dovel::make<Mortal>(log);
    Dovel::Ptr<Dovel::Node const> b = a;
    auto const c = std::move(b);
    a->hasNotificationActiveIs(true);
    a->kilnDoZombieReactors(true);
    EXPECT_EQ(a->useCount(), 2U);
    a->kilnDoZombieReactors(false);
    EXPECT_TRUE(a->hasNotificationActive());
    EXPECT_FALSE(a->isZombie());
    EXPECT_EQ(log, "");
  }
  EXPECT_EQ(log, "lastUserGone deleted ");
  EXPECT_EQ(Dovel::Node::aliveCount(), before);
}

}  // namespace
}  // namespace NotificationTest
