#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <string>
#include <vector>

#include "platform/kiln/AttributeDefinitions.h"
#include "platform/kiln/Dir.h"
#include "platform/kiln/Entity.h"
#include "platform/kiln/Json.h"
#include "platform/kiln/Sm.h"
#include "platform/meshal/IpGenAddr.h"

namespace ObjectTest {

using testing::ElementsAre;

/// A host by its number.
class Host final : public Kiln::Entity {
  KILN_TYPE(ObjectTest::Host, Kiln::Entity)
  KILN_FIXED(0x102, std::uint32_t, number)
  KILN_ATTR(0x103, std::string, label, "none")

 public:
  explicit Host(std::uint32_t number) : number_(number) {}
};

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

 public:
  using NamedEntity::NamedEntity;
  void touch() { writesSet(writes() + 1); }
  KILN_METHOD(touch)
};

/// Watches a site and writes down what it is told.
class Watcher final : public Kiln::Sm {
  void siteDispatch(Dovel::Change const& change) { log += std::to_string(change.id - 0x100) + keyOf(change) + " "; }
  void handleSite() { log += "catch-up "; }

  KILN_BASE_TYPE(ObjectTest::Watcher)
  KILN_WATCHED(0x102, Site, site, &KilnSelf::siteDispatch, &KilnSelf::handleSite)

 public:
  explicit Watcher(std::string& out, Dovel::Ptr<Site> site = nullptr)
      : site_(*this, std::move(site), Kiln::SubscribeOnly{}), log(out) {}
  Watcher(std::string& out, Dovel::Ptr<Site> site, Quiet quiet)
      : Sm(quiet), site_(*this, std::move(site), Kiln::SubscribeOnly{}), log(out) {}
  static Dovel::Ptr<Watcher> quiet(std::string& out, Dovel::Ptr<Site> const& site) {
    return Dovel::make<Watcher>(out, site, Quiet{});
  }

 private:
  static std::string keyOf(Dovel::Change const& change) {
    if (change.id == Site::vlanVniId) return "[" + std::to_string(change.keyAs<std::uint16_t>()) + "]";
    if (change.id == Site::hostId) return "[" + std::to_string(change.keyAs<std::uint32_t>()) + "]";
    return "";
  }
  std::string& log;
};

class Objects : public testing::Test {
 protected:
  std::string said() { return std::exchange(log, {}); }

  Dovel::Ptr<Site> site = Dovel::make<Site>("s");
  std::string log;
  Dovel::Ptr<Watcher> watcher = Dovel::make<Watcher>(log, site);
};

TEST_F(Objects, AreFoundWhateverCameOrWentSinceTheLastLook) {
  for (std::uint32_t n = 0; n < 100; ++n) {
    auto const host = site->hostIs(n);
    EXPECT_EQ(site->host(0)->number(), 0U) << "with " << n << " others";
    EXPECT_EQ(site->host(n), host);
  }
  auto const another = Dovel::make<Host>(7U);
  EXPECT_NE(site->host(7), another);
  site->hostIs(another);
  EXPECT_EQ(site->host(7), another);
  site->hostDel(7);
  EXPECT_EQ(site->host(7), nullptr);
  EXPECT_EQ(site->host(8)->number(), 8U);
}

TEST_F(Objects, OnlyDifferencesArePublished) {
  site->portIs(4789);
  site->vlanVniDel(10);
  site->gatewayDel();
  EXPECT_EQ(said(), "");
  site->portIs(1);
  site->portIs(1);
  site->vlanVniIs(10, 5);
  site->vlanVniIs(10, 5);
  site->vlanVniIs(10, 6);
  site->touch();
  EXPECT_EQ(said(), "3 4[10] 4[10] 7 ");
  EXPECT_EQ(site->vlanVniDel(10), 6U);
  EXPECT_EQ(said(), "4[10] ");

  auto const host = site->hostIs(3);
  EXPECT_EQ(site->hostIs(3), host);
  site->hostIs(host);
  EXPECT_EQ(said(), "6[3] ");
  site->hostIs(Dovel::make<Host>(3U));
  EXPECT_NE(site->host(3), host);
  EXPECT_EQ(said(), "6[3] ");
  site->hostDelAll();
  EXPECT_EQ(said(), "6[3] ");
  EXPECT_THROW(site->hostIs(Dovel::Ptr<Host>()), Kiln::NullPointerException);

  site->gatewayIs(9U);
  EXPECT_THROW(site->gatewayIs(9U), Kiln::ReinstantiationException);
  site->gatewayDel();
  EXPECT_EQ(said(), "8 8 ");
}

