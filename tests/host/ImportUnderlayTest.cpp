#include "tests/host/ImportWorld.h"

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

TEST_F(ImportUnderlay, routesAreLookedUpAsTheKernelDoes) {
  std::string const none = "10.255.0.2>";
  for (auto const& [list, wanted] : std::vector<std::pair<std::string, std::string>>{
           // The longest prefix, then the least metric, of what is in service.
           {R"({"dst":"default","gateway":"10.1.1.0","dev":"up1"},
               {"dst":"10.255.0.0/16","gateway":"10.1.2.0","dev":"up2","metric":20,"nhid":20},
               {"dst":"10.255.0.0/16","gateway":"10.1.2.0","dev":"up2","metric":10,"nhid":10},
               {"dst":"10.255.0.2","gateway":"10.1.1.0","dev":"up1","flags":["dead","linkdown"]},
               {"dst":"10.255.0.2","gateway":"10.1.1.0","dev":"up1","table":"1001"},
               {"dst":"::/0","gateway":"fe80::1","dev":"up1","pref":"medium"})",
            none + "10 | 10: 10.1.2.0@up2/up2"},
           {"", none},
           {R"({"type":"blackhole","dst":"10.255.0.2"})", none},
           {R"({"dst":"10.255.0.2","dev":"lo"})", none},
           {R"({"dst":"10.255.0.2","gateway":"10.1.1.0","dev":"up1","flags":["linkdown"]})", none},
           {R"({"dst":"10.255.0.2","gateway":"172.16.0.1"})", none},
           // An id stands for the members that the route has.
           {viaUp1, none + "36 | 36: 10.1.1.0@up1/up1"},
           {R"({"dst":"10.255.0.2","nhid":36,"nexthops":[{"gateway":"10.1.2.0","dev":"up2","flags":[]},
                                                         {"gateway":"10.1.1.0","dev":"up1","flags":[]}]})",
            none + "36 | 36: 10.1.1.0@up1/up1 10.1.2.0@up2/up2"},
           {R"({"dst":"10.255.0.2","nhid":36,"nexthops":[{"gateway":"10.1.2.0","dev":"up2","flags":[]},
                                                         {"gateway":"10.1.1.0","dev":"up1","flags":["dead"]}]})",
            none + "36 | 36: 10.1.2.0@up2/up2"},
           // Gateways of the other family.
           {R"({"dst":"10.255.0.2","nhid":7,"via":{"family":"inet6","host":"fe80::1"},"dev":"up1"})",
            none + "7 | 7: fe80::1?@up1/up1"},
           {R"({"dst":"default","nhid":8,"nexthops":[{"via":{"family":"inet6","host":"fe80::1"},"dev":"up1"},
                                                     {"gateway":"10.1.2.0","dev":"up2"}]})",
            none + "8 | 8: 10.1.2.0@up2/up2 fe80::1?@up1/up1"},
           {R"({"dst":"10.255.0.2","gateway":"10.9.0.1"},{"dst":"10.9.0.0/16","gateway":"10.255.0.2"})",
            "base/ip-route-all.json: /0/dst: found \"10.255.0.2\", expected no route loop: "
            "10.255.0.2 -> 10.9.0.1 -> 10.255.0.2"},
       }) {
    routes(list);
    EXPECT_EQ(shown(), wanted) << list;
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

TEST_F(ImportUnderlay, ownNumbersFollowFromTheContentsAlone) {
  std::string const one = R"({"dst":"10.255.0.2","gateway":"10.1.1.0","dev":"up1"})";
  routes(one);
  auto const id = idOf("10.255.0.2", shown());
  EXPECT_GE(id, 0x40000000U);
  remotes({"10.255.0.2", "10.255.0.1", "10.0.0.9", "10.1.2.7", "10.1.2.8"});
  routes(R"({"dst":"10.1.2.0/24","nhid":18,"dev":"up2"},{"dst":"10.0.0.9","gateway":"10.1.1.0","dev":"up1"},)" + one);
  auto const more = shown();
  EXPECT_EQ(idOf("10.255.0.2", more), id);
  EXPECT_EQ(idOf("10.0.0.9", more), id);
  EXPECT_EQ(idOf("10.255.0.1", more), 0U) << "the local address is no VTEP";
  // A connected VTEP is its own next hop, so that the id of the route stands for another one with each.
  EXPECT_NE(idOf("10.1.2.7", more), idOf("10.1.2.8", more));
  EXPECT_THAT(more, testing::HasSubstr(std::to_string(idOf("10.1.2.7", more)) + ": 10.1.2.7?@up2/up2"));
}

TEST_F(ImportUnderlay, objectsGroupsAndGatewaysThatAreLookedUpInTurn) {
  auto const toUplink2 = R"({"dst":"172.16.0.0/24","gateway":"10.1.2.0","dev":"up2"},)";
  routes(std::string(toUplink2) + R"({"dst":"10.255.0.2","nhid":4})");
  EXPECT_THAT(shown(), testing::HasSubstr("/1/nhid: found 4, expected the id of a next-hop object of the missing"));
  file("ip-nexthop.json", R"([{"id":1,"gateway":"10.1.1.0","dev":"up1"},{"id":2,"gateway":"172.16.0.1"},
    {"id":3,"group":[{"id":1},{"id":2}]},{"id":4,"group":[{"id":3},{"id":1},{"id":5}]},{"id":5,"blackhole":null}])");
  EXPECT_EQ(shown(), "10.255.0.2>4 | 4: 10.1.1.0@up1/up1 10.1.2.0@up2/up2");

  // An object that was deleted between two captures costs what refers to it, not the whole capture.
  file("ip-nexthop.json", R"([{"id":4,"group":[{"id":1},{"id":6}]},{"id":1,"gateway":"10.1.1.0","dev":"up1"}])");
  routes(R"({"dst":"10.1.9.0/24","nhid":9},{"dst":"10.255.0.2","nhid":4})");
  remotes({"10.255.0.2"}, R"(,{"mac":"02:00:00:00:00:08","ifname":"vx1","nhid":10})");
  CaptureSet set;
  set.overlay(dir());
  std::vector<std::string> warnings;
  EXPECT_EQ(roads(set.stateDocument(warnings)), "10.255.0.2>4 | 4: 10.1.1.0@up1/up1");
  EXPECT_THAT(warnings, testing::ElementsAre(testing::HasSubstr("bridge-fdb.json: /1/nhid: found 10, ignored: "),
                                             testing::HasSubstr("ip-route-all.json: /0/nhid: found 9, ignored: "),
                                             testing::HasSubstr("ip-nexthop.json: /0/group/1/id: found 6, ignored: ")));
  file("ip-nexthop.json", R"([{"id":9,"group":[{"id":8}]},{"id":8,"group":[{"id":9}]}])");
  EXPECT_EQ(shown(),
            "base/ip-nexthop.json: /1/group/0/id: found 9, expected a group that does not contain itself, "
            "not 9 -> 8 -> 9");
}

