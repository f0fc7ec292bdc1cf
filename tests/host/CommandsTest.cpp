#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "host/agent/Agent.h"
#include "platform/vxlan/VxlanConfig.h"
#include "tests/host/CommandWorld.h"

namespace Host::Test {

class CommandCases : public testing::TestWithParam<char const*> {};
INSTANTIATE_TEST_SUITE_P(Files, CommandCases, testing::Values("input/commands.txt", "compare/commands.txt"));

TEST_P(CommandCases, printAndEndAsWrittenDown) {
  for (auto& [given, result] : cases(GetParam())) {
    auto const ran = run(argumentsOf(given[0]));
    SCOPED_TRACE(given[0] + '\n' + ran.err);
    EXPECT_EQ("= " + std::to_string(ran.code) + '\n', result);
    EXPECT_TRUE(ran.code != kUnusable || ran.out.empty());
    auto const text = '\n' + (ran.code == kUnusable ? ran.err : ran.out);
    std::vector<std::string> parts;
    for (auto part = given.begin() + 1; part != given.end(); ++part) {
      std::replace(part->begin(), part->end(), '|', '\n');
      if (!part->starts_with("- "))
        parts.push_back(*part);
      else
        EXPECT_EQ(text.find(part->substr(2)), text.npos) << *part << " in " << text;
    }
    EXPECT_TRUE(inOrder(text, parts));
  }
}

TEST(Commands, capturesAreImportedAsStateDocuments) {
  for (auto const& [from, to] : {std::pair("bridge-per-vni/leaf1", "../../host/defaults/leaf.json"),
                                 {"vlan-aware-multihomed/leaf1", "input/vlan-aware-leaf1.json"}}) {
    std::ifstream wanted(data(to));
    EXPECT_EQ(run({"import", "iproute2", capture(from)}).out, std::string(std::istreambuf_iterator<char>(wanted), {}));
  }
  EXPECT_EQ(run({"run", capture("bridge-per-vni/leaf1")}).out, run({"run"}).out);
}

TEST(Commands, whatIsSaidBesideTheResultIsLeftOutOnDemand) {
  auto const warned = capture("bridge-per-vni/events/04-vtep-gone");
  EXPECT_THAT(run({"run"}).err, testing::StartsWith("no input: this is the built-in sample"));
  EXPECT_THAT(run({"run", warned}).err, testing::StartsWith("warning: "));
  EXPECT_EQ(run({"run", "--quiet"}).err + run({"run", "--quiet", warned}).err, "");
}

// A toggle holds for the life of a process.
TEST(TogglesDeathTest, mappingsReachAFeatureThatOwnsThem) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  auto const runWithout = [] {
    auto const directory = std::filesystem::path(testing::TempDir()) / "ownMappings";
    std::filesystem::create_directories(directory);
    std::ofstream(directory / "TesselL2.json") << R"({"VaneVniSmInTesselL2": false})";
    setenv("TESSEL_TOGGLE_DIR", directory.c_str(), 1);
    auto const ran =
        run({"run", "--show-each", "--show", "vni", capture("bridge-per-vni/leaf1"),
             capture("bridge-per-vni/events/07-vni-removed"), capture("bridge-per-vni/events/08-vni-back")});
    std::filesystem::remove_all(directory);
    std::cerr << ran.err << ran.out;
    std::exit(ran.code);
  };
  EXPECT_EXIT(runWithout(), testing::ExitedWithCode(0),
              testing::HasSubstr("10020  local    Vxlan1        3    3  progr"));
}

TEST(Agent, isNotSettledWhileACompletionIsHeldBack) {
  Agent::Options options;
  options.completion = Asic::Completion::deferred;
  Agent agent(options);
  agent.chip().hold("VirtualPortTableMerged");
  EXPECT_FALSE(agent.apply(wishTo(3).document()));
  EXPECT_FALSE(agent.settled());
  EXPECT_EQ(agent.stop(), 0U);
}

TEST(Agent, aRefusedDocumentChangesNothing) {
  Agent agent;
  agent.apply(wishTo(3).document());
  auto const writes = agent.chip().writes();
  // The first path is good, the second is not.
  EXPECT_THROW(agent.apply(R"({"stateway":{"vxlan/config":{"dscpPropagation":true},
                                           "vane/l3IntfTable":{"l3Intf":{"up1":0}}}})"),
               Kiln::InputError);
  EXPECT_EQ(agent.chip().writes(), writes);
  EXPECT_FALSE(agent.state<Vxlan::VxlanConfigDir>("vxlan/config")->dscpPropagation());
}

}  // namespace Host::Test
