// What a start asks for, binds and creates, in order, as tests/data/frame says it.

#include <boost/preprocessor.hpp>
#include <fstream>

#include "tests/frame/FrameWorld.h"
#include "tests/support/Watch.h"

namespace FrameTest {

using Wrapper = TesselVxlan::TesselVxlanMounterSmWrapper;
using Entity = Dovel::Ptr<Dovel::Node const>;
struct Named {
  char const* name;
  Entity is;
};
/// The attributes of an object, a `Named` each.
#define NAMED_1(r, object, attribute) Named{BOOST_PP_STRINGIZE(attribute), (object).attribute()},
#define NAMED(object, ...) BOOST_PP_SEQ_FOR_EACH(NAMED_1, object, BOOST_PP_VARIADIC_TO_SEQ(__VA_ARGS__))

void expectWritten(std::string const& file, std::string const& text) {
  std::ifstream in(TESSEL_SOURCE_DIR "/tests/data/frame/" + file);
  EXPECT_EQ(text, std::string(std::istreambuf_iterator<char>(in), {}));
}

/// A world whose feature runs, with everything that a capability can add.
class Bindings : public testing::Test {
 protected:
  /// The path of an entity in its store; else the name that it has itself.
  std::string place(Entity const& entity) const {
    auto const& stores = world.stores();
    for (auto const& path : stores.stateway->paths()) {
      if (stores.stateway->getEntity(path) == entity) return "state:" + path;
    }
    for (auto const& path : stores.local->paths()) {
      if (stores.local->getEntity(path) == entity) return "local:" + path;
    }
    for (auto const& [path, mount] : stores.shmem->mounts()) {
      if (stores.shmem->getEntity(path) == entity) return "shmem:" + path;
    }
    auto const named = Dovel::cast<Kiln::Entity const>(entity);
    return named ? "name:" + named->name() : "unknown";
  }
  std::string places(std::vector<Named> const& all) const {
    std::string text;
    for (auto const& [name, is] : all) text += std::string(name) + ' ' + place(is) + '\n';
    return text + '\n';
  }
  FrameWorld world;
  std::string order;
  Wrapper& w = started();

