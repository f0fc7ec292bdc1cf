#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/kiln/AttributeDefinitions.h"
#include "platform/kiln/Dir.h"
#include "platform/kilnsharedmem/EntityManager.h"
#include "platform/local/EntityManager.h"
#include "platform/stateway/EntityManager.h"
#include "platform/stateway/Mounter.h"

namespace MountTest {

using testing::ElementsAre;

class Lamp final : public Kiln::NamedEntity {
  KILN_TYPE(MountTest::Lamp, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
};
KILN_DESCRIBE(Lamp)

/// Can't be created by its name.
class Nameless final : public Kiln::Entity {
  KILN_TYPE(MountTest::Nameless, Kiln::Entity)

 public:
  explicit Nameless(int) {}
};
KILN_DESCRIBE(Nameless)

class Mounter final : public Stateway::Mounter {
  KILN_TYPE(MountTest::Mounter, Stateway::Mounter)

 public:
  explicit Mounter(std::string& log, std::function<void()> then = nullptr) : log_(log), then_(std::move(then)) {}
  void doMountsComplete(Stateway::MountStatus status, Dovel::Ptr<Stateway::EntityManager> const& em) override {
    EXPECT_EQ(status, Stateway::mountSuccess());
    EXPECT_EQ(mountStatus(), status);
    log_ += em->getEntity<Lamp>("room/lamp") ? "complete " : "complete without the lamp ";
    if (then_) then_();
  }

 private:
  std::string& log_;
  std::function<void()> then_;
};
KILN_DESCRIBE(Mounter)

Stateway::Mount mount(char const* path, char const* type, char const* mode) {
  Stateway::Mount mount(path, type);
  mount.flags().valIs(0);
  mount.handleFlags(mode);
  return mount;
}

/// The text of the `MountError` that `act` throws; "" if it throws none.
std::string mountError(std::function<void()> const& act) {
  try {
    act();
  } catch (Stateway::MountError const& error) {
    return error.what();
  }
  return "";
}

class Mounts : public testing::Test {
 protected:
  void ask(Mounter& asker, char const* path = "room/lamp", char const* type = "MountTest::Lamp") {
    auto const group = em->getMountGroup(asker);
    EXPECT_EQ(em->getMountGroup(asker), group);
    group->doMount(mount(path, type, "w"));
    group->doClose(false, "", 0);
  }

