#include "platform/document/Document.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/kiln/AttributeDefinitions.h"
#include "platform/kiln/Entity.h"
#include "platform/kiln/Exceptions.h"
#include "platform/kiln/Sm.h"
#include "platform/kilnsharedmem/EntityManager.h"
#include "platform/local/EntityManager.h"
#include "platform/stateway/EntityManager.h"
#include "platform/stateway/Mounter.h"

namespace DocumentTest {

using testing::StartsWith;

class Room final : public Kiln::NamedEntity {
  KILN_TYPE(DocumentTest::Room, Kiln::NamedEntity)
  KILN_ATTR(0x102, std::uint16_t, heat, 20)
  KILN_ATTR(0x103, bool, lit)
  KILN_COLL(0x104, std::uint16_t, std::string, guest)

 public:
  using NamedEntity::NamedEntity;
};
KILN_DESCRIBE(Room)

class Watcher final : public Kiln::Sm {
  void roomDispatch(Dovel::Change const& change) { log_ += room_->name() + std::to_string(change.id - 0x100) + " "; }
  KILN_BASE_TYPE(DocumentTest::Watcher)
  KILN_WATCHED(0x102, Room, room, &KilnSelf::roomDispatch, nullptr)

 public:
  Watcher(Dovel::Ptr<Room> room, std::string& log) : room_(*this, std::move(room), Kiln::SubscribeOnly{}), log_(log) {}

 private:
  std::string& log_;
};
KILN_DESCRIBE(Watcher)

class Mounter final : public Stateway::Mounter {
  KILN_TYPE(DocumentTest::Mounter, Stateway::Mounter)

 public:
  void doMountsComplete(Stateway::MountStatus, Dovel::Ptr<Stateway::EntityManager> const&) override {}
};
KILN_DESCRIBE(Mounter)

class Documents : public testing::Test {
 protected:
  void SetUp() override {
    auto const group = stores.stateway->getMountGroup(*mounter);
    for (auto const* path : {"a", "b"}) group->doMount(Stateway::Mount(path, "DocumentTest::Room"));
    group->doClose(false, "", 0);
    stores.stateway->completeMounts();
    stores.stateway->entityIs("unmounted", "DocumentTest::Room");
    watch(a = stores.stateway->getEntity<Room>("a"));
    watch(b = stores.stateway->getEntity<Room>("b"));
    watch(c = stores.local->doMount<Room>("c"));
    watch(d = Dovel::cast<Room>(stores.shmem->entityIs("d", "DocumentTest::Room")));
  }
  void watch(Dovel::Ptr<Room> const& room) { watchers.push_back(Dovel::make<Watcher>(room, log)); }

  /// Checks and applies `text` after the former document. What was published, or what is wrong with the text.
  std::string become(char const* text) {
    log.clear();
    try {
      auto next = Stateway::StateDocument::parse(text);
      check(next, stores);
      apply(current, next, stores);
      current = std::move(next);
    } catch (Kiln::InputError const& error) {
      return log + error.place() + " " + error.value() + ": " + error.problem();
    }
    return log;
  }

  Stateway::AgentStores stores{Dovel::make<Stateway::EntityManager>(), Dovel::make<Local::EntityManager>(),
                               Dovel::make<KilnSharedMem::EntityManager>("agent")};
  Dovel::Ptr<Mounter> mounter = Dovel::make<Mounter>();
  Dovel::Ptr<Room> a, b, c, d;
  std::string log;
  std::vector<Dovel::Ptr<Watcher>> watchers;
  Stateway::StateDocument current;
};

TEST_F(Documents, OnlyDifferencesAreWritten) {
  char const* text = R"({"shmem": {"d": {"heat": 4}}, "local": {"c": {"lit": true}},
                         "stateway": {"b": {"guest": {"1": "x"}, "heat": 20}, "a": {"lit": true, "heat": 7}}})";
  EXPECT_EQ(become(text), "b4 a2 a3 c3 d2 ");
  EXPECT_EQ(become(text), "");
  EXPECT_EQ(become(R"({"stateway": {"a": {"lit": true, "heat": 8}, "b": {"guest": {"1": "x"}}},
                       "local": {"c": {"lit": true}}})"),
            "d2 a2 ");
  EXPECT_EQ(d->heat(), 20U);
}

TEST_F(Documents, WhatIsNoLongerNamedIsAsInANewObject) {
  become(R"({"stateway": {"a": {"lit": true, "heat": 7, "guest": {"1": "x", "2": "y"}}, "b": {"lit": true}}})");
  EXPECT_EQ(become(R"({"stateway": {"a": {"guest": {"2": "y", "3": "z"}}}})"), "a2 a3 b3 a4 a4 ");
  EXPECT_EQ(become("{}"), "a4 a4 ");
  EXPECT_EQ(a->heat(), 20U);
  EXPECT_TRUE(a->guestColl().empty());
}

TEST_F(Documents, WhatNoDocumentNamedIsLeftAlone) {
  a->heatIs(30);
  EXPECT_EQ(become(R"({"stateway": {"a": {"lit": true}}})"), "a3 ");
  EXPECT_EQ(become("{}"), "a3 ");
  EXPECT_EQ(a->heat(), 30U);
}

TEST_F(Documents, ABadDocumentChangesNothing) {
  for (auto const& [text, what] : std::vector<std::pair<char const*, char const*>>{
           {R"({"stateway": {"a": {"heat": 1}}, "remote": {}})",
            "/remote {}: unknown member, expected one of stateway"},
           {R"({"stateway": {"a": {"heat": 1}, "x/y": {}}})", "/stateway/x~1y {}: unknown path"},
           {R"({"stateway": {"a": {"heat": 1}, "unmounted": {}}})", "/stateway/unmounted {}: unknown path"},
           {R"({"stateway": {"a": {"heat": 1}}, "local": {"a": {}}})", "/local/a {}: unknown path"},
           {R"({"stateway": {"a": {"heat": 1, "cold": 1}}})",
            "/stateway/a/cold 1: unknown attribute of DocumentTest::Room"},
           {R"({"stateway": {"a": {"heat": 1}, "b": {"heat": -1}}})", "/stateway/b/heat -1: expected a whole number"},
           {R"({"stateway": {"a": {"heat": 1}, "b": 3}})", "/stateway/b 3: expected an object"},
           {R"({"stateway": [], "local": {"c": {"heat": 1}}})", "/stateway []: expected an object"},
           {"[]", " []: expected an object"},
           {"{\n  \"stateway\": {\"a\" 1}}", "line 2, column 20 '1': expected ':'"},
       }) {
    EXPECT_THAT(become(text), StartsWith(what));
  }
  EXPECT_EQ(a->heat(), 20U);
}

}  // namespace DocumentTest
