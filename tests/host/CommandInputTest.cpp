#include <cstdlib>

#include "host/agent/Agent.h"
#include "tests/host/CommandWorld.h"

namespace Host::Test {

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class BadInput : public Files {
 protected:
  /// Expects that the command refuses its input, prints nothing, and says all parts in this order.
  static void expectRefused(std::vector<std::string> const& arguments, std::vector<std::string> const& parts) {
    auto const ran = run(arguments);
    EXPECT_EQ(ran.code, kUnusable);
    EXPECT_THAT(ran.out, IsEmpty());
    EXPECT_TRUE(inOrder(ran.err, parts));
  }
};

constexpr char const* kVxlan = "hardware/tessel/tunnel/configDir/vxlanTunnel";
constexpr char const* kVti = "interface/status/eth/vxlan";

std::string stateway(std::string const& path, std::string const& attributes) {
  return R"({"stateway":{")" + path + R"(":)" + attributes + "}}";
}
std::string local(std::string const& path, std::string const& attributes) {
  return R"({"local":{")" + path + R"(":)" + attributes + "}}";
}
std::string vti(std::string const& fields) { return R"({"vtiStatus":{"Vxlan1":{)" + fields + "}}}"; }
std::string tunnel(std::string const& vtep, std::string const& fields = "{}") {
  return stateway(kVxlan, R"({"tunnel":{")" + vtep + "\":" + fields + "}}");
}
std::string hop(std::string const& fields) {
  return stateway(kVxlan, R"({"adjacency":{"7":{"nextHops":[{)" + fields + "}]}}}");
}
std::string withOwn(std::string const& own, std::string const& vtep) {
  return R"({"stateway":{")" + std::string(kVti) + "\":" + vti(own) + ",\"" + kVxlan + R"(":{"tunnel":{")" + vtep +
         R"(":{"adjId":7}}}}})";
}

}  // namespace

