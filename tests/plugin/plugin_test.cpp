#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "platform/kiln/AttributeDefinitions.h"
#include "platform/plugin/L3MounterBase.h"
#include "platform/plugin/L3MounterSmWrapper.h"
#include "platform/plugin/Loader.h"

namespace PluginTest {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

/// A table of the chip, as far as a mounter sees it.
template <int Number>
class FakeTable : public Dovel::Node {
  KILN_BASE_TYPE(PluginTest::FakeTable<Number>)

 public:
  static void doMountHwTableMountInfo(Stateway::MountGroup& group) {
    group.doMount(Stateway::Mount("table/" + std::to_string(Number), "Kiln::Dir"));
  }
};

class Wrapper final : public TesselL3Unicast::L3MounterSmWrapper {
  KILN_TYPE(PluginTest::Wrapper, TesselL3Unicast::L3MounterSmWrapper)

 public:
  template <class... Args>
  explicit Wrapper(std::string& log, Args&&... args) : L3MounterSmWrapper(std::forward<Args>(args)...), log_(log) {}

  void handleLogicalFapId(LogicalFap::LogicalFapId fapId) override { log_ += "fap" + Kiln::toText(fapId) + " "; }
  void handleLogicalFapId() override { log_ += "faps "; }
  void initStatewayState() override {
    log_ += "init ";
    runningState()->runningIs(true);
  }
  void handleRunningState() override { log_ += runningState()->running() ? "running " : "halted "; }
  void handleInitialized() override { log_ += "initialized "; }

 private:
  std::string& log_;
};

std::string* theLog = nullptr;

/// A feature that does nothing but to be there.
class Mounter final : public TesselL3Unicast::L3MounterBase {
  KILN_TYPE(PluginTest::Mounter, TesselL3Unicast::L3MounterBase)

 public:
  explicit Mounter(Dovel::String name) : L3MounterBase(std::move(name)) {}

  void doInit() override {
    auto const group = statewayEm()->getMountGroup(*this);
    doMountSwTables<1, FakeTable<7>>(*group);
    doMountSwTables<2, FakeTable<3>, FakeTable<7>>(*group);
    group->doClose(false, "", 0);
  }
  void doMountsComplete(Stateway::MountStatus, Dovel::Ptr<Stateway::EntityManager> const& em) override {
    auto const common = Dovel::cast<TesselCentral::FeatureAgentCommonSmData>(sharedEntity("featureCommon"));
    wrapper_ = Dovel::make<Wrapper>(*theLog, common, em, agentSmId(), localEntityStore(), shmemEm(), agentDir());
    wrapper_->hasNotificationActiveIs(true);
  }
  Dovel::Ptr<TesselL3Unicast::L3MounterSmWrapper> mounterSmWrapper() const override { return wrapper_; }

 private:
  Dovel::Ptr<Wrapper> wrapper_;
};

template <class Act>
std::string loadError(Act act) {
  try {
    act();
  } catch (Plugin::LoadError const& error) {
    return error.what();
  }
  return "";
}

TEST(Loader, SaysWhichFileOrTypeIsMissing) {
  Plugin::Loader loader;
  EXPECT_THAT(loadError([&] { loader.load("no-such-plug-in.so"); }),
              AllOf(HasSubstr("plug-in no-such-plug-in.so cannot be loaded: "), HasSubstr("No such file")));
  auto const notOne = testing::TempDir() + "not-a-plug-in.so";
  std::ofstream(notOne) << "text";
  EXPECT_THAT(loadError([&] { loader.load(notOne); }), HasSubstr("plug-in " + notOne + " cannot be loaded: "));
  EXPECT_TRUE(loader.files().empty());
  EXPECT_THAT(loadError([&] { loader.makeMounter("PluginTest::Nobody", "x"); }),
              HasSubstr("type PluginTest::Nobody is not registered"));
  EXPECT_THAT(loadError([&] { loader.makeMounter("Kiln::Dir", "x"); }), HasSubstr("type Kiln::Dir is not a mounter"));
  EXPECT_EQ(loader.makeMounter("PluginTest::Mounter", "x")->typeData().name(), "PluginTest::Mounter");
}

class L3Feature : public testing::Test {
 protected:
  void SetUp() override {
    theLog = &log;
    Plugin::Loader loader;
    mounter = Dovel::cast<Mounter>(loader.makeMounter("PluginTest::Mounter", "feature"));
    auto const shared = Dovel::make<Kiln::Dir>("shared");
    shared->childIs("featureCommon", fcsd);
    mounter->sharedEntityDirIs(shared);
    mounter->statewayEmIs(em);
    mounter->localEntityStoreIs(local);
    mounter->shmemEmIs(Dovel::make<KilnSharedMem::EntityManager>("agent"));
    mounter->agentSmIdIs(TesselL3Unicast::AgentSmId::vxlan);
    mounter->doBootStageMount(*em->getMountGroup(*mounter));
    mounter->doInit();
  }
  std::string said() { return std::exchange(log, {}); }

