#include "platform/kiln/AttributeDefinitions.h"
#include "tests/frame/FrameWorld.h"

namespace FrameTest {

namespace {

using Entity = Dovel::Ptr<Dovel::Node const>;

/// A world whose feature runs, with everything that a capability can add.
class Bindings : public testing::Test {
 protected:
  static TesselVxlan::TesselVxlanMounterSmWrapper& started(FrameWorld& world) {
    world.mountsComplete();
    auto const has = world.state<TesselCentral::VxlanCapabilities>("hardware/tessel/centralStatus/vxlanCapabilities");
    has->mcastTunnelSupportedIs(true);
    has->underlayMcastSupportedIs(true);
    return world.start().tunnelSmIsReady().wrapper();
  }
  FrameWorld world;
  TesselVxlan::TesselVxlanMounterSmWrapper& w = started(world);
};

TEST_F(Bindings, areTheEntitiesAtTheirPaths) {
  auto const config = [&](Vane::TunnelType type) { return w.tunnelConfigDir()->tunnelConfig(type); };
  auto const status = [&](Vane::TunnelType type) { return w.tunnelStatusDir()->tunnelStatus(type); };
  struct {
    Entity is;
    char const* path;
  } const mounted[] = {
      {w.vxlanToL2State(), "hardware/tessel/tunnel/vxlan/vxlanToL2State"},
      {w.tesselCentralVxlanState(), "hardware/tessel/tunnel/vxlan/vxlanState"},
      {w.vxlanConfig()->vlanMappingDir(), "hardware/tessel/tunnel/vxlan/l3Config/vlanMapping"},
      {w.vxlanStatus()->vxlanL3StatusEntryDir(), "hardware/tessel/tunnel/vxlan/l3Status/vxlanL3StatusEntry"},
      {w.vaneVxlanHwHerVtepStatusDir(), "hardware/tessel/tunnel/vxlan/herVtepStatus"},
      {w.vtiStatusDir(), "interface/status/eth/vxlan"},
      {config(Vane::vxlanTunnel_), "hardware/tessel/tunnel/configDir/vxlanTunnel"},
      {status(Vane::vxlanTunnel_), "hardware/tessel/tunnel/statusDir/vxlanTunnel"},
      {config(Vane::vxlanMemberTunnel_), "hardware/tessel/tunnel/configDir/vxlanMemberTunnel"},
      {status(Vane::vxlanMemberTunnel_), "hardware/tessel/tunnel/statusDir/vxlanMemberTunnel"},
      {config(Vane::vxlanHerTunnel_), "hardware/tessel/tunnel/configDir/vxlanHwHerTunnel"},
      {status(Vane::vxlanHerTunnel_), "hardware/tessel/tunnel/statusDir/vxlanHwHerTunnel"},
      {w.vxlanTunnelConfig(), "hardware/tessel/tunnel/configDir/vxlanTunnel"},
      {w.vxlanTunnelStatus(), "hardware/tessel/tunnel/statusDir/vxlanTunnel"},
      {w.vxlanMemberTunnelConfig(), "hardware/tessel/tunnel/configDir/vxlanMemberTunnel"},
      {w.vxlanMemberTunnelStatus(), "hardware/tessel/tunnel/statusDir/vxlanMemberTunnel"},
      {w.vlanIntfConfigDir(), "interface/config/eth/vlan"},
      {w.vfiCapabilityStatus(), "hardware/tessel/centralStatus/vfiCapabilityStatus"},
      {w.bridgingHwCapabilities(), "bridging/hwcapabilities"},
      {w.vlanVfiDir(), "hardware/tessel/vfi/l2Status/vlanVfiMap"},
      {w.helperVniConfig(), "hardware/tessel/tunnel/vxlan/helperVniConfig"},
      {w.helperVniStatus(), "hardware/tessel/tunnel/vxlan/helperVniStatus"},
      {w.vxlanInfo()->vaneGlobalVtiStatus(), "hardware/tessel/tunnel/vxlan/vxlanInfo/vaneGlobalVtiStatus"},
      {w.vxlanInfo()->vaneActivatedVti(), "hardware/tessel/tunnel/vxlan/vxlanInfo/vaneActivatedVti"},
      {w.vxlanHwStatusDir(), "vxlan/hardware/status"},
      {w.bridgingConfig(), "bridging/config"},
      {w.vxlanConfigDir(), "vxlan/config"},
      {w.vaneVtepGroupConfigDir(), "hardware/tessel/tunnel/vxlan/vaneVtepGroupConfigDir"},
      {w.vaneVtepGroupStatusDir(), "hardware/tessel/tunnel/vxlan/vaneVtepGroupStatusDir"},
      {w.vxlanSliceConfig(), "hardware/tessel/tunnel/vxlan/sliceConfig"},
      {w.vxlanVtepStatusDir(), "vxlan/version2/vtepStatusDir"},
      {w.qosTrustStatusDir(), "qos/hardware/tessel/trust/status/slice"},
      {w.vxlanCapabilities(), "hardware/tessel/centralStatus/vxlanCapabilities"},
      {w.routingStatus(), "hardware/tessel/centralStatus/feature/l3/routingStatus"},
      {w.ecnConfig(), "vxlan/ecnConfig"},
      {w.vaneL3IntfTable(), "vane/l3IntfTable"},
      {w.evpnStatus(), "evpn/status"},
  };
  for (auto const& [is, path] : mounted) EXPECT_EQ(is, world.stores().stateway->getEntity(path)) << path;

  auto const mcastConfigs = world.local<Vane::HwTunnelConfigDir>("l3/hwMcastTunnelConfigDir");
  auto const mcastStatuses = world.local<Vane::HwTunnelStatusDir>("l3/hwMcastTunnelStatusDir");
  EXPECT_EQ(w.hwMcastTunnelConfig(), mcastConfigs->hwTunnelConfig(Vane::vxlanMcastTunnel_));
  EXPECT_EQ(w.hwMcastTunnelStatus(), mcastStatuses->hwTunnelStatus(Vane::vxlanMcastTunnel_));
  auto const nextHop2 = w.nextHopTableProgrammer()->mountPath();
  struct {
    Entity is;
    char const* path;
  } const local[] = {
      {w.vxlanBootStatus(), "vxlanBootStatus"},
      {w.vlanStatusDir(), "l3/vlanStatusDir"},
      {w.vxlanState(), "tesselVxlan/vxlanState"},
      {w.hwTunnelConfigDir(), "l3/hwTunnelConfigDir"},
      {w.hwTunnelStatusDir(), "l3/hwTunnelStatusDir"},
      {w.routeDestinationTableDir(), "vxlan/swTable/shared/destination/epreRemap"},
      {w.ecmpNhTableDir(), "vxlan/swTable/shared/destination/ecmp"},
      {w.underlayEcmpProgrammer()->mountPath(), "vxlan/swTable/shared/destination/ecmp"},
      {nextHop2, "vxlan/swTable/shared/destination/nexthop2"},
      {w.nextHopTableProgrammer()->ipmcTable(), "mcast/swTable/shared/destination/ipmc/511"},
      {w.virtualPortTableProgrammer()->virtualPortTable(), "vxlan/swTable/shared/vp/virtualPortTable"},
      {w.epreNextHopRemapTable(), "vxlan/swTable/shared/destination/epreRemap/511"},
      {w.bumVtepConfigDir(), "vxlan/bumVtepConfigDir"},
      {w.encapIdToBumVtepIpConfigDir(), "vxlan/encapIdToBumVtepIpConfigDir"},
      {w.dvpToVtepMapping(), "l3/dvpToVtepMap"},
      {w.tunnelIndexToVtepMapping(), "l3/tunnelToVtepMap"},
  };
  for (auto const& [is, path] : local) EXPECT_EQ(is, world.stores().local->getEntity(path)) << path;
  EXPECT_TRUE(world.local<Kiln::Dir>("vxlan/swTable/shared/destination/herNh1"));

  Entity const shared[][2] = {
      {w.l2RibFloodSet(), world.stores().shmem->getEntity("bridging/l2Rib/floodOutput")},
      {w.irbRemoteVniToVlanStatus(), world.stores().shmem->getEntity("multicast/irb/remoteVniToVlanStatus/Vxlan1")},
      {w.staticRemoteVniToVlanStatus(),
       world.stores().shmem->getEntity("multicast/static/remoteVniToVlanStatus/Vxlan1")},
      {w.mrouteVxlanDecapTable(), world.stores().shmem->getEntity("routing/multicast/vxlanDecap")},
  };
  for (auto const& [is, wanted] : shared) EXPECT_EQ(is, wanted);
}

/// Notes the attributes of the wrapper as they change.
class Order final : public Kiln::Sm {
  KILN_BASE_TYPE(Order)

