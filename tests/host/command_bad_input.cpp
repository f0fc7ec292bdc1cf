#include <cstdlib>

#include "host/agent/Agent.h"
#include "tests/host/command_world.h"

namespace Host::Test {

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

class BadInput : public Files {};

constexpr char const* kVxlan = "hardware/tessel/tunnel/configDir/vxlanTunnel";
constexpr char const* kVti = "interface/status/eth/vxlan";

std::string stateway(std::string const& path, std::string const& attributes) {
  return R"({"stateway":{")" + path + R"(":)" + attributes + "}}";
}

}  // namespace

TEST_F(BadInput, documentsThatCannotBeUsedNamePlaceAndValue) {
  struct Case {
    std::string document;
    std::vector<char const*> said;
  };
  for (auto const& [document, said] : std::vector<Case>{
           {"{", {"line 1, column 2", "expected"}},
           {"[]", {"expected an object"}},
           {R"({"stateway":{},"stateway":{"no/such/path":{}}})", {": /stateway: ", "one member of this name"}},
           {std::string(100'000, '['), {"line 1, column 65", "64 levels"}},
           {R"({"state":{}})", {"/state", "unknown member"}},
           {stateway("no/such/path", "{}"), {"/stateway/no~1such~1path", "unknown path"}},
           {stateway("vxlan/config", R"({"colour":"red"})"), {"/stateway/vxlan~1config/colour", "\"red\"", "unknown"}},
           {stateway("vxlan/config", R"({"dscpPropagation":"yes"})"), {"dscpPropagation", "\"yes\"", "true or false"}},
           {stateway(kVti, R"({"vtiStatus":{"Vxlan1":{"udpPort":70000}}})"), {"Vxlan1/udpPort", "70000", "65535"}},
           {stateway(kVti, R"({"vtiStatus":{"Vxlan1":{"udpPort":-1}}})"), {"Vxlan1/udpPort", "-1", "65535"}},
           {stateway(kVti, R"({"vtiStatus":{"Vxlan1":{"srcAddr":"10.0.0.256"}}})"), {"srcAddr", "\"10.0.0.256\""}},
           {stateway(kVxlan, R"({"tunnel":{"10.0.0":{}}})"), {"/tunnel/10.0.0", "a Meshal::IpGenAddr"}},
           {stateway(kVxlan, R"({"adjacency":{"7":{"nextHops":[{"type":"nextHopLost"}]}}})"),
            {"nextHops/0/type", "\"nextHopLost\"", "nextHopResolved"}},
           {stateway("vane/l3IntfTable", R"({"l3Intf":{"up1":4095}})"), {"l3Intf/up1", "4095", "4094"}},
           {R"({"local":{"tesselVxlan/vxlanState":{"ttl":65}}})", {"ttl", "65", "64"}},
           {R"({"local":{"l3/hwTunnelConfigDir":{"hwTunnelConfig":{}}}})", {"/local/l3~1hwTunnelConfigDir", "itself"}},
           {R"({"local":{"tesselVxlan/vxlanState":{"localVtep":"10.0.0.1"}}})", {"localVtep", "10.0.0.1", "itself"}},
           {stateway("hardware/tessel/tunnel/vxlan/vxlanToL2State", "{}"), {"vxlanToL2State", "itself"}},
       }) {
    SCOPED_TRACE(document);
    auto const name = file("state.json", document);
    auto const ran = run({"run", name});
    EXPECT_EQ(ran.code, kUnusable);
    EXPECT_THAT(ran.out, IsEmpty());
    EXPECT_EQ(ran.err.find(name), 0U) << ran.err;
    for (auto const* part : said) EXPECT_THAT(ran.err, HasSubstr(part));
  }
}

TEST_F(BadInput, aBadInputBehindGoodOnesStopsAll) {
  auto const good = file("good.json", wishTo(3).document());
  auto const ran = run({"run", "--show-each", good, file("bad.json", R"({"stateway":{"no/such/path":{}}})")});
  EXPECT_EQ(ran.code, kUnusable);
  EXPECT_THAT(ran.out, IsEmpty());
  std::filesystem::create_directories(base() / "empty");
  EXPECT_THAT(run({"run", good, (base() / "empty").string()}).err, HasSubstr("empty"));
  EXPECT_THAT(run({"run", (base() / "none.json").string()}).err, HasSubstr("none.json"));
  EXPECT_THAT(run({"import", "iproute2", (base() / "empty").string()}).err, HasSubstr("empty"));
}

TEST_F(BadInput, valuesThatNoSwitchCanHaveNamePlaceAndValue) {
  auto const tunnel = [](std::string const& vtep, std::string const& fields = "{}") {
    return stateway(kVxlan, R"({"tunnel":{")" + vtep + "\":" + fields + "}}");
  };
  auto const hop = [](std::string const& fields) {
    return stateway(kVxlan, R"({"adjacency":{"7":{"nextHops":[{"type":"nextHopResolved")" + fields + "}]}}}");
  };
  auto const vti = [](std::string const& fields) { return R"("vtiStatus":{"Vxlan1":{)" + fields + "}}"; };
  auto const withOwn = [&](std::string const& own, std::string const& vtep) {
    return R"({"stateway":{")" + std::string(kVti) + "\":{" + vti(own) + "},\"" + kVxlan + R"(":{"tunnel":{")" + vtep +
           R"(":{"adjId":7}}}}})";
  };
  struct Case {
    std::string document, place, said;
  };
  for (auto const& [document, place, said] : std::vector<Case>{
           {tunnel("0.0.0.0"), "/tunnel/0.0.0.0: found {}", "unspecified"},
           {tunnel("::"), "/tunnel/::", "unspecified"},
           {tunnel(""), "/tunnel/: found", "unspecified"},
           {tunnel("127.1.2.3"), "/tunnel/127.1.2.3", "loopback"},
           {tunnel("::1"), "/tunnel/::1", "loopback"},
           {tunnel("239.0.0.1"), "/tunnel/239.0.0.1", "multicast"},
           {tunnel("ff05::9"), "/tunnel/ff05::9", "multicast"},
           {tunnel("255.255.255.255"), "/tunnel/255.255.255.255", "broadcast"},
           {withOwn(R"("srcAddr":"10.0.0.1")", "10.0.0.1"), "/tunnel/10.0.0.1: found {\"adjId\":7}", "Vxlan1/srcAddr"},
           {withOwn(R"("mlagVtepAddr6":"fd00::1")", "FD00::1"), "/tunnel/FD00::1", "Vxlan1/mlagVtepAddr6"},
           {tunnel("10.0.0.2", R"({"src":"224.0.0.5"})"), "10.0.0.2/src: found \"224.0.0.5\"", "multicast"},
           {tunnel("10.0.0.2", R"({"adjId":2147483684})"), "10.0.0.2/adjId: found 2147483684", "2147483647"},
           {stateway(kVxlan, R"({"adjacency":{"2147483684":{}}})"), "/adjacency/2147483684: found {}", "2147483647"},
           {stateway(kVxlan, R"({"adjacency":{"7":{},"07":{}}})"), "/adjacency/07: found {}", "another text"},
           {hop(""), "/7/nextHops/0: found {", "zero"},
           {hop(R"(,"ethAddr":"00:00:00:00:00:00")"), "/nextHops/0/ethAddr", "zero"},
           {hop(R"(,"ethAddr":"ff:ff:ff:ff:ff:ff")"), "/nextHops/0/ethAddr", "broadcast"},
           {hop(R"(,"ethAddr":"01:00:5e:00:00:01")"), "/nextHops/0/ethAddr", "multicast"},
           {stateway(kVti, "{" + vti(R"("srcAddr":"224.0.0.5")") + "}"), "Vxlan1/srcAddr: found \"224.0.0.5\"",
            "multicast"},
           {stateway(kVti, "{" + vti(R"("srcAddrV6":"ff02::5")") + "}"), "Vxlan1/srcAddrV6", "multicast"},
           {stateway("hardware/tessel/port/config", R"({"port":{"a":{"number":3},"b":{"number":3}}})"),
            "/port/b: found {\"number\":3}", "a has it"},
           {stateway("vane/l3IntfTable", R"({"l3Intf":{"up1":0}})"), "/l3Intf/up1: found 0", "from 1 to 4094"},
           {R"({"local":{"l3/vlanStatusDir":{"vlanStatus":{"0":{}}}}})", "/vlanStatus/0: found {}", "VlanId"},
           {R"({"local":{"l3/vlanStatusDir":{"vlanStatus":{"4095":{}}}}})", "/vlanStatus/4095: found {}", "VlanId"},
           {R"({"local":{"tesselVxlan/vxlanState":{"ttl":0}}})", "/ttl: found 0", "from 1 to 64"},
       }) {
    SCOPED_TRACE(document);
    auto const ran = run({"run", file("state.json", document)});
    EXPECT_EQ(ran.code, kUnusable);
    EXPECT_THAT(ran.out, IsEmpty());
    EXPECT_THAT(ran.err, HasSubstr(place));
    EXPECT_THAT(ran.err, HasSubstr(said));
  }
  // A port and an aggregation are numbered apart, and what is not resolved needs no address.
  auto const good = stateway("hardware/tessel/port/config",
                             R"({"port":{"a":{"number":3},"b":{"number":3,"kind":"lag"},"c":{"number":4}}})");
  EXPECT_EQ(run({"run", file("good.json", good)}).code, kGood);
  EXPECT_EQ(run({"run", file("hop.json",
                             stateway(kVxlan, R"({"adjacency":{"7":{"nextHops":[{"type":"nextHopUnresolved"}]}}})"))})
                .code,
            kGood);
}

