#include <cstdlib>

#include "host/agent/Agent.h"
#include "platform/tessel/l3common/VxlanDirs.h"
#include "tests/host/CommandWorld.h"

namespace Host::Test {

using testing::HasSubstr;
using testing::IsEmpty;

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

TEST_F(BadInput, documentsAreRefusedAsWrittenDown) {
  for (auto const& [given, result] : cases("input/documents.txt")) {
    ASSERT_EQ(given.size(), 1U) << result;
    auto const name = file("state.json", given[0]);
    auto const ran = run({"run", name});
    if (ran.code == kUnusable) {
      EXPECT_THAT(ran.out, IsEmpty());
      EXPECT_THAT(ran.err, testing::StartsWith(name));
      EXPECT_EQ("= " + ran.err.substr(name.size() + 2), result) << given[0];
    } else {
      EXPECT_EQ("= accepted\n", result) << given[0];
      EXPECT_EQ(ran.code, kGood);
    }
  }
}

/// Flood VTEPs, each in the lists of two VLANs, and multicast tunnels, as many of each.
std::string floodDocument(unsigned vteps, unsigned groups) {
  std::string lists, routes, tunnels;
  auto const add = [](std::string& list, unsigned base, unsigned i, char const* value) {
    list += (list.empty() ? "\"" : ",\"") + Kiln::toText(Meshal::IpAddr(base + i)) + "\":" + value;
  };
  for (unsigned i = 0; i < vteps; ++i) add(lists, 0x0b000001, i, "true"), add(routes, 0x0b000001, i, "7");
  for (unsigned i = 0; i < groups; ++i)
    add(tunnels, 0xef000001, i, R"({"nextHops":[{"ethAddr":"01:00:5e:00:00:01"}]})");
  return R"({"stateway":{"interface/status/eth/vxlan":{"vtiStatus":{"Vxlan1":{"srcAddr":"10.0.0.1","udpPort":4789}}},
            "hardware/tessel/tunnel/configDir/vxlanHwHerTunnel":{"adjacency":{"7":{"nextHops":[{"ethAddr":"02:00:00:00:00:01"}]}}},
            "vxlan/version2/vtepStatusDir":{"vtepAdjacency":{)" +
         routes + R"(}},"vxlan/multicast/tunnel/config":{"tunnel":{)" + tunnels +
         R"(}}},"shmem":{"bridging/l2Rib/floodOutput":{"floodSet":{"10":{"vtep":{)" + lists + R"(}},"20":{"vtep":{)" +
         lists + "}}}}}}";
}

TEST_F(BadInput, moreFloodTunnelsThanEncapsulationIds) {
  for (auto const& [vteps, groups, place] :
       {std::tuple(24'577U, 0U, "vtep/11.0.96.1: found true, expected at most 24576 flood VTEPs and multicast"),
        {1U, 24'576U, "vtep/11.0.0.1: found true, expected at most 24576"},
        {0U, 24'577U, "tunnel: found {\"239.0.0.1\":"}}) {
    auto const name = file("many.json", floodDocument(vteps, groups));
    expectRefused({"run", name}, {name, place});
  }
}

// The ids of one document's flood VTEPs are free for the multicast tunnels of the next.
TEST(Agent, allEncapsulationIdsChangeTheirUsers) {
  Agent::Options options;
  options.profile = "flat";
  Agent agent(options);
  auto const ids = [&] {
    return agent.local<TesselL3Common::TesselVxlanBumVtepConfigDir>("vxlan/bumVtepConfigDir")
        ->bumVtepConfigColl()
        .size();
  };
  for (auto const& [vteps, groups] : {std::pair(24'576U, 0U), {0U, 24'576U}, {24'575U, 1U}, {1U, 24'575U}}) {
    agent.apply(floodDocument(vteps, groups));
    EXPECT_EQ(ids(), vteps + groups);
  }
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

TEST(Agent, takesARegisteredMounter) {
  Agent::Options options;
  for (auto const* type : {"TesselVxlan::NoMounter is not registered", "Vxlan::VxlanConfigDir is not a mounter"}) {
    options.mounterType = std::string(type, std::string_view(type).find(' '));
    EXPECT_THAT([&] { Agent agent(options); }, testing::ThrowsMessage<Plugin::LoadError>(HasSubstr(type)));
  }
}

}  // namespace Host::Test
