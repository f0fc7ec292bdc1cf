#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "platform/kiln/AttributeDefinitions.h"
#include "platform/plugin/L3MounterSmWrapper.h"
#include "platform/plugin/Loader.h"

namespace PluginTest {

class Mounter final : public Plugin::Mounter {
  KILN_TYPE(PluginTest::Mounter, Plugin::Mounter)

 public:
  explicit Mounter(Dovel::String const&) {}
  void doInit() override {}
  void doMountsComplete(Stateway::MountStatus, Dovel::Ptr<Stateway::EntityManager> const&) override {}
};
KILN_DESCRIBE(Mounter)

TEST(Loader, saysWhichFileOrTypeIsMissingOrRegisteredAlready) {
  Plugin::Loader loader;
  auto const refused = [](auto act, std::string const& said) {
    EXPECT_THAT(act, testing::ThrowsMessage<Plugin::LoadError>(testing::HasSubstr(said)));
  };
  auto const notOne = testing::TempDir() + "not-a-plug-in.so";
  std::ofstream(notOne) << "text";
  refused([&] { loader.load("no-such-plug-in.so"); }, "plug-in no-such-plug-in.so cannot be loaded: ");
  refused([&] { loader.load(notOne); }, "plug-in " + notOne + " cannot be loaded: ");
  EXPECT_TRUE(loader.files().empty());
  refused([&] { loader.makeMounter("PluginTest::Nobody", "x"); }, "type PluginTest::Nobody is not registered");
  refused([&] { loader.makeMounter("Kiln::Dir", "x"); }, "type Kiln::Dir is not a mounter");
  EXPECT_EQ(loader.makeMounter("PluginTest::Mounter", "x")->typeData().name(), "PluginTest::Mounter");

  auto const bin = std::filesystem::read_symlink("/proc/self/exe").parent_path();
  for (int i = 0; i < 2; ++i) loader.load(bin / TESSEL_PLUGIN_FILE);
  EXPECT_EQ(loader.files().size(), 2U) << "the same file again is no other plug-in";
  refused([&] { loader.load(TESSEL_TWIN_FILE); },
          "plug-in " TESSEL_TWIN_FILE " cannot be used: its class PluginTest::Mounter is registered already");
  EXPECT_EQ(loader.files().size(), 2U);
}

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
KILN_DESCRIBE(Wrapper)

TEST(L3Wrapper, startsInOrderAndThenFollowsChipsAndRunningState) {
  std::string log;
  auto const said = [&log] { return std::exchange(log, {}); };
  auto const fcsd = Dovel::make<TesselCentral::FeatureAgentCommonSmData>("featureCommon");
  auto const local = Dovel::make<Local::EntityManager>();
  auto const wrapper =
      Dovel::make<Wrapper>(log, fcsd, Dovel::make<Stateway::EntityManager>(), TesselL3Unicast::AgentSmId::vxlan, local,
                           Dovel::make<KilnSharedMem::EntityManager>("agent"), Dovel::make<Kiln::Dir>("agentDir"));
  wrapper->hasNotificationActiveIs(true);
  EXPECT_EQ(wrapper->shmemName(), "agent");
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

}  // namespace PluginTest