  Dovel::Ptr<Stateway::EntityManager> em = Dovel::make<Stateway::EntityManager>();
  std::string log;
  Dovel::Ptr<Mounter> mounter = Dovel::make<Mounter>(log);
};

TEST_F(Mounts, CompleteWhenTheLoopRuns) {
  auto const lamp = em->entityIs("room/lamp", "MountTest::Lamp");
  auto const alive = Dovel::Node::aliveCount();
  ask(*mounter);
  EXPECT_EQ(log, "");
  EXPECT_EQ(em->getEntity("room/lamp"), nullptr);
  EXPECT_EQ(em->completeMounts(), 1U);
  EXPECT_EQ(log, "complete ");
  EXPECT_EQ(Dovel::Node::aliveCount(), alive) << "a group that is complete is deleted";
  EXPECT_EQ(em->getEntity("room/lamp"), lamp) << "what the host made and filled";
  for (auto const* path : {"first", "second"}) ask(*mounter, path);
  EXPECT_EQ(em->completeMounts(), 2U);
  EXPECT_EQ(em->completeMounts(), 0U);
  EXPECT_EQ(em->getEntity("room"), nullptr);
  em->entityIs("room/lamp/x", "MountTest::Lamp");
  EXPECT_EQ(em->getEntity("room/lamp/x"), nullptr) << "below a mount that is no directory";

  ask(*mounter, "s", "Kiln::Dir");
  auto const child = em->entityIs("s/1", "MountTest::Lamp");
  em->completeMounts();
  EXPECT_EQ(em->getEntity("s/1"), child);
  EXPECT_EQ(em->entityIs("s/1", "MountTest::Lamp"), child);
  EXPECT_EQ(em->getEntity<Kiln::Dir>("s")->child("1"), child);
}

TEST_F(Mounts, AMounterThatWasDeletedIsNotCalled) {
  auto const before = Dovel::Node::aliveCount();
  ask(*mounter);
  mounter = nullptr;
  EXPECT_EQ(em->completeMounts(), 0U);
  EXPECT_EQ(Dovel::Node::aliveCount(), before) << "the lamp stays, the mounter and its group are deleted";
  // One that is deleted while another is called.
  mounter = Dovel::make<Mounter>(log);
  auto const killer = Dovel::make<Mounter>(log, [&] { mounter = nullptr; });
  ask(*killer);
  ask(*mounter);
  EXPECT_EQ(em->completeMounts(), 1U);
  EXPECT_EQ(log, "complete ");
}

TEST_F(Mounts, ModesAreShownAndWrongTypesAndModesRefused) {
  em->entityIs("z", "MountTest::Lamp");
  auto const group = em->getMountGroup(*mounter);
  EXPECT_NE(Dovel::make<Stateway::EntityManager>()->getMountGroup(*mounter), group);
  for (auto const& [type, why] : std::vector<std::pair<char const*, char const*>>{
           {"MountTest::Nobody", "z: the type MountTest::Nobody is not loaded"},
           {"MountTest::Nameless", "z: the type MountTest::Nameless cannot be created by name"},
           {"Kiln::Dir", "z is a MountTest::Lamp, expected a Kiln::Dir"},
           {"Kiln::NamedEntity", ""},  // Which it is as well.
       }) {
    EXPECT_EQ(mountError([&, &type = type] { group->doMount(mount("z", type, "r")); }), why);
  }
  EXPECT_THAT(mountError([] { mount("p", "T", "rx"); }), testing::HasSubstr("rx"));
  group->doMount(mount("dir", "Kiln::Dir", "ri"));
  group->doMount(mount("z", "MountTest::Lamp", "w"));
  group->doClose(false, "", 0);
  em->completeMounts();
  std::vector<std::string> shown;
  for (auto const& one : em->mounts()) shown.push_back(one.path() + " " + one.typeName() + " " + one.mode());
  EXPECT_THAT(shown, ElementsAre("dir Kiln::Dir ri", "z Kiln::NamedEntity r", "z MountTest::Lamp w"));
}

// A directory has the same children whether it or they are created first.
TEST(LocalStore, TheOrderOfCreationMakesNoDifference) {
  std::vector<std::pair<std::string, std::string>> const entities{
      {"a", "Kiln::Dir"},         {"a/b", "Kiln::Dir"},         {"a/b/c", "MountTest::Lamp"},
      {"a/x", "MountTest::Lamp"}, {"a/y/z", "MountTest::Lamp"}, {"a-b", "MountTest::Lamp"}};
  std::vector<std::size_t> order{0, 1, 2, 3, 4, 5};
  do {
    auto const stores = Dovel::make<Local::EntityManager>();
    auto& manager = *stores;
    std::string which;
    for (auto const i : order) manager.doMount(entities[i].first, entities[i].second), which += std::to_string(i);
    for (auto const& [path, type] : entities) {
      auto const entity = manager.getEntity(path);
      ASSERT_TRUE(entity && manager.doMount(path, type) == entity) << path << " " << which;
    }
    auto const dir = manager.getEntity<Kiln::Dir>("a");
    ASSERT_TRUE(dir->child("b/c") && dir->child("b/c") == manager.getEntity("a/b/c")) << which;
    ASSERT_EQ(dir->child("x"), manager.getEntity("a/x")) << which;
    ASSERT_THAT(manager.paths(), ElementsAre("a", "a-b", "a/b", "a/b/c", "a/x", "a/y/z")) << which;
    ASSERT_NE(mountError([&] { manager.doMount<Kiln::Dir>("a-b"); }), "");
  } while (std::next_permutation(order.begin(), order.end()));
}

TEST(SharedMemory, IsFoundByNameWhileItLives) {
  using KilnSharedMem::EntityManager;
  EXPECT_THROW(EntityManager::getEntityManager("agent", true), Stateway::MountError);
  {
    auto const outer = Dovel::make<EntityManager>("agent"), other = Dovel::make<EntityManager>("other");
    {
      auto const inner = Dovel::make<EntityManager>("agent");
      EXPECT_EQ(EntityManager::getEntityManager("agent", true), inner);
    }
    EXPECT_EQ(EntityManager::getEntityManager("agent", true), outer);
  }
  EXPECT_EQ(EntityManager::getEntityManager("agent", false), nullptr);
}

TEST(SharedMemory, MountsAreCompleteWhenTheGroupIsClosed) {
  auto const em = Dovel::make<KilnSharedMem::EntityManager>("agent");
  auto const lamp = em->entityIs("a", "MountTest::Lamp");
  EXPECT_EQ(em->getEntity("a"), nullptr);
  KilnBrisk::MountInfo info(1);
  info.collectionInfoIs("some");
  auto const group = em->getMountGroup();
  group->doMount("a", "MountTest::Lamp", info);
  group->doMount("b", "MountTest::Lamp", KilnPelican::MountInfo());
  group->doClose();
  EXPECT_EQ(em->getEntity("a"), lamp);
  EXPECT_EQ(em->mounts().at("a").info.collectionInfo(), "some");
  EXPECT_EQ(em->mounts().at("b").info.layout(), KilnSharedMem::MountInfo::Layout::entity);
  EXPECT_NE(mountError([&] { em->doMount("a", "Kiln::Dir", KilnPelican::MountInfo()); }), "");
}

}  // namespace MountTest
