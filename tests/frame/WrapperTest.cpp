#include <functional>

#include "platform/kiln/AttributeDefinitions.h"
#include "platform/kiln/Trace.h"
#include "tests/frame/FrameWorld.h"

namespace FrameTest {

namespace {

using Dovel::Ptr;
using TesselVxlan::HwTunnelProgrammerBase;

/// Calls `last` when it is destroyed.
class LastProgrammer final : public HwTunnelProgrammerBase {
 public:
  LastProgrammer(TesselVxlan::TunnelProgrammerInputs const& inputs, std::function<void()> last)
      : HwTunnelProgrammerBase(inputs), last_(std::move(last)) {}
  ~LastProgrammer() override { last_(); }

 private:
  std::function<void()> last_;
};

TEST(Wrapper, releasesTheTunnelProgrammersLast) {
  FrameWorld world;
  auto& w = world.mountsComplete().start().tunnelSmIsReady().wrapper();
  TesselVxlan::TunnelProgrammerInputs inputs;
  inputs.statewayEm = w.statewayEm();
  inputs.fcsd = w.fcsd();
  inputs.vxlanToL2State = w.vxlanToL2State();
  inputs.tunnelType = Vane::vxlanBum_;
  std::vector<Ptr<Dovel::Node const>> const others{w.vxlanStatus(), w.tunnelConfigDir(), w.vxlanVtiStatusSm(),
                                                   w.vxlanTunnelHelperSm(), w.l2TunnelVnIdTable()};
  std::string uses;
  w.hwTunnelProgrammerIs(Vane::vxlanBum_, Dovel::make<LastProgrammer>(inputs, [&, mounter = &world.mounter()] {
                           uses = mounter->isZombie() ? "of a zombie's wrapper: " : "";
                           for (auto const& other : others) uses += std::to_string(other->useCount());
                         }));
  world.mounterGone();
  EXPECT_EQ(uses, "of a zombie's wrapper: 11111");
}

TEST(Wrapper, passesNotificationAndItsEndToTheStateMachinesInIt) {
  FrameWorld world;
  world.mountsComplete();
  world.state<TesselCentral::VxlanCapabilities>("hardware/tessel/centralStatus/vxlanCapabilities")
      ->mcastTunnelSupportedIs(true);
  auto& w = world.start().tunnelSmIsReady().wrapper();
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

TEST(Wrapper, ofAMounterIsLiveUntilItIsReplacedOrTheMounterEnds) {
  FrameWorld world;
  Ptr<TesselVxlan::TesselVxlanMounterSmWrapper> const first(&world.mountsComplete().start().wrapper());
  EXPECT_TRUE(first->hasNotificationActive());
  world.wrapperAgain();
  EXPECT_FALSE(first->hasNotificationActive());
  EXPECT_FALSE(first->isZombie());
  Ptr<TesselVxlan::TesselVxlanMounterSmWrapper> const second(&world.wrapper());
  EXPECT_TRUE(second->hasNotificationActive());
  world.mounterGone();
  EXPECT_FALSE(second->hasNotificationActive());
}

/// Clears and sets the boot status's flag as soon as a local VTEP is published.
class Restless final : public Kiln::Sm {
  KILN_BASE_TYPE(Restless)

 public:
  explicit Restless(FrameWorld const& world)
      : boot_(world.local<TesselL3Common::TesselVxlanBootStatus>(Host::kBootStatusPath)),
        state_(*this, world.local<TesselL3Common::TesselVxlanState>(Host::kVxlanStatePath), Kiln::SubscribeOnly{}) {}

 private:
  void stateDispatch(Dovel::Change const& change) {
    if (change.id != TesselL3Common::TesselVxlanState::localVtepId) return;
    boot_->vaneTunnelSmReadyIs(false);
    boot_->vaneTunnelSmReadyIs(true);
  }
  Ptr<TesselL3Common::TesselVxlanBootStatus> boot_;
  Kiln::Watch<TesselL3Common::TesselVxlanState, &Restless::stateDispatch> state_;
};
KILN_DESCRIBE(Restless)

TEST(Wrapper, startsOnceAlsoWhenAGateMovesInsideTheStart) {
  FrameWorld world;
  world.mountsComplete().tunnelWanted().start();
  auto const restless = Dovel::make<Restless>(world);
  Kiln::TraceCapture trace("TesselVxlanMounterSmWrapper");
  world.tunnelSmIsReady();
  EXPECT_EQ(std::ranges::count(trace.lines(), "doStartVxlanSms: Calling createVxlanTunnelHelperSm"), 1);
  trace.clear();
  world.wrapper().tablesInitializedIs(true);
  EXPECT_THAT(trace.lines(), testing::IsEmpty()) << "an equal value starts nothing";
  EXPECT_THAT(world.rows(), testing::HasSubstr("10.255.0.2"));
}

TEST(Wrapper, followsTheTrustStatusOfTheSlice) {
  FrameWorld world;
  auto& w = world.mountsComplete().start().wrapper();
  auto const slice = world.state<Kiln::Dir>("qos/hardware/tessel/trust/status/slice");
  auto const status = slice->createEntity<TesselCommon::Qos::TrustStatus>("1");
  status->tosBasePtrIs(5);
  EXPECT_EQ(w.qosTrustStatusAllLocal()->tosBasePtr(), 5);
  w.hasNotificationActiveIs(false);
  status->tosBasePtrIs(6);
  EXPECT_EQ(w.qosTrustStatusAllLocal()->tosBasePtr(), 5);
}

/// Notes the flags of the fixed rows as they change.
class Flags final : public Kiln::Sm {
  KILN_BASE_TYPE(Flags)

 public:
  explicit Flags(FrameWorld const& world)
      : state_(*this, world.local<TesselL3Common::TesselVxlanState>(Host::kVxlanStatePath), Kiln::SubscribeOnly{}) {}
  std::string seen;

 private:
  void stateDispatch(Dovel::Change const& change) {
    using State = TesselL3Common::TesselVxlanState;
    if (change.id == State::nextHop2DefaultInitId) seen += state_->nextHop2DefaultInit() ? "nextHop2+ " : "nextHop2- ";
    if (change.id == State::egrL3TunnelDefaultInitId) {
      seen += state_->egrL3TunnelDefaultInit() ? "header+ " : "header- ";
    }
    if (change.id == State::vpDefaultInitId) seen += state_->vpDefaultInit() ? "ports+ " : "ports- ";
  }
  Kiln::Watch<TesselL3Common::TesselVxlanState, &Flags::stateDispatch> state_;
};
KILN_DESCRIBE(Flags)

TEST(Wrapper, setsTheFlagsOfTheFixedRowsInOrder) {
  FrameWorld world;
  world.mountsComplete();
  world.stores().local->doMount<TesselL3Common::TesselVxlanState>(std::string(Host::kVxlanStatePath));
  auto const flags = Dovel::make<Flags>(world);
  world.start();
  EXPECT_EQ(std::exchange(flags->seen, ""), "nextHop2+ header+ ports+ ");
  world.wrapperAgain().start();
  EXPECT_EQ(flags->seen, "nextHop2- header- ports- nextHop2+ header+ ports+ ");
}

TEST(Wrapper, writesTheDefaultRowsWithTheCentralFlagAndTheDefaultHeader) {
  for (bool const flag : {false, true}) {
    FrameWorld world;
    world.mountsComplete();
    world.state<TesselCentral::VxlanState>("hardware/tessel/tunnel/vxlan/vxlanState")->controllerClientL3ModeIs(flag);
    auto const& state = *world.start().wrapper().vxlanState();
    EXPECT_TRUE(state.nextHop2DefaultInit() && state.egrL3TunnelDefaultInit() && state.vpDefaultInit());
    std::string const learns = flag ? " defaultLearnEnable=1" : "";
    EXPECT_EQ(
        AgentTest::tableOf(world.rows(), "VirtualPortTableMerged"),
        "127.0.0.1: vp1FlagA=1 vp1FlagB=1 vp1FlagD=1" + learns +
            " vpClassCode=1 sbrCodeA=34 egrL3TunnelTableHandle=EgrL3Ipv4TunnelTable[ > ] sbrCodeB=16 sbrCodeC=34\n"
            ": vp1FlagA=1 vp1FlagB=1 vp1FlagC=1 vp1FlagD=1" +
            learns +
            " vpClassCode=3 capabilityFlag=1 egrL3TunnelTableHandle=EgrL3Ipv4TunnelTable[ > ] sbrCodeB=16 "
            "vp2FlagA=1\n");
  }
}

}  // namespace

}  // namespace FrameTest
