// The VXLAN interfaces: addresses at which tunnels end, and what the rest of the agent sees of them.

#include "tests/support/TunnelFixture.h"
#include "tests/support/Watch.h"

namespace AgentTest {

using Meshal::Ip6Addr;
using Meshal::IpAddr;
using testing::HasSubstr;

IpAddr v4(std::string_view text) { return Meshal::IpGenAddr(text).v4Addr(); }
Ip6Addr v6(std::string_view text) { return Meshal::IpGenAddr(text).v6Addr(); }

/// An interface with an address in each role, its port, and a group of each family.
void configureAll(Vxlan::VtiStatus& vti) {
  vti.udpPortIs(4789);
  vti.srcAddrIs(v4("10.0.0.1"));
  vti.srcAddrV6Is(v6("2001:db8::1"));
  vti.mlagVtepAddrIs(v4("10.0.0.2"));
  vti.varpVtepAddrIs(v4("10.0.0.3"));
  vti.varpVtepAddr6Is(v6("2001:db8::3"));
  vti.mcastGrpDecapIs(v4("239.1.1.1"), true);
  vti.mcastGrpDecap6Is(v6("ff0e::1"), false);
}

/// The addresses at which tunnels end, in the order of their texts; one with its PHB setting on has a '+' behind it.
std::string endsOf(AgentWorld& agent) {
  agent.settle();
  std::istringstream rows(agent.table("L2TunnelIpv4DipTable") + agent.table("L2TunnelIpv6DipTable"));
  std::string text, row;
  while (std::getline(rows, row)) {
    text += (text.empty() ? "" : " ") + row.substr(0, row.find(": "));
    if (row.find("useOuterHeaderPhb=1") != row.npos) text += '+';
    if (row.find("allowedPortsProfileIndex=1") == row.npos) text += '?';
  }
  return text;
}

class Vtis : public OnWrapper {
 protected:
  TesselCentral::VxlanCapabilities& capabilities() const {
    return *agent.agent().state<TesselCentral::VxlanCapabilities>("hardware/tessel/centralStatus/vxlanCapabilities");
  }
  Vxlan::VxlanConfigDir& config() const { return *agent.agent().state<Vxlan::VxlanConfigDir>("vxlan/config"); }
  Vxlan::VtiStatusDir& vtis() const { return *agent.agent().state<Vxlan::VtiStatusDir>(Host::kVtiStatusPath); }
  Vxlan::VtiStatus& vti(std::string_view name = "Vxlan1") const { return *vtis().vtiStatusIs(Meshal::IntfId(name)); }
  std::string ends() { return endsOf(agent); }
  /// What the rest of the agent sees.
  std::string published() const {
    auto const& state = *wrapper().vxlanState();
    auto const& slice = *wrapper().vxlanSliceConfig();
    std::ostringstream text;
    text << state.localVtep() << ' ' << state.localVtep6() << ' ' << state.mlagVtepAddr() << ' ' << state.vArpVtepAddr()
         << ' ' << state.vArpVtepAddr6() << ' ' << state.udpPort() << " | " << slice.localVtepAddr() << ' '
         << slice.vArpVtepAddr() << ' ' << slice.vArpVtepAddr6() << ' ' << slice.vxlanUdpPort();
    return text.str();
  }
};
INSTANTIATE_TEST_SUITE_P(Chips, Vtis, testing::ValuesIn(chipKinds({"cascaded"})), kindName);

TEST_P(Vtis, giveTheAgentTheirAddressesAndTakeThemAlong) {
  configureAll(vti());
  std::string const before = published();
  EXPECT_EQ(before, "10.0.0.1 2001:db8::1 10.0.0.2 10.0.0.3 2001:db8::3 4789 | 10.0.0.1 10.0.0.3 2001:db8::3 4789");
  std::string const all = "10.0.0.1 10.0.0.2 10.0.0.3 239.1.1.1 2001:db8::1 2001:db8::3 ff0e::1";
  EXPECT_EQ(ends(), all);
  agent.restart();
  EXPECT_EQ(published(), before);
  EXPECT_EQ(ends(), all);
  vti().varpVtepAddrIs(IpAddr());
  vti().varpVtepAddr6Is(Ip6Addr());
  vtis().vtiStatusDelAll();
  EXPECT_EQ(ends(), "");
  EXPECT_EQ(published(), "0.0.0.0 :: 0.0.0.0 0.0.0.0 :: 4789 | 0.0.0.0 0.0.0.0 :: 4789");
}

TEST_P(Vtis, endTunnelsBeforeTheyBeginAndSetTheirPortFirst) {
  auto const other = Dovel::make<Vxlan::VtiStatus>(Meshal::IntfId("Vxlan1"));
  configureAll(*other);
  std::string seen;
  Support::Watch const watch(*wrapper().vxlanState(), [&](Dovel::Change const& change) {
    using State = TesselL3Common::TesselVxlanState;
    auto const& config = *wrapper().vxlanSliceConfig();
    auto const slice = ", slice " + Kiln::toText(config.localVtepAddr()) + ':' + Kiln::toText(config.vxlanUdpPort());
    if (change.id == State::udpPortId) seen += "port" + slice + "; ";
    if (change.id == State::localVtepId) seen += agent.table("L2TunnelIpv4DipTable").substr(0, 8) + slice + "; ";
    if (change.id == State::vArpVtepAddrId) seen += "varp, slice " + Kiln::toText(config.vArpVtepAddr()) + "; ";
    if (change.id == State::vArpVtepAddr6Id) seen += "varp6, slice " + Kiln::toText(config.vArpVtepAddr6()) + "; ";
  });
  vtis().vtiStatusIs(other);
  EXPECT_EQ(seen, "port, slice 0.0.0.0:0; 10.0.0.1, slice 0.0.0.0:4789; varp, slice 0.0.0.0; varp6, slice ::; ")
      << "the slice follows";
  auto const same = Dovel::make<Vxlan::VtiStatus>(Meshal::IntfId("Vxlan1"));
  configureAll(*same);
  agent.writes();
  Kiln::TraceCapture const traces("TesselVxlanVtiStatusSm");
  vtis().vtiStatusIs(same);
  EXPECT_TRUE(traces.contains("newVtepIp: 10.0.0.1 oldVtepIp: 10.0.0.1 are the same"));
  EXPECT_EQ(agent.writes(), "");
}

TEST_P(Vtis, mayBeReplacedAndMayGoWhileTheyAreSetUp) {
  auto const other = [] { return Dovel::make<Vxlan::VtiStatus>(Meshal::IntfId("Vxlan1")); };
  auto& former = vti();
  Dovel::Ptr<Vxlan::VtiStatus> const kept(&former);
  former.srcAddrIs(v4("10.0.0.1"));
  auto const next = other();
  next->srcAddrIs(v4("10.0.0.9"));
  vtis().vtiStatusIs(next);
  former.srcAddrIs(v4("10.0.0.77"));
  EXPECT_EQ(ends(), "10.0.0.9");
  // The rest of a set-up that the departure overtook would put back what the cleanup has removed.
  Support::Watch const leave(*wrapper().vxlanState(), [&](Dovel::Change const& change) {
    if (change.id == TesselL3Common::TesselVxlanState::udpPortId) vtis().vtiStatusDel(Meshal::IntfId("Vxlan1"));
  });
  auto const last = other();
  configureAll(*last);
  vtis().vtiStatusIs(last);
  EXPECT_EQ(ends(), "");
}

TEST_P(Vtis, keepAnAddressUntilItsLastRoleHasGone) {
  vti().srcAddrIs(v4("10.0.0.1"));
  vti().mlagVtepAddrIs(v4("10.0.0.1"));
  vti().srcAddrIs(v4("10.0.0.2"));
  EXPECT_EQ(ends(), "10.0.0.1 10.0.0.2");
  vti().varpVtepAddrIs(v4("10.0.0.1"));
  vti().mlagVtepAddrIs(IpAddr());
  EXPECT_EQ(ends(), "10.0.0.1 10.0.0.2");
  vti().varpVtepAddrIs(IpAddr());
  EXPECT_EQ(ends(), "10.0.0.2");
  vti().srcAddrV6Is(v6("2001:db8::1"));
  vti().varpVtepAddr6Is(v6("2001:db8::1"));
  vti().srcAddrV6Is(Ip6Addr());
  EXPECT_EQ(ends(), "10.0.0.2 2001:db8::1");
}

TEST_P(Vtis, keepAGroupUntilItsLastInterfaceHasLeftIt) {
  for (auto const* name : {"Vxlan1", "Vxlan2"}) {
    vti(name).mcastGrpDecapIs(v4("239.1.1.1"), false);
    vti(name).mcastGrpDecap6Is(v6("ff0e::1"), true);
  }
  vti().varpVtepAddrIs(v4("239.1.1.1"));
  for (auto const* name : {"Vxlan1", "Vxlan2"}) {
    EXPECT_EQ(ends(), "239.1.1.1 ff0e::1");
    vti(name).mcastGrpDecapDel(v4("239.1.1.1"));
    vti(name).mcastGrpDecap6Del(v6("ff0e::1"));
  }
  EXPECT_EQ(ends(), "239.1.1.1") << "still in a role";
  vti().varpVtepAddrIs(IpAddr());
  EXPECT_EQ(ends(), "");
}

TEST_P(Vtis, followNoGroupThatIsNoneOrThatTheChipCannotFollow) {
  for (auto const* addr : {"10.0.0.5", "0.0.0.0", "224.0.0.5"}) vti().mcastGrpDecapIs(v4(addr), true);
  for (auto const* addr : {"2001:db8::5", "::", "ff02::5"}) vti().mcastGrpDecap6Is(v6(addr), true);
  vti().mcastGrpDecapDelAll();
  EXPECT_EQ(ends(), "");
  capabilities().underlayMcastSupportedIs(false);
  vti().mcastGrpDecapIs(v4("239.1.1.1"), true);
  EXPECT_EQ(ends(), "");
  vti().varpVtepAddrIs(v4("239.1.1.1"));
  vti().varpVtepAddrIs(IpAddr());
  EXPECT_EQ(ends(), "") << "no group holds the address";
  capabilities().underlayMcastSupportedIs(true);
  vti().mcastGrpDecapDel(v4("239.1.1.1"));
  EXPECT_EQ(ends(), "") << "a group that was never followed may be removed";
}

TEST_P(Vtis, knowWhichRangesOfSourcePortsAreGood) {
  auto const& state = *wrapper().vxlanState();
  vti().udpSrcPortIs(5000);
  for (auto const& [length, valid] : {std::pair(1, true), {0, false}, {16383, true}, {16384, false}, {65535, false}}) {
    vti().udpSrcPortLengthIs(static_cast<std::uint16_t>(length));
    EXPECT_EQ(state.udpSrcPortValid(), valid) << length;
  }
  vti().udpSrcPortIs(6000);
  EXPECT_EQ(state.udpSrcPort(), 5000) << "a range that isn't good leaves the port";
}

TEST_P(Vtis, followThePhbSettingAndTheCentralFlags) {
  configureAll(vti());
  agent.writes();
  config().dscpPropagationIs(true);
  EXPECT_EQ(agent.writes(), "");
  config().outerHeaderPhbIs(true);
  EXPECT_EQ(ends(), "10.0.0.1+ 10.0.0.2 10.0.0.3+ 239.1.1.1 2001:db8::1+ 2001:db8::3+ ff0e::1");
  auto& central = *wrapper().tesselCentralVxlanState();
  auto& slice = *wrapper().vxlanSliceConfig();
  auto const flags = [&] {
    return std::vector{slice.vxlanEnabled(), slice.vxlanNdSnooping(), slice.controllerClientL3Mode()};
  };
  EXPECT_THAT(flags(), testing::ElementsAre(false, false, false));
  central.vxlanEnabledIs(true);
  EXPECT_THAT(flags(), testing::ElementsAre(true, false, false));
  central.vxlanNdSnoopingIs(true);
  central.vxlanEnabledIs(false);
  EXPECT_THAT(flags(), testing::ElementsAre(false, true, false));
  central.controllerClientL3ModeIs(true);
  slice.controllerClientL3ModeIs(false);
  slice.vxlanEnabledIs(true);
  agent.restart();
  EXPECT_THAT(flags(), testing::ElementsAre(false, true, true));
}

class VtiChips : public testing::TestWithParam<Asic::Completion> {};
INSTANTIATE_TEST_SUITE_P(Modes, VtiChips, testing::Values(Asic::Completion::direct, Asic::Completion::deferred));

TEST_P(VtiChips, mayHaveRoomForOneEnd) {
  AgentWorld agent({"cascaded", GetParam(), {{"L2TunnelIpv4DipTable", "1"}, {"L2TunnelIpv6DipTable", "1"}}});
  auto& vti = *agent.agent().state<Vxlan::VtiStatusDir>(Host::kVtiStatusPath)->vtiStatusIs(Meshal::IntfId("Vxlan1"));
  auto const full = [](char const* family, char const* addr) {
    return std::string("TESSEL_VXLAN_") + family +
           "_DIP_RESOURCE_FULL Hardware resources are insufficient to program VXLAN destination IP for local VTEP IP " +
           addr + ".\n";
  };
  for (unsigned const n : {1, 2}) {
    vti.srcAddrIs(v4("10.0.0." + std::to_string(n)));
    vti.srcAddrV6Is(v6("2001:db8::" + std::to_string(n)));
    EXPECT_EQ(endsOf(agent), "10.0.0." + std::to_string(n) + " 2001:db8::" + std::to_string(n))
        << "the former one is removed first";
  }
  EXPECT_EQ(agent.messages(), "");
  vti.varpVtepAddrIs(v4("10.0.0.3"));
  vti.varpVtepAddr6Is(v6("2001:db8::3"));
  agent.settle();
  EXPECT_EQ(agent.messages(), full("IPV4", "10.0.0.3") + full("IPV6", "2001:db8::3"));
  vti.srcAddrIs(IpAddr());
  vti.srcAddrV6Is(Ip6Addr());
  EXPECT_EQ(endsOf(agent), "10.0.0.3 2001:db8::3");
}

TEST_P(VtiChips, mayHaveNoRoomForVxlan) {
  AgentWorld agent({"cascaded", GetParam(), {{"supportsVxlan", "false"}}});
  auto const vtis = agent.agent().state<Vxlan::VtiStatusDir>(Host::kVtiStatusPath);
  auto const message = testing::StartsWith("TESSEL_PROFILE_VXLAN_UNSUPPORTED Hardware");
  EXPECT_THAT(agent.messages(), message);
  vtis->vtiStatusIs(Meshal::IntfId("Vxlan2"));
  EXPECT_THAT(agent.messages(), message);
  vtis->vtiStatusDel(Meshal::IntfId("Vxlan2"));
  EXPECT_EQ(agent.messages(), "");
  agent.restart();
  EXPECT_THAT(agent.messages(), message) << "of one that was present before";
  agent.together([](AgentWorld& a) { a.localVtep(vtep(1)).udpPort(4789); });
  agent.tunnel(unicast, vtep(2)).via(uplink(1));
  EXPECT_THAT(agent.status(unicast), HasSubstr("10.255.0.2 gen=1 tnl=#1 nh=#1")) << "it is served all the same";
  auto const mounter = Dovel::cast<TesselVxlan::TesselVxlanMounter>(agent.agent().mounter());
  mounter->vxlanMounterSmWrapper()->vxlanVtiStatusSm()->kilnDoZombieReactors(true);
  vtis->vtiStatusIs(Meshal::IntfId("Vxlan3"));
  EXPECT_EQ(agent.messages(), "") << "nothing is heard after the end";
}

TEST_P(VtiChips, mayKeyHeadersByHalfOfAnIpv6Destination) {
  AgentWorld agent({"cascaded", GetParam(), {{"ipv6DipUpper64Only", "true"}}});
  agent.together([](AgentWorld& a) { a.localVtep(vtep6(1)).udpPort(4789); });
  agent.tunnel(unicast, vtep6(2)).via(uplink(1));
  agent.tunnel(unicast, vtep6(3)).via(uplink(1));
  EXPECT_EQ(agent.table("EgrL3Ipv6TunnelTable"),
            "fd00::1 > fd00::: sip=fd00::1 outerDscpFromInner=1 hdrSelectA=3 ttl=64 dip=fd00:: hdrSelectB=4 "
            "udpDestPort=4789\n");
}

}  // namespace AgentTest
