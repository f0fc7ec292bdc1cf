#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/kiln/AttributeDefinitions.h"
#include "platform/kiln/Dir.h"
#include "platform/kiln/Entity.h"
#include "platform/kiln/Json.h"
#include "platform/kiln/Sm.h"
#include "platform/meshal/IpGenAddr.h"
#include "tests/support/Watch.h"

namespace ObjectTest {

/// Runs an action when the object that contains it is destroyed.
struct Parting {
  ~Parting() {
    if (action) action();
  }
  std::function<void()> action;
};

/// A host by its number.
class Host final : public Kiln::Entity {
  KILN_TYPE(ObjectTest::Host, Kiln::Entity)
  KILN_FIXED(0x102, std::uint32_t, number)
  KILN_ATTR(0x103, std::string, label, "none")

 public:
  explicit Host(std::uint32_t number) : number_(number) {}
  Parting parting;
};
KILN_DESCRIBE(Host)

class Site final : public Kiln::NamedEntity {
  KILN_TYPE(ObjectTest::Site, Kiln::NamedEntity)
  KILN_ATTR(0x102, Meshal::IpGenAddr, address)
  KILN_ATTR(0x103, std::uint16_t, port, 4789)
  KILN_COLL(0x104, std::uint16_t, std::uint32_t, vlanVni)
  KILN_SMALL_COLL(0x105, std::uint16_t, bool, flag)
  KILN_ENTITY_COLL(0x106, std::uint32_t, Host, number, host)
  KILN_READONLY(0x107, std::uint32_t, writes, 7)
  KILN_INST(0x108, Host, gateway)
  KILN_RESERVED(0x109, "ObjectTest::Later", later)
  KILN_ATTR(0x10a, Dovel::Ptr<Host>, peer)

 public:
  using NamedEntity::NamedEntity;
  Parting parting;
  void touch() { writesSet(writes() + 1); }
  KILN_METHOD(touch)
};
KILN_DESCRIBE(Site)

std::string textOf(Dovel::Change const& change) {
  std::string text = std::to_string(change.id - 0x100);
  if (change.id == Site::vlanVniId) text += "[" + std::to_string(change.keyAs<std::uint16_t>()) + "]";
  if (change.id == Site::hostId) text += "[" + std::to_string(change.keyAs<std::uint32_t>()) + "]";
  return text + " ";
}

/// Watches a site and records the changes.
class Watcher final : public Kiln::Sm {
  void siteDispatch(Dovel::Change const& change) { handle(textOf(change)); }
  void handleSite() { handle("catch-up "); }

  KILN_BASE_TYPE(ObjectTest::Watcher)
  KILN_WATCHED(0x102, Site, site, &KilnSelf::siteDispatch, &KilnSelf::handleSite)

 public:
  template <class... Quiet>
  Watcher(std::string& out, Dovel::Ptr<Site> site, Quiet... quiet)
      : Sm(quiet...), site_(*this, std::move(site), Kiln::SubscribeOnly{}), log(out) {}
  static Dovel::Ptr<Watcher> quiet(std::string& out, Dovel::Ptr<Site> const& site) {
    return Dovel::make<Watcher>(out, site, Quiet{});
  }

  std::function<void()> action;  ///< Runs in the handler.
  Parting parting;

 private:
  void handle(std::string const& text) {
    log += text;
    if (action) action();
    if (action) log += "handled ";
  }
  std::string& log;
};
KILN_DESCRIBE(Watcher)

class Objects : public testing::Test {
 protected:
  std::string said() { return std::exchange(log, {}); }

