// The statuses of tunnels that have a version, and the set-up of the replication engine.

#include "TesselVxlan/overlay/BumVtepSm.h"
#include "platform/kiln/Json.h"
#include "platform/kiln/Trace.h"
#include "tests/support/TunnelFixture.h"
#include "tests/support/Watch.h"

namespace AgentTest {

using Meshal::IntfId;
using Meshal::IpGenAddr;
using testing::HasSubstr;

/// The publisher alone, between state of its own.
class FloodStatus : public testing::Test {
 protected:
  ~FloodStatus() override { stop(); }

  void start(bool floodsInHardware = false) {
    sm = TesselVxlan::bumVtepSmFactory(config, status, records, lists, vlans, floodsInHardware);
    sm->hasNotificationActiveIs(true);
  }
  void stop() { sm = nullptr; }
  void tunnel(unsigned n, Hops const& hops = {}) {
    auto const entry = Dovel::make<Vane::HwTunnelConfigEntry>(Vane::floodTunnelKey(address(n)));
    entry->nextHopEntryListIs(Dovel::make<Vane::NextHopEntryList>(0, entriesOf(hops)));
    config->hwTunnelConfigListIs(entry);
  }
  void gone(unsigned n) { config->hwTunnelConfigListDel(Vane::floodTunnelKey(address(n))); }
  Dovel::Ptr<TesselL3Common::TesselVxlanBumVtepConfig> record(unsigned n) {
    return records->bumVtepConfigIs(address(n), TesselL3Common::EncapId(4095 + n));
  }
  void newVersion(unsigned n) { record(n)->versionIs(record(n)->version() + 1); }
  /// "2:1+1 3:2": the version of each tunnel, by the last part of its address, and how many next hops it has.
  std::string shown() const {
    std::map<std::string, std::string> byAddress;
    for (auto const& entry : status->tunnelStatusColl()) {
      auto const& nextHop = entry->hwNextHopStatusEntry();
      auto const text = Kiln::toText(entry->tunnelKey().dst());
      auto const hops = nextHop.nextHopEntryList() ? nextHop.nextHopEntryList()->nextHopEntry().size() : 0;
      byAddress[text.substr(9)] =
          Kiln::toText(nextHop.hwNextHopId()) + (hops == 0 ? "" : "+" + Kiln::toText(std::uint64_t{hops}));
    }
    std::string text;
    for (auto const& [n, version] : byAddress) text += (text.empty() ? "" : " ") + n + ':' + version;
    return text;
  }
  static IpGenAddr address(unsigned n) { return IpGenAddr(vtep(n)); }

