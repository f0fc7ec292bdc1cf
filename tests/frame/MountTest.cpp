#include "tests/frame/FrameWorld.h"

namespace FrameTest {

namespace {

TEST(Mounts, areThoseThatWritersAndReadersKnow) {
  FrameWorld world;
  world.mountsComplete();
  EXPECT_EQ(world.mounts(), R"(bridging/config Bridging::Config r
bridging/hwcapabilities Bridging::HwCapabilities r
evpn/status Evpn::EvpnStatus r
hardware/tessel/centralStatus/feature/l3/routingStatus TesselL3::RoutingStatus r
hardware/tessel/centralStatus/vfiCapabilityStatus TesselCentral::VfiCapabilityStatus r
hardware/tessel/centralStatus/vxlanCapabilities TesselCentral::VxlanCapabilities r
hardware/tessel/system/profile Kiln::Dir ri
hardware/tessel/tunnel/configDir/vxlanHwHerTunnel Vane::VaneTunnelConfig w
hardware/tessel/tunnel/configDir/vxlanMemberTunnel Vane::VaneTunnelConfig w
hardware/tessel/tunnel/configDir/vxlanTunnel Vane::VaneTunnelConfig w
hardware/tessel/tunnel/statusDir/vxlanHwHerTunnel Vane::VaneTunnelStatus w
hardware/tessel/tunnel/statusDir/vxlanMemberTunnel Vane::VaneTunnelStatus w
hardware/tessel/tunnel/statusDir/vxlanTunnel Vane::VaneTunnelStatus w
hardware/tessel/tunnel/vxlan/helperVniConfig VaneHelper::VaneHelperVniConfig r
hardware/tessel/tunnel/vxlan/helperVniStatus VaneHelper::VaneHelperVniStatus w
hardware/tessel/tunnel/vxlan/herVtepStatus Vane::VXLAN::VaneVxlanHwHerVtepStatusDir w
hardware/tessel/tunnel/vxlan/l2ToVxlanState TesselCentral::L2ToVxlanState r
hardware/tessel/tunnel/vxlan/l3Config/vlanMapping TesselCentral::VlanMappingDir r
hardware/tessel/tunnel/vxlan/l3Status/vxlanL3StatusEntry TesselCentral::VxlanL3StatusEntryDir w
hardware/tessel/tunnel/vxlan/sliceConfig TesselCentral::VxlanSliceConfig w
hardware/tessel/tunnel/vxlan/vaneVtepGroupConfigDir Vane::VXLAN::VaneVtepGroupConfigDir r
hardware/tessel/tunnel/vxlan/vaneVtepGroupStatusDir Vane::VXLAN::VaneVtepGroupStatusDir r
hardware/tessel/tunnel/vxlan/vxlanInfo/vaneActivatedVti Vane::VXLAN::VaneVxlanActivedVti r
hardware/tessel/tunnel/vxlan/vxlanInfo/vaneGlobalVtiStatus Vane::VXLAN::VaneGlobalVtiStatus r
hardware/tessel/tunnel/vxlan/vxlanState TesselCentral::VxlanState r
hardware/tessel/tunnel/vxlan/vxlanToL2State TesselCentral::VxlanToL2State w
hardware/tessel/vfi/l2Status/vlanVfiMap TesselCentral::VlanVfiDir w
interface/config/eth/vlan Interface::VlanIntfConfigDir r
interface/status/eth/vxlan Vxlan::VtiStatusDir r
qos/hardware/tessel/trust/status/slice Kiln::Dir ri
routing/multicast/mcastEvpnStatus Routing::Multicast::McastEvpnStatus r
routing6/multicast/mcastEvpnStatus Routing::Multicast::McastEvpnStatus r
vane/l3IntfTable VaneL3Intf::Table r
vxlan/config Vxlan::VxlanConfigDir r
vxlan/ecnConfig Vxlan::EcnConfig r
vxlan/hardware/status Vxlan::VxlanHwStatusDir w
vxlan/multicast/bumTunnel/config Multicast::Vxlan::VxlanBumTunnelConfigDir w
vxlan/multicast/bumTunnel/status Multicast::Vxlan::VxlanBumTunnelStatusDir w
vxlan/multicast/herTunnel/config Multicast::Vxlan::VxlanMcastHerTunnelConfigDir w
vxlan/multicast/herTunnel/status Multicast::Vxlan::VxlanMcastHerTunnelStatusDir w
vxlan/multicast/tunnel/config Multicast::Vxlan::VxlanMcastTunnelConfigDir r
vxlan/multicast/tunnel/status Multicast::Vxlan::VxlanMcastTunnelStatusDir w
vxlan/version2/vtepStatusDir VxlanController::VtepStatusDirV2 r
)");
}

TEST(Mounts, ofSharedMemoryFollowTheCapabilities) {
  std::string const remoteVnis =
      "multicast/irb/remoteVniToVlanStatus/Vxlan1 multicast/static/remoteVniToVlanStatus/Vxlan1 ";
  for (auto const& [mcast, underlay] : {std::pair(false, false), {true, false}, {false, true}}) {
    FrameWorld world;
    world.mountsComplete();
    auto const has = world.state<TesselCentral::VxlanCapabilities>("hardware/tessel/centralStatus/vxlanCapabilities");
    has->mcastTunnelSupportedIs(mcast);
    has->underlayMcastSupportedIs(underlay);
    world.start();
    std::string text;
    for (auto const& [path, mount] : world.stores().shmem->mounts()) text += path + ' ';
    EXPECT_EQ(text, "bridging/l2Rib/floodOutput " + (mcast ? remoteVnis : "") +
                        (underlay ? "routing/multicast/vxlanDecap " : ""));
    EXPECT_EQ(world.wrapper().remoteVniToSBDVlanMergeSm() != nullptr, mcast);
    EXPECT_EQ(world.wrapper().mrouteVxlanDecapTable() != nullptr, underlay);
  }
}

}  // namespace

}  // namespace FrameTest