TEST_F(BadInput, profilesAndTogglesAreReadAsDocumentsAre) {
  std::string const deep(1'000'000, '[');
  std::filesystem::create_directories(base() / "directory");
  for (auto const& name : {file("deep.json", deep), file("twice.json", R"({"name":"x","name":"y"})"),
                           file("text.json", R"({"name":"\xff"})"), (base() / "directory").string()}) {
    for (auto const& arguments : {std::vector<std::string>{"run", "--profile", name}, {"profiles", name}}) {
      auto const ran = run(arguments);
      EXPECT_EQ(ran.code, kUnusable) << name;
      EXPECT_EQ(ran.err.find(name + ": "), 0U) << ran.err;
      EXPECT_THAT(ran.out, IsEmpty());
    }
  }
  for (auto const& [text, said] : {std::pair(deep, ": line 1, column 65: "), {R"({"Her":1})", ": /Her: found 1"}}) {
    std::filesystem::create_directories(base() / "toggles");
    auto const name = file("toggles/Lib.json", text);
    setenv("TESSEL_TOGGLE_DIR", (base() / "toggles").c_str(), 1);
    auto const ran = run({"run"});
    unsetenv("TESSEL_TOGGLE_DIR");
    EXPECT_EQ(ran.code, kUnusable);
    EXPECT_EQ(ran.err.find(name + said), 0U) << ran.err;
  }
}

