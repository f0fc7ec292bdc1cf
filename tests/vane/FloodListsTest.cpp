// Flood lists and multicast tunnels, as the forwarding abstraction turns them into tunnels.

#include <gmock/gmock.h>

#include "platform/kiln/Json.h"
#include "platform/vane/VaneVxlanHwHerSm.h"
#include "platform/vane/VaneVxlanMcastSm.h"
#include "tests/support/AgentWish.h"
#include "tests/support/Watch.h"

namespace AgentTest {

using Bridging::VlanId;
using Meshal::IpGenAddr;

class FloodLists : public testing::Test {
 protected:
  FloodLists() { sm = make(); }
  Dovel::Ptr<Vane::VXLAN::VaneVxlanHwHerSm> make() {
    auto const made = Vane::VXLAN::vaneVxlanHwHerSmFactory(nullptr, lists, tunnels, nullptr, vteps, nullptr, routes,
                                                           nullptr, nullptr, false);
    made->hasNotificationActiveIs(true);
    return made;
  }
  static IpGenAddr address(unsigned n) { return IpGenAddr(vtep(n)); }
  L2Rib::FloodSet& list(unsigned vlan) { return *lists->floodSetIs(VlanId(vlan)); }
  void add(unsigned vlan, unsigned n) { list(vlan).vtepIs(address(n), true); }
  void del(unsigned vlan, unsigned n) { list(vlan).vtepDel(address(n)); }
  void route(unsigned n, std::uint32_t adjId) { routes->vtepAdjacencyIs(address(n), Vane::AdjIdOrNone(adjId)); }
  /// "2[10 20]>5 3[10]": each VTEP with its VLANs, and the adjacency of its tunnel.
  std::string shown() const {
    std::map<IpGenAddr, std::string> all;
    for (auto const& config : vteps->vaneVxlanHwHerVtepConfigColl()) {
      std::set<VlanId> vlans;
      for (auto const& [vlan, info] : config->vlanListColl()) vlans.insert(vlan);
      for (auto const& vlan : vlans)
        all[config->vtepIp()] += (all[config->vtepIp()].empty() ? "" : " ") + Kiln::toText(vlan);
    }
    std::string text;
    for (auto const& [vtep, vlans] : all) {
      auto const tunnel = this->tunnels->tunnel(vtep);
      text += (text.empty() ? "" : " ") + Kiln::toText(vtep).substr(9) + '[' + vlans + ']';
      text += !tunnel ? " NO TUNNEL" : tunnel->adjId() ? ">" + Kiln::toText(tunnel->adjId()) : "";
    }
    return text + (tunnels->tunnelColl().size() == all.size() ? "" : " STRAY TUNNELS");
  }

