#include <gtest/gtest.h>

#include "OverlayWorld.h"
#include "platform/kiln/AttributeDefinitions.h"
#include "platform/kiln/Trace.h"

namespace {

using namespace OverlayTest;
using Meshal::Ip6Addr;
using Meshal::IpAddr;

IpAddr v4(std::string_view text) { return ip(text).v4Addr(); }
Ip6Addr v6(std::string_view text) { return ip(text).v6Addr(); }

/// Notes what the tunnels would see at each change of the shared state.
class Watcher final : public Kiln::Sm {
  KILN_BASE_TYPE(Watcher)

 public:
  explicit Watcher(OverlayWorld& world) : world_(world), state_(*this, world.state, Kiln::SubscribeOnly{}) {}
  std::string seen;

 private:
  void stateDispatch(Dovel::Change const& change) {
    using State = TesselL3Common::TesselVxlanState;
    auto const slice = Kiln::toText(world_.slice->localVtepAddr()) + ':' + Kiln::toText(world_.slice->vxlanUdpPort());
    if (change.id == State::udpPortId) seen += "port, slice " + slice + "; ";
    if (change.id == State::localVtepId) seen += "vtep, ends " + world_.ends() + ", slice " + slice + "; ";
  }
  OverlayWorld& world_;
  Kiln::Watch<TesselL3Common::TesselVxlanState, &Watcher::stateDispatch> state_;
};
KILN_DESCRIBE(Watcher)

/// Takes a group away again as soon as it comes.
class Contrarian final : public Kiln::Sm {
  KILN_BASE_TYPE(Contrarian)

 public:
  explicit Contrarian(Dovel::Ptr<Vxlan::VtiStatus> vti) : vti_(*this, std::move(vti), Kiln::SubscribeOnly{}) {}

