#include "tests/host/import_world.h"

namespace Host::Test {

namespace {

class ImportUnderlay : public HandMade {};

constexpr auto viaUp1 = R"({"dst":"10.255.0.2","nhid":36,"gateway":"10.1.1.0","dev":"up1","flags":[]})";

/// The adjacency of a VTEP; 0: there is no such tunnel.
unsigned long idOf(std::string const& vtep, std::string const& text) {
  auto const at = (" " + text).find(" " + vtep + ">");
  return at == std::string::npos ? 0 : std::stoul(text.substr(at + vtep.size() + 1));
}

}  // namespace

TEST_F(ImportUnderlay, longestPrefixThenMetricThenWhatIsInService) {
  routes(R"({"dst":"default","gateway":"10.1.1.0","dev":"up1"},
            {"dst":"10.255.0.0/16","gateway":"10.1.2.0","dev":"up2","metric":20,"nhid":20},
            {"dst":"10.255.0.0/16","gateway":"10.1.2.0","dev":"up2","metric":10,"nhid":10},
            {"dst":"10.255.0.2","gateway":"10.1.1.0","dev":"up1","flags":["dead","linkdown"]},
            {"dst":"10.255.0.2","gateway":"10.1.1.0","dev":"up1","table":"1001"},
            {"dst":"::/0","gateway":"fe80::1","dev":"up1","pref":"medium"})");
  EXPECT_EQ(shown(), "10.255.0.2>10 | 10: 10.1.2.0@up2/up2");
}

TEST_F(ImportUnderlay, whatGivesNoNextHop) {
  for (auto const route : {"", R"({"type":"blackhole","dst":"10.255.0.2"})", R"({"dst":"10.255.0.2","dev":"lo"})",
                           R"({"type":"unreachable","dst":"10.255.0.2","dev":"lo","flags":[]})",
                           R"({"dst":"10.255.0.2","gateway":"10.1.1.0","dev":"up1","flags":["linkdown"]})",
                           R"({"dst":"10.255.0.2","gateway":"172.16.0.1"})"}) {
    routes(route);
    EXPECT_EQ(shown(), "10.255.0.2>") << route;
  }
}

TEST_F(ImportUnderlay, unresolvedNeighboursAreCarried) {
  routes(viaUp1);
  for (auto const neighbours :
       {"[]", R"([{"dst":"10.1.1.0","dev":"up1","state":["INCOMPLETE"]}])",
        R"([{"dst":"10.1.1.0","dev":"up2","lladdr":"02:f1:00:00:00:01","state":["STALE"]}])",
        R"([{"dst":"10.1.1.0","dev":"up1","lladdr":"02:f1:00:00:00:01","state":["FAILED"]}])"}) {
    file("ip-neigh.json", neighbours);
    EXPECT_EQ(shown(), "10.255.0.2>36 | 36: 10.1.1.0?@up1/up1") << neighbours;
  }
}

TEST_F(ImportUnderlay, kernelIdsStandForTheMembersOfTheDay) {
  routes(R"({"dst":"10.255.0.2","nhid":36,"nexthops":[{"gateway":"10.1.2.0","dev":"up2","flags":[]},
                                                      {"gateway":"10.1.1.0","dev":"up1","flags":[]}]})");
  EXPECT_EQ(shown(), "10.255.0.2>36 | 36: 10.1.1.0@up1/up1 10.1.2.0@up2/up2");
  routes(R"({"dst":"10.255.0.2","nhid":36,"nexthops":[{"gateway":"10.1.2.0","dev":"up2","flags":[]},
                                                      {"gateway":"10.1.1.0","dev":"up1","flags":["dead"]}]})");
  EXPECT_EQ(shown(), "10.255.0.2>36 | 36: 10.1.2.0@up2/up2");
  routes(viaUp1);
  EXPECT_EQ(shown(), "10.255.0.2>36 | 36: 10.1.1.0@up1/up1");
}

TEST_F(ImportUnderlay, ownNumbersFollowFromTheContentsAlone) {
  std::string const one = R"({"dst":"10.255.0.2","gateway":"10.1.1.0","dev":"up1"})";
  routes(one);
  auto const id = idOf("10.255.0.2", shown());
  EXPECT_GE(id, 0x40000000U);
  file("bridge-fdb.json", "[" + remote("10.255.0.2") + "," + remote("10.255.0.1") + "," + remote("10.0.0.9") + "," +
                              remote("10.1.2.7") + "," + remote("10.1.2.8") + "]");
  routes(R"({"dst":"10.1.2.0/24","nhid":18,"dev":"up2"},{"dst":"10.0.0.9","gateway":"10.1.1.0","dev":"up1"},)" + one);
  auto const more = shown();
  EXPECT_EQ(idOf("10.255.0.2", more), id);
  EXPECT_EQ(idOf("10.0.0.9", more), id);
  EXPECT_EQ(idOf("10.255.0.1", more), 0U) << "the local address is no VTEP";
  // A connected VTEP is its own next hop, so that the id of the route stands for another one with each.
  EXPECT_NE(idOf("10.1.2.7", more), idOf("10.1.2.8", more));
  EXPECT_NE(more.find(std::to_string(idOf("10.1.2.7", more)) + ": 10.1.2.7?@up2/up2"), std::string::npos) << more;
}

