#include "tests/host/ImportWorld.h"

namespace Host::Test {

namespace {

using testing::HasSubstr;

class ImportInput : public HandMade {
 protected:
  /// What is said of a capture of which one file has this text.
  std::string shownWith(std::string const& name, std::string const& text) const {
    restore();
    routes(R"({"dst":"10.255.0.2","gateway":"10.1.1.0","dev":"up1"})");
    file(name, text);
    return shown();
  }
};

}  // namespace

TEST_F(ImportInput, valuesThatCannotBeUsedNameFilePlaceAndValue) {
  auto const fdb = [](std::string const& dst) {
    return R"([{"mac":"02:00:00:00:00:09","ifname":"vx1","dst":")" + dst + "\"}]";
  };
  auto const neighbour = [](std::string const& mac) {
    return R"([{"dst":"10.1.1.0","dev":"up1","lladdr":")" + mac + R"(","state":["STALE"]}])";
  };
  struct Case {
    std::string name, text, said;
  };
  std::string const bridgeFdb = "bridge-fdb.json", allRoutes = "ip-route-all.json", neighbours = "ip-neigh.json";
  for (auto const& [name, text, said] : std::vector<Case>{
           {bridgeFdb, "{}", "found {}, expected an array"},
           {bridgeFdb, "[{},7]", "/1: found 7, expected an object"},
           {bridgeFdb, R"([{"ifname":"vx1","nhid":1}])",
            R"(/0: found {"ifname":"vx1","nhid":1}, expected a member "mac")"},
           {bridgeFdb, R"([{"mac":"02:00:00:00:00","ifname":"vx1","nhid":3}])",
            R"(/0/mac: found "02:00:00:00:00", expected an Ethernet address)"},
           {bridgeFdb, fdb("10.255.0"), R"(/0/dst: found "10.255.0", expected an IPv4 or IPv6 address)"},
           {bridgeFdb, R"([{"mac":"02:00:00:00:00:09","ifname":"vx1","dst":null}])",
            "/0/dst: found null, expected a string"},
           {bridgeFdb, fdb("127.0.0.1"),
            R"(/0/dst: found "127.0.0.1", expected a unicast address as VTEP, not a )"
            "loopback one"},
           {bridgeFdb, fdb("239.1.1.1"),
            R"(/0/dst: found "239.1.1.1", expected a unicast address as VTEP, not a )"
            "multicast one"},
           {allRoutes, R"([{"dst":"10.255.0.0/33","dev":"up1"}])",
            R"(/0/dst: found "10.255.0.0/33", expected a prefix with a length from 0 to 32)"},
           {allRoutes, R"([{"dst":"10.0.0.0/8","dev":"up1","nhid":-1}])",
            "/0/nhid: found -1, expected a whole number from 0 to 4294967295"},
           {allRoutes, R"([{"dst":"10.0.0.0/8","nexthops":[{"dev":"up1","flags":"dead"}]}])",
            R"(/0/nexthops/0/flags: found "dead", expected an array)"},
           {allRoutes, R"([{"dst":"10.255.0.2","via":{"host":"127.0.0.1"},"dev":"up1"}])",
            R"(/0: found {"dst":"10.255.0.2","via":{"host":"127.0.0.1"},"dev":"up1"}, expected a unicast next hop, )"
            "not the loopback address 127.0.0.1"},
           {neighbours, R"([{"dst":"10.1.1.0","lladdr":"02:f1:00:00:00:01"}])",
            R"(/0: found {"dst":"10.1.1.0","lladdr":"02:f1:00:00:00:01"}, expected a member "dev")"},
           {neighbours, neighbour("00:00:00:00:00:00"),
            R"(/0/lladdr: found "00:00:00:00:00:00", expected a unicast address as MAC of a next hop, not a zero one)"},
           {neighbours, neighbour("01:00:5e:00:00:01"),
            R"(/0/lladdr: found "01:00:5e:00:00:01", expected a unicast address as MAC of a next hop, not a multicast )"
            "one"},
       }) {
    EXPECT_EQ(shownWith(name, text), "base/" + name + ": " + said);
  }
}

