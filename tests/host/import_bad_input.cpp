#include "tests/host/import_world.h"

namespace Host::Test {

namespace {

class ImportBadInput : public HandMade {};

}  // namespace

TEST_F(ImportBadInput, valuesOfAnotherKind) {
  struct Case {
    char const *name, *text, *said;
  };
  for (auto const& [name, text, said] : {
           Case{"bridge-fdb.json", "{}", "found {}, expected an array"},
           Case{"bridge-fdb.json", "[{},7]", "/1: found 7, expected an object"},
           Case{"bridge-fdb.json", R"([{"ifname":"vx1","dst":"10.255.0.2"}])",
                R"(/0: found {"ifname":"vx1","dst":"10.255.0.2"}, expected a member "mac")"},
           Case{"bridge-fdb.json", R"([{"mac":"02:00:00:00:00","ifname":"vx1","nhid":3}])",
                R"(/0/mac: found "02:00:00:00:00", expected an Ethernet address)"},
           Case{"bridge-fdb.json", R"([{"mac":"02:00:00:00:00:09","ifname":"vx1","dst":"10.255.0"}])",
                R"(/0/dst: found "10.255.0", expected an IPv4 or IPv6 address)"},
           Case{"bridge-fdb.json", R"([{"mac":"02:00:00:00:00:09","ifname":"vx1","dst":null}])",
                "/0/dst: found null, expected a string"},
           Case{"ip-route-all.json", R"([{"dst":"10.255.0.0/33","dev":"up1"}])",
                R"(/0/dst: found "10.255.0.0/33", expected a prefix with a length from 0 to 32)"},
           Case{"ip-route-all.json", R"([{"dst":"10.0.0.0/8","dev":"up1","nhid":-1}])",
                "/0/nhid: found -1, expected a whole number from 0 to 4294967295"},
           Case{"ip-route-all.json", R"([{"dst":"10.0.0.0/8","nexthops":[{"dev":"up1","flags":"dead"}]}])",
                R"(/0/nexthops/0/flags: found "dead", expected an array)"},
           Case{"ip-neigh.json", R"([{"dst":"10.1.1.0","lladdr":"02:f1:00:00:00:01"}])",
                R"(/0: found {"dst":"10.1.1.0","lladdr":"02:f1:00:00:00:01"}, expected a member "dev")"},
       }) {
    TearDown();
    SetUp();
    file(name, text);
    EXPECT_EQ(complaint(), std::string("base/") + name + ": " + said);
  }
}

TEST_F(ImportBadInput, directoriesWithoutTheFilesTheyNeed) {
  EXPECT_EQ(complaint("nowhere"), "nowhere: found no directory there, expected a directory of captures");
  file("readme.txt", "no capture", "other");
  EXPECT_EQ(complaint("other").substr(0, 72),
            "other: found no capture in the directory, expected captures: ip-link.jso");

  std::filesystem::remove(dir() / "ip-link.json");
  EXPECT_EQ(complaint(),
            "base/ip-link.json: found no such file, expected the links of the switch, here or in "
            "ip-link-vxlan.json");
  file("ip-link-vxlan.json", "[{},{}," + vxlan("vx1", R"("local":"10.255.0.1","port":4789)") + "]");
  EXPECT_EQ(shown(), "10.255.0.2>");
  routes(R"({"dst":"10.255.0.2","dev":"up1"})");
  EXPECT_EQ(complaint(),
            "base/ip-route-all.json: /0: found {\"dst\":\"10.255.0.2\",\"dev\":\"up1\"}, expected a route "
            "over a device that the missing ip-link.json has, not over up1");
  std::filesystem::remove(dir() / "bridge-fdb.json");
  EXPECT_EQ(complaint(), "base/bridge-fdb.json: found no such file, expected the forwarding database of the switch");
}

TEST_F(ImportBadInput, aBadDirectoryLeavesTheSetAsItWas) {
  CaptureSet set;
  set.overlay(dir());
  file("bridge-fdb.json", "[]", "later");
  file("ip-neigh.json", "[", "later");
  EXPECT_THROW(set.overlay(dir("later")), Kiln::InputError);
  EXPECT_EQ(roads(set.stateDocument()), "10.255.0.2>");
}

TEST_F(ImportBadInput, vxlanDevicesThatDisagree) {
  links(vxlan("vx1", R"("local":"10.255.0.1","port":4789)") + "," +
        vxlan("vx2", R"("local":"10.255.0.7","port":4789)", 10));
  EXPECT_EQ(complaint(),
            "base/ip-link.json: /9/linkinfo/info_data/local: found \"10.255.0.7\", expected "
            "\"10.255.0.1\" for vx2, as vx1 has it");
  links(vxlan("vx1", R"("local":"10.255.0.1","port":70000)"));
  EXPECT_EQ(complaint(),
            "base/ip-link.json: /8/linkinfo/info_data/port: found 70000, expected a whole number from 0 to 65535");

  // One device in two files of one capture must be the same; in a later capture it may have changed.
  links(vxlan("vx1", R"("local":"10.255.0.1","port":4789)"));
  auto const changed = "[" + vxlan("vx1", R"("port":4790)") + "]";
  file("ip-link-vxlan.json", changed, "later");
  CaptureSet set;
  set.overlay(dir());
  set.overlay(dir("later"));
  auto const document = set.stateDocument();
  auto const& vti = document["stateway"]["interface/status/eth/vxlan"]["vtiStatus"]["Vxlan1"];
  EXPECT_FALSE(vti.HasMember("srcAddr"));
  EXPECT_EQ(vti["udpPort"].GetUint(), 4790U);
  file("ip-link-vxlan.json", changed);
  EXPECT_EQ(complaint(),
            "base/ip-link-vxlan.json: /0/linkinfo/info_data: found {\"port\":4790}, expected the local "
            "\"10.255.0.1\" that base/ip-link.json has for vx1");
}

TEST_F(ImportBadInput, addressesThatNoVtepOrNextHopCanHave) {
  struct Case {
    std::string name, text, said;
  };
  auto const fdb = [](std::string const& dst) {
    return R"([{"mac":"02:00:00:00:00:09","ifname":"vx1","dst":")" + dst + "\"}]";
  };
  auto const neighbour = [](std::string const& mac) {
    return R"([{"dst":"10.1.1.0","dev":"up1","lladdr":")" + mac + R"(","state":["STALE"]}])";
  };
  for (
      auto const& [name, text, said] : {
          Case{"bridge-fdb.json", fdb("127.0.0.1"),
               "/0/dst: found \"127.0.0.1\", expected a unicast address as VTEP, not a loopback one"},
          Case{"bridge-fdb.json", fdb("239.1.1.1"),
               "/0/dst: found \"239.1.1.1\", expected a unicast address as VTEP, not a multicast one"},
          Case{"bridge-fdb.json", fdb("255.255.255.255"),
               "/0/dst: found \"255.255.255.255\", expected a unicast address as VTEP, not a broadcast one"},
          Case{"ip-neigh.json", neighbour("00:00:00:00:00:00"),
               "/0/lladdr: found \"00:00:00:00:00:00\", expected a unicast address as MAC of a next hop, not a zero "
               "one"},
          Case{"ip-neigh.json", neighbour("01:00:5e:00:00:01"),
               "/0/lladdr: found \"01:00:5e:00:00:01\", expected a unicast address as MAC of a next hop, not a "
               "multicast one"},
          Case{
              "ip-route-all.json", R"([{"dst":"10.255.0.2","gateway":"127.0.0.1","dev":"up1"}])",
              R"(/0: found {"dst":"10.255.0.2","gateway":"127.0.0.1","dev":"up1"}, expected a unicast next hop, not the loopback address 127.0.0.1)"},
      }) {
    TearDown();
    SetUp();
    routes(R"({"dst":"10.255.0.2","gateway":"10.1.1.0","dev":"up1"})");
    file(name, text);
    EXPECT_EQ(complaint(), "base/" + name + ": " + said);
  }
  links(vxlan("vx1", R"("local":"224.0.0.9")"));
  EXPECT_NE(complaint().find("/8/linkinfo/info_data/local: found \"224.0.0.9\""), std::string::npos);
  routes("");
  links(R"({"ifindex":2,"ifname":"twin"},)" + vxlan("vx1", ""));
  EXPECT_NE(complaint().find("/ifindex: found 2, expected a number of its own"), std::string::npos) << complaint();
}