  Dovel::Ptr<Vane::HwTunnelConfig> config = Vane::hwTunnelConfigFactory(Vane::vxlanBum_);
  Dovel::Ptr<Vane::HwTunnelStatus> status = Vane::hwTunnelStatusFactory(Vane::vxlanBum_);
  Dovel::Ptr<TesselL3Common::TesselVxlanBumVtepConfigDir> records =
      Dovel::make<TesselL3Common::TesselVxlanBumVtepConfigDir>("records");
  Dovel::Ptr<TesselL3Common::FloodUnderlayVlanToVtepListDir> lists =
      Dovel::make<TesselL3Common::FloodUnderlayVlanToVtepListDir>("lists");
  Dovel::Ptr<Bridging::VlanStatusDir> vlans = Dovel::make<Bridging::VlanStatusDir>("vlans");
  Dovel::Ptr<TesselVxlan::BumVtepSm> sm;
};

TEST_F(FloodStatus, takesUpWhatIsPresent) {
  for (unsigned n = 2; n <= 5; ++n) tunnel(n, {1});
  record(2)->nextHopsIs(IntfId("Ethernet1"), {}, {});
  record(2)->nextHopsIs(IntfId("Ethernet2"), {}, {});
  record(3);
  record(4)->nextHopsIs(IntfId(), {}, {});
  record(6)->nextHopsIs(IntfId("Ethernet1"), {}, {});
  config->hwInitIs(5);
  config->hwCleanupIs(3);
  EXPECT_EQ(shown(), "");
  start();
  EXPECT_EQ(shown(), "2:2+1 3:1+1 4:1+1 5:1+1") << "once more for a VTEP with a port";
  EXPECT_EQ(status->hwInit(), 5);
  EXPECT_EQ(status->hwCleanup(), 3);
}

TEST_F(FloodStatus, countsTheChangesOfATunnel) {
  start();
  tunnel(2);
  EXPECT_EQ(shown(), "2:1");
  record(2);
  EXPECT_EQ(shown(), "2:1") << "a record without next hops is no news";
  newVersion(2);
  newVersion(3);
  EXPECT_EQ(shown(), "2:2") << "no tunnel, no status";
  tunnel(3);
  newVersion(3);
  EXPECT_EQ(shown(), "2:2 3:2") << "a record may be first";
  gone(3);
  tunnel(2, {1, 2});
  EXPECT_EQ(shown(), "2:3+2");
  records->bumVtepConfigDel(address(2));
  EXPECT_EQ(shown(), "2:4+2");
  records->bumVtepConfigIs(record(2));
  newVersion(2);
  EXPECT_EQ(shown(), "2:5+2");
  gone(2);
  newVersion(2);
  EXPECT_EQ(shown(), "");
  tunnel(2, {1});
  EXPECT_EQ(shown(), "2:1+1") << "the count ends with the tunnel";
  auto const other = Dovel::make<Vane::HwTunnelConfigEntry>(Vane::TunnelKey{{}, address(4), 0, 1, {}});
  config->hwTunnelConfigListIs(other);
  newVersion(4);
  EXPECT_EQ(shown(), "2:1+1 4:1") << "a tunnel of another key has no record";
  Kiln::TraceCapture const trace("BumVtepSm");
  status->tunnelStatusDel(Vane::floodTunnelKey(address(2)));
  gone(2);
  EXPECT_TRUE(trace.contains(" tunnel status already deleted for "));
  EXPECT_TRUE(sm->versionColl().size() == 1);
}

TEST_F(FloodStatus, keepsNothingOfATunnelThatHasLeft) {
  start();
  auto const alive = Dovel::Node::aliveCount();
  record(2);
  EXPECT_EQ(Dovel::Node::aliveCount(), alive + 1) << "a VTEP without a tunnel is not watched";
  tunnel(2);
  gone(2);
  EXPECT_EQ(Dovel::Node::aliveCount(), alive + 1);
  records->bumVtepConfigDel(address(2));
  EXPECT_EQ(Dovel::Node::aliveCount(), alive);
  tunnel(3);
  auto const withTunnel = Dovel::Node::aliveCount();
  record(3);
  records->bumVtepConfigDel(address(3));
  EXPECT_EQ(Dovel::Node::aliveCount(), withTunnel);
}

TEST_F(FloodStatus, isThereWhileItsTunnelIs) {
  start();
  tunnel(2);
  record(2)->nextHopsIs(IntfId("Ethernet1"), {}, {});
  lists->vtepIpListIs(Bridging::VlanId(111), address(2));
  auto const vlan = vlans->vlanStatusIs(Bridging::VlanId(111));
  stop();
  start(true);
  status->tunnelStatusDelAll();
  EXPECT_DEATH(newVersion(2), "tunnelStatusHas");
  EXPECT_DEATH(records->bumVtepConfigDel(address(2)), "tunnelStatusHas");
  EXPECT_DEATH(vlan->portStateIs(IntfId("Ethernet1"), 1), "tunnelStatusHas");
  auto const again = Dovel::make<TesselL3Common::TesselVxlanBumVtepConfig>(address(2));
  again->nextHopsIs(IntfId("Ethernet1"), {}, {});
  EXPECT_DEATH(records->bumVtepConfigIs(again), "tunnelStatusHas");
}

TEST_F(FloodStatus, followsATunnelThatReturnsInsideItsEnd) {
  start();
  tunnel(2);
  bool first = true;
  Support::Watch const watch(*status, [&](Dovel::Change const&) {
    if (std::exchange(first, false)) tunnel(2);
  });
  gone(2);
  newVersion(2);
  EXPECT_EQ(shown(), "2:2");
}

TEST_F(FloodStatus, echoesTheCounters) {
  start();
  config->hwInitIs(1);
  EXPECT_EQ(status->hwInit(), 1);
  status->hwCleanupIs(2);
  config->hwCleanupIs(2);  // a tunnel helper of the same pair was first
  EXPECT_EQ(status->hwCleanup(), 2);
  config->hwCleanupIs(3);
  EXPECT_EQ(status->hwCleanup(), 3);
  config->hwCleanupIs(0);
  EXPECT_EQ(status->hwCleanup(), 3) << "no request";
}

TEST_F(FloodStatus, followsThePortsOfUnderlayVlansWhereTheChipFloods) {
  for (bool const floods : {true, false}) {
    for (unsigned n = 2; n <= 4; ++n) tunnel(n);
    for (unsigned const n : {2, 3, 5}) lists->vtepIpListIs(Bridging::VlanId(111), address(n));
    lists->vtepIpListIs(Bridging::VlanId(112), address(4));
    auto const present = vlans->vlanStatusIs(Bridging::VlanId(111));
    start(floods);
    EXPECT_EQ(shown(), "2:1 3:1 4:1");
    present->portStateIs(IntfId("Ethernet1"), 1);
    EXPECT_EQ(shown(), floods ? "2:2 3:2 4:1" : "2:1 3:1 4:1");
    vlans->vlanStatusIs(Bridging::VlanId(112))->portStateIs(IntfId("Ethernet1"), 1);
    vlans->vlanStatusIs(Bridging::VlanId(113))->portStateIs(IntfId("Ethernet1"), 1);
    EXPECT_EQ(shown(), floods ? "2:2 3:2 4:2" : "2:1 3:1 4:1");
    present->portStateDel(IntfId("Ethernet1"));
    EXPECT_EQ(shown(), floods ? "2:3 3:3 4:2" : "2:1 3:1 4:1");
    vlans->vlanStatusDelAll();
    present->portStateIs(IntfId("Ethernet2"), 1);
    EXPECT_EQ(shown(), floods ? "2:3 3:3 4:2" : "2:1 3:1 4:1") << "of a VLAN that has left";
    stop();
    config->hwTunnelConfigListDelAll();
    status->tunnelStatusDelAll();
  }
}

TEST_F(FloodStatus, listsOfVlansTellTheirChangesAndAreReadBack) {
  unsigned heard = 0;
  Support::Watch const watch(*lists, [&](Dovel::Change const&) { ++heard; });
  Bridging::VlanId const vlan(111);
  for (unsigned const n : {3, 2, 2}) lists->vtepIpListIs(vlan, address(n));
  auto const jsonOf = [](auto const& dir) {
    return Kiln::jsonText([&](Kiln::JsonOut out) { Kiln::entityToJson(*dir, out); });
  };
  auto const json = jsonOf(lists);
  EXPECT_EQ(json, R"({"floodUnderlayVlanToVtepList":{"111":["10.255.0.2","10.255.0.3"]}})");
  auto const read = Dovel::make<TesselL3Common::FloodUnderlayVlanToVtepListDir>("read");
  Kiln::entityFromJson(*read, Kiln::JsonDocument::parse(json, "").root());
  EXPECT_EQ(jsonOf(read), json);
  for (unsigned const n : {2, 3, 3}) lists->vtepIpListDel(vlan, address(n));
  EXPECT_EQ(heard, 4);
  EXPECT_TRUE(lists->floodUnderlayVlanToVtepListColl().empty());
}

class Engine : public OnWrapper {
 protected:
  std::string defaultRow() const { return agent.row("EpreCcbeNextHopRemapTable", "( , )"); }
};
INSTANTIATE_TEST_SUITE_P(Chips, Engine, testing::ValuesIn(chipKinds({"cascaded", "flooding"})), kindName);

TEST_P(Engine, isSetUpOnce) {
  EXPECT_TRUE(wrapper().epreSm()->initialized());
  EXPECT_EQ(agent.table("EpreEdevConfigCcbeRegister"), "0: value=1073774591\n");
  auto const& fcsd = agent.agent().world().fcsd;
  LogicalFap::LogicalFapId const second(1);
  agent.writes();
  fcsd->logicalFapIs(second, fcsd->logicalFap(LogicalFap::LogicalFapId(0)));
  agent.settle();
  fcsd->logicalFapDel(second);
  fcsd->logicalModInfosIs(!fcsd->logicalModInfos());
  EXPECT_EQ(agent.writes(), "");
}

TEST_P(Engine, hasADefaultEntryWithBothFlags) {
  std::string const type = GetParam().profile == "flooding" ? "14" : "12";
  for (bool const enabledFirst : {true, false}) {
    auto& state = *wrapper().vxlanState();
    auto const first = [&](bool on) {
      enabledFirst ? state.vxlanDefaultEpreEnabledIs(on) : state.vxlanDefaultEpreReadyIs(on);
    };
    auto const other = [&](bool on) {
      enabledFirst ? state.vxlanDefaultEpreReadyIs(on) : state.vxlanDefaultEpreEnabledIs(on);
    };
    first(true);
    agent.settle();
    EXPECT_EQ(defaultRow(), "absent");
    other(true);
    agent.settle();
    EXPECT_THAT(defaultRow(), HasSubstr("remapType=" + type));
    EXPECT_EQ(std::to_string(agent.hardware().field("EpreCcbeNextHopRemapTable", 0, "remapType")), type);
    EXPECT_THAT(defaultRow(), HasSubstr("l3NextHop2Handle=L3NextHop2Table[00:00:00:00:00:00]"));
    EXPECT_THAT(defaultRow(), HasSubstr("virtualPortHandle=VirtualPortTableMerged[]"));
    first(false);
    other(false);
    agent.restart();
    EXPECT_EQ(defaultRow(), "absent");
  }
}

}  // namespace AgentTest
