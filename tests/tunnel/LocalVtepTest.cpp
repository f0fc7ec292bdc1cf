#include <algorithm>

#include "tests/support/TunnelFixture.h"

namespace AgentTest {

namespace {

using testing::HasSubstr;
using testing::Not;

class LocalVtep : public OnChips {
 protected:
  void tunnelsOfBothTypes() {
    agent.tunnel(unicast, vtep(2)).via(uplink(1));
    agent.tunnel(unicast, vtep(3)).via(uplink(1));
    agent.tunnel(member, vtep(3)).via(uplink(1));
    agent.tunnel(member, vtep(4)).via(uplink(1));
  }
  std::string status() {
    auto const ofUnicast = agent.status(unicast);
    return ofUnicast + agent.status(member);
  }
  static constexpr char const* allStatus =
      "10.255.0.2 gen=1 tnl=#1 nh=#1 adj=101\n10.255.0.3 gen=1 tnl=#2 nh=#2 adj=101\n"
      "10.255.0.3 gen=1 tnl=#2 nh=#2 adj=101\n10.255.0.4 gen=1 tnl=#3 nh=#3 adj=101\n";
};
INSTANTIATE_TEST_SUITE_P(Chips, LocalVtep, testing::ValuesIn(chipKinds({"cascaded", "flat", "compact"})), kindName);

TEST_P(LocalVtep, thatArrivesMakesTheTunnelsThatWait) {
  auto const start = agent.chip();
  tunnelsOfBothTypes();
  EXPECT_EQ(status(), "");
  EXPECT_EQ(agent.chip(), start);
  agent.localVtep(vtep(1));
  EXPECT_EQ(status(), "") << "no UDP port yet";
  agent.udpPort(4789);
  EXPECT_EQ(status(), allStatus);
  if (GetParam().profile == "compact") return;
  agent.tunnel(unicast, vtep6(2)).via(uplink(1));
  EXPECT_EQ(status(), allStatus) << "of the other family";
  agent.localVtep(vtep6(1));
  EXPECT_THAT(agent.status(unicast), HasSubstr("fd00::2 gen=1 tnl=#4 nh=#3 adj=101\n"));
}

TEST_P(LocalVtep, withoutAPortNothingIsWrittenAhead) {
  agent.localVtep(vtep(1));
  auto const start = agent.table("VirtualPortTableMerged");
  agent.tunnel(unicast, vtep(2)).withoutRoute();
  agent.learning(true).learning(false);
  EXPECT_EQ(agent.table("VirtualPortTableMerged"), start);
  agent.tunnel(unicast, vtep(2)).via(uplink(1));
  agent.learning(true).learning(false);
  EXPECT_EQ(agent.status(unicast), "");
  agent.udpPort(4789);
  EXPECT_EQ(agent.status(unicast), "10.255.0.2 gen=1 tnl=#1 nh=#1 adj=101\n");
  EXPECT_THAT(agent.row(agent.overlayTable(), vtep(2)), HasSubstr("vpHandle=VirtualPortTableMerged[10.255.0.2]"));
}

TEST_P(LocalVtep, changesInPlace) {
  agent.localVtep(vtep(1)).udpPort(4789);
  tunnelsOfBothTypes();
  auto const before = status();
  agent.writes();
  agent.localVtep(vtep(9));
  EXPECT_EQ(status(), before) << "ids stay";
  EXPECT_THAT(agent.table("EgrL3Ipv4TunnelTable"), Not(HasSubstr("sip=10.255.0.1")));
  EXPECT_THAT(agent.table("EgrL3Ipv4TunnelTable"), HasSubstr("sip=10.255.0.9"));
  EXPECT_EQ(agent.table("L2TunnelIpv4DipTable"), "10.255.0.9: allowedPortsProfileIndex=1\n");
  auto const headers = GetParam().profile == "compact" ? "1" : "3";
  EXPECT_EQ(agent.writes(), std::string("VirtualPort1Table 3, VirtualPort2Table 3, L2TunnelIpv4DipTable 1, "
                                        "EgrL3Ipv4TunnelTable ") +
                                headers)
      << "one rewrite a VTEP, whatever types it has";
  agent.udpPort(8472);
  EXPECT_EQ(status(), before);
  EXPECT_THAT(agent.writes(), HasSubstr("VirtualPort1Table 4, VirtualPort2Table 4, ")) << "once for each type";
  EXPECT_THAT(agent.table("EgrL3Ipv4TunnelTable"), HasSubstr("udpDestPort=8472"));
}

TEST_P(LocalVtep, thatGoesLeavesTheTunnels) {
  agent.localVtep(vtep(1)).udpPort(4789);
  tunnelsOfBothTypes();
  auto const before = agent.chip();
  auto const statusBefore = status();
  agent.localVtep("");
  EXPECT_EQ(status(), statusBefore);
  agent.tunnel(unicast, vtep(5)).via(uplink(1));
  EXPECT_EQ(status(), statusBefore);
  agent.tunnel(unicast, vtep(5)).gone();
  agent.localVtep(vtep(1));
  EXPECT_EQ(agent.chip(), before);
}

class Settings : public Tunnels {};
INSTANTIATE_TEST_SUITE_P(Chips, Settings, testing::ValuesIn(chipKinds({"cascaded", "flat", "compact"})), kindName);

TEST_P(Settings, rewriteWhatTheyAreInAndNoMore) {
  agent.tunnel(unicast, vtep(2)).via(uplink(1));
  agent.tunnel(unicast, vtep(3)).via(uplink(1));
  auto const status = agent.status(unicast);
  auto const headers = GetParam().profile == "compact" ? "EgrL3Ipv4TunnelTable 1" : "EgrL3Ipv4TunnelTable 2";
  agent.writes();
  {
    Kiln::TraceCapture trace("HwTunnelProgrammerBase");
    agent.dscp(true);
    auto const passes = std::count_if(trace.lines().begin(), trace.lines().end(), [](auto const& line) {
      return line.find("programEgrL3TunnelTable:  srcIp: ") != std::string::npos;
    });
    EXPECT_EQ(passes, GetParam().profile == "compact" ? 1 : 2) << "a header that all share is built once";
  }
  EXPECT_EQ(agent.writes(), headers);
  agent.tos(7);
  EXPECT_EQ(agent.writes(), headers);
  EXPECT_THAT(agent.table("EgrL3Ipv4TunnelTable"), HasSubstr("tosBasePtr=7 outerDscpFromInner=3"));
  agent.tos(7).dscp(true);
  EXPECT_EQ(agent.writes(), "");
  agent.learning(true);
  EXPECT_EQ(agent.writes().find("Egr"), std::string::npos);
  EXPECT_THAT(agent.row("VirtualPortTableMerged", vtep(2)), HasSubstr("learnEnableA=1 learnEnableB=1"));
  EXPECT_EQ(agent.status(unicast), status);
}

TEST_P(Settings, ofLearningFollowTheObjectThatHoldsThem) {
  agent.tunnel(unicast, vtep(2)).via(uplink(1));
  auto const learns = [this] {
    return agent.row("VirtualPortTableMerged", vtep(2)).find("learnEnableA=1") != std::string::npos;
  };
  auto const info = Dovel::make<Vane::VXLAN::VaneVxlanInfo>();
  auto const status = Dovel::make<Vane::VXLAN::VaneGlobalVtiStatus>();
  status->dataPathLearningIs(true);
  wrapper().vxlanTunnelHelperSm()->vaneVxlanInfoIs(info);
  EXPECT_FALSE(learns());
  info->vaneGlobalVtiStatusIs(status);
  EXPECT_TRUE(learns());
  status->dataPathLearningIs(false);
  EXPECT_FALSE(learns());
}

TEST_P(Settings, ofTheSourcePortReachTheHeaders) {
  agent.tunnel(unicast, vtep(2)).via(uplink(1));
  for (auto const port : {std::uint16_t{49152}, std::uint16_t{50000}}) {
    auto wish = agent.wish();
    wish.udpSrcPort = port;
    wish.udpSrcPorts = 1024;
    agent.want(wish);
  }
  EXPECT_THAT(agent.table("EgrL3Ipv4TunnelTable"), HasSubstr("udpSrcPort=50000"));
}

}  // namespace

}  // namespace AgentTest