  Dovel::Ptr<Site> site = Dovel::make<Site>("s");
  std::string log;
  Dovel::Ptr<Watcher> watcher = Dovel::make<Watcher>(log, site);
};

// The objects' ends lead back into the collection that replaces, removes or destroys them.
TEST_F(Objects, AreLookedUpWhileOthersEnd) {
  auto* const raw = site.get();
  for (std::uint32_t n = 0; n < 8; ++n)
    site->hostIs(n)->parting.action = [this, raw, n] {
      raw->hostDel(n);
      for (std::uint32_t k = 0; k < 8; ++k) log += raw->host(k) ? "1" : "0";
      log += " ";
    };
  said();
  site->hostIs(Dovel::make<Host>(7U));
  EXPECT_EQ(said(), "6[7] 6[7] 11111110 ") << "removed by the end of the one that it replaced";
  site->hostDel(6);
  EXPECT_EQ(said(), "6[6] 11111100 ");
  watcher = nullptr;
  site = nullptr;
  EXPECT_EQ(said(), "00000000 00000000 00000000 00000000 00000000 00000000 ");
}

TEST_F(Objects, AreIteratedInTheOrderOfAdditionAndMayBeRemovedUnderTheCursor) {
  auto const order = [&] {
    std::string text;
    for (auto const& host : site->hostColl()) text += std::to_string(host->number()) + " ";
    return text;
  };
  for (std::uint32_t n : {5, 1, 9, 3}) site->hostIs(n);
  site->hostIs(Dovel::make<Host>(9U));
  EXPECT_EQ(order(), "5 1 9 3 ");
  for (std::uint32_t n : {1, 3}) site->hostDel(n);
  for (std::uint32_t n : {4, 2, 6}) site->hostIs(n);
  EXPECT_EQ(order(), "5 2 9 4 6 ") << "holes are filled";

  for (std::uint16_t n = 1; n <= 7; ++n) site->vlanVniIs(n, n), site->flagIs(n, true);
  std::string seen;
  for (auto const& [vlan, vni] : site->vlanVniColl()) site->vlanVniDel(vlan), seen += "v";
  for (auto const& [flag, set] : site->flagColl()) {
    seen += std::to_string(flag);
    if (flag % 2) site->flagDel(flag);
  }
  for (auto const& host : site->hostColl()) site->hostDel(host->number()), seen += "h";
  EXPECT_EQ(seen, "vvvvvvv1234567hhhhh");
  EXPECT_EQ(site->vlanVniColl().size() + site->flagColl().size() + site->hostColl().size(), 3U);

  for (std::uint32_t i = 1; i <= 5; ++i) site->hostIs(i);
  Kiln::forEachKey(site->hostColl(), [&](std::uint32_t key, Dovel::Ptr<Host> const& host) {
    seen += ":" + std::to_string(key) + (host->number() == key ? "" : "?");
    site->hostDelAll();
    for (std::uint32_t i = 100; i < 200; ++i) site->hostIs(i);
  });
  EXPECT_THAT(seen, testing::EndsWith("h:5")) << "one call, for the first in the walk";
}

TEST_F(Objects, OnlyDifferencesArePublished) {
  site->portIs(4789);
  site->vlanVniDel(10);
  site->gatewayDel();
  EXPECT_EQ(said(), "");
  EXPECT_FALSE(site->vlanVni(10) || site->vlanVniHas(10) || site->flag(1) || site->flagHas(1) || site->hostHas(1));
  for (int i = 0; i < 2; ++i) site->portIs(1);
  for (std::uint32_t const vni : {5, 5, 6}) site->vlanVniIs(10, vni);
  site->touch();
  EXPECT_EQ(site->vlanVniDel(10), 6U);
  EXPECT_EQ(said(), "3 4[10] 4[10] 7 4[10] ");

  auto const host = site->hostIs(3);
  EXPECT_EQ(site->hostIs(3), host);
  site->hostIs(host);
  EXPECT_EQ(said(), "6[3] ");
  site->hostIs(Dovel::make<Host>(3U));
  EXPECT_NE(site->host(3), host);
  site->hostDelAll();
  EXPECT_EQ(said(), "6[3] 6[3] ");
  EXPECT_THROW(site->hostIs(Dovel::Ptr<Host>()), Kiln::NullPointerException);

  site->gatewayIs(9U);
  EXPECT_THROW(site->gatewayIs(9U), Kiln::ReinstantiationException);
  site->gatewayDel();
  EXPECT_EQ(said(), "8 8 ");
}

// Keys and values that are handed in by reference to what the call removes or moves.
TEST_F(Objects, ArgumentsMayLieInTheCollectionItself) {
  for (std::uint16_t vlan = 1; vlan <= 40; ++vlan) site->vlanVniIs(vlan, 1000U + vlan);
  for (std::uint16_t vlan = 101; vlan <= 140; ++vlan) site->vlanVniIs(vlan, site->vlanVni(1));
  EXPECT_EQ(site->vlanVni(140), 1001U);
  site->vlanVniDel(site->vlanVniColl().begin()->first);
  EXPECT_EQ(site->vlanVniColl().size(), 79U);
  site->flagIs(7, true);
  site->flagDel(site->flagColl().begin()->first);
  EXPECT_FALSE(site->flagHas(7));
}

TEST_F(Objects, WatchIsRebound) {
  auto const other = Dovel::make<Site>("other");
  std::uint16_t port = 0;
  auto const heard = [&](Dovel::Ptr<Site> const& next) {
    watcher->siteIs(next);
    site->portIs(++port);
    other->portIs(++port);
    return said();
  };
  EXPECT_EQ(heard(site), "3 ");
  EXPECT_EQ(heard(other), "catch-up 3 ");
  EXPECT_EQ(heard(nullptr), "");
  EXPECT_TRUE(other->publisher()->empty() && site->publisher()->empty());
}

TEST_F(Objects, AnInactiveOwnerListensLaterAndAZombieNever) {
  watcher = Watcher::quiet(log, site);
  site->portIs(1);
  EXPECT_EQ(said(), "");
  for (int i = 0; i < 2; ++i) watcher->hasNotificationActiveIs(true);
  site->portIs(2);
  EXPECT_EQ(said(), "3 ");
  watcher->kilnDoZombieReactors(true);
  site->portIs(3);
  watcher->siteIs(Dovel::make<Site>("other"));
  watcher->siteIs(site);
  EXPECT_EQ(said(), "");
  watcher->kilnDoZombieReactors(false);
  site->portIs(4);
  EXPECT_EQ(said(), "3 ");
  watcher->hasNotificationActiveIs(false);
  EXPECT_TRUE(site->publisher()->empty());
}

// The last reference to an object is released by a subscriber to it, or by the end of an object that a mutator replaces
// or removes: the mutator publishes all that it changes, and the object is deleted when the mutator has returned.
TEST(HostileSubscriber, MayReleaseTheObjectThatChanges) {
  struct Case {
    char const* said;
    void (*act)(Site&);
    void (*prepare)(Site&) = [](Site&) {};
  };
  for (auto const& [said, act, prepare] : std::vector<Case>{
           {"3 ", [](Site& s) { s.portIs(1); }},
           {"4[10] ", [](Site& s) { EXPECT_EQ(s.vlanVniDel(10), 5U); }},
           {"4[10] 4[20] ", [](Site& s) { s.vlanVniDelAll(); }},
           {"5 5 ", [](Site& s) { s.flagDelAll(); }},
           {"6[1] 6[2] 6[3] ", [](Site& s) { s.hostDelAll(); }},
           {"6[9] ", [](Site& s) { EXPECT_EQ(s.hostIs(9)->number(), 9U); }},
           {"6[1] ", [](Site& s) { EXPECT_EQ(s.hostDel(1)->number(), 1U); }},
           {"6[1] ", [](Site& s) { s.hostIs(Dovel::make<Host>(1U)); }},
           {"8 ", [](Site& s) { EXPECT_EQ(s.gatewayIs(9U)->number(), 9U); }},
           {"8 ", [](Site& s) { s.gatewayDel(); }, [](Site& s) { s.gatewayIs(9U); }},
           {"10 ", [](Site& s) { s.peerIs(nullptr); }},
       }) {
    for (bool const bySubscriber : {true, false}) {
      std::string log;
      auto site = Dovel::make<Site>("s");
      auto const release = [&site] { site = nullptr; };
      for (auto const vlan : std::initializer_list<std::uint16_t>{10, 20})
        site->vlanVniIs(vlan, 5), site->flagIs(vlan, true);
      for (std::uint32_t const n : {1, 2, 3}) site->hostIs(n);
      site->peerIs(Dovel::make<Host>(4U));
      prepare(*site);
      site->parting.action = [&log] { log += "deleted "; };
      bool first = bySubscriber;
      Support::Watch const watch(*site, [&](Dovel::Change const& change) {
        log += textOf(change);
        if (std::exchange(first, false)) release();
      });
      if (!bySubscriber) site->peer()->parting.action = site->host(1)->parting.action = release;
      act(*site);
      release();
      EXPECT_EQ(log, std::string(said) + "deleted ");
    }
  }
}

TEST_F(Objects, AHandlerMayReleaseItsStateMachine) {
  for (auto const& [wanted, act] : std::vector<std::pair<std::string, std::function<void()>>>{
           {"3 handled deleted ", [this] { site->portIs(1); }},
           {"catch-up handled deleted ", [this] { watcher->siteIs(Dovel::make<Site>("other")); }}}) {
    watcher = Dovel::make<Watcher>(log, site);
    watcher->parting.action = [this] { log += "deleted "; };
    watcher->action = [this] { watcher = nullptr; };
    act();
    EXPECT_EQ(said(), wanted);
  }
  EXPECT_TRUE(site->publisher()->empty());
}

/// A nested reactor that its owner's end must silence.
class Nested final : public Kiln::NotifieeConst {
  KILN_BASE_TYPE(ObjectTest::Nested)