TEST_F(Objects, AKeyThatIsNotThereIsNoError) {
  EXPECT_EQ(site->vlanVni(1), 0U);
  EXPECT_FALSE(site->flag(1));
  EXPECT_EQ(site->host(1), nullptr);
  EXPECT_FALSE(site->vlanVniHas(1) || site->flagHas(1) || site->hostHas(1));
  EXPECT_TRUE(site->vlanVniColl().empty() && site->flagColl().empty() && site->hostColl().empty());
}

// Keys and values that are handed in by reference to what the call removes or moves.
TEST_F(Objects, ArgumentsMayLieInTheCollectionItself) {
  for (std::uint16_t vlan = 1; vlan <= 40; ++vlan) site->vlanVniIs(vlan, 1000U + vlan);
  for (std::uint16_t vlan = 101; vlan <= 140; ++vlan) site->vlanVniIs(vlan, site->vlanVni(1));
  EXPECT_EQ(site->vlanVni(140), 1001U);
  said();
  site->vlanVniDel(site->vlanVniColl().begin()->first);
  EXPECT_EQ(site->vlanVniColl().size(), 79U);
  site->flagIs(7, true);
  site->flagDel(site->flagColl().begin()->first);
  EXPECT_FALSE(site->flagHas(7));
}

TEST_F(Objects, WatchIsRebound) {
  auto const other = Dovel::make<Site>("other");
  watcher->siteIs(site);
  EXPECT_EQ(said(), "");
  watcher->siteIs(other);
  EXPECT_EQ(said(), "catch-up ");
  site->portIs(1);
  EXPECT_EQ(said(), "");
  other->portIs(1);
  EXPECT_EQ(said(), "3 ");
  watcher->siteIs(nullptr);
  other->portIs(2);
  EXPECT_EQ(said(), "");
  EXPECT_TRUE(other->publisher()->empty() && site->publisher()->empty());
}

TEST_F(Objects, AnInactiveOwnerListensLaterAndAZombieNever) {
  auto const quiet = Watcher::quiet(log, site);
  watcher = nullptr;
  site->portIs(1);
  EXPECT_EQ(said(), "");
  quiet->hasNotificationActiveIs(true);
  quiet->hasNotificationActiveIs(true);
  site->portIs(2);
  EXPECT_EQ(said(), "3 ");
  quiet->kilnDoZombieReactors(true);
  site->portIs(3);
  quiet->siteIs(Dovel::make<Site>("other"));
  quiet->siteIs(site);
  EXPECT_EQ(said(), "");
  quiet->kilnDoZombieReactors(false);
  site->portIs(4);
  EXPECT_EQ(said(), "3 ");
  quiet->hasNotificationActiveIs(false);
  EXPECT_TRUE(site->publisher()->empty());
}

/// A nested reactor that its owner's end must silence.
class Nested final : public Kiln::NotifieeConst {
  KILN_BASE_TYPE(ObjectTest::Nested)

 public:
  Nested(std::uint32_t key, std::string& log) : key_(key), log_(log) { log_ += "+" + std::to_string(key_) + " "; }
  ~Nested() override { log_ += "-" + std::to_string(key_) + " "; }
  std::uint32_t key() const { return key_; }
  void ownerClear() { log_ += std::string(isZombie() ? "z" : "") + (hasNotificationActive() ? "a" : "") + "clear "; }

 protected:
  void onAttribute(Dovel::Change const&) override { log_ += "n" + std::to_string(key_) + " "; }

 private:
  std::uint32_t key_;
  std::string& log_;
};

class Owner final : public Kiln::Sm {
  KILN_BASE_TYPE(ObjectTest::Owner)

