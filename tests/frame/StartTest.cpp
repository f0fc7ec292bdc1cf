#include "host/agent/Agent.h"
#include "platform/kiln/Trace.h"
#include "tests/frame/FrameWorld.h"

namespace FrameTest {

namespace {

using TesselL3Common::TesselVxlanBootStatus;
using testing::HasSubstr;
using testing::Not;
using Wrapper = TesselVxlan::TesselVxlanMounterSmWrapper;

constexpr char const* everything = "vti unicast member multicast ";

TEST(Start, bringsTheTablesUpInOrderAndWritesTheirFixedRows) {
  struct {
    char const* profile;
    bool serves;  ///< The chip has every table that forwarding needs.
    char const* tables;
  } const chips[] = {
      {"cascaded", true,
       "AllowedPortBitmapProfile 1, VirtualPortTableMerged 2, RL2TunnelDefaultNetworkSvp 2, L2TunnelIpv4SipTable 0, "
       "L2TunnelIpv6SipTable 0, EgrL3Oif2 0, L3NextHop2Table 2, EcmpGroup1Table 0, EcmpMember1Table 0, "
       "L2TunnelIpv4DipTable 0, L2TunnelIpv6DipTable 0, EgrL3Ipv4TunnelTable 1, EgrL3Ipv6TunnelTable 0, "
       "L2TunnelVnIdTable 0, VxlanV4UnderlayMcastTable 0, EpreCcbeNextHopRemapTable 0, "
       "EcmpIndirectionTableConfigReg 1, IngL3EcmpMember0Table 0, "},
      {"flat", true,
       "AllowedPortBitmapProfile 1, VirtualPortTableMerged 2, L2TunnelIpv4SipTable 0, L2TunnelIpv6SipTable 0, "
       "EgrL3Oif2 0, L3NextHop2Table 2, VxlanEgrL3Oif1Table 0, EcmpGroup1Table 0, EcmpMember1Table 0, "
       "L2TunnelIpv4DipTable 0, L2TunnelIpv6DipTable 0, EgrL3Ipv4TunnelTable 1, EgrL3Ipv6TunnelTable 0, "
       "L2TunnelVnIdTable 0, VxlanV4UnderlayMcastTable 0, EcmpIndirectionTableConfigReg 1, L3NextHop1Table 0, "},
      {"compact", false,
       "AllowedPortBitmapProfile 1, VirtualPortTableMerged 2, RL2TunnelDefaultNetworkSvp 2, L2TunnelIpv4SipTable 0, "
       "EgrL3Oif2 0, L3NextHop2Table 2, L2TunnelIpv4DipTable 0, EgrL3Ipv4TunnelTable 1, EgrL3Ipv6TunnelTable 0, "
       "L2TunnelVnIdTable 0, VxlanV4UnderlayMcastTable 0, EcmpIndirectionTableConfigReg 1, "
       "IngL3EcmpMember0Table 0, "}};
  for (auto const& chip : chips) {
    Kiln::TraceCapture trace("TesselVxlanMounterSmWrapper");
    FrameWorld world(chip.profile);
    world.mountsComplete().start().tunnelSmIsReady();
    EXPECT_EQ(world.tables(), chip.tables) << chip.profile;
    EXPECT_EQ(world.running(), everything) << chip.profile;
    EXPECT_EQ(world.wrapper().runningState()->running(), chip.serves) << chip.profile;
    EXPECT_EQ(trace.contains("FLAGS : EgrL3=true uecmp=false dvp=true"), !chip.serves) << chip.profile;
  }
}

TEST(Gates, theOneThatOpensLastStartsTheFeature) {
  std::string rows[2];
  for (bool const wordFirst : {false, true}) {
    FrameWorld world;
    world.mountsComplete().tunnelWanted();
    if (wordFirst) world.tunnelSmIsReady();
    EXPECT_EQ(world.running(), "");
    EXPECT_EQ(world.tables(), "");
    world.start();
    if (!wordFirst) {
      EXPECT_EQ(world.running(), "");
      EXPECT_THAT(world.rows(), Not(HasSubstr("10.255.0."))) << "fixed rows only";
      world.tunnelSmIsReady();
    }
    EXPECT_EQ(world.running(), everything);
    rows[wordFirst ? 1 : 0] = world.rows();
  }
  EXPECT_THAT(rows[0], HasSubstr("10.255.0.2"));
  EXPECT_EQ(rows[0], rows[1]);
}

TEST(Gates, startNothingTwice) {
  FrameWorld world;
  world.mountsComplete().start().tunnelSmIsReady().tunnelWanted();
  auto& wrapper = world.wrapper();
  auto const vti = wrapper.vxlanVtiStatusSm();
  auto const programmer = wrapper.hwTunnelProgrammer(Vane::vxlanTunnel_);
  auto const writes = world.chip().writes();
  wrapper.vxlanBootStatus()->vaneTunnelSmReadyIs(false);
  wrapper.vxlanBootStatus()->vaneTunnelSmReadyIs(true);
  auto const other = Dovel::make<TesselVxlanBootStatus>("other");
  other->vaneTunnelSmReadyIs(true);
  wrapper.vxlanBootStatusIs(other);
  EXPECT_EQ(wrapper.vxlanVtiStatusSm(), vti);
  EXPECT_EQ(wrapper.hwTunnelProgrammer(Vane::vxlanTunnel_), programmer);
  EXPECT_EQ(world.chip().writes(), writes);
}

TEST(Gates, keepTheTunnelProgrammersBack) {
  Kiln::TraceCapture trace("TesselVxlanMounterSmWrapper");
  auto const lastTrace = [&] { return trace.lines().back(); };
  FrameWorld world;
  auto& w = world.mountsComplete().wrapper();
  w.createVxlanTunnelHelperSm();
  EXPECT_EQ(lastTrace(), "createVxlanTunnelHelperSm: Returning TBNI");
  world.start();
  w.createVxlanTunnelHelperSm();
  EXPECT_EQ(lastTrace(), "createVxlanTunnelHelperSm: Returning VTSNI");
  void (Wrapper::*const dels[])() = {&Wrapper::virtualPortTableProgrammerDel, &Wrapper::tunnelTermTableProgrammerDel,
                                     &Wrapper::nextHopTableProgrammerDel, &Wrapper::egrL3TunnelTablesProgrammerDel};
  for (auto const del : dels) {
    world.wrapperAgain().start();
    (world.wrapper().*del)();
    world.wrapper().createVxlanTunnelHelperSm();
    EXPECT_EQ(lastTrace(), "createVxlanTunnelHelperSm: Returning TBNI");
  }
  EXPECT_EQ(world.running(), "");
}

/// The traces of the root object while an agent starts, a line each.
std::string traced(Host::Agent::Ready ready) {
  Kiln::TraceCapture trace("TesselVxlanMounterSmWrapper");
  Host::Agent::Options options;
  options.ready = ready;
  Host::Agent const agent(options);
  std::string text;
  for (auto const& line : trace.lines()) text += line.substr(line.find(": ") + 2) + '\n';
  return text;
}

TEST(Gates, ofAnAgentOpenInEitherOrder) {
  std::string const bound = "egrL3TunnelDefaultInit not ready\ndoStartVxlanSms\nvaneTunnelSm not ready\n";
  std::string const tables =
      "doBindEntities\ncleanupHitfulRestart\n egrL3TunnelTableHandle: EgrL3Ipv4TunnelTable[ > ]\n"
      " initialising underlayMcast table \n";
  std::string const started = "doStartVxlanSms\nCalling createVxlanTunnelHelperSm\n";
  std::string const serves = " vxlanSmRunningState is set to true \n";
  EXPECT_EQ(traced(Host::Agent::Ready::fromLoop),
            bound + tables + "doStartVxlanSms\nvaneTunnelSm not ready\n" + serves + started);
  EXPECT_EQ(traced(Host::Agent::Ready::atOnce),
            bound + "doStartVxlanSms\nTable init not ready\n" + tables + started + serves);
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

}  // namespace

}  // namespace FrameTest
