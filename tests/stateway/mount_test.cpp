#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "platform/kiln/AttributeDefinitions.h"
#include "platform/kiln/Dir.h"
#include "platform/kilnsharedmem/EntityManager.h"
#include "platform/local/EntityManager.h"
#include "platform/stateway/EntityManager.h"
#include "platform/stateway/Mounter.h"

namespace MountTest {

using testing::ElementsAre;
using testing::HasSubstr;

class Lamp final : public Kiln::NamedEntity {
  KILN_TYPE(MountTest::Lamp, Kiln::NamedEntity)
  KILN_ATTR(0x102, bool, lit)

 public:
  using NamedEntity::NamedEntity;
};

/// Can't be made by its name.
class Nameless final : public Kiln::Entity {
  KILN_TYPE(MountTest::Nameless, Kiln::Entity)

 public:
  explicit Nameless(int) {}
};

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
  ask(*mounter);
  EXPECT_EQ(log, "");
  EXPECT_EQ(em->getEntity("room/lamp"), nullptr);
  EXPECT_EQ(em->completeMounts(), 1U);
  EXPECT_EQ(log, "complete ");
  EXPECT_EQ(em->getEntity("room/lamp"), lamp) << "what the host made and filled";
  EXPECT_EQ(em->completeMounts(), 0U);
  EXPECT_EQ(em->getEntity("room"), nullptr);
  EXPECT_EQ(em->getEntity("room/lamp/x"), nullptr);
}

TEST_F(Mounts, AGroupThatIsClosedMeanwhileCompletesAsWell) {
  auto const second = Dovel::make<Mounter>(log);
  auto const first = Dovel::make<Mounter>(log, [&] { ask(*second, "other/lamp"); });
  ask(*first);
  EXPECT_EQ(em->completeMounts(), 2U);
  EXPECT_EQ(log, "complete complete ");
}

TEST_F(Mounts, AMounterThatHasGoneIsNotTold) {
  auto const before = Dovel::Node::aliveCount();
  ask(*mounter);
  mounter = nullptr;
  EXPECT_EQ(em->completeMounts(), 0U);
  // The lamp stays, the mounter and its group are gone.
  EXPECT_EQ(Dovel::Node::aliveCount(), before);

  // One that goes while another is told.
  mounter = Dovel::make<Mounter>(log);
  auto const killer = Dovel::make<Mounter>(log, [&] { mounter = nullptr; });
  ask(*killer);
  ask(*mounter);
  EXPECT_EQ(em->completeMounts(), 1U);
  EXPECT_EQ(log, "complete ");
}

TEST_F(Mounts, ModesAreShown) {
  auto const group = em->getMountGroup(*mounter);
  group->doMount(mount("z", "MountTest::Lamp", "r"));
  group->doMount(mount("dir", "Kiln::Dir", "ri"));
  group->doMount(mount("z", "MountTest::Lamp", "w"));
  group->doClose(false, "", 0);
  em->completeMounts();
  std::vector<std::string> shown;
  for (auto const& one : em->mounts()) shown.push_back(one.path() + " " + one.typeName() + " " + one.mode());
  EXPECT_THAT(shown, ElementsAre("dir Kiln::Dir ri", "z MountTest::Lamp r", "z MountTest::Lamp w"));
  EXPECT_THAT(mountError([] { mount("p", "T", "rx"); }), HasSubstr("rx"));
}

TEST_F(Mounts, AWrongTypeSaysPathAndTypes) {
  em->entityIs("room/lamp", "MountTest::Lamp");
  auto const group = em->getMountGroup(*mounter);
  struct Case {
    char const* type;
    char const* why;
  };
  for (auto const& wrong : std::vector<Case>{
           {"MountTest::Nobody", "room/lamp: the type MountTest::Nobody is not loaded"},
           {"MountTest::Nameless", "room/lamp: the type MountTest::Nameless cannot be created by name"},
           {"Kiln::Dir", "room/lamp is a MountTest::Lamp, expected a Kiln::Dir"},
           {"Kiln::NamedEntity", ""},  // Which it is as well.
       }) {
    EXPECT_EQ(mountError([&] { group->doMount(mount("room/lamp", wrong.type, "r")); }), wrong.why);
  }
  EXPECT_EQ(group->mounts().size(), 1U);
}

TEST_F(Mounts, ChildrenOfAMountedDirectoryAreFoundByPath) {
  ask(*mounter, "slice", "Kiln::Dir");
  auto const early = em->entityIs("slice/1", "MountTest::Lamp");
  EXPECT_EQ(em->getEntity("slice/1"), nullptr);
  em->completeMounts();
  EXPECT_EQ(em->getEntity("slice/1"), early);
  EXPECT_EQ(em->getEntity<Kiln::Dir>("slice")->child("1"), early);
  EXPECT_EQ(em->entityIs("slice/1", "MountTest::Lamp"), early);
  EXPECT_EQ(em->getEntity("slice/2"), nullptr);
  EXPECT_NE(mountError([&] { em->entityIs("slice/1", "Kiln::Dir"); }), "");
}

TEST(LocalStore, WhoComesFirstMakesIt) {
  auto const local = Dovel::make<Local::EntityManager>();
  Dovel::Ptr<Local::EntityStore> const readers = local;
  EXPECT_EQ(readers->getEntity("a"), nullptr);
  auto const lamp = local->doMount<Lamp>("a");
  EXPECT_EQ(local->doMount<Lamp>("a"), lamp);
  EXPECT_EQ(readers->getEntity("a"), lamp);
  EXPECT_NE(mountError([&] { local->doMount<Kiln::Dir>("a"); }), "");
}

TEST(SharedMemory, IsFoundByNameWhileItLives) {
  using KilnSharedMem::EntityManager;
  EXPECT_EQ(EntityManager::getEntityManager("agent", false), nullptr);
  EXPECT_THROW(EntityManager::getEntityManager("agent", true), Stateway::MountError);
  {
    auto const outer = Dovel::make<EntityManager>("agent");
    auto const other = Dovel::make<EntityManager>("other");
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
  em->assertSafeToAccess(lamp, "a");
  EXPECT_EQ(em->mounts().at("a").info.collectionInfo(), "some");
  EXPECT_EQ(em->mounts().at("b").info.layout(), KilnSharedMem::MountInfo::Layout::entity);
  EXPECT_NE(mountError([&] { em->doMount("a", "Kiln::Dir", KilnPelican::MountInfo()); }), "");
}

}  // namespace MountTest
