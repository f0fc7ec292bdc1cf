#include <fstream>

#include "tests/support/AgentWorld.h"

namespace AgentTest {

namespace {

/// The rows of a whole state on each kind of chip, as tests/data/states says them: what no comparison of two agents
/// sees, since both run the same code.
class WholeStates : public testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(Chips, WholeStates, testing::Values("cascaded", "flat", "compact", "oneHeader", "flooding"),
                         [](auto const& test) { return test.param; });

Wish wishOn(std::string const& profile) {
  Wish wish;
  wish.localVtep = vtep(1);
  wish.udpPort = 4790;
  wish.udpSrcPort = 49152;
  wish.udpSrcPorts = 1024;
  wish.learning = true;
  wish.dscp = true;
  wish.tos = 5;
  wish.adjacencies = {{1, {uplink(1), uplink(profile == "flooding" ? 11 : 9)}}, {2, {unresolved(2)}}, {3, {uplink(3)}}};
  wish.tunnels = {
      {{unicast, vtep(2)}, {.adjId = 1}}, {{unicast, vtep(3)}, {.adjId = 2}}, {{member, vtep(4)}, {.adjId = 3}}};
  if (profile != "compact") {
    wish.localVtep6 = vtep6(1);
    wish.tunnels[{unicast, vtep6(2)}] = {.adjId = 1};
  }
  return wish;
}

TEST_P(WholeStates, areAsWrittenDown) {
  std::ifstream in(TESSEL_SOURCE_DIR "/tests/data/states/" + GetParam() + ".txt");
  std::string const expected{std::istreambuf_iterator<char>(in), {}};
  ASSERT_NE(expected, "");
  for (auto const& kind : chipKinds({GetParam()})) {
    AgentWorld agent(kind);
    agent.want(wishOn(GetParam()));
    EXPECT_EQ(agent.chip(), expected);
  }
}

}  // namespace

}  // namespace AgentTest
