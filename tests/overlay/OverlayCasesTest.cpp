// Mappings of VNIs, VTEP groups, multicast routes of the underlay and congestion marks, from the state to the rows.

#include "tests/overlay/OverlayPlay.h"
#include "tests/support/Cases.h"

namespace AgentTest {

class OverlayCases : public testing::TestWithParam<char const*> {};
INSTANTIATE_TEST_SUITE_P(Files, OverlayCases, testing::Values("mappings", "groups", "routes", "marks", "messages"));

// The first line of a case names the chip.
TEST_P(OverlayCases, endAsTheyShould) {
  for (auto const& [given, result] : Support::cases(std::string("overlay/") + GetParam() + ".txt")) {
    for (auto const completion : {Asic::Completion::direct, Asic::Completion::deferred}) {
      SCOPED_TRACE(testing::Message() << given[0] << (completion == Asic::Completion::direct ? " direct" : " deferred")
                                      << '\n'
                                      << fmt::format("{}", fmt::join(given, "\n")));
      OverlayPlay play(given[0], completion);
      for (std::size_t n = 1; n < given.size(); ++n) play.tell(given[n]);
      EXPECT_EQ(play.take(), result);
    }
  }
}

/// A local and a remote mapping of VNI 10010: the VLAN of each, 0 without one.
struct Wanted {
  unsigned local = 0;
  unsigned remote = 0;
};

std::string wantedText(Wanted const& wanted) {
  auto const [local, remote] = wanted;
  auto const row = local != 0 ? local : remote;
  return (row != 0 ? fmt::format("vfi 10010={} vni", row) : "vfi vni") +
         (local != 0 ? fmt::format(" {}=10010 local {}=10010", local, local) : "") +
         (remote != 0 ? fmt::format(" remote 10010={}{}", remote, local != 0 ? "(pending)" : "") : "") +
         (row != 0 ? fmt::format(" driver 10010={}", row) : "");
}

// Whatever the order in which they are added, changed and removed.
TEST(ContendingMappings, leaveWhatIsWanted) {
  for (auto const completion : {Asic::Completion::direct, Asic::Completion::deferred}) {
    OverlayPlay play("cascaded", completion);
    auto const become = [&](Wanted& now, Wanted const& next) {
      if (next.local != now.local && now.local != 0) play.mapLocal(now.local, 0);
      if (next.local != now.local && next.local != 0) play.mapLocal(next.local, 10010);
      if (next.remote != now.remote) play.mapRemote(10010, next.remote);
      now = next;
      play.world().settle();
    };
    for (unsigned path = 0; path < 256; ++path) {
      Wanted now;
      for (unsigned step = path, n = 0; n < 4; ++n, step /= 4) {
        auto next = now;
        auto& changed = step % 2 == 0 ? next.local : next.remote;
        // 0, 10 and 20 in a circle, one way or the other.
        changed = (changed + (step % 4 < 2 ? 10 : 20)) % 30;
        become(now, next);
        ASSERT_EQ(play.vnis(), wantedText(now)) << "path " << path << " step " << n;
      }
      become(now, {});
      ASSERT_EQ(play.vnis(), wantedText({})) << "path " << path;
    }
  }
}

// The first chip brings the tables, and finds the configuration as it is by then.
TEST(Marks, waitForAChip) {
  Host::World const world("cascaded", Asic::Completion::direct);
  auto const trust = TesselCommon::Qos::trustStatusFactory("trust");
  auto const config = Dovel::make<Vxlan::EcnConfig>("ecn");
  LogicalFap::LogicalFapId const first(0), second(1);
  auto const info = world.fcsd->logicalFap(first);
  world.fcsd->logicalFapDel(first);
  auto const sm = TesselVxlan::tesselVxlanECNSmFactory(world.stores.stateway, world.fcsd, config, trust);
  Kiln::TraceCapture trace("TesselVxlanECNSm");
  config->enabledIs(true);
  EXPECT_TRUE(trace.contains(" sm is not initialized "));
  EXPECT_EQ(sm->flexQosIngEcn(), nullptr);
  world.fcsd->logicalFapIs(second, info);
  EXPECT_EQ(sm->flexQosIngEcn()->entry({1, 3, 1, 0}).ecn.value(), 3);
  EXPECT_EQ(sm->flexQoSEgrEcn6Table()->entrys(), 9U);
  auto const table = sm->flexQosIngEcn();
  trace.clear();
  trust->tosBasePtrIs(3);
  EXPECT_TRUE(trace.lines().empty());
  world.fcsd->logicalFapDel(second);
  world.fcsd->logicalFapIs(first, info);
  EXPECT_EQ(sm->flexQosIngEcn(), table);
}

}  // namespace AgentTest
