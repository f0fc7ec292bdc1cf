#include <fstream>
#include <iterator>

#include "tests/host/command_world.h"

namespace Host::Test {

using testing::ContainsRegex;
using testing::HasSubstr;

TEST(ImportCommand, givesTheDocumentOfTheBuiltInLeaf) {
  auto const ran = run({"import", "iproute2", capture("bridge-per-vni/leaf1")});
  EXPECT_EQ(ran.code, kGood);
  std::ifstream leaf(std::filesystem::path(TESSEL_SOURCE_DIR) / "host/defaults/leaf.json");
  EXPECT_EQ(ran.out, std::string(std::istreambuf_iterator<char>(leaf), {}));

  auto const later =
      run({"import", "iproute2", capture("bridge-per-vni/leaf1"), capture("bridge-per-vni/events/04-vtep-gone")});
  EXPECT_THAT(later.out, testing::Not(HasSubstr("10.255.0.3")));
}

TEST(TypesCommand, listsClassesOfPlatformAndPlugInAndDescribesOne) {
  auto const all = run({"types"});
  EXPECT_EQ(all.code, kGood);
  for (auto const* name : {"\nVane::HwTunnelConfig\n", "\nTesselVxlan::TesselVxlanMounter\n"}) {
    EXPECT_THAT(all.out, HasSubstr(name));
  }
  auto const one = run({"types", "Vane::HwTunnelConfig"});
  EXPECT_THAT(one.out, HasSubstr("is a Kiln::Entity"));
  EXPECT_THAT(one.out, ContainsRegex("0x83 +hwInit +u32 +yes"));
  EXPECT_THAT(one.out, ContainsRegex("0x85 +hwTunnelConfigList +Vane::TunnelKey to Vane::HwTunnelConfigEntry"));
}

TEST(ProfilesCommand, listsProfilesAndDescribesOne) {
  auto const all = run({"profiles"});
  EXPECT_EQ(all.code, kGood);
  for (auto const* name : {"\ncascaded ", "\nflat ", "\ncompact ", "\ntiny "}) EXPECT_THAT(all.out, HasSubstr(name));
  auto const one = run({"profiles", "tiny"});
  EXPECT_THAT(one.out, ContainsRegex("VirtualPort1Table +7 +4096"));
  EXPECT_THAT(one.out, HasSubstr("vxlanCascadedForwardingSupport=true"));
  EXPECT_THAT(one.out, testing::Not(HasSubstr("::Util")));
}

}  // namespace Host::Test
