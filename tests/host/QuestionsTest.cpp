#include <cstdlib>
#include <fstream>
#include <iterator>

#include "host/commands/Commands.h"
#include "tests/host/CommandWorld.h"

namespace Host::Test {

using testing::HasSubstr;

class Graph : public Files {};

TEST_F(Graph, isDrawnByGraphviz) {
  if (std::system("command -v dot >/dev/null 2>&1") != 0) GTEST_SKIP() << "no dot";
  for (std::string const arguments :
       {"10.255.0.2", "vni 10010", "10.255.0.3 @input/seven-vteps.json",
        "10.255.0.8 --profile tiny @input/seven-vteps.json", "10.255.0.3 --profile flat @input/flood.json",
        "vni 10010 --profile compact @input/overlay.json", "vni 99"}) {
    auto const drawn = run(argumentsOf("tessel-agent graph " + arguments));
    ASSERT_NE(drawn.code, kUnusable) << drawn.err;
    auto const dot = file("graph.dot", drawn.out);
    auto const svg = (base() / "graph.svg").string();
    ASSERT_EQ(std::system(("dot -Tsvg -o " + svg + ' ' + dot).c_str()), 0) << drawn.out;
    EXPECT_GT(std::filesystem::file_size(svg), 1000U) << arguments;
  }
}

class Check : public Files {};

TEST_F(Check, missesTheForwardingEntryOfARouter) {
  auto const leaf = base() / "leaf";
  std::filesystem::create_directories(base());
  std::filesystem::copy(capture("bridge-per-vni/leaf1"), leaf);
  EXPECT_EQ(run({"check", leaf.string()}).code, kGood);
  std::ifstream in(leaf / "bridge-fdb.json");
  std::string text(std::istreambuf_iterator<char>(in), {});
  for (std::string const mac = "02:a2:00:05:01:00"; text.find(mac) != text.npos;) {
    text.replace(text.find(mac), mac.size(), "02:a2:00:05:01:99");
  }
  file("leaf/bridge-fdb.json", text);
  auto const ran = run({"check", leaf.string()});
  EXPECT_EQ(ran.code, kNotProgrammed);
  EXPECT_THAT(ran.out, HasSubstr("10.255.0.2, whose MAC address is missing: no forwarding entry of 02:a2:00:05:01:00"));
}

/// The result of the comparison with FRR of a series of captures.
Ran againstFrr(std::vector<std::string> const& captures, std::string const& format = "text") {
  AgentOptions options;
  options.inputs = captures;
  options.format = format;
  std::ostringstream out, err;
  int const code = againstFrrCommand(options, out, err);
  return {code, out.str(), err.str()};
}

TEST(AgainstFrr, namesTheNextHopThatTheUplinkFlapLost) {
  std::vector<std::string> series{capture("bridge-per-vni/leaf1"), data("frr/uplink-flap")};
  auto const before = againstFrr(series);
  EXPECT_EQ(before.code, kGood);
  EXPECT_THAT(before.out, HasSubstr("2 VTEPs, 0 differ\n"));
  series.insert(series.begin() + 1, capture("bridge-per-vni/events/03-uplink-up"));
  auto const ran = againstFrr(series);
  EXPECT_EQ(ran.code, kNotProgrammed);
  EXPECT_TRUE(inOrder(ran.out, {"10.255.0.2  10.1.1.0  up1        yes  -       -\n",
                                "10.255.0.2  10.1.2.0  up2        yes  yes     yes\n",
                                "10.255.0.2: the kernel lacks 10.1.1.0 by up1\n", "2 VTEPs, 2 differ\n"}));
  auto const json = againstFrr(series, "json").json();
  EXPECT_FALSE(json["same"].GetBool());
  EXPECT_STREQ(json["vteps"][0]["route"].GetString(), "10.255.0.2/32 bgp");
}

TEST(AgainstFrr, needsWhatFrrPrints) {
  try {
    againstFrr({capture("bridge-per-vni/leaf1")});
    FAIL() << "a capture without FRR's routes was compared";
  } catch (Kiln::InputError const& error) {
    EXPECT_THAT(error.what(), HasSubstr("leaf1/frr-ip-route.json: found no such file"));
  }
}

}  // namespace Host::Test