TEST_F(BadInput, documentsThatCannotBeUsedNamePlaceAndValue) {
  struct Case {
    std::string document;
    std::vector<std::string> said;
  };
  auto const port = "hardware/tessel/port/config";
  for (auto const& [document, said] : std::vector<Case>{
           // What is no document of this agent.
           {"{", {"line 1, column 2", "expected"}},
           {std::string(100'000, '['), {"line 1, column 65", "64 levels"}},
           {R"({"state":{}})", {"/state", "unknown member"}},
           {stateway("no/such/path", "{}"), {"/stateway/no~1such~1path", "unknown path"}},
           {stateway("vxlan/config", R"({"colour":"red"})"), {"/stateway/vxlan~1config/colour", "\"red\"", "unknown"}},
           {stateway(kVti, vti(R"("srcAddr":"10.0.0.256")")), {"srcAddr", "\"10.0.0.256\""}},
           {tunnel("10.0.0"), {"/tunnel/10.0.0", "a Meshal::IpGenAddr"}},
           {hop(R"("type":"nextHopLost")"), {"nextHops/0/type", "\"nextHopLost\"", "nextHopResolved"}},
           // What the agent writes itself.
           {local("l3/hwTunnelConfigDir", R"({"hwTunnelConfig":{}})"), {"/local/l3~1hwTunnelConfigDir", "itself"}},
           {local("tesselVxlan/vxlanState", R"({"localVtep":"10.0.0.1"})"), {"localVtep", "10.0.0.1", "itself"}},
           {stateway("hardware/tessel/tunnel/vxlan/vxlanToL2State", "{}"), {"vxlanToL2State", "itself"}},
           // Values that no switch can have.
           {tunnel("0.0.0.0"), {"/tunnel/0.0.0.0: found {}", "unspecified"}},
           {tunnel("::"), {"/tunnel/::", "unspecified"}},
           {tunnel(""), {"/tunnel/: found", "unspecified"}},
           {tunnel("127.1.2.3"), {"/tunnel/127.1.2.3", "loopback"}},
           {tunnel("::1"), {"/tunnel/::1", "loopback"}},
           {tunnel("239.0.0.1"), {"/tunnel/239.0.0.1", "multicast"}},
           {tunnel("ff05::9"), {"/tunnel/ff05::9", "multicast"}},
           {tunnel("255.255.255.255"), {"/tunnel/255.255.255.255", "broadcast"}},
           {withOwn(R"("srcAddr":"10.0.0.1")", "10.0.0.1"), {"10.0.0.1: found {\"adjId\":7}", "Vxlan1/srcAddr"}},
           {withOwn(R"("mlagVtepAddr6":"fd00::1")", "FD00::1"), {"/tunnel/FD00::1", "Vxlan1/mlagVtepAddr6"}},
           {tunnel("10.0.0.2", R"({"src":"224.0.0.5"})"), {"10.0.0.2/src: found \"224.0.0.5\"", "multicast"}},
           {tunnel("10.0.0.2", R"({"adjId":2147483684})"), {"10.0.0.2/adjId: found 2147483684", "2147483647"}},
           {stateway(kVxlan, R"({"adjacency":{"2147483684":{}}})"), {"/2147483684: found {}", "2147483647"}},
           {stateway(kVxlan, R"({"adjacency":{"7":{},"07":{}}})"), {"/adjacency/07: found {}", "another text"}},
           {hop(R"("type":"nextHopResolved")"), {"/7/nextHops/0: found {", "zero"}},
           {hop(R"("ethAddr":"00:00:00:00:00:00")"), {"/nextHops/0/ethAddr", "zero"}},
           {hop(R"("ethAddr":"ff:ff:ff:ff:ff:ff")"), {"/nextHops/0/ethAddr", "broadcast"}},
           {hop(R"("ethAddr":"01:00:5e:00:00:01")"), {"/nextHops/0/ethAddr", "multicast"}},
           {stateway(kVti, vti(R"("srcAddr":"224.0.0.5")")), {"Vxlan1/srcAddr: found \"224.0.0.5\"", "multicast"}},
           {stateway(kVti, vti(R"("srcAddrV6":"ff02::5")")), {"Vxlan1/srcAddrV6", "multicast"}},
           {stateway(port, R"({"port":{"a":{"number":3},"b":{"number":3}}})"), {"b: found {\"number\":3}", "a has it"}},
           {stateway("vane/l3IntfTable", R"({"l3Intf":{"up1":0}})"), {"/l3Intf/up1: found 0", "from 1 to 4094"}},
           {local("l3/vlanStatusDir", R"({"vlanStatus":{"0":{}}})"), {"/vlanStatus/0: found {}", "VlanId"}},
           {local("l3/vlanStatusDir", R"({"vlanStatus":{"4095":{}}})"), {"/vlanStatus/4095: found {}", "VlanId"}},
           {local("tesselVxlan/vxlanState", R"({"ttl":0})"), {"/ttl: found 0", "from 1 to 64"}},
       }) {
    SCOPED_TRACE(document.substr(0, 200));
    auto const name = file("state.json", document);
    auto parts = said;
    parts.insert(parts.begin(), name + ": ");
    expectRefused({"run", name}, parts);
  }
  // A port and an aggregation are numbered apart, and what is not resolved needs no address.
  for (auto const& good :
       {stateway(port, R"({"port":{"a":{"number":3},"b":{"number":3,"kind":"lag"},"c":{"number":4}}})"),
        hop(R"("type":"nextHopUnresolved")")})
    EXPECT_EQ(run({"run", file("good.json", good)}).code, kGood);
}

TEST_F(BadInput, aBadInputBehindGoodOnesStopsAll) {
  auto const good = file("good.json", wishTo(3).document());
  auto const empty = (base() / "empty").string(), none = (base() / "none.json").string();
  std::filesystem::create_directories(empty);
  expectRefused({"run", "--show-each", good, file("bad.json", stateway("no/such/path", "{}"))}, {"bad.json"});
  expectRefused({"run", good, empty}, {empty});
  expectRefused({"run", none}, {none});
  expectRefused({"import", "iproute2", empty}, {empty});
}

TEST_F(BadInput, profilesAndTogglesAreReadAsDocumentsAre) {
  std::string const deep(1'000'000, '[');
  std::filesystem::create_directories(base() / "toggles");
  for (auto const& name :
       {file("deep.json", deep), file("twice.json", R"({"name":"x","name":"y"})"), (base() / "toggles").string()}) {
    expectRefused({"run", "--profile", name}, {name + ": "});
    expectRefused({"profiles", name}, {name + ": "});
  }
  for (auto const& [text, said] : {std::pair(deep, ": line 1, column 65: "), {R"({"Her":1})", ": /Her: found 1"}}) {
    auto const name = file("toggles/Lib.json", text);
    setenv("TESSEL_TOGGLE_DIR", (base() / "toggles").c_str(), 1);
    expectRefused({"run"}, {name + said});
    unsetenv("TESSEL_TOGGLE_DIR");
  }
}

TEST_F(BadInput, usageAndNames) {
  auto const noLibrary = file("libTesselVxlan.so", "text");
  for (auto const& [arguments, said] : std::vector<std::pair<std::vector<std::string>, std::string>>{
           {{}, "subcommand"},
           {{"fly"}, "fly"},
           {{"import"}, "subcommand"},
           {{"import", "frr", "x"}, "frr"},
           {{"run", "--completion", "late"}, "late"},
           {{"run", "--format", "xml"}, "xml"},
           {{"run", "--show", "summary,moon"}, "moon"},
           {{"run", "--profile", "nonesuch"}, "nonesuch"},
           {{"run", "--plugin", "/no/such/libTesselVxlan.so"}, "/no/such/libTesselVxlan.so"},
           {{"run", "--trace", "NoSuchFile=1"}, "NoSuchFile"},
           {{"explain"}, "VTEP"},
           {{"explain", "10.0.0.256"}, "10.0.0.256"},
           {{"types", "No::SuchType"}, "No::SuchType"},
           {{"types", "--plugin", noLibrary}, noLibrary},
           {{"profiles", "nonesuch"}, "nonesuch"},
       }) {
    SCOPED_TRACE(said);
    expectRefused(arguments, {said});
  }
  Agent::Options options;
  for (auto const* type : {"TesselVxlan::NoMounter is not registered", "Vxlan::VxlanConfigDir is not a mounter"}) {
    options.mounterType = std::string(type, std::string_view(type).find(' '));
    EXPECT_THAT([&] { Agent agent(options); }, testing::ThrowsMessage<Plugin::LoadError>(HasSubstr(type)));
  }
}

}  // namespace Host::Test