 public:
  Nested(Dovel::Ptr<Host> const& host, std::string& log)
      : NotifieeConst(host, Dovel::attributes(Host::labelId)), key_(host->number()), log_(log) {
    log_ += "+" + std::to_string(key_) + " ";
  }
  ~Nested() override { log_ += "-" + std::to_string(key_) + " "; }
  std::uint32_t key() const { return key_; }
  void ownerClear() { log_ += std::string(isZombie() ? "z" : "") + (hasNotificationActive() ? "a" : "") + "clear "; }
  std::function<void()> action;

 protected:
  void onAttribute(Dovel::Change const&) override {
    if (action) action();
    log_ += "n" + std::to_string(static_cast<Host const&>(*notifier()).number()) + " ";
  }

 private:
  std::uint32_t key_;
  std::string& log_;
};
KILN_DESCRIBE(Nested)

class Owner final : public Kiln::Sm {
  KILN_BASE_TYPE(ObjectTest::Owner)

 public:
  explicit Owner(std::string& log) : log_(log) {}
  ~Owner() override { log_ += std::string(isZombie() ? "z" : "") + (hasNotificationActive() ? "a" : "") + "owner "; }
  Dovel::Ptr<Nested> nestedIs(Dovel::Ptr<Host> const& host) {
    auto const nested = Dovel::make<Nested>(host, log_);
    nested_.add(nested);
    return nested;
  }
  void nestedDel(std::uint32_t key) { nested_.del(key); }