  Dovel::Ptr<L2Rib::FloodSetOutput> lists = Dovel::make<L2Rib::FloodSetOutput>("lists");
  Dovel::Ptr<Vane::VaneTunnelConfig> tunnels = Dovel::make<Vane::VaneTunnelConfig>("tunnels");
  Dovel::Ptr<Vane::VXLAN::VaneVxlanHwHerVtepConfigDir> vteps =
      Dovel::make<Vane::VXLAN::VaneVxlanHwHerVtepConfigDir>("vteps");
  Dovel::Ptr<VxlanController::VtepStatusDirV2> routes = Dovel::make<VxlanController::VtepStatusDirV2>("routes");
  Dovel::Ptr<Vane::VXLAN::VaneVxlanHwHerSm> sm;
};

TEST_F(FloodLists, areFollowedFromTheStartOn) {
  tunnels->tunnelIs(address(9));  // of a former process
  tunnels->tunnelIs(address(2))->adjIdIs(Vane::AdjIdOrNone(77));
  add(10, 2);
  add(20, 2);
  add(10, 3);
  route(2, 5);
  sm->initializedIs(false);
  EXPECT_EQ(shown(), " STRAY TUNNELS");
  EXPECT_EQ(tunnels->tunnel(address(2))->adjId().value(), 77);
  sm->initializedIs(true);
  EXPECT_EQ(shown(), "2[10 20]>5 3[10]");
  routes->vtepAdjacencyDel(address(2));
  route(3, 6);
  add(20, 3);
  del(10, 2);
  EXPECT_EQ(shown(), "2[20] 3[10 20]>6");
  lists->floodSetDel(VlanId(10));
  lists->floodSetDel(VlanId(99));
  del(20, 2);
  EXPECT_EQ(shown(), "3[20]>6");
  sm = nullptr;
  add(20, 5);
  EXPECT_EQ(shown(), "3[20]>6") << "not after its end";
}

TEST_F(FloodLists, thatAreReplacedKeepTheVtepsOfBoth) {
  sm->initializedIs(true);
  for (unsigned const n : {2, 3}) add(10, n);
  auto const former = lists->floodSet(VlanId(10));
  auto const next = Dovel::make<L2Rib::FloodSet>(VlanId(10));
  for (unsigned const n : {3, 4}) next->vtepIs(address(n), true);
  route(4, 7);
  std::string heard;
  Support::Watch const watch(*tunnels, [&](Dovel::Change const&) { heard += shown() + "; "; });
  lists->floodSetIs(next);
  EXPECT_EQ(heard, "2[10] 3[10] 4[10]>7; 3[10] 4[10]>7; ") << "a tunnel has its route from the start";
  former->vtepIs(address(8), true);
  next->vtepIs(address(5), true);
  EXPECT_EQ(shown(), "3[10] 4[10]>7 5[10]");
}

class McastTunnels : public testing::TestWithParam<Vane::TunnelType> {
 protected:
  McastTunnels() {
    configs->tunnelConfigDirIs(GetParam(), wanted);
    statuses->tunnelStatusDirIs(GetParam(), published);
    Vane::VXLAN::HwTunnelPair const pair{config, status}, none;
    auto const isOf = [&](Vane::TunnelType type) { return GetParam() == type ? pair : none; };
    sm = Vane::VXLAN::vaneVxlanMcastSmFactory(nullptr, configs, statuses, isOf(mcast), isOf(mcastHer), isOf(bum),
                                              nullptr, nullptr);
  }
  static IpGenAddr address(unsigned n) { return IpGenAddr(vtep(n)); }
  void want(unsigned n, Hops const& hops) { wanted->tunnelIs(address(n))->nextHopsIs(entriesOf(hops)); }
  Dovel::Ptr<Vane::HwTunnelConfigEntry> entry(unsigned n) const {
    return config->hwTunnelConfigList(Vane::floodTunnelKey(address(n)));
  }
  /// "none", "empty", or the next hops: type, and VLAN without its hundred.
  std::string hops(unsigned n) const {
    if (!entry(n)) return "none";
    if (!entry(n)->nextHopEntryList()) return "empty";
    std::string text;
    for (auto const& hop : entry(n)->nextHopEntryList()->nextHopEntry()) {
      text += (text.empty() ? "" : " ") + Kiln::toText(unsigned{hop.type()}) + ':' + hop.l3Intf().name().substr(6);
    }
    return text;
  }