TEST_F(ImportInput, linksThatCannotBeUsedNamePlaceAndValue) {
  std::string many = vxlan("vx1", "");
  for (unsigned i = 100; i < 4190; ++i)
    many += R"(,{"ifindex":)" + std::to_string(i) + R"(,"ifname":"p)" + std::to_string(i) + "\"}";
  struct Case {
    std::string links, device, said;
  };
  for (auto const& [list, device, said] : std::vector<Case>{
           {vxlan("vx1", R"("local":"10.255.0.1")") + "," + vxlan("vx2", R"("local":"10.255.0.7")", 10), "up1",
            R"(/9/linkinfo/info_data/local: found "10.255.0.7", expected "10.255.0.1" for vx2, as vx1 has it)"},
           {vxlan("vx1", R"("port":70000)"), "up1",
            "/8/linkinfo/info_data/port: found 70000, expected a whole number from 0 to 65535"},
           {vxlan("vx1", R"("local":"224.0.0.9")"), "up1", R"(/8/linkinfo/info_data/local: found "224.0.0.9")"},
           {R"({"ifindex":2,"ifname":"twin"},)" + vxlan("vx1", ""), "up1",
            "/ifindex: found 2, expected a number of its own"},
           {R"({"ifindex":70000,"ifname":"far"},)" + vxlan("vx1", ""), "far",
            "/8/ifindex: found 70000, expected a whole number from 1 to 65535"},
           {R"({"ifindex":20,"ifname":"v","link":"br0","linkinfo":{"info_kind":"vlan","info_data":{"id":4095}}})",
            "up1", "/8/linkinfo/info_data/id: found 4095"},
           {many, "p4189",
            R"(/4098/ifname: found "p4189", expected an earlier interface for the underlay: all VLAN ids are in use)"},
       }) {
    links(list);
    routes(R"({"dst":"10.255.0.2","gateway":"10.1.1.0","dev":")" + device + "\"}");
    EXPECT_THAT(shown(), testing::AllOf(testing::StartsWith("base/ip-link.json: "), HasSubstr(said)));
  }
  routes(R"({"dst":"10.255.0.2","gateway":"10.1.1.0","dev":"p4187"})");
  EXPECT_THAT(shown(), testing::StartsWith("10.255.0.2>"));
}

TEST_F(ImportInput, directoriesWithoutTheFilesTheyNeed) {
  EXPECT_EQ(shown("nowhere"), "nowhere: found no directory there, expected a directory of captures");
  file("readme.txt", "no capture", "other");
  EXPECT_THAT(shown("other"), HasSubstr("found no capture in the directory, expected captures: ip-link.jso"));
  std::filesystem::remove(dir() / "ip-link.json");
  EXPECT_EQ(shown(),
            "base/ip-link.json: found no such file, expected the links of the switch, here or in "
            "ip-link-vxlan.json");
  file("ip-link-vxlan.json", "[{},{}," + vxlan("vx1", R"("local":"10.255.0.1","port":4789)") + "]");
  EXPECT_EQ(shown(), "10.255.0.2>");
  routes(R"({"dst":"10.255.0.2","dev":"up1"})");
  EXPECT_THAT(shown(), HasSubstr("expected a route over a device that the missing ip-link.json has, not over up1"));
  std::filesystem::remove(dir() / "bridge-fdb.json");
  EXPECT_EQ(shown(), "base/bridge-fdb.json: found no such file, expected the forwarding database of the switch");
}

TEST_F(ImportInput, aLaterCaptureMayDifferAndABadOneLeavesTheSetAsItWas) {
  auto const changed = "[" + vxlan("vx1", R"("port":4790)") + "]";
  file("ip-link-vxlan.json", changed, "later");
  CaptureSet set;
  set.overlay(dir());
  set.overlay(dir("later"));
  auto const document = set.stateDocument();
  auto const& vti = document["stateway"]["interface/status/eth/vxlan"]["vtiStatus"]["Vxlan1"];
  EXPECT_FALSE(vti.HasMember("srcAddr"));
  EXPECT_EQ(vti["udpPort"].GetUint(), 4790U);
  file("bridge-fdb.json", "[]", "bad");
  file("ip-neigh.json", "[", "bad");
  EXPECT_THROW(set.overlay(dir("bad")), Kiln::InputError);
  EXPECT_EQ(set.stateDocument(), document);
  // One device in two files of one capture must be the same.
  file("ip-link-vxlan.json", changed);
  EXPECT_EQ(shown(),
            "base/ip-link-vxlan.json: /0/linkinfo/info_data: found {\"port\":4790}, expected the local "
            "\"10.255.0.1\" that base/ip-link.json has for vx1");
}

TEST_F(ImportInput, whatAnUnrelatedDeviceMayHaveIsPassedOver) {
  links(R"({"ifindex":70000,"ifname":"far"},
           {"ifindex":20,"ifname":"prio","link":"up1","linkinfo":{"info_kind":"vlan","info_data":{"id":0}}},)" +
        vxlan("vx1", R"("local":"10.255.0.1","port":4789)"));
  remotes({"0.0.0.0", "10.255.0.1", "10.255.0.2"},
          R"(,{"mac":"80:00:02:08:fe:80","ifname":"ib0"},{"mac":"20 bytes","ifname":"ib0"})");
  file("ip-neigh.json", R"([{"dst":"10.9.9.9","dev":"tun","lladdr":"192.0.2.1","state":["NOARP"]}])");
  routes(R"({"dst":"10.255.0.2","nhid":2147483684,"gateway":"10.1.1.0","dev":"up1"})");
  CaptureSet set;
  set.overlay(dir());
  std::vector<std::string> warnings;
  // An id that is no adjacency id is replaced by a number of our own.
  EXPECT_THAT(roads(set.stateDocument(warnings)), testing::StartsWith("10.255.0.2>1"));
  EXPECT_THAT(warnings, testing::ElementsAre(HasSubstr("bridge-fdb.json: /0/dst: found \"0.0.0.0\", ignored"),
                                             HasSubstr("bridge-fdb.json: /1/dst: found \"10.255.0.1\", ignored"),
                                             HasSubstr("ip-link.json: /8/ifindex: found 70000, ignored")));
}

}  // namespace Host::Test
