#include <functional>

#include "platform/kiln/Trace.h"
#include "tests/frame/FrameWorld.h"
#include "tests/support/Watch.h"

namespace FrameTest {

using Dovel::Ptr;
using testing::HasSubstr;
using testing::Not;
using Boot = TesselL3Common::TesselVxlanBootStatus;
using State = TesselL3Common::TesselVxlanState;
using Wrapper = TesselVxlan::TesselVxlanMounterSmWrapper;

constexpr char const* everything = "vti unicast member multicast ";

TEST(Gates, theOneThatOpensLastStartsTheFeature) {
  std::string rows[2];
  for (bool const wordFirst : {false, true}) {
    Kiln::TraceCapture trace("TesselVxlanMounterSmWrapper");
    FrameWorld world;
    world.mountsComplete().tunnelWanted();
    if (wordFirst) world.tunnelSmIsReady();
    EXPECT_EQ(world.running() + world.tables(), "");
    world.start();
    if (!wordFirst) {
      EXPECT_EQ(world.running(), "");
      EXPECT_THAT(world.rows(), Not(HasSubstr("10.255.0."))) << "fixed rows only";
      world.tunnelSmIsReady();
    }
    EXPECT_EQ(world.running(), everything);
    rows[wordFirst ? 1 : 0] = world.rows();
    auto const lineOf = [&](std::string_view text) {
      return std::ranges::find_if(trace.lines(), [&](auto const& line) { return line.ends_with(text); });
    };
    EXPECT_EQ(lineOf("Calling createVxlanTunnelHelperSm") < lineOf("vxlanSmRunningState is set to true "), wordFirst);
  }
  EXPECT_THAT(rows[0], HasSubstr("10.255.0.2"));
  EXPECT_EQ(rows[0], rows[1]);
}

TEST(Gates, startNothingTwice) {
  FrameWorld world;
  world.mountsComplete().tunnelWanted().start();
  auto const boot = world.local<Boot>(Host::kBootStatusPath);
  Support::Watch const restless(*world.local<State>(Host::kVxlanStatePath), [&](Dovel::Change const& change) {
    if (change.id != State::localVtepId) return;
    boot->vaneTunnelSmReadyIs(false);
    boot->vaneTunnelSmReadyIs(true);
  });
  Kiln::TraceCapture trace("TesselVxlanMounterSmWrapper");
  world.tunnelSmIsReady();
  boot->vaneTunnelSmReadyIs(false);
  boot->vaneTunnelSmReadyIs(true);
  auto const other = Dovel::make<Boot>("other");
  other->vaneTunnelSmReadyIs(true);
  world.wrapper().vxlanBootStatusIs(other);
  EXPECT_EQ(std::ranges::count(trace.lines(), "doStartVxlanSms: Calling createVxlanTunnelHelperSm"), 1);
  trace.clear();
  world.wrapper().tablesInitializedIs(true);
  EXPECT_THAT(trace.lines(), testing::IsEmpty()) << "an equal value starts nothing";
}

TEST(Gates, keepTheTunnelProgrammersBack) {
  Kiln::TraceCapture trace("TesselVxlanMounterSmWrapper");
  FrameWorld world;
  auto const refused = [&](char const* why) {
    world.wrapper().createVxlanTunnelHelperSm();
    EXPECT_EQ(trace.lines().back(), std::string("createVxlanTunnelHelperSm: Returning ") + why);
  };
  world.mountsComplete();
  refused("TBNI");
  world.start();
  refused("VTSNI");
  EXPECT_EQ(world.running(), "");
}

TEST(Stop, afterAnyStepLeavesNothing) {
  for (unsigned steps = 0; steps <= 4; ++steps) {
    SCOPED_TRACE(steps);
    FrameWorld world;
    if (steps >= 1) world.mountsAsked();
    if (steps >= 2) world.mountsComplete();
    if (steps >= 3) world.start();
    if (steps >= 4) world.tunnelSmIsReady().tunnelWanted();
  }
}

TEST(Wrapper, passesNotificationAndItsEndToTheStateMachinesInIt) {
  FrameWorld world;
  auto& w = world.mountsComplete().capabilitiesAre(true, false).start().tunnelSmIsReady().wrapper();
  Ptr<Dovel::Node> const nested[] = {w.remoteVniToSBDVlanMergeSm(), w.l3McastEvpnStatusSm(), w.qosTrustStatusSm()};
  auto const shown = [&] {
    std::string text;
    for (auto const& sm : nested) text += sm->isZombie() ? 'z' : sm->hasNotificationActive() ? 'a' : '-';
    return text;
  };
  EXPECT_EQ(shown(), "aaa");
  w.hasNotificationActiveIs(false);
  EXPECT_EQ(shown(), "---");
  w.hasNotificationActiveIs(true);
  EXPECT_EQ(shown(), "aaa");
  nested[0]->hasNotificationActiveIs(false);
  nested[1]->kilnDoZombieReactors(true);
  w.hasNotificationActiveIs(true);
  w.kilnDoZombieReactors(false);
  EXPECT_EQ(shown(), "-za") << "an equal value is not passed on";
  w.kilnDoZombieReactors(true);
  EXPECT_EQ(shown(), "zzz");
  EXPECT_TRUE(w.isZombie());
  w.kilnDoZombieReactors(false);
  EXPECT_EQ(shown(), "-aa");
  world.wrapperGone();
  EXPECT_EQ(shown(), "zzz");
}

TEST(Wrapper, isLiveUntilItIsReplacedOrTheMounterEnds) {
  FrameWorld world;
  Ptr<Wrapper> const first(&world.mountsComplete().start().wrapper());
  EXPECT_TRUE(first->hasNotificationActive());
  Ptr<Wrapper> const second(&world.wrapperAgain().wrapper());
  EXPECT_FALSE(first->hasNotificationActive() || first->isZombie());
  EXPECT_TRUE(second->hasNotificationActive());
  world.mounterGone();
  EXPECT_FALSE(second->hasNotificationActive());
}

TEST(Wrapper, setsTheFlagsOfTheFixedRowsInOrder) {
  FrameWorld world;
  world.mountsComplete();
  auto const state = world.stores().local->doMount<State>(std::string(Host::kVxlanStatePath));
  std::string seen;
  Support::Watch const flags(*state, [&](Dovel::Change const& change) {
    if (change.id == State::nextHop2DefaultInitId) seen += state->nextHop2DefaultInit() ? "nextHop2+ " : "nextHop2- ";
    if (change.id == State::egrL3TunnelDefaultInitId) seen += state->egrL3TunnelDefaultInit() ? "header+ " : "header- ";
    if (change.id == State::vpDefaultInitId) seen += state->vpDefaultInit() ? "ports+ " : "ports- ";
  });
  world.start();
  EXPECT_EQ(std::exchange(seen, ""), "nextHop2+ header+ ports+ ");
  world.wrapperAgain().start();
  EXPECT_EQ(seen, "nextHop2- header- ports- nextHop2+ header+ ports+ ");
}

TEST(Wrapper, writesADefaultRemapEntryThatIsWantedBeforeTheStart) {
  FrameWorld world;
  auto const state = world.mountsComplete().stores().local->doMount<State>(std::string(Host::kVxlanStatePath));
  state->vxlanDefaultEpreEnabledIs(true);
  state->vxlanDefaultEpreReadyIs(true);
  EXPECT_THAT(world.start().tunnelSmIsReady().tables(), HasSubstr("EpreCcbeNextHopRemapTable 1\n"));
}

TEST(Wrapper, writesTheDefaultRowsWithTheCentralFlag) {
  FrameWorld world;
  world.mountsComplete();
  world.state<TesselCentral::VxlanState>("hardware/tessel/tunnel/vxlan/vxlanState")->controllerClientL3ModeIs(true);
  EXPECT_THAT(AgentTest::tableOf(world.start().rows(), "VirtualPortTableMerged"),
              testing::ContainsRegex("127.0.0.1: .*defaultLearnEnable=1.*\n: .*defaultLearnEnable=1"));
}

}  // namespace FrameTest
