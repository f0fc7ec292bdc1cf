#include <gtest/gtest.h>

#include <list>
#include <string>
#include <vector>

#include "platform/document/Document.h"
#include "platform/kiln/AttributeDefinitions.h"
#include "platform/kiln/Entity.h"
#include "platform/kilnsharedmem/EntityManager.h"
#include "platform/local/EntityManager.h"
#include "platform/stateway/EntityManager.h"
#include "platform/stateway/Mounter.h"
#include "tests/support/Watch.h"

namespace DocumentTest {

class Room final : public Kiln::NamedEntity {
  KILN_TYPE(DocumentTest::Room, Kiln::NamedEntity)
  KILN_ATTR(0x102, std::uint16_t, heat, 20)
  KILN_ATTR(0x103, bool, lit)
  KILN_COLL(0x104, std::uint16_t, std::string, guest)

 public:
  using NamedEntity::NamedEntity;
};
KILN_DESCRIBE(Room)

class Mounter final : public Stateway::Mounter {
  KILN_TYPE(DocumentTest::Mounter, Stateway::Mounter)

 public:
  void doMountsComplete(Stateway::MountStatus, Dovel::Ptr<Stateway::EntityManager> const&) override {}
};
KILN_DESCRIBE(Mounter)

class Documents : public testing::Test {
 protected:
  Documents() {
    auto const group = stores.stateway->getMountGroup(*mounter);
    for (auto const* path : {"a", "b"}) group->doMount(Stateway::Mount(path, "DocumentTest::Room"));
    group->doClose(false, "", 0);
    stores.stateway->completeMounts();
    stores.stateway->entityIs("unmounted", "DocumentTest::Room");
    for (auto const& room :
         {a = stores.stateway->getEntity<Room>("a"), stores.stateway->getEntity<Room>("b"),
         stores.local->doMount<Room>("c"), Dovel::cast<Room>(stores.shmem->entityIs("d", "DocumentTest::Room"))})
      watches.emplace_back(*room, [this, name = room->name()](Dovel::Change const& change) {
        log += name + std::to_string(change.id - 0x100) + " ";
      });
  }

  /// Checks and applies `text` after the former document. What was published.
  std::string become(std::string const& text) {
    auto next = Stateway::StateDocument::parse(text);
    check(next, stores);
    apply(current, next, stores);
    current = std::move(next);
    return std::exchange(log, {});
  }

  Stateway::AgentStores stores{Dovel::make<Stateway::EntityManager>(), Dovel::make<Local::EntityManager>(),
                               Dovel::make<KilnSharedMem::EntityManager>("agent")};
  Dovel::Ptr<Mounter> mounter = Dovel::make<Mounter>();
  Dovel::Ptr<Room> a;
  std::string log;
  std::list<Support::Watch> watches;
  Stateway::StateDocument current;
};

TEST_F(Documents, OnlyDifferencesAreWrittenAndWhatIsNoLongerNamedIsAsInANewObject) {
  auto const text = R"({"shmem": {"d": {"heat": 4}}, "local": {"c": {"lit": true}},
                        "stateway": {"b": {"guest": {"1": "x"}, "heat": 20}, "a": {"lit": true, "heat": 7}}})";
  EXPECT_EQ(become(text), "b4 a2 a3 c3 d2 ");
  EXPECT_EQ(become(text), "");
  EXPECT_EQ(become(R"({"stateway": {"a": {"guest": {"2": "y", "3": "z"}, "heat": 7}, "b": {"guest": {"1": "x"}}},
                       "local": {"c": {"lit": true}}})"),
            "a3 d2 a4 a4 ");
  EXPECT_EQ(become(R"({"stateway": {"a": {"guest": {"2": "y"}}, "b": {}}})"), "a2 b4 c3 a4 ");
  EXPECT_EQ(become("{}"), "a4 ");
  EXPECT_EQ(a->heat(), 20U);
  EXPECT_TRUE(a->guestColl().empty());
}

TEST_F(Documents, WhatNoDocumentNamedIsLeftAlone) {
  a->heatIs(30);
  log.clear();
  EXPECT_EQ(become(R"({"stateway": {"a": {"lit": true}}})"), "a3 ");
  EXPECT_EQ(become("{}"), "a3 ");
  EXPECT_EQ(a->heat(), 30U);
}

}  // namespace DocumentTest
