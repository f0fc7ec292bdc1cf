#include <fmt/format.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "tests/frame/FrameWorld.h"

namespace FrameTest {

using Meshal::IpGenAddr;

TEST(StaleState, goesWithTheStartButForWhatAnUpgradeHandsOver) {
  FrameWorld world;
  world.mountsComplete();
  IpGenAddr const gone("10.255.0.9");
  auto const unicasts = world.state<Vane::VaneTunnelStatus>(Host::publishedTunnelsPath(Vane::vxlanTunnel_));
  auto const her = world.state<Vane::VaneTunnelStatus>(Host::publishedTunnelsPath(Vane::vxlanHerTunnel_));
  auto const members = world.state<Vane::VaneTunnelStatus>(Host::publishedTunnelsPath(Vane::vxlanMemberTunnel_));
  auto const flood =
      world.state<Vane::VXLAN::VaneVxlanHwHerVtepStatusDir>("hardware/tessel/tunnel/vxlan/herVtepStatus");
  auto const l2 = world.state<TesselCentral::VxlanToL2State>(Host::kVxlanToL2StatePath);
  for (auto const& status : {unicasts, her, members}) status->tunnelStatusEntryIs(gone);
  flood->vaneVxlanHwHerVtepStatusIs(gone);
  l2->vtepIpToTnlIdNhIdMapIs(gone)->tnlIdIs(Vane::VaneTunnelId(77));
  l2->stageVlanVniMappingReadyIs(true);
  l2->recoveredTnlIdToVtepIs(Vane::VaneTunnelId(77), gone);
  l2->recoveredNhIdToVtepIs(Vane::VaneNextHopId(5), gone);
  l2->recoveredMHTnlIdToVtepListIs(Vane::VaneTunnelId(78));
  auto const local = world.stores().local;
  auto const records = local->doMount<TesselL3Common::TesselVxlanBumVtepConfigDir>("vxlan/bumVtepConfigDir");
  auto const ids = local->doMount<TesselL3Common::EncapIdToBumVtepIpConfigDir>("vxlan/encapIdToBumVtepIpConfigDir");
  auto const wanted = world.state<Vane::VaneTunnelConfig>(Host::wantedTunnelsPath(Vane::vxlanHerTunnel_));
  auto const groups = world.state<Multicast::Vxlan::VxlanMcastTunnelStatusDir>("vxlan/multicast/tunnel/status");
  TesselL3Common::EncapId const encapId(4097);
  records->bumVtepConfigIs(gone, encapId);
  ids->vxlanReverseConfigIs(encapId)->vtepIpIs(gone);
  wanted->tunnelIs(gone);
  groups->tunnelIs(gone);
  auto const left = [&] {
    return fmt::format(
        "unicast {:d} her {:d} members {:d} flood {:d} vtep {:d} mapping {:d}, recovered {:d} {:d} {:d}, "
        "flooding {:d} {:d} {:d} {:d}",
        unicasts->tunnelStatusEntryHas(gone), her->tunnelStatusEntryHas(gone), members->tunnelStatusEntryHas(gone),
        flood->vaneVxlanHwHerVtepStatusHas(gone), l2->vtepIpToTnlIdNhIdMapHas(gone), l2->stageVlanVniMappingReady(),
        l2->recoveredTnlIdToVtepHas(Vane::VaneTunnelId(77)), l2->recoveredNhIdToVtepHas(Vane::VaneNextHopId(5)),
        l2->recoveredMHTnlIdToVtepListHas(Vane::VaneTunnelId(78)), records->bumVtepConfigHas(gone),
        ids->vxlanReverseConfigHas(encapId), wanted->tunnelHas(gone), groups->tunnelHas(gone));
  };
  ASSERT_EQ(left(), "unicast 1 her 1 members 1 flood 1 vtep 1 mapping 1, recovered 1 1 1, flooding 1 1 1 1");
  world.start();
  EXPECT_EQ(left(), "unicast 1 her 0 members 0 flood 0 vtep 0 mapping 0, recovered 1 1 1, flooding 0 0 1 1");
  world.tunnelSmIsReady();
  EXPECT_EQ(left(), "unicast 1 her 0 members 0 flood 0 vtep 0 mapping 0, recovered 1 1 1, flooding 0 0 0 0");
}

TEST(SecondStart, hasNothingOfWhatTheFirstPublished) {
  FrameWorld fresh;
  fresh.mountsComplete().start().tunnelSmIsReady();
  for (bool const sameProcess : {true, false}) {
    SCOPED_TRACE(sameProcess);
    FrameWorld world;
    world.mountsComplete().start().tunnelSmIsReady();
    if (sameProcess) world.chip().hold("VirtualPortTableMerged");
    world.tunnelWanted().floodWanted();
    for (auto const* part : {"10.255.0.1", R"("encapId":4099)", R"("10.255.0.3")", "239.1.1.1"})
      EXPECT_THAT(world.published(), testing::HasSubstr(part));
    world.wrapperGone().tunnelsGone();
    if (sameProcess) {
      // Completions of the first do not reach the second.
      world.wrapperAgain().chip().release();
      world.start();
    } else {
      world.processAgain().start().tunnelSmIsReady();
    }
    EXPECT_EQ(world.published(), fresh.published());
    EXPECT_EQ(world.rows(), fresh.rows());
    EXPECT_EQ(world.tables(), fresh.tables());
  }
}

TEST(SecondStart, bringsBackWhatIsStillWanted) {
  FrameWorld world;
  world.mountsComplete().start().tunnelSmIsReady().tunnelWanted().floodWanted();
  auto const rows = world.rows(), tables = world.tables(), published = world.published();
  EXPECT_THAT(rows, testing::HasSubstr("L2TunnelIpv4SipTable\n  10.255.0.2: "));
  world.wrapperAgain().start();
  EXPECT_EQ(world.rows(), rows);
  EXPECT_EQ(world.tables(), tables);
  EXPECT_EQ(world.published(), published);
}

/// What the toggles decide, in a feature that starts in this process.
std::string decided() {
  FrameWorld world;
  world.mountsComplete();
  auto const groups =
      world.state<Vane::VXLAN::VaneVtepGroupStatusDir>("hardware/tessel/tunnel/vxlan/vaneVtepGroupStatusDir");
  Vane::VXLAN::VaneVtepGroupKey const group(1U);
  Vane::VaneTunnelId const oldId(7);
  groups->vaneVtepGroupStatusIs(group)->hwTunnelIdIs(oldId);
  world.state<Vane::VXLAN::VaneVtepGroupConfigDir>("hardware/tessel/tunnel/vxlan/vaneVtepGroupConfigDir")
      ->vaneVtepGroupConfigIs(group)
      ->vtepListIs(Meshal::IpAddr(0x0AFF0002), true);
  world.start().tunnelSmIsReady();
  auto const& wrapper = world.wrapper();
  return fmt::format("VNI helper mounted {:d} bound {:d}, old group {:d}, VNI state {}, runs {}\n",
                     bool(world.state<VaneHelper::VaneHelperVniStatus>("hardware/tessel/tunnel/vxlan/helperVniStatus")),
                     wrapper.helperVniConfig() && wrapper.helperVniStatus(),
                     groups->vaneVtepGroupStatus(group)->hwTunnelId() == oldId,
                     wrapper.vxlanInfo()->vaneVniSmState()->vniSmState(), world.running());
}

/// Reads the toggle as false from one file; every other file has it as true.
void tellWithout(char const* toggle, std::string const& file) {
  auto const directory = std::filesystem::path(testing::TempDir()) / toggle;
  std::filesystem::create_directories(directory);
  for (std::string const name : {"TesselL2.json", "TesselLib.json"}) {
    std::ofstream(directory / name) << "{\"" << toggle << "\": " << (name == file ? "false" : "true") << "}";
  }
  setenv("TESSEL_TOGGLE_DIR", directory.c_str(), 1);
  std::cerr << decided();
  std::filesystem::remove_all(directory);
  std::exit(0);
}

// A toggle holds for the life of a process: each has one of its own.
TEST(TogglesDeathTest, decideWhoseTheVniHelperIsAndWhatRuns) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  using testing::ExitedWithCode;
  using testing::HasSubstr;
  EXPECT_EXIT(
      tellWithout("VaneVniSmInTesselL2", "TesselL2.json"), ExitedWithCode(0),
      HasSubstr("VNI helper mounted 0 bound 1, old group 0, VNI state 3, runs vti unicast member multicast \n"));
  EXPECT_EXIT(tellWithout("Tessel4L3McastUnderlayHER", "TesselLib.json"), ExitedWithCode(0),
              HasSubstr("VNI helper mounted 1 bound 1, old group 1, VNI state 0, runs vti unicast member \n"));
  EXPECT_EQ(decided(), "VNI helper mounted 1 bound 1, old group 1, VNI state 0, runs vti unicast member multicast \n");
}

}  // namespace FrameTest
