#include "tests/frame/FrameWorld.h"

namespace FrameTest {

namespace {

TEST(Mounts, areAskedForInTheOrderThatIsAgreed) {
  FrameWorld world;
  world.mountsAsked();
  std::string text;
  for (auto const& mount : world.mountGroup().mounts()) {
    text += mount.mode() + ' ' + mount.path() + ' ' + mount.typeName() + '\n';
  }
  EXPECT_EQ(text, R"(r interface/config/eth/vlan Interface::VlanIntfConfigDir
r hardware/tessel/centralStatus/vfiCapabilityStatus TesselCentral::VfiCapabilityStatus
r bridging/hwcapabilities Bridging::HwCapabilities
r hardware/tessel/centralStatus/vxlanCapabilities TesselCentral::VxlanCapabilities
r hardware/tessel/centralStatus/feature/l3/routingStatus TesselL3::RoutingStatus
r vane/l3IntfTable VaneL3Intf::Table
ri hardware/tessel/system/profile Kiln::Dir
r interface/status/eth/vxlan Vxlan::VtiStatusDir
w hardware/tessel/tunnel/configDir/vxlanTunnel Vane::VaneTunnelConfig
w hardware/tessel/tunnel/statusDir/vxlanTunnel Vane::VaneTunnelStatus
w hardware/tessel/tunnel/configDir/vxlanMemberTunnel Vane::VaneTunnelConfig
w hardware/tessel/tunnel/statusDir/vxlanMemberTunnel Vane::VaneTunnelStatus
w hardware/tessel/tunnel/configDir/vxlanHwHerTunnel Vane::VaneTunnelConfig
w hardware/tessel/tunnel/statusDir/vxlanHwHerTunnel Vane::VaneTunnelStatus
r hardware/tessel/tunnel/vxlan/vaneVtepGroupConfigDir Vane::VXLAN::VaneVtepGroupConfigDir
r hardware/tessel/tunnel/vxlan/vaneVtepGroupStatusDir Vane::VXLAN::VaneVtepGroupStatusDir
w hardware/tessel/tunnel/vxlan/herVtepStatus Vane::VXLAN::VaneVxlanHwHerVtepStatusDir
w hardware/tessel/tunnel/vxlan/vxlanToL2State TesselCentral::VxlanToL2State
r hardware/tessel/tunnel/vxlan/l2ToVxlanState TesselCentral::L2ToVxlanState
r hardware/tessel/tunnel/vxlan/l3Config/vlanMapping TesselCentral::VlanMappingDir
r hardware/tessel/tunnel/vxlan/helperVniConfig VaneHelper::VaneHelperVniConfig
w hardware/tessel/tunnel/vxlan/helperVniStatus VaneHelper::VaneHelperVniStatus
w hardware/tessel/tunnel/vxlan/l3Status/vxlanL3StatusEntry TesselCentral::VxlanL3StatusEntryDir
w hardware/tessel/vfi/l2Status/vlanVfiMap TesselCentral::VlanVfiDir
w vxlan/hardware/status Vxlan::VxlanHwStatusDir
r bridging/config Bridging::Config
w hardware/tessel/tunnel/vxlan/sliceConfig TesselCentral::VxlanSliceConfig
r hardware/tessel/tunnel/vxlan/vxlanInfo/vaneGlobalVtiStatus Vane::VXLAN::VaneGlobalVtiStatus
r hardware/tessel/tunnel/vxlan/vxlanInfo/vaneActivatedVti Vane::VXLAN::VaneVxlanActivedVti
r hardware/tessel/tunnel/vxlan/vxlanState TesselCentral::VxlanState
r vxlan/version2/vtepStatusDir VxlanController::VtepStatusDirV2
r vxlan/ecnConfig Vxlan::EcnConfig
r vxlan/config Vxlan::VxlanConfigDir
ri qos/hardware/tessel/trust/status/slice Kiln::Dir
r vxlan/multicast/tunnel/config Multicast::Vxlan::VxlanMcastTunnelConfigDir
w vxlan/multicast/tunnel/status Multicast::Vxlan::VxlanMcastTunnelStatusDir
w vxlan/multicast/bumTunnel/config Multicast::Vxlan::VxlanBumTunnelConfigDir
w vxlan/multicast/bumTunnel/status Multicast::Vxlan::VxlanBumTunnelStatusDir
w vxlan/multicast/herTunnel/config Multicast::Vxlan::VxlanMcastHerTunnelConfigDir
w vxlan/multicast/herTunnel/status Multicast::Vxlan::VxlanMcastHerTunnelStatusDir
r routing/multicast/mcastEvpnStatus Routing::Multicast::McastEvpnStatus
r routing6/multicast/mcastEvpnStatus Routing::Multicast::McastEvpnStatus
r evpn/status Evpn::EvpnStatus
)");
  EXPECT_TRUE(world.mountGroup().closed());
}

TEST(Mounts, ofTablesAreTheListForRecovery) {
  FrameWorld world;
  world.mountsAsked();
  std::map<std::uint32_t, std::string> byProgrammingType;
  for (auto const& table : world.mounter().swTablesForRecovery()) {
    for (auto const type : table.programmingTypes.types()) {
      byProgrammingType[type].append(table.type->name()).append(" ");
    }
  }
  EXPECT_THAT(
      byProgrammingType,
      testing::ElementsAre(
          testing::Pair(1, "TesselVxlan::EgrAdaptSinglePortGroupTable TesselVxlan::EgrVfiToVniMappingTable "),
          testing::Pair(
              2,
              "TesselVxlan::L2TunnelIpv4DipTable TesselVxlan::L2TunnelIpv6DipTable TesselVxlan::L2TunnelVnIdTable "
              "TesselVxlan::EgrL3Ipv4TunnelTable TesselVxlan::EgrL3Ipv6TunnelTable TesselL3Common::EgrL3NextHop2 "
              "TesselL3Common::IngL3NextHop2Table TesselL3Common::VirtualPort1Table "
              "TesselL3Common::VirtualPort2Table TesselVxlan::L2TunnelIpv4SipTable "
              "TesselVxlan::L2TunnelIpv6SipTable TesselL3Tunnel::EgrL3Oif2 TesselVxlan::EpreEdevConfigCcbeRegister "
              "TesselVxlan::IngL3EcmpMember0Table TesselVxlan::EcmpMember1Table TesselL3Tunnel::EcmpGroup1Table "
              "TesselVxlan::RL2TunnelDefaultNetworkSvp TesselEpre::EpreCcbeNextHopRemapTable "
              "TesselVxlan::FlexQoSEgrEcn6Table TesselVxlan::FlexQosIngEcn TesselVxlan::VpLagGroupTable "
              "TesselVxlan::VpLagEcmpMember0Table TesselVxlan::VxlanEgrL3Oif1Table "
              "TesselVxlan::EcmpIndirectionTableConfigReg TesselVxlan::EgrL3NextHop1 TesselVxlan::IngL3NextHop1 "
              "TesselVxlan::AllowedPortBitmapProfile TesselVxlan::HerNextHop1Table TesselVxlan::HerNextHop2Table "
              "TesselVxlan::VxlanV4UnderlayMcastTable ")));
}

TEST(Mounts, ofSharedMemoryFollowTheCapabilities) {
  std::string const remoteVnis =
      "multicast/irb/remoteVniToVlanStatus/Vxlan1 table 1, multicast/static/remoteVniToVlanStatus/Vxlan1 table 1, ";
  for (auto const& [mcast, underlay] : {std::pair(false, false), {true, false}, {false, true}}) {
    FrameWorld world;
    world.mountsComplete();
    auto const has = world.state<TesselCentral::VxlanCapabilities>("hardware/tessel/centralStatus/vxlanCapabilities");
    has->mcastTunnelSupportedIs(mcast);
    has->underlayMcastSupportedIs(underlay);
    world.start();
    std::string text;
    for (auto const& [path, mount] : world.stores().shmem->mounts()) {
      bool const table = mount.info.layout() == KilnSharedMem::MountInfo::Layout::table;
      text += path + (table ? " table " + std::to_string(mount.info.type()) : " entity") + mount.info.collectionInfo();
      text += ", ";
    }
    EXPECT_EQ(text, "bridging/l2Rib/floodOutput entity, " + (mcast ? remoteVnis : "") +
                        (underlay ? "routing/multicast/vxlanDecap table 1mrouteVxlanDecap, " : ""));
    EXPECT_EQ(world.wrapper().remoteVniToSBDVlanMergeSm() != nullptr, mcast);
    EXPECT_EQ(world.wrapper().mrouteVxlanDecapTable() != nullptr, underlay);
  }
}

}  // namespace

}  // namespace FrameTest