  Dovel::Ptr<Multicast::Vxlan::TunnelConfigDir> wanted = Dovel::make<Multicast::Vxlan::TunnelConfigDir>("wanted");
  Dovel::Ptr<Multicast::Vxlan::TunnelStatusDir> published = Dovel::make<Multicast::Vxlan::TunnelStatusDir>("published");
  Dovel::Ptr<Multicast::Tunnel::ConfigDirColl> configs = Dovel::make<Multicast::Tunnel::ConfigDirColl>("configs");
  Dovel::Ptr<Multicast::Tunnel::StatusDirColl> statuses = Dovel::make<Multicast::Tunnel::StatusDirColl>("statuses");
  Dovel::Ptr<Vane::HwTunnelConfig> config = Vane::hwTunnelConfigFactory(GetParam());
  Dovel::Ptr<Vane::HwTunnelStatus> status = Vane::hwTunnelStatusFactory(GetParam());
  Dovel::Ptr<Vane::VXLAN::VaneVxlanMcastSm> sm;
};
INSTANTIATE_TEST_SUITE_P(Types, McastTunnels, testing::Values(mcast, mcastHer, bum));

TEST_P(McastTunnels, areConfiguredAsWanted) {
  bool const toGroups = GetParam() == mcast;
  want(2, {1, unresolved(2)});
  want(3, {});
  published->tunnelIs(address(9));  // of a former process
  sm->initializedIs(false);
  EXPECT_EQ(hops(2), "none");
  sm->initializedIs(true);
  sm->hasNotificationActiveIs(true);
  EXPECT_EQ(config->hwInit(), 1);
  EXPECT_TRUE(published->tunnelColl().empty());
  EXPECT_EQ(hops(2), toGroups ? "12:1" : "1:2 2:1");
  EXPECT_EQ(hops(3), "empty");
  want(4, {3});
  auto const former = entry(4);
  std::string heard;
  Support::Watch const watch(*config, [&](Dovel::Change const&) { heard += hops(4) + ' '; });
  want(4, {4});
  EXPECT_EQ(std::exchange(heard, ""), toGroups ? "" : "2:4 ") << "complete when it is published";
  EXPECT_EQ(hops(4), toGroups ? "12:4" : "2:4");
  EXPECT_EQ(entry(4) == former, toGroups) << "without a programmer that follows the list, it is another tunnel";
  auto const list = entry(4)->nextHopEntryList();
  EXPECT_EQ(list->adjId(), 0);
  auto const same = Dovel::make<Multicast::Vxlan::TunnelConfig>(address(4));
  same->nextHopsIs(entriesOf({4}));
  wanted->tunnelIs(same);
  EXPECT_EQ(entry(4)->nextHopEntryList(), list);
  want(2, {unresolved(2)});
  EXPECT_EQ(hops(2), toGroups ? "empty" : "1:2");
  wanted->tunnelDel(address(2));
  auto const alive = Dovel::Node::aliveCount();
  want(8, {});
  wanted->tunnelDel(address(8));
  EXPECT_EQ(Dovel::Node::aliveCount(), alive);
  EXPECT_EQ(hops(4), toGroups ? "12:4" : "2:4");
  sm->hasNotificationActiveIs(false);
  want(6, {});
  EXPECT_EQ(hops(6), "none");
  sm->hasNotificationActiveIs(true);
  want(7, {});
  EXPECT_EQ(hops(7), "empty");
  sm->kilnDoZombieReactors(true);
  EXPECT_TRUE(sm->isZombie());
  want(5, {});
  EXPECT_EQ(hops(5), "none") << "not after its end";
}

TEST_P(McastTunnels, ofAHalfPairAreNotServed) {
  Vane::VXLAN::HwTunnelPair const half{config, nullptr};
  Vane::VXLAN::vaneVxlanMcastSmFactory(nullptr, configs, statuses, half, half, half, nullptr, nullptr)
      ->initializedIs(true);
  EXPECT_EQ(config->hwInit(), 0);
}

TEST_P(McastTunnels, havePublishedIds) {
  auto const key = Vane::floodTunnelKey(address(2));
  status->tunnelStatusIs(key)->hwTunnelIdIs(Vane::VaneTunnelId(5));
  sm->initializedIs(true);
  sm->hasNotificationActiveIs(true);
  auto const shown = [&] {
    auto const ids = published->tunnel(address(2));
    return ids ? Kiln::toText(ids->hwTunnelId()) + ' ' + Kiln::toText(ids->hwNextHopId()) : "none";
  };
  auto const none = Kiln::toText(Vane::VaneNextHopId());
  EXPECT_EQ(shown(), "5 " + none);
  status->tunnelStatus(key)->hwNextHopStatusEntryIs({Vane::VaneNextHopId(3), nullptr});
  EXPECT_EQ(shown(), "5 3");
  status->tunnelStatusIs(Dovel::make<Vane::HwTunnelStatusEntry>(key));
  EXPECT_EQ(shown(), Kiln::toText(Vane::VaneTunnelId()) + ' ' + none);
  status->tunnelStatusDel(key);
  EXPECT_EQ(shown(), "none");
  auto const alive = Dovel::Node::aliveCount();
  auto const other = Vane::floodTunnelKey(address(3));
  status->tunnelStatusIs(other);
  status->tunnelStatusDel(other);
  EXPECT_EQ(Dovel::Node::aliveCount(), alive);
}

}  // namespace AgentTest