 public:
  explicit Order(TesselVxlan::TesselVxlanMounterSmWrapper& wrapper)
      : wrapper_(*this, &wrapper, Kiln::SubscribeOnly{}) {}
  std::string text;

 private:
  void wrapperDispatch(Dovel::Change const& change) {
    for (auto const& attribute : wrapper_->typeData().ownAttributes()) {
      if (attribute.id == change.id) text.append(attribute.name).append(" ");
    }
  }
  Kiln::Watch<TesselVxlan::TesselVxlanMounterSmWrapper, &Order::wrapperDispatch> wrapper_;
};
KILN_DESCRIBE(Order)

TEST(BindingOrder, isThatOfTheStart) {
  FrameWorld world;
  world.mountsComplete();
  auto const has = world.state<TesselCentral::VxlanCapabilities>("hardware/tessel/centralStatus/vxlanCapabilities");
  has->mcastTunnelSupportedIs(true);
  has->underlayMcastSupportedIs(true);
  auto const order = Dovel::make<Order>(world.wrapper());
  world.start().tunnelSmIsReady();
  EXPECT_EQ(order->text,
            "vxlanToL2State vlanStatusDir hwTunnelConfigDir hwTunnelStatusDir routeDestinationTableDir "
            "ecmpNhTableDir bumVtepConfigDir encapIdToBumVtepIpConfigDir floodUnderlayVlanToVtepListDir "
            "ecnConfig vxlanConfigDir qosTrustStatusAllLocal qosTrustStatusDir qosTrustStatusSm "
            "hwMcastTunnelConfig hwMcastTunnelStatus evpnStatus vxlanCapabilities helperVniConfig "
            "helperVniStatus routingStatus vaneL3IntfTable dvpToVtepMapping tunnelIndexToVtepMapping "
            "nhAttributes vaneVxlanHwHerVtepStatusDir vaneVxlanHwHerVtepConfigDir vxlanConfig vxlanStatus "
            "vtiStatusDir tunnelConfigDir tunnelStatusDir vxlanTunnelConfig vxlanTunnelStatus "
            "vxlanMemberTunnelConfig vxlanMemberTunnelStatus vaneVtepGroupConfigDir vaneVtepGroupStatusDir "
            "vlanIntfConfigDir vxlanSliceConfig vfiCapabilityStatus bridgingHwCapabilities vlanVfiDir "
            "vxlanHwStatusDir bridgingConfig vxlanInfo vtepGroupConfigDir vtepGroupStatusDir "
            "tesselCentralVxlanState l2RibFloodSet vxlanVtepStatusDir irbRemoteVniToVlanStatus "
            "staticRemoteVniToVlanStatus remoteVniToVlanStatus remoteVniToSBDVlanMergeSm mrouteVxlanDecapTable "
            "vtepGrpTnlIdMapDir tunnelTermTableProgrammer l3Oif2TableHelper nextHopTableProgrammer "
            "l3Oif1TableProgrammer egrL3TunnelTablesProgrammer virtualPortTableProgrammer "
            "underlayEcmpProgrammer l2TunnelVnIdTable vxlanV4UnderlayMcastTable epreNextHopRemapTable "
            "tablesInitialized ecmpIndirectionTableConfigReg vaneVxlanHwHerSm vxlanVtiStatusSm "
            "hwTunnelProgrammer hwTunnelProgrammer vxlanTunnelHelperSm vxlanMemberTunnelHelperSm "
            "l3McastEvpnStatusSm ");
}

TEST_F(Bindings, ofTheWrapperAreTheMountersOwn) {
  auto const& m = world.mounter();
  Entity const own[][2] = {{m.fcsd(), w.fcsd()},
                           {m.statewayEm(), w.statewayEm()},
                           {m.shmemEm(), w.shmemEm()},
                           {m.localEntityStore(), w.localEntityStore()},
                           {m.agentDir(), w.agentDir()}};
  for (auto const& [is, wanted] : own) EXPECT_TRUE(is && is == wanted) << wanted->typeData().name();
  EXPECT_EQ(w.agentSmId(), m.agentSmId());
}

TEST_F(Bindings, leaveNoPointerNullButThoseOfLaterFeatures) {
  std::string null;
  for (auto const& attribute : w.typeData().ownAttributes()) {
    if (attribute.kind != Kiln::AttributeKind::pointer) continue;
    auto const json = Kiln::jsonText([&](Kiln::JsonOut out) { attribute.toJson(w, out); });
    if (json == "null") null.append(attribute.name).append(" ");
  }
  EXPECT_EQ(null,
            "helperVni vxlanMcastTunnelHelperSm herTunnelHelperSm tesselVxlanHelperPortGroupSm "
            "tesselVxlanHelperVniSm tesselVxlanECNSm vxlanVtepGroupDirSm mcastTunnelConfigDirColl "
            "mcastTunnelStatusDirColl vaneVxlanMcastSm bumVtepSm mcastHerVtepSm mcastVtepSm epreSm "
            "underlayMulticastSm herNextHopTableProgrammer vpLagEcmpProgrammer ");
}

TEST_F(Bindings, createObjectsUnderTheirNames) {
  std::string names;
  for (Kiln::Entity const* const entity : std::initializer_list<Kiln::Entity const*>{
           w.vxlanConfig().get(), w.vaneVxlanHwHerVtepConfigDir().get(), w.tunnelConfigDir().get(),
           w.tunnelStatusDir().get(), w.vxlanInfo().get(), w.vtepGroupConfigDir().get(), w.vtepGroupStatusDir().get(),
           w.qosTrustStatusAllLocal().get(), w.remoteVniToVlanStatus().get()}) {
    names += entity->name() + ' ';
  }
  EXPECT_EQ(names + w.vxlanVtiStatusSm()->name(),
            "vxlanConfig HwVtepConfigDir tunnelConfigDir tunnelStatusDir vxlanInfo vtepGroupConfigDir "
            "vtepGroupStatusDir trustStatusLocal  vxlanVtiStatusSm");
  for (auto const type : {Vane::vxlanTunnel_, Vane::vxlanMemberTunnel_, Vane::vxlanHerTunnel_}) {
    EXPECT_TRUE(w.hwTunnelStatusDir()->hwTunnelStatus(type)) << type;
  }
  EXPECT_TRUE(w.vaneVxlanHwHerSm()->initialized());
  EXPECT_TRUE(w.vxlanTunnelHelperSm()->initialized());
  EXPECT_TRUE(w.vxlanMemberTunnelHelperSm()->initialized());
}

/// What each tunnel programmer is given is this object's; only type, configuration and status are its own.
TEST_F(Bindings, areHandedToTheTunnelProgrammers) {
  for (auto const type : {Vane::vxlanTunnel_, Vane::vxlanMemberTunnel_}) {
    auto const& p = *w.hwTunnelProgrammer(type);
    EXPECT_EQ(p.tunnelType(), type);
    EXPECT_EQ(p.vxlanUnderlayFloodingHw(), w.vxlanUnderlayFloodingHw());
    EXPECT_EQ(p.encapIdBitmap(), w.hwTunnelProgrammer(Vane::vxlanTunnel_)->encapIdBitmap()) << "one pool";
    Entity const given[][2] = {
        {p.statewayEm(), w.statewayEm()},
        {p.fcsd(), w.fcsd()},
        {p.vxlanToL2State(), w.vxlanToL2State()},
        {p.virtualPortTableProgrammer(), w.virtualPortTableProgrammer()},
        {p.tunnelTermTableProgrammer(), w.tunnelTermTableProgrammer()},
        {p.nextHopTableProgrammer(), w.nextHopTableProgrammer()},
        {p.egrL3TunnelTablesProgrammer(), w.egrL3TunnelTablesProgrammer()},
        {p.underlayEcmpProgrammer(), w.underlayEcmpProgrammer()},
        {p.hwTunnelConfig(), w.hwTunnelConfigDir()->hwTunnelConfig(type)},
        {p.hwTunnelStatus(), w.hwTunnelStatusDir()->hwTunnelStatus(type)},
        {p.vxlanState(), w.vxlanState()},
        {p.bumVtepConfigDir(), w.bumVtepConfigDir()},
        {p.encapIdToBumVtepIpConfigDir(), w.encapIdToBumVtepIpConfigDir()},
        {p.qosTrustStatus(), w.qosTrustStatusAllLocal()},
        {p.vxlanConfigDir(), w.vxlanConfigDir()},
        {p.l3Oif1TableProgrammer(), w.l3Oif1TableProgrammer()},
        {p.evpnStatus(), w.evpnStatus()},
        {p.vxlanCapabilities(), w.vxlanCapabilities()},
        {p.floodUnderlayVlanToVtepListDir(), w.floodUnderlayVlanToVtepListDir()},
    };
    for (auto const& [is, wanted] : given) EXPECT_TRUE(is && is == wanted) << wanted->typeData().name();
  }
  auto const& pool = *w.hwTunnelProgrammer(Vane::vxlanTunnel_)->encapIdBitmap();
  EXPECT_EQ(pool.size(), 0x6000U);
}

TEST_F(Bindings, areTakenByTheCreatorsOfProgrammers) {
  auto const nextHops = (w.nextHopTableProgrammerDel(),
                         w.nextHopTableProgrammerIs(w.l3Oif2TableHelper(), Dovel::Ptr<TesselMcast::IpmcTable>(), true));
  auto const ports = (w.virtualPortTableProgrammerDel(), w.virtualPortTableProgrammerIs());
  Entity const taken[][2] = {
      {(w.tunnelTermTableProgrammerDel(), w.tunnelTermTableProgrammerIs())->vxlanConfigDir(), w.vxlanConfigDir()},
      {(w.egrL3TunnelTablesProgrammerDel(), w.egrL3TunnelTablesProgrammerIs())->vxlanConfigDir(), w.vxlanConfigDir()},
      {w.egrL3TunnelTablesProgrammer()->qosTrustStatus(), w.qosTrustStatusAllLocal()},
      {(w.l3Oif1TableProgrammerDel(), w.l3Oif1TableProgrammerIs())->fcsd(), w.fcsd()},
      {(w.underlayEcmpProgrammerDel(), w.underlayEcmpProgrammerIs())->nextHopTableProgrammer(), nextHops},
      {nextHops->routingStatus(), w.routingStatus()},
      {nextHops->vaneL3IntfTable(), w.vaneL3IntfTable()},
      {nextHops->l3Oif2TableHelper(), w.l3Oif2TableHelper()},
      {ports->vxlanToL2State(), w.vxlanToL2State()},
      {ports->vxlanCapabilities(), w.vxlanCapabilities()},
      {ports->dvpToVtepMapping(), w.dvpToVtepMapping()},
      {ports->tunnelIndexToVtepMapping(), w.tunnelIndexToVtepMapping()},
  };
  for (auto const& [is, wanted] : taken) EXPECT_TRUE(is && is == wanted) << wanted->typeData().name();
}

}  // namespace

}  // namespace FrameTest