TEST_F(ImportUnderlay, objectsGroupsAndGatewaysThatAreLookedUpInTurn) {
  file("ip-nexthop.json", R"([{"id":1,"gateway":"10.1.1.0","dev":"up1"},{"id":2,"gateway":"172.16.0.1"},
    {"id":3,"group":[{"id":1},{"id":2}]},{"id":4,"group":[{"id":3},{"id":1},{"id":5}]},{"id":5,"blackhole":null}])");
  routes(R"({"dst":"10.255.0.2","nhid":4},{"dst":"172.16.0.0/24","gateway":"10.1.2.0","dev":"up2"})");
  EXPECT_EQ(shown(), "10.255.0.2>4 | 4: 10.1.1.0@up1/up1 10.1.2.0@up2/up2");

  routes(R"({"dst":"10.255.0.2","nhid":9})");
  EXPECT_EQ(complaint(),
            "base/ip-route-all.json: /0/nhid: found 9, expected the id of a next-hop object of "
            "base/ip-nexthop.json");
  file("ip-nexthop.json", R"([{"id":9,"group":[{"id":8}]},{"id":8,"group":[{"id":9}]}])");
  EXPECT_EQ(complaint(),
            "base/ip-nexthop.json: /1/group/0/id: found 9, expected a group that does not contain itself, "
            "not 9 -> 8 -> 9");
}

TEST_F(ImportUnderlay, routeLoopsNameTheChain) {
  routes(R"({"dst":"10.255.0.2","gateway":"10.9.0.1"},{"dst":"10.9.0.0/16","gateway":"10.255.0.2"})");
  EXPECT_EQ(complaint(),
            "base/ip-route-all.json: /0/dst: found \"10.255.0.2\", expected no route loop: "
            "10.255.0.2 -> 10.9.0.1 -> 10.255.0.2");
}

TEST_F(ImportUnderlay, gatewaysOfTheOtherFamily) {
  file("ip-neigh.json", R"([{"dst":"fe80::1","dev":"up1","lladdr":"02:f1:00:00:00:01","state":["REACHABLE"]}])");
  routes(R"({"dst":"10.255.0.2","nhid":7,"via":{"family":"inet6","host":"fe80::1"},"dev":"up1"})");
  EXPECT_EQ(shown(), "10.255.0.2>7 | 7: fe80::1@up1/up1");
  routes(R"({"dst":"default","nhid":8,"nexthops":[{"via":{"family":"inet6","host":"fe80::1"},"dev":"up1","flags":[]},
                                                  {"via":{"family":"inet6","host":"fe80::2"},"dev":"up2","flags":[]}]})");
  EXPECT_EQ(shown(), "10.255.0.2>8 | 8: fe80::1@up1/up1 fe80::2?@up2/up2");
}

TEST_F(ImportUnderlay, bothFamiliesAndTheVrfOfTheUnderlay) {
  links(vxlan("vx1", R"("local":"10.255.0.1","link":"lo-red","port":4789)") + "," +
        vxlan("vx6", R"("local6":"2001:db8::1","link":"lo-red","port":4789)", 10));
  file("bridge-fdb.json", "[" + remote("10.255.0.2") + "," + remote("2001:DB8::2") + "," + remote("2001:db8::1") + "]");
  routes(R"({"dst":"default","nhid":1,"gateway":"10.1.1.0","dev":"up1","table":"main"},
            {"dst":"default","nhid":2,"gateway":"10.1.2.0","dev":"up2","table":"1001"},
            {"dst":"2001:db8::/32","nhid":3,"gateway":"fe80::2","dev":"up2","table":"1001"})");
  EXPECT_EQ(shown(), "10.255.0.2>2 2001:db8::2>3 | 2: 10.1.2.0@up2/up2 | 3: fe80::2?@up2/up2");
}

TEST_F(ImportUnderlay, behindABridgeThePortIsWhereTheNeighbourStands) {
  routes(R"({"dst":"10.255.0.2","nhid":36,"gateway":"10.1.1.0","dev":"vlan10"})");
  file("ip-neigh.json", R"([{"dst":"10.1.1.0","dev":"vlan10","lladdr":"02:f1:00:00:00:01","state":["STALE"]}])");
  EXPECT_EQ(shown(), "10.255.0.2>36 | 36: 10.1.1.0@/Vlan10");
  auto const entry = [](std::string const& vlan, std::string const& state) {
    return R"(,{"mac":"02:f1:00:00:00:01","ifname":"h1","vlan":)" + vlan + R"(,"master":"br0","flags":[],"state":")" +
           state + "\"}";
  };
  file("bridge-fdb.json", "[" + remote("10.255.0.2") + entry("11", "") + entry("10", "permanent") + "]");
  EXPECT_EQ(shown(), "10.255.0.2>36 | 36: 10.1.1.0@/Vlan10");
  file("bridge-fdb.json", "[" + remote("10.255.0.2") + entry("10", "") + "]");
  EXPECT_EQ(shown(), "10.255.0.2>36 | 36: 10.1.1.0@h1/Vlan10");
}

TEST_F(ImportUnderlay, subInterfacesLeaveByTheirPort) {
  links(R"({"ifindex":11,"ifname":"up1.10","link":"up1","linkinfo":{"info_kind":"vlan","info_data":{"id":10}}},)" +
        vxlan("vx1", ""));
  routes(R"({"dst":"10.255.0.2","nhid":36,"gateway":"10.1.1.0","dev":"up1.10"})");
  EXPECT_EQ(shown(), "10.255.0.2>36 | 36: 10.1.1.0?@up1/up1.10");
}

}  // namespace Host::Test