TEST_F(ImportBadInput, whatAnUnrelatedDeviceMayHaveIsPassedOver) {
  links(R"({"ifindex":70000,"ifname":"far"},
           {"ifindex":20,"ifname":"prio","link":"up1","linkinfo":{"info_kind":"vlan","info_data":{"id":0}}},)" +
        vxlan("vx1", R"("local":"10.255.0.1","port":4789)"));
  file("bridge-fdb.json", R"([{"mac":"80:00:02:08:fe:80","ifname":"ib0"},{"mac":"20 bytes","ifname":"ib0"},)" +
                              remote("0.0.0.0") + "," + remote("10.255.0.1") + "," + remote("10.255.0.2") + "]");
  file("ip-neigh.json", R"([{"dst":"10.9.9.9","dev":"tun","lladdr":"192.0.2.1","state":["NOARP"]}])");
  routes(R"({"dst":"10.255.0.2","nhid":2147483684,"gateway":"10.1.1.0","dev":"up1"})");
  CaptureSet set;
  set.overlay(dir());
  std::vector<std::string> warnings;
  auto const document = set.stateDocument(warnings);
  // An id that is no adjacency id is replaced by a number of our own.
  EXPECT_EQ(roads(document).find("10.255.0.2>1"), 0U) << roads(document);
  ASSERT_EQ(warnings.size(), 3U);
  EXPECT_NE(warnings[0].find("bridge-fdb.json: /2/dst: found \"0.0.0.0\", ignored"), std::string::npos);
  EXPECT_NE(warnings[1].find("bridge-fdb.json: /3/dst: found \"10.255.0.1\", ignored"), std::string::npos);
  EXPECT_NE(warnings[2].find("ip-link.json: /8/ifindex: found 70000, ignored"), std::string::npos);
}