  Dovel::Ptr<Stateway::EntityManager> em = Dovel::make<Stateway::EntityManager>();
  Dovel::Ptr<Local::EntityManager> local = Dovel::make<Local::EntityManager>();
  Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData> fcsd =
      Dovel::make<TesselCentral::FeatureAgentCommonSmData>("featureCommon");
  Dovel::Ptr<Mounter> mounter;
  std::string log;
};

TEST_F(L3Feature, MountsWithTheBasePathsAndListsItsTables) {
  EXPECT_EQ(mounter->mounterSmWrapper(), nullptr);
  em->completeMounts();
  std::vector<std::string> paths;
  for (auto const& mount : em->mounts()) paths.push_back(mount.path() + " " + mount.mode());
  EXPECT_THAT(paths,
              ElementsAre("bridging/hwcapabilities r", "hardware/tessel/centralStatus/feature/l3/routingStatus r",
                          "hardware/tessel/centralStatus/vfiCapabilityStatus r",
                          "hardware/tessel/centralStatus/vxlanCapabilities r", "interface/config/eth/vlan r",
                          "table/3 r", "table/7 r", "vane/l3IntfTable r"));
  std::string tables;
  for (auto const& table : mounter->swTablesForRecovery()) {
    tables += table.type == &FakeTable<7>::kilnType() ? "7:" : "3:";
    for (auto const type : table.programmingTypes.types()) tables += std::to_string(type);
    tables += " ";
  }
  EXPECT_EQ(tables, "7:12 3:2 ");
}

TEST_F(L3Feature, StartsInOrderAndThenFollowsChipsAndRunningState) {
  em->completeMounts();
  auto const wrapper = mounter->mounterSmWrapper();
  ASSERT_TRUE(wrapper);
  EXPECT_EQ(wrapper->fcsd(), fcsd);
  EXPECT_EQ(wrapper->agentSmId(), TesselL3Unicast::AgentSmId::vxlan);
  EXPECT_EQ(wrapper->shmemName(), "agent");
  EXPECT_EQ(said(), "");
  wrapper->localEntityManagerIs(local);
  wrapper->vcsdIs(Dovel::make<Vane::VaneCommonSmData>("vcsd"));
  wrapper->doStart();
  EXPECT_EQ(said(), "faps init running running initialized ");
  fcsd->logicalFapIs(LogicalFap::LogicalFapId(3), Dovel::make<TesselCentral::LogicalModInfo>());
  wrapper->runningState()->runningIs(false);
  EXPECT_EQ(said(), "fap3 halted ");
  wrapper->hasNotificationActiveIs(false);
  fcsd->logicalFapDel(LogicalFap::LogicalFapId(3));
  EXPECT_EQ(said(), "");
}

TEST_F(L3Feature, LeavesNothingBehind) {
  em->completeMounts();
  auto const wrapper = mounter->mounterSmWrapper();
  mounter = nullptr;
  EXPECT_EQ(wrapper->useCount(), 1U);
  EXPECT_EQ(em->completeMounts(), 0U);
}

}  // namespace
}  // namespace PluginTest