 private:
  std::string& log_;
  Kiln::NestedSms<std::uint32_t, Nested> nested_{*this};
};
KILN_DESCRIBE(Owner)

TEST_F(Objects, ANestedReactorFollowsItsOwnerAndEndsBeforeIt) {
  auto owner = Dovel::make<Owner>(log);
  auto const host = Dovel::make<Host>(2U);
  auto const heard = [&] {
    host->labelIs(host->label() + "x");
    return said();
  };
  owner->nestedIs(host);
  owner->nestedDel(2);
  EXPECT_EQ(heard(), "+2 zaclear -2 ");
  owner->nestedIs(host)->action = [&] { owner->nestedDel(2); };
  EXPECT_EQ(heard(), "+2 zaclear n2 -2 ") << "removed by its own handler, which runs to its end";
  { Kiln::NestedSms<std::uint32_t, Nested> const endsBeforeItsOwner(*owner); }
  owner->hasNotificationActiveIs(false);
  auto kept = owner->nestedIs(host);
  EXPECT_EQ(heard(), "+2 ") << "added to an inactive owner";
  owner->hasNotificationActiveIs(true);
  EXPECT_EQ(heard(), "n2 ");
  owner->nestedIs(host);
  EXPECT_EQ(heard(), "+2 zaclear n2 ") << "one that is replaced lets go of its owner";
  kept = nullptr;
  EXPECT_EQ(said(), "-2 ");
  kept = owner->nestedIs(host);
  owner = nullptr;
  EXPECT_EQ(heard(), "+2 zaclear -2 zclear zowner ");
  kept = nullptr;
  EXPECT_EQ(said(), "-2 ");
  EXPECT_TRUE(host->publisher()->empty());
}

TEST_F(Objects, ANestedReactorIsReboundSwitchedAndRegistered) {
  auto const one = Dovel::make<Host>(1U), other = Dovel::make<Host>(2U);
  auto const nested = Dovel::make<Nested>(one, log);
  auto const heardAfter = [&](auto act) {
    act();
    said();
    for (auto const& host : {one, other}) host->labelIs(host->label() + "x");
    return said();
  };
  EXPECT_EQ(heardAfter([] {}), "n1 ");
  EXPECT_EQ(heardAfter([&] { nested->notifierIs(other); }), "n2 ");
  EXPECT_EQ(heardAfter([&] { nested->isRegisteredNotifieeIs(false); }), "");
  EXPECT_EQ(heardAfter([&] { nested->isRegisteredNotifieeIs(true); }), "n2 ");
  EXPECT_EQ(heardAfter([&] { nested->kilnDoZombieReactors(true); }), "");
  EXPECT_EQ(heardAfter([&] { nested->kilnDoZombieReactors(false); }), "n2 ");
  EXPECT_EQ(heardAfter([&] { nested->hasNotificationActiveIs(false); }), "");
}

std::string json(Kiln::Entity const& entity) {
  return Kiln::jsonText([&](Kiln::JsonOut out) { Kiln::entityToJson(entity, out); });
}

/// Reads `text` into `entity`; "" or what is wrong with it and where.
std::string read(Kiln::Entity& entity, std::string const& text) {
  auto const document = Kiln::JsonDocument::parse(text, "");
  auto const in = document.root();
  try {
    Kiln::entityCheck(entity, in);
  } catch (Kiln::InputError const& error) {
    return error.place() + " " + error.value() + ": " + error.problem();
  }
  Kiln::entityFromJson(entity, in);
  return "";
}

TEST_F(Objects, JsonGoesOutAndIn) {
  auto const text =
      R"({"address":"10.0.0.1","vlanVni":{"20":2020,"3":3030},"flag":{"1":true},"host":{"7":{"label":"x"},"5":{}}})";
  EXPECT_EQ(read(*site, text), "");
  EXPECT_EQ(json(*site), R"({"address":"10.0.0.1","port":4789,"vlanVni":{"20":2020,"3":3030},"flag":{"1":true},)"
                         R"("host":{"5":{"number":5,"label":"none"},"7":{"number":7,"label":"x"}},)"
                         R"("writes":7,"gateway":null,"later":null,"peer":null})");
  said();
  // A dump is read back, into its object and into a new one; what is equal is not written.
  auto const dump = json(*site);
  auto const copy = Dovel::make<Site>("copy");
  EXPECT_EQ(read(*site, text) + read(*site, dump) + read(*copy, dump) + said(), "");
  EXPECT_EQ(json(*copy), dump);
  // What the second text leaves out is as in a new object; an element that stays keeps its object.
  auto const host = site->host(7);
  EXPECT_EQ(read(*site, R"({"vlanVni":{"3":3031},"host":{"7":{}}})"), "");
  EXPECT_EQ(said(), "2 4[20] 4[3] 5 6[5] ");
  EXPECT_EQ(site->host(7), host);
  EXPECT_EQ(host->label(), "none");
}

TEST_F(Objects, ADirectoryMakesItsChildrenByType) {
  auto const dir = Dovel::make<Kiln::Dir>("top");
  auto const made = dir->createEntity<Site>("a");
  EXPECT_EQ(dir->createEntity<Site>("a"), made);
  made->typeData().method("touch")->call(*made);
  EXPECT_EQ(made->writes(), 8U);
  EXPECT_EQ(dir->createEntity("Kiln::NamedEntity", "a"), made) << "a type that it is as well";
  EXPECT_THROW(dir->createEntity<Kiln::Dir>("a"), Kiln::TypeException);
  for (auto const* type : {"ObjectTest::Nobody", "ObjectTest::Host"})
    EXPECT_THROW(dir->createEntity(type, "b"), Kiln::TypeException);
  auto const inner = dir->createEntity<Kiln::Dir>("d")->createEntity<Site>("b");
  EXPECT_EQ(dir->child<Site>("d/b"), inner);
  for (auto const* path : {"", "c", "a/b", "d/c", "d/", "/a"}) EXPECT_EQ(dir->child(path), nullptr) << path;
  dir->childIs("x", Dovel::make<Site>("x"));
  dir->child<Site>("x")->parting.action = [&] { log += dir->child("x") ? "present " : "absent "; };
  auto watch = std::make_optional<Support::Watch>(*dir, [&](Dovel::Change const& change) { log += textOf(change); });
  for (int i = 0; i < 2; ++i) dir->childIs("x", inner);
  for (auto const* name : {"x", "a", "x"}) dir->childDel(name);
  auto const change = std::to_string(Kiln::Dir::entityId - 0x100) + " ";
  EXPECT_EQ(said(), change + "present " + change + change) << "the new child is found while the former ends";
  watch.reset();
  EXPECT_THAT(json(*dir), testing::StartsWith(R"({"entity":{"d":{")"));
  EXPECT_THAT(read(*dir, R"({"entity":{}})"), testing::StartsWith("/entity {}: attribute that can't be written"));
}

}  // namespace ObjectTest