TEST_F(ImportBadInput, numbersThatDoNotFit) {
  links(R"({"ifindex":70000,"ifname":"far"},)" + vxlan("vx1", ""));
  routes(R"({"dst":"10.255.0.2","gateway":"10.1.1.0","dev":"far"})");
  EXPECT_EQ(complaint(), "base/ip-link.json: /8/ifindex: found 70000, expected a whole number from 1 to 65535");
  links(R"({"ifindex":20,"ifname":"v","link":"br0","linkinfo":{"info_kind":"vlan","info_data":{"id":4095}}})");
  EXPECT_NE(complaint().find("/8/linkinfo/info_data/id: found 4095"), std::string::npos);

  std::string many = vxlan("vx1", "");
  for (unsigned i = 100; i < 4190; ++i) {
    many += R"(,{"ifindex":)" + std::to_string(i) + R"(,"ifname":"p)" + std::to_string(i) + "\"}";
  }
  links(many);
  routes(R"({"dst":"10.255.0.2","gateway":"10.1.1.0","dev":"p4187"})");
  EXPECT_EQ(shown().find("10.255.0.2>"), 0U);
  routes(R"({"dst":"10.255.0.2","gateway":"10.1.1.0","dev":"p4189"})");
  EXPECT_EQ(
      complaint(),
      "base/ip-link.json: /4098/ifname: found \"p4189\", expected an earlier interface for the underlay: all VLAN "
      "ids are in use");
}

}  // namespace Host::Test
