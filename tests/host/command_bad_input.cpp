#include <cstdlib>

#include "host/agent/Agent.h"
#include "tests/host/command_world.h"

namespace Host::Test {

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

class BadInput : public Files {};

constexpr char const* kVxlan = "hardware/tessel/tunnel/configDir/vxlanTunnel";

std::string stateway(std::string const& path, std::string const& attributes) {
  return R"({"stateway":{")" + path + R"(":)" + attributes + "}}";
}

}  // namespace

TEST_F(BadInput, documentsThatCannotBeUsedNamePlaceAndValue) {
  struct Case {
    std::string document;
    std::vector<char const*> said;
  };
  std::string const vti = "interface/status/eth/vxlan";
  for (auto const& [document, said] : std::vector<Case>{
           {"{", {"line 1, column 2", "expected"}},
           {"[]", {"expected an object"}},
           {R"({"stateway":{},"stateway":{"no/such/path":{}}})", {": /stateway: ", "one member of this name"}},
           {std::string(100'000, '['), {"line 1, column 65", "64 levels"}},
           {R"({"state":{}})", {"/state", "unknown member"}},
           {stateway("no/such/path", "{}"), {"/stateway/no~1such~1path", "unknown path"}},
           {stateway("vxlan/config", R"({"colour":"red"})"), {"/stateway/vxlan~1config/colour", "\"red\"", "unknown"}},
           {stateway("vxlan/config", R"({"dscpPropagation":"yes"})"), {"dscpPropagation", "\"yes\"", "true or false"}},
           {stateway(vti, R"({"vtiStatus":{"Vxlan1":{"udpPort":70000}}})"), {"Vxlan1/udpPort", "70000", "65535"}},
           {stateway(vti, R"({"vtiStatus":{"Vxlan1":{"udpPort":-1}}})"), {"Vxlan1/udpPort", "-1", "65535"}},
           {stateway(vti, R"({"vtiStatus":{"Vxlan1":{"srcAddr":"10.0.0.256"}}})"), {"srcAddr", "\"10.0.0.256\""}},
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
