// Tunnels that flooded packets are copied to.

#include <algorithm>

#include "tests/support/TunnelFixture.h"
#include "tests/support/Watch.h"

namespace AgentTest {

using testing::HasSubstr;
using testing::Not;

class Flood : public Tunnels {
 protected:
  bool remaps() const { return cascaded(); }
  /// What copies to an address leave by: a line a port, in the order of the ports.
  std::string copies(std::string const& address) const {
    std::string text;
    auto const record = wrapper().bumVtepConfigDir()->bumVtepConfig(Meshal::IpGenAddr(address));
    if (!record) return "none";
    std::set<std::string> ports;
    for (auto const& nextHop : record->nextHopsColl()) ports.insert(nextHop->port().name());
    for (auto const& port : ports) text += (text.empty() ? "" : " ") + port;
    return text;
  }
  std::uint64_t version(std::string const& address) const {
    auto const record = wrapper().bumVtepConfigDir()->bumVtepConfig(Meshal::IpGenAddr(address));
    return record ? record->version() : 0;
  }
  std::uint32_t encapId(std::string const& address) const {
    auto const record = wrapper().bumVtepConfigDir()->bumVtepConfig(Meshal::IpGenAddr(address));
    return record ? record->encapId().value() : 0;
  }
  /// The row of the copies that leave by `port`.
  std::string copyRow(std::string const& port, std::string const& address) const {
    if (remaps()) return agent.row("EpreCcbeNextHopRemapTable", "(" + port + " , " + address + ")");
    return agent.row("HerNextHop1Table", "{vtep=" + address + ",herEntry=1}");
  }
  static Dovel::Ptr<Vane::NextHopEntryList> over(Vane::NextHopEntry const& entry) {
    return Dovel::make<Vane::NextHopEntryList>(7, Vane::NextHopEntrySet{entry});
  }
};
INSTANTIATE_TEST_SUITE_P(Chips, Flood, testing::ValuesIn(chipKinds({"cascaded", "flat", "flooding"})), kindName);

TEST_P(Flood, tunnelsOfAVtepEndAlikeInAnyOrderAndKeepWhatOthersNeed) {
  for (bool const evpn : {true, false}) {
    agent.evpn(evpn);
    auto const none = agent.whole();
    std::map<std::set<Vane::TunnelType>, std::string> known{{{}, none}};
    auto const expectKnown = [&](std::set<Vane::TunnelType> const& types) {
      auto const text = agent.whole();
      EXPECT_EQ(text, known.emplace(types, text).first->second);
    };
    Vane::TunnelType created[] = {unicast, flood, member};
    do {
      Vane::TunnelType removed[] = {unicast, flood, member};
      do {
        std::set<Vane::TunnelType> present;
        for (auto const type : created) {
          agent.tunnel(type, vtep(2)).via(uplink(1), uplink(2));
          present.insert(type);
          expectKnown(present);
        }
        for (auto const type : removed) {
          agent.tunnel(type, vtep(2)).gone();
          present.erase(type);
          expectKnown(present);
        }
      } while (std::next_permutation(std::begin(removed), std::end(removed)));
    } while (std::next_permutation(std::begin(created), std::end(created)));
    EXPECT_EQ(known.size(), 8);
    for (auto const& [types, text] : known) {
      bool const admits = types.contains(unicast) || (evpn && types.contains(flood));
      EXPECT_EQ(text.find("L2TunnelIpv4SipTable") != text.npos, admits);
      EXPECT_EQ(text.find("flood VTEP 10.255.0.2: Ethernet") != text.npos, types.contains(flood));
      EXPECT_EQ(text.find("flood holds the row that admits") != text.npos, evpn && types.contains(flood));
    }
  }
}

TEST_P(Flood, aTunnelThatWaitsForALocalVtepIsShownAsUp) {
  auto const ids = [&] {
    auto const all = statuses(agent.agent(), flood);
    if (all.empty()) return std::string("none");
    auto const& nextHop = all[0]->hwNextHopStatusEntry();
    return Kiln::toText(all[0]->hwTunnelId()) + ' ' + Kiln::toText(nextHop);
  };
  agent.localVtep("");
  auto const before = agent.chip();
  agent.tunnel(flood, vtep(2)).via(uplink(1));
  EXPECT_EQ(ids(), "1 {hwNextHopId=1,adjId=101}");
  EXPECT_EQ(agent.chip(), before);
  EXPECT_FALSE(map(vtep(2)));
  agent.tunnel(flood, vtep(2)).gone();
  EXPECT_EQ(ids(), "none");
  agent.tunnel(flood, vtep(2)).via(uplink(1)).via(uplink(2));
  agent.localVtep(vtep(1));
  auto const tnlId = Kiln::toText(map(vtep(2))->tnlId());
  EXPECT_EQ(ids(), tnlId + " {hwNextHopId=" + tnlId + ",adjId=102}");
  EXPECT_NE(tnlId, "1");
  EXPECT_EQ(copies(vtep(2)), "Ethernet2");
  agent.localVtep("").tunnel(flood, vtep(2)).gone();
  auto wish = agent.wish();
  wish.mlagVtep = vtep(9);
  agent.want(wish).tunnel(flood, vtep(2)).via(uplink(1));
  EXPECT_NE(header(vtep(2), vtep(9)), "absent") << "the shared address of a pair is enough";
}

TEST_P(Flood, aMemberTunnelHasTheSourceOfTheFloodTunnelBesideIt) {
  auto wish = agent.wish();
  wish.mlagVtep = vtep(9);
  agent.want(wish).tunnel(member, vtep(2)).via(uplink(1));
  auto const port = [&] { return agent.row("VirtualPortTableMerged", vtep(2)); };
  EXPECT_THAT(port(), HasSubstr("[10.255.0.1 > 10.255.0.2]"));
  agent.tunnel(flood, vtep(2)).via(uplink(1));
  EXPECT_THAT(port(), HasSubstr("[10.255.0.9 > 10.255.0.2]"));
  agent.tos(1);
  EXPECT_THAT(port(), HasSubstr("[10.255.0.9 > 10.255.0.2]"));
  agent.tunnel(flood, vtep(2)).gone();
  agent.tos(3);
  EXPECT_THAT(port(), HasSubstr("[10.255.0.1 > 10.255.0.2]"));
}

TEST_P(Flood, vtepsSpreadOverTheirNextHopsAndKeepThem) {
  std::map<std::string, unsigned> users;
  agent.together([](AgentWorld& a) {
    for (unsigned n = 2; n < 50; ++n) a.tunnel(flood, n % 2 ? vtep(n) : vtep6(n)).via(uplink(1), uplink(2), uplink(3));
    a.localVtep(vtep6(1));
  });
  for (unsigned n = 2; n < 50; ++n) ++users[copies(n % 2 ? vtep(n) : vtep6(n))];
  EXPECT_EQ(users.size(), 3);
  for (auto const& [port, count] : users) EXPECT_GE(count, 8) << port;
  agent.writes();
  agent.adjacency(101, {uplink(1), uplink(2), uplink(3), unresolved(4)});
  EXPECT_EQ(agent.writes(), "");
  EXPECT_EQ(agent.table("EcmpGroup1Table"), "");
}

TEST_P(Flood, copiesFollowTheNextHop) {
  auto const move = [&](Vane::NextHopEntry const& entry) {
    config(flood).hwTunnelConfigList(key(vtep(2), 1))->nextHopEntryListIs(over(entry));
    agent.settle();
    return agent.writes();
  };
  Kiln::TraceCapture const trace("HwTunnelProgrammerBase");
  configure(flood, key(vtep(2), 1), over(hop(1)));
  EXPECT_FALSE(trace.contains(" failed Programming Remap table"));
  auto const vpRow = "VirtualPortTableMerged[10.255.0.2]";
  EXPECT_THAT(copyRow("Ethernet1", vtep(2)), HasSubstr(vpRow));
  EXPECT_THAT(copyRow("Ethernet1", vtep(2)), HasSubstr("02:00:00:00:00:01"));
  EXPECT_EQ(version(vtep(2)), 1);
  auto const id = encapId(vtep(2));
  agent.writes();
  EXPECT_EQ(move(hop(1)), "");
  EXPECT_EQ(version(vtep(2)), 2) << "an equal list is a version";
  auto entry = hop(1);
  entry.ethAddrIs(Meshal::EthAddr(0x020000000077));
  move(entry);
  EXPECT_EQ(copyRow("Ethernet1", vtep(2)).find("00:77") == std::string::npos, remaps()) << "the same address: kept";
  entry.addrIs(Meshal::IpGenAddr("10.1.1.99"));
  unsigned heard = 0;
  Support::Watch const watch(*wrapper().bumVtepConfigDir()->bumVtepConfig(Meshal::IpGenAddr(vtep(2))),
                             [&](Dovel::Change const&) { ++heard; });
  move(entry);
  EXPECT_EQ(heard, 3) << "another next hop in place of the former, and a version";
  EXPECT_THAT(copyRow("Ethernet1", vtep(2)), HasSubstr("02:00:00:00:00:77"));
  EXPECT_THAT(agent.whole(), HasSubstr("flood VTEP 10.255.0.2: Ethernet1 > 10.1.1.99 02:00:00:00:00:77 Vlan101\n"));
  EXPECT_EQ(version(vtep(2)), 4);
  EXPECT_NE(move(hop(3)), "");
  EXPECT_EQ(copies(vtep(2)), "Ethernet3");
  EXPECT_EQ(copyRow("Ethernet1", vtep(2)) == "absent", remaps());
  EXPECT_THAT(copyRow("Ethernet3", vtep(2)), HasSubstr("02:00:00:00:00:03"));
  EXPECT_THAT(agent.chip(), Not(HasSubstr("02:00:00:00:00:77"))) << "nothing holds the former next hop";
  EXPECT_EQ(encapId(vtep(2)), id);
  dismiss(flood, key(vtep(2), 1));
  EXPECT_EQ(agent.chip(), start);
}

TEST_P(Flood, encapsulationIdsAreTakenFromTheLowestOn) {
  for (unsigned n = 2; n <= 4; ++n) agent.tunnel(flood, vtep(n)).via(uplink(1));
  agent.tunnel(mcast, group(1)).via(uplink(1));
  auto const ids = [&] { return std::vector{encapId(vtep(2)), encapId(vtep(3)), encapId(vtep(4)), encapId(group(1))}; };
  EXPECT_EQ(ids(), (std::vector{4097U, 4098U, 4099U, 4100U}));
  agent.tunnel(flood, vtep(3)).gone();
  agent.tunnel(flood, vtep(2)).via(unresolved(1));
  agent.tunnel(flood, vtep(3)).via(uplink(1));
  agent.tunnel(flood, vtep(2)).via(uplink(1));
  EXPECT_EQ(ids(), (std::vector{4098U, 4097U, 4099U, 4100U}));
}

TEST_P(Flood, aGroupUsesEachNextHopThatHasARow) {
  agent.tunnel(mcast, group(1)).via(uplink(1), uplink(10), uplink(2), unresolved(3));
  auto const withPort = GetParam().profile == "cascaded";
  EXPECT_EQ(copies(group(1)), withPort ? "Ethernet1 Ethernet2" : "Ethernet1 Ethernet10 Ethernet2");
  EXPECT_THAT(agent.status(mcast), HasSubstr("239.1.1.1 gen=0 tnl=#1 version="));
  agent.tunnel(mcast, group(1)).via(uplink(2));
  EXPECT_EQ(copies(group(1)), "Ethernet2");
  EXPECT_THAT(copyRow("Ethernet2", group(1)), HasSubstr("02:00:00:00:00:02"));
  auto const version = this->version(group(1));
  agent.tunnel(mcast, group(1)).via(unresolved(1));
  EXPECT_EQ(copies(group(1)), "none");
  EXPECT_EQ(copyRow("Ethernet2", group(1)), "absent");
  EXPECT_NE(agent.row("VirtualPortTableMerged", group(1)), "absent");
  EXPECT_GT(version, 1);
  agent.tunnel(mcast, group(1)).gone();
  EXPECT_EQ(agent.status(mcast), "");
  EXPECT_EQ(agent.chip(), start);
}

TEST_P(Flood, theVlansOfAVtepAreShownUntilItLeaves) {
  auto const vtepIp = Meshal::IpGenAddr(vtep(2));
  auto const shown = [&] {
    auto const status = wrapper().vaneVxlanHwHerVtepStatusDir()->vaneVxlanHwHerVtepStatus(vtepIp);
    if (!status) return std::string("none");
    std::set<std::uint16_t> vlans;
    for (auto const& [vlan, floods] : status->vlanListColl())
      if (floods) vlans.insert(vlan.value());
    return testing::PrintToString(vlans);
  };
  auto const vteps = wrapper().vaneVxlanHwHerVtepConfigDir();
  auto const config = vteps->vaneVxlanHwHerVtepConfigIs(vtepIp);
  EXPECT_EQ(shown(), "none") << "without a VLAN";
  config->vlanListIs(Bridging::VlanId(10), {});
  config->vlanListDel(Bridging::VlanId(10));
  EXPECT_EQ(shown(), "{}") << "after its last";
  config->vlanListIs(Bridging::VlanId(10), {});
  auto const next = Dovel::make<Vane::VXLAN::VaneVxlanHwHerVtepConfig>(vtepIp);
  next->vlanListIs(Bridging::VlanId(30), {});
  vteps->vaneVxlanHwHerVtepConfigIs(next);
  config->vlanListIs(Bridging::VlanId(20), {});
  EXPECT_EQ(shown(), "{ 30 }");
  vteps->vaneVxlanHwHerVtepConfigDel(vtepIp);
  EXPECT_EQ(shown(), "none");
}

TEST_P(Flood, vlansOfTheUnderlayHaveTheVtepsBehindThem) {
  bool const floods = GetParam().profile == "flooding";
  auto const behind = [&](std::uint16_t vlan) {
    return Kiln::toText(
        wrapper().floodUnderlayVlanToVtepListDir()->floodUnderlayVlanToVtepList(Bridging::VlanId(vlan)));
  };
  auto const versions = [&] {
    std::string text;
    for (auto const& entry : statuses(agent.agent(), bum))
      text += Kiln::toText(entry->hwNextHopStatusEntry().hwNextHopId()) + ' ';
    return text;
  };
  agent.tunnel(flood, vtep(2)).via(uplink(11));
  agent.tunnel(flood, vtep(3)).via(uplink(11));
  agent.tunnel(flood, vtep(4)).via(uplink(1));
  for (unsigned n = 2; n <= 4; ++n) agent.tunnel(bum, vtep(n)).via(uplink(1));
  EXPECT_EQ(behind(111), floods ? "[10.255.0.2, 10.255.0.3]" : "[]");
  EXPECT_EQ(behind(101), "[]");
  agent.vlanPorts(111, {1}).vlanPorts(112, {1});
  EXPECT_EQ(versions(), floods ? "3 3 2 " : "2 2 2 ");
  agent.tunnel(flood, vtep(2)).via(uplink(12));
  EXPECT_EQ(behind(111), floods ? "[10.255.0.3]" : "[]");
  EXPECT_EQ(behind(112), floods ? "[10.255.0.2]" : "[]");
  agent.tunnel(flood, vtep(3)).gone();
  agent.tunnel(flood, vtep(2)).via(uplink(2));
  EXPECT_EQ(behind(111) + behind(112), "[][]");
}

}  // namespace AgentTest