TEST_F(ImportUnderlay, bothFamiliesAndTheVrfOfTheUnderlay) {
  links(vxlan("vx1", R"("local":"10.255.0.1","link":"lo-red","port":4789)") + "," +
        vxlan("vx6", R"("local6":"2001:db8::1","link":"lo-red","port":4789)", 10));
  remotes({"10.255.0.2", "2001:DB8::2", "2001:db8::1"});
  routes(R"({"dst":"default","nhid":1,"gateway":"10.1.1.0","dev":"up1","table":"main"},
            {"dst":"default","nhid":2,"gateway":"10.1.2.0","dev":"up2","table":"1001"},
            {"dst":"2001:db8::/32","nhid":3,"gateway":"fe80::2","dev":"up2","table":"1001"})");
  EXPECT_EQ(shown(), "10.255.0.2>2 2001:db8::2>3 | 2: 10.1.2.0@up2/up2 | 3: fe80::2?@up2/up2");
}

TEST_F(ImportUnderlay, thePortIsWhereTheNeighbourIsReached) {
  // Behind a bridge: where its forwarding database has learned the neighbour, in the VLAN of the route.
  routes(R"({"dst":"10.255.0.2","nhid":36,"gateway":"10.1.1.0","dev":"vlan10"})");
  file("ip-neigh.json", R"([{"dst":"10.1.1.0","dev":"vlan10","lladdr":"02:f1:00:00:00:01","state":["STALE"]}])");
  auto const via = [&](std::string const& vlan, std::string const& state) {
    remotes({"10.255.0.2"}, R"(,{"mac":"02:f1:00:00:00:01","ifname":"h1","vlan":)" + vlan +
                                R"(,"master":"br0","flags":[],"state":")" + state + "\"}");
    return shown();
  };
  EXPECT_EQ(via("11", ""), "10.255.0.2>36 | 36: 10.1.1.0@/Vlan10");
  EXPECT_EQ(via("10", "permanent"), "10.255.0.2>36 | 36: 10.1.1.0@/Vlan10");
  EXPECT_EQ(via("10", ""), "10.255.0.2>36 | 36: 10.1.1.0@h1/Vlan10");
  // A sub-interface: its port.
  links(R"({"ifindex":11,"ifname":"up1.10","link":"up1","linkinfo":{"info_kind":"vlan","info_data":{"id":10}}},)" +
        vxlan("vx1", ""));
  routes(R"({"dst":"10.255.0.2","nhid":36,"gateway":"10.1.1.0","dev":"up1.10"})");
  EXPECT_EQ(shown(), "10.255.0.2>36 | 36: 10.1.1.0?@up1/up1.10");
}

}  // namespace Host::Test