 private:
  void vtiDispatch(Dovel::Change const& change) {
    if (change.id == Vxlan::VtiStatus::mcastGrpDecapId) vti_->mcastGrpDecapDel(change.keyAs<IpAddr>());
  }
  Kiln::Watch<Vxlan::VtiStatus, &Contrarian::vtiDispatch> vti_;
};
KILN_DESCRIBE(Contrarian)

/// An interface with an address in each role, its port, and a group of each family.
void configure(Vxlan::VtiStatus& vti) {
  vti.udpPortIs(4789);
  vti.srcAddrIs(v4("10.0.0.1"));
  vti.srcAddrV6Is(v6("2001:db8::1"));
  vti.mlagVtepAddrIs(v4("10.0.0.2"));
  vti.varpVtepAddrIs(v4("10.0.0.3"));
  vti.varpVtepAddr6Is(v6("2001:db8::3"));
  vti.mcastGrpDecapIs(v4("239.1.1.1"), true);
  vti.mcastGrpDecap6Is(v6("ff0e::1"), false);
}

/// What the rest of the agent sees.
std::string published(OverlayWorld const& world) {
  auto const& state = *world.state;
  auto const& slice = *world.slice;
  return Kiln::toText(state.localVtep()) + " " + Kiln::toText(state.localVtep6()) + " " +
         Kiln::toText(state.mlagVtepAddr()) + " " + Kiln::toText(state.vArpVtepAddr()) + " " +
         Kiln::toText(state.vArpVtepAddr6()) + " " + Kiln::toText(state.udpPort()) + " | " +
         Kiln::toText(slice.localVtepAddr()) + " " + Kiln::toText(slice.vArpVtepAddr()) + " " +
         Kiln::toText(slice.vArpVtepAddr6()) + " " + Kiln::toText(slice.vxlanUdpPort());
}

/// The state machine of the interfaces, on a chip of each way of completion.
class Vtis : public testing::TestWithParam<Asic::Completion> {
 protected:
  OverlayWorld world{{.completion = GetParam()}};
  Dovel::Ptr<TesselVxlan::TesselVxlanVtiStatusSm> sm = world.vtiSmIs();
};
INSTANTIATE_TEST_SUITE_P(Chips, Vtis, testing::Values(Asic::Completion::direct, Asic::Completion::deferred));

TEST_P(Vtis, giveTheAgentTheirAddressesWhetherTheyComeBeforeOrAfterTheStart) {
  configure(world.vti());
  OverlayWorld early({.completion = GetParam()});
  configure(early.vti());
  auto const earlySm = early.vtiSmIs();
  for (auto* const of : {&world, &early}) {
    EXPECT_EQ(of->ends(), "10.0.0.1 10.0.0.2 10.0.0.3 239.1.1.1 2001:db8::1 2001:db8::3 ff0e::1");
    EXPECT_EQ(published(*of),
              "10.0.0.1 2001:db8::1 10.0.0.2 10.0.0.3 2001:db8::3 4789 | 10.0.0.1 10.0.0.3 2001:db8::3 4789");
  }
  EXPECT_EQ(early.show("L2TunnelIpv6DipTable").substr(0, 19), "2001:db8::1 row 0: ") << "one row each";
}

TEST_P(Vtis, endTunnelsBeforeTheyBeginAndSayTheirPortFirst) {
  auto const other = Dovel::make<Vxlan::VtiStatus>(Meshal::IntfId("Vxlan1"));
  configure(*other);
  auto const watcher = Dovel::make<Watcher>(world);
  world.vtis->vtiStatusIs(other);
  EXPECT_EQ(watcher->seen, "port, slice 0.0.0.0:0; vtep, ends 10.0.0.1, slice 0.0.0.0:4789; ")
      << "the slice follows the state";
}

TEST(VtiStatusSm, removesAFormerEndBeforeTheNewOne) {
  OverlayWorld world({.rows = {{"L2TunnelIpv4DipTable", 1}}});
  auto const sm = world.vtiSmIs();
  for (auto const* addr : {"10.0.0.1", "10.0.0.2"}) {
    world.vti().srcAddrIs(v4(addr));
    EXPECT_EQ(world.messages(), "") << "there is room for one";
    EXPECT_EQ(world.ends(), addr);
  }
}

TEST_P(Vtis, moveWhatChangesAndNothingElse) {
  world.vti().srcAddrIs(v4("10.0.0.1"));
  world.writes();
  Kiln::TraceCapture traces("TesselVxlan*");
  // The same again, by an interface that comes with the address of the one before.
  auto const again = Dovel::make<Vxlan::VtiStatus>(Meshal::IntfId("Vxlan1"));
  again->srcAddrIs(v4("10.0.0.1"));
  world.vtis->vtiStatusIs(again);
  EXPECT_TRUE(traces.contains("newVtepIp: 10.0.0.1 oldVtepIp: 10.0.0.1 are the same"));
  EXPECT_FALSE(traces.contains("DipEntry"));
  again->srcAddrIs(v4("10.0.0.9"));
  EXPECT_EQ(world.writes(), 1);
  EXPECT_EQ(world.ends(), "10.0.0.9");
  again->srcAddrIs(IpAddr());
  EXPECT_EQ(world.writes(), 0);
  EXPECT_EQ(world.ends(), "");
  EXPECT_EQ(world.state->localVtep(), ip("0.0.0.0"));
}

TEST_P(Vtis, keepAnAddressUntilItsLastRoleHasGone) {
  auto& vti = world.vti();
  vti.srcAddrIs(v4("10.0.0.1"));
  vti.mlagVtepAddrIs(v4("10.0.0.1"));
  vti.srcAddrIs(v4("10.0.0.2"));
  EXPECT_EQ(world.ends(), "10.0.0.1 10.0.0.2");
  vti.varpVtepAddrIs(v4("10.0.0.1"));
  vti.mlagVtepAddrIs(IpAddr());
  EXPECT_EQ(world.ends(), "10.0.0.1 10.0.0.2");
  vti.varpVtepAddrIs(IpAddr());
  EXPECT_EQ(world.ends(), "10.0.0.2");
  vti.srcAddrV6Is(v6("2001:db8::1"));
  vti.varpVtepAddr6Is(v6("2001:db8::1"));
  vti.srcAddrV6Is(Ip6Addr());
  EXPECT_EQ(world.ends(), "10.0.0.2 2001:db8::1");
}

TEST_P(Vtis, keepAGroupUntilItsLastInterfaceHasLeftIt) {
  auto& first = world.vti("Vxlan1");
  auto& second = world.vti("Vxlan2");
  for (auto* vti : {&first, &second}) {
    vti->mcastGrpDecapIs(v4("239.1.1.1"), false);
    vti->mcastGrpDecap6Is(v6("ff0e::1"), true);
  }
  first.varpVtepAddrIs(v4("239.1.1.1"));
  EXPECT_EQ(world.ends(), "239.1.1.1 ff0e::1");
  first.mcastGrpDecapDel(v4("239.1.1.1"));
  first.mcastGrpDecap6Del(v6("ff0e::1"));
  EXPECT_EQ(world.ends(), "239.1.1.1 ff0e::1");
  second.mcastGrpDecapDel(v4("239.1.1.1"));
  second.mcastGrpDecap6Del(v6("ff0e::1"));
  EXPECT_EQ(world.ends(), "239.1.1.1") << "still in a role";
  first.varpVtepAddrIs(IpAddr());
  EXPECT_EQ(world.ends(), "");
}

TEST_P(Vtis, followNoGroupThatIsNoneOrThatTheChipCannotFollow) {
  auto& vti = world.vti();
  for (auto const* addr : {"10.0.0.5", "0.0.0.0", "224.0.0.5"}) vti.mcastGrpDecapIs(v4(addr), true);
  for (auto const* addr : {"2001:db8::5", "::", "ff02::5"}) vti.mcastGrpDecap6Is(v6(addr), true);
  vti.mcastGrpDecapDelAll();
  EXPECT_EQ(world.ends(), "");
  world.capabilities->underlayMcastSupportedIs(false);
  Kiln::TraceCapture traces("TesselVxlanVtiStatusSm");
  vti.mcastGrpDecapIs(v4("239.1.1.1"), true);
  EXPECT_TRUE(traces.contains("vxlanUnderlayMcastSupported = false, returning"));
  EXPECT_EQ(world.ends(), "");
  vti.varpVtepAddrIs(v4("239.1.1.1"));
  vti.varpVtepAddrIs(IpAddr());
  EXPECT_EQ(world.ends(), "") << "no group holds the address";
  world.capabilities->underlayMcastSupportedIs(true);
  vti.mcastGrpDecapDel(v4("239.1.1.1"));
  EXPECT_EQ(world.ends(), "") << "a group that was never followed may leave";
}

TEST_P(Vtis, surviveAGroupThatGoesBeforeItsComingIsHeard) {
  auto& vti = world.vti();
  sm = nullptr;
  auto const contrarian = Dovel::make<Contrarian>(Dovel::Ptr<Vxlan::VtiStatus>(&vti));
  sm = world.vtiSmIs();
  vti.mcastGrpDecapIs(v4("239.1.1.1"), true);
  EXPECT_EQ(world.ends(), "");
}

TEST_P(Vtis, knowWhichRangesOfSourcePortsAreGood) {
  auto& vti = world.vti();
  vti.udpSrcPortIs(5000);
  for (auto const& [length, valid] : {std::pair(1, true), {0, false}, {16383, true}, {16384, false}, {65535, false}}) {
    vti.udpSrcPortLengthIs(static_cast<std::uint16_t>(length));
    EXPECT_EQ(world.state->udpSrcPortValid(), valid) << length;
    EXPECT_EQ(world.state->udpSrcPort(), 5000);
  }
  vti.udpSrcPortIs(6000);
  EXPECT_EQ(world.state->udpSrcPort(), 5000) << "a range that isn't good leaves the port";
}

TEST_P(Vtis, takeTheirAddressesAndGroupsAlong) {
  configure(world.vti());
  world.vti().varpVtepAddrIs(IpAddr());
  world.vti().varpVtepAddr6Is(Ip6Addr());
  world.vtis->vtiStatusDel(Meshal::IntfId("Vxlan1"));
  EXPECT_EQ(world.ends(), "");
  EXPECT_TRUE(world.state->localVtep().isUnspecified());
  EXPECT_TRUE(world.state->localVtep6().isUnspecified());
  EXPECT_TRUE(world.state->mlagVtepAddr().isUnspecified());
}

TEST_P(Vtis, followThePhbSetting) {
  configure(world.vti());
  world.config->outerHeaderPhbIs(true);
  EXPECT_EQ(world.ends(), "10.0.0.1+ 10.0.0.2 10.0.0.3+ 239.1.1.1 2001:db8::1+ 2001:db8::3+ ff0e::1");
  world.writes();
  world.config->dscpPropagationIs(true);
  EXPECT_EQ(world.writes(), 0);
}

TEST_P(Vtis, findTheirEndsAgainAfterAStartThatKeptTheState) {
  configure(world.vti());
  auto const before = world.ends();
  sm = nullptr;
  world.term = nullptr;
  world.programmersIs();
  EXPECT_EQ(world.ends(), "");
  sm = world.vtiSmIs();
  EXPECT_EQ(world.ends(), before);
}

TEST_P(Vtis, areNotHeardAfterTheEnd) {
  configure(world.vti());
  auto const before = published(world) + world.ends();
  sm->kilnDoZombieReactors(true);
  world.vti().srcAddrIs(v4("10.0.0.77"));
  world.config->outerHeaderPhbIs(true);
  world.central->vxlanEnabledIs(true);
  EXPECT_EQ(published(world) + world.ends(), before);
  EXPECT_FALSE(world.slice->vxlanEnabled());
  sm = nullptr;
  world.vtis->vtiStatusDelAll();
  EXPECT_EQ(published(world) + world.ends(), before);
}

TEST(VtiStatusSm, copiesTheFlagsOfTheCentre) {
  OverlayWorld world({});
  world.central->vxlanEnabledIs(true);
  auto const sm = world.vtiSmIs();
  EXPECT_TRUE(world.slice->vxlanEnabled()) << "also what stood before";
  world.central->vxlanNdSnoopingIs(true);
  EXPECT_TRUE(world.slice->vxlanNdSnooping());
  EXPECT_FALSE(world.slice->controllerClientL3Mode());
  world.central->controllerClientL3ModeIs(true);
  world.central->vxlanEnabledIs(false);
  EXPECT_TRUE(world.slice->controllerClientL3Mode());
  EXPECT_FALSE(world.slice->vxlanEnabled());
}

TEST(VtiStatusSm, doesWithoutAFamilyThatTheChipLacks) {
  OverlayWorld world({.ipv6Ends = false});
  auto const sm = world.vtiSmIs();
  configure(world.vti());
  EXPECT_EQ(world.ends(), "10.0.0.1 10.0.0.2 10.0.0.3 239.1.1.1");
  world.vti().mcastGrpDecap6DelAll();
  world.vtis->vtiStatusDelAll();
  EXPECT_EQ(world.ends(), "10.0.0.3");
}

TEST(VxlanUnsupportedLogger, tellsOfEachInterfaceThatHasNoRoom) {
  std::string const message =
      "TESSEL_PROFILE_VXLAN_UNSUPPORTED: Hardware resources required for VXLAN entries are not configured for the "
      "current system profile.\n";
  for (bool const supported : {true, false}) {
    std::string const told = supported ? "" : message;
    OverlayWorld world({.supportsVxlan = supported});
    world.vti("Vxlan1");
    EXPECT_EQ(world.messages(), "");
    auto const sm = world.vtiSmIs();
    EXPECT_EQ(world.messages(), told) << "of one that stood before";
    world.vti("Vxlan2");
    EXPECT_EQ(world.messages(), told);
    world.vtis->vtiStatusDelAll();
    EXPECT_EQ(world.messages(), "");
    sm->kilnDoZombieReactors(true);
    world.vti("Vxlan3");
    EXPECT_EQ(world.messages(), "");
  }
}

}  // namespace
