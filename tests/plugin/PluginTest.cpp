#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "platform/kiln/AttributeDefinitions.h"
#include "platform/plugin/Loader.h"

namespace PluginTest {
namespace {

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

}  // namespace
}  // namespace PluginTest