 public:
  explicit Owner(std::string& log) : log_(log) {}
  ~Owner() override { log_ += std::string(isZombie() ? "z" : "") + (hasNotificationActive() ? "a" : "") + "owner "; }
  Dovel::Ptr<Nested> nestedIs(Dovel::Ptr<Host> const& host) {
    auto const nested = Dovel::make<Nested>(host->number(), log_);
    nested->notifierIs(host);
    nested->isRegisteredNotifieeIs(true);
    nested_.add(nested);
    return nested;
  }
  void nestedDel(std::uint32_t key) { nested_.del(key); }

 private:
  std::string& log_;
  Kiln::NestedSms<std::uint32_t, Nested> nested_{*this};
};

TEST_F(Objects, AnSmEndsInOrder) {
  auto const host = Dovel::make<Host>(1U);
  auto owner = Dovel::make<Owner>(log);
  auto nested = owner->nestedIs(host);
  host->labelIs("a");
  EXPECT_EQ(said(), "+1 n1 ");
  owner = nullptr;
  EXPECT_EQ(said(), "zclear zowner ");
  host->labelIs("b");
  EXPECT_EQ(said(), "");
  nested = nullptr;
  EXPECT_EQ(said(), "-1 ");
  EXPECT_TRUE(host->publisher()->empty());
}

TEST_F(Objects, ANestedReactorMayBeDroppedByWhatItSetsOff) {
  auto const owner = Dovel::make<Owner>(log);
  auto const host = Dovel::make<Host>(2U);
  owner->nestedIs(host);
  owner->nestedDel(2);
  EXPECT_EQ(said(), "+2 zaclear -2 ");
  owner->hasNotificationActiveIs(false);
  owner->nestedIs(host);
  owner->hasNotificationActiveIs(true);
  said();
  host->labelIs("c");
  EXPECT_EQ(said(), "n2 ");
}

TEST_F(Objects, AWalkOfACollectionSurvivesItsHandlers) {
  for (std::uint32_t i = 1; i <= 5; ++i) site->hostIs(i);
  std::vector<std::uint32_t> seen;
  Kiln::forEachKey(site->hostColl(), [&](std::uint32_t key, Dovel::Ptr<Host> const& host) {
    EXPECT_EQ(host->number(), key);
    seen.push_back(key);
    site->hostDelAll();
    for (std::uint32_t i = 100; i < 200; ++i) site->hostIs(i);
  });
  EXPECT_EQ(seen.size(), 1U);
}

std::string json(Kiln::Entity const& entity) {
  return Kiln::jsonText([&](Kiln::JsonOut out) { Kiln::entityToJson(entity, out); });
}

/// Reads `text` into `entity`; "" or what is wrong with it and where.
std::string read(Kiln::Entity& entity, char const* text) {
  auto const document = Kiln::JsonDocument::parse(text, "");
  auto const in = document.root();
  try {
    Kiln::entityCheck(entity.typeData(), in);
  } catch (Kiln::InputError const& error) {
    return error.place() + " " + error.value() + ": " + error.problem();
  }
  Kiln::entityFromJson(entity, in);
  return "";
}

TEST_F(Objects, ADescriptionListsWhatTheClassDeclares) {
  auto const* type = Kiln::typeByName("ObjectTest::Site");
  ASSERT_EQ(type, &Site::kilnType());
  std::vector<std::string> all;
  for (auto const* attribute : type->attributes()) {
    std::string line = std::to_string(attribute->id - 0x100).append(" ").append(attribute->name).append(" ");
    if (attribute->keyTypeName) line.append(attribute->keyTypeName()).append("->");
    all.push_back(line.append(attribute->typeName()).append(attribute->writable ? "" : " ro"));
  }
  EXPECT_THAT(all, ElementsAre("2 address Meshal::IpGenAddr", "3 port u16", "4 vlanVni u16->u32", "5 flag u16->bool",
                               "6 host u32->ObjectTest::Host", "7 writes u32 ro", "8 gateway ObjectTest::Host ro",
                               "9 later ObjectTest::Later ro"));
  EXPECT_TRUE(type->isA(Kiln::Entity::kilnType()));
  EXPECT_FALSE(type->isA(Host::kilnType()));

  auto const made = Dovel::cast<Site>(Kiln::newByTypeName("ObjectTest::Site", "x"));
  ASSERT_TRUE(made);
  EXPECT_EQ(made->name(), "x");
  made->typeData().method("touch")->call(*made);
  EXPECT_EQ(made->writes(), 8U);
  EXPECT_EQ(Kiln::newByTypeName("ObjectTest::Host", "x"), nullptr);
  EXPECT_EQ(Kiln::newByTypeName("ObjectTest::Nobody", "x"), nullptr);
}