 private:
  Wrapper& started() {
    world.mountsComplete().capabilitiesAre(true, true);
    auto& wrapper = world.wrapper();
    Support::Watch const watch(wrapper, [&](Dovel::Change const& change) {
      for (auto const& attribute : wrapper.typeData().ownAttributes()) {
        if (attribute.id == change.id) order.append(attribute.name).append("\n");
      }
    });
    world.start().tunnelSmIsReady();
    return wrapper;
  }
};

TEST_F(Bindings, areInOrderTheEntitiesAtTheirPaths) {
  auto text = order + '\n';
  text += places(
      {NAMED(w, vxlanToL2State, vxlanBootStatus, tesselCentralVxlanState, vlanStatusDir, vxlanState, hwTunnelConfigDir,
             hwTunnelStatusDir, routeDestinationTableDir, ecmpNhTableDir, bumVtepConfigDir, encapIdToBumVtepIpConfigDir,
             vxlanConfig) NAMED(*w.vxlanConfig(), vlanMappingDir) NAMED(*w.vxlanStatus(), vxlanL3StatusEntryDir)
           NAMED(w, vaneVxlanHwHerVtepConfigDir, vaneVxlanHwHerVtepStatusDir, vtiStatusDir, tunnelConfigDir,
                 tunnelStatusDir, vlanIntfConfigDir, vfiCapabilityStatus, bridgingHwCapabilities, vlanVfiDir,
                 helperVniConfig, helperVniStatus, vxlanInfo)
               NAMED(*w.vxlanInfo(), vaneGlobalVtiStatus, vaneActivatedVti)
                   NAMED(w, irbRemoteVniToVlanStatus, staticRemoteVniToVlanStatus, remoteVniToVlanStatus,
                         vxlanHwStatusDir, bridgingConfig, vxlanConfigDir, vxlanTunnelConfig, vxlanTunnelStatus,
                         vxlanMemberTunnelConfig, vxlanMemberTunnelStatus, vtepGroupConfigDir, vtepGroupStatusDir,
                         vaneVtepGroupConfigDir, vaneVtepGroupStatusDir, vxlanSliceConfig, l2RibFloodSet, ecnConfig,
                         vxlanVtepStatusDir, qosTrustStatusDir, qosTrustStatusAllLocal, vxlanCapabilities,
                         routingStatus, vaneL3IntfTable, evpnStatus, mrouteVxlanDecapTable, epreNextHopRemapTable,
                         dvpToVtepMapping, tunnelIndexToVtepMapping)});
  for (auto const type : {Vane::vxlanTunnel_, Vane::vxlanMemberTunnel_, Vane::vxlanHerTunnel_}) {
    text +=
        place(w.tunnelConfigDir()->tunnelConfig(type)) + ' ' + place(w.tunnelStatusDir()->tunnelStatus(type)) + '\n';
    EXPECT_TRUE(w.hwTunnelStatusDir()->hwTunnelStatus(type));
  }
  expectWritten("bindings.txt", text);
  EXPECT_TRUE(world.local<Kiln::Dir>("vxlan/swTable/shared/destination/herNh1"));
  auto const mcast = Vane::vxlanMcastTunnel_;
  EXPECT_EQ(w.hwMcastTunnelConfig(),
            world.local<Vane::HwTunnelConfigDir>("l3/hwMcastTunnelConfigDir")->hwTunnelConfig(mcast));
  EXPECT_EQ(w.hwMcastTunnelStatus(),
            world.local<Vane::HwTunnelStatusDir>("l3/hwMcastTunnelStatusDir")->hwTunnelStatus(mcast));
  EXPECT_EQ(w.vxlanVtiStatusSm()->name(), "vxlanVtiStatusSm");
  EXPECT_TRUE(w.vaneVxlanHwHerSm()->initialized() && w.vxlanTunnelHelperSm()->initialized() &&
              w.vxlanMemberTunnelHelperSm()->initialized());
}

TEST(Mounts, areAskedForInOrder) {
  FrameWorld world;
  world.mountsAsked();
  std::string text;
  for (auto const& mount : world.mountGroup().mounts()) {
    text += mount.mode() + ' ' + mount.path() + ' ' + mount.typeName() + '\n';
  }
  EXPECT_TRUE(world.mountGroup().closed());
  for (std::uint32_t const wanted : {1, 2}) {
    for (auto const& table : world.mounter().swTablesForRecovery()) {
      auto const& types = table.programmingTypes.types();
      if (std::ranges::find(types, wanted) != types.end())
        text += std::to_string(wanted) + ' ' + std::string(table.type->name()) + '\n';
    }
  }
  expectWritten("mounts.txt", text);
}

TEST(Mounts, ofSharedMemoryFollowTheCapabilities) {
  std::string const remoteVnis =
      "multicast/irb/remoteVniToVlanStatus/Vxlan1 table 1, multicast/static/remoteVniToVlanStatus/Vxlan1 table 1, ";
  for (auto const& [mcast, underlay] : {std::pair(false, false), {true, false}, {false, true}}) {
    FrameWorld world;
    world.mountsComplete().capabilitiesAre(mcast, underlay).start();
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

TEST(Tables, areBroughtUpInOrderWithTheirFixedRows) {
  std::string text;
  for (auto const* profile : {"cascaded", "flat", "compact"}) {
    FrameWorld world(profile);
    world.mountsComplete().start().tunnelSmIsReady();
    text += std::string(profile) + ": " + world.running() +
            (world.wrapper().runningState()->running() ? "serves\n" : "lacks a table\n") + world.tables();
  }
  expectWritten("tables.txt", text);
}

}  // namespace FrameTest