TEST_F(BadInput, usageAndNames) {
  struct Case {
    std::vector<std::string> arguments;
    char const* said;
  };
  for (auto const& [arguments, said] : std::vector<Case>{
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
           {{"run", "--trace", "TunnelBaseHelperSm"}, "TunnelBaseHelperSm"},
           {{"explain"}, "VTEP"},
           {{"explain", "10.0.0.256"}, "10.0.0.256"},
           {{"types", "No::SuchType"}, "No::SuchType"},
           {{"profiles", "nonesuch"}, "nonesuch"},
       }) {
    auto const ran = run(arguments);
    EXPECT_EQ(ran.code, kUnusable) << said;
    EXPECT_THAT(ran.err, HasSubstr(said));
    EXPECT_THAT(ran.out, IsEmpty()) << said;
  }
}

TEST_F(BadInput, aPlugInWithoutTheMounterOrWithAnotherType) {
  Agent::Options options;
  options.mounterType = "TesselVxlan::NoMounter";
  EXPECT_THAT([&] { Agent agent(options); },
              testing::ThrowsMessage<Plugin::LoadError>(HasSubstr("TesselVxlan::NoMounter is not registered")));
  options.mounterType = "Vxlan::VxlanConfigDir";
  EXPECT_THAT([&] { Agent agent(options); },
              testing::ThrowsMessage<Plugin::LoadError>(HasSubstr("Vxlan::VxlanConfigDir")));
  auto const noLibrary = file("libTesselVxlan.so", "text");
  EXPECT_THAT(run({"types", "--plugin", noLibrary}).err, HasSubstr(noLibrary));
}

TEST_F(BadInput, helpIsGood) {
  for (auto const& command : std::vector<std::vector<std::string>>{{"--help"},
                                                                   {"run", "--help"},
                                                                   {"explain", "--help"},
                                                                   {"import", "--help"},
                                                                   {"import", "iproute2", "--help"},
                                                                   {"types", "--help"},
                                                                   {"profiles", "--help"}}) {
    auto const ran = run(command);
    EXPECT_EQ(ran.code, kGood);
    EXPECT_THAT(ran.out, HasSubstr("Usage: tessel-agent"));
  }
  EXPECT_THAT(run({"--version"}).out, testing::StartsWith("tessel-agent "));
}

}  // namespace Host::Test