TEST_F(Objects, JsonGoesOutAndIn) {
  char const* text =
      R"({"address":"10.0.0.1","vlanVni":{"20":2020,"3":3030},"flag":{"1":true},"host":{"7":{"label":"x"},"5":{}}})";
  EXPECT_EQ(read(*site, text), "");
  EXPECT_EQ(json(*site), R"({"address":"10.0.0.1","port":4789,"vlanVni":{"20":2020,"3":3030},"flag":{"1":true},)"
                         R"("host":{"5":{"number":5,"label":"none"},"7":{"number":7,"label":"x"}},)"
                         R"("writes":7,"gateway":null,"later":null})");
  said();
  EXPECT_EQ(read(*site, text), "");
  EXPECT_EQ(said(), "") << "what is equal is not written";

  // What the second text leaves out is as in a new object; an element that stays keeps its object.
  auto const host = site->host(7);
  EXPECT_EQ(read(*site, R"({"vlanVni":{"3":3031},"host":{"7":{}}})"), "");
  EXPECT_EQ(said(), "2 4[20] 4[3] 5 6[5] ");
  EXPECT_EQ(site->host(7), host);
  EXPECT_EQ(host->label(), "none");
}

TEST_F(Objects, WhatCannotBeReadChangesNothing) {
  struct Case {
    char const* text;
    char const* starts;
  };
  for (auto const& [text, starts] : std::vector<Case>{
           {R"([1])", " [1]: expected an object"},
           {R"({"port":1,"nothing":1})",
            "/nothing 1: unknown attribute of ObjectTest::Site, expected one of address port"},
           {R"({"port":1,"writes":1})", "/writes 1: attribute that can't be written of ObjectTest::Site"},
           {R"({"port":1,"later":null})", "/later null: attribute that can't be written"},
           {R"({"port":65536})", "/port 65536: expected a whole number from 0 to 65535"},
           {R"({"port":1,"vlanVni":{"1":1,"x":2}})", "/vlanVni/x 2: expected a key that is a u16"},
           {R"({"port":1,"host":{"1":{"label":3}}})", "/host/1/label 3: expected a string"},
           {R"({"port":1,"host":{"1":{"number":1}}})", "/host/1/number 1: attribute that can't be written"},
           {R"({"port":1,"address":"10.0.0.256"})", "/address \"10.0.0.256\": "},
       }) {
    EXPECT_THAT(read(*site, text), testing::StartsWith(starts));
  }
  EXPECT_EQ(said(), "");
}

TEST_F(Objects, ADirectoryMakesItsChildrenByType) {
  auto const dir = Dovel::make<Kiln::Dir>("top");
  auto const made = dir->createEntity<Site>("a");
  EXPECT_EQ(dir->createEntity<Site>("a"), made);
  EXPECT_EQ(dir->createEntity("Kiln::NamedEntity", "a"), made) << "a type that it is as well";
  EXPECT_THROW(dir->createEntity<Kiln::Dir>("a"), Kiln::TypeException);
  EXPECT_THROW(dir->createEntity("ObjectTest::Nobody", "b"), Kiln::TypeException);
  EXPECT_THROW(dir->createEntity("ObjectTest::Host", "b"), Kiln::TypeException);
  auto const inner = dir->createEntity<Kiln::Dir>("d")->createEntity<Site>("b");
  EXPECT_EQ(dir->child<Site>("d/b"), inner);
  for (auto const* path : {"", "c", "a/b", "d/c", "d/", "/a"}) EXPECT_EQ(dir->child(path), nullptr) << path;
  dir->childDel("a");
  EXPECT_EQ(json(*dir).substr(0, 17), R"({"entity":{"d":{")");
}

}  // namespace ObjectTest
