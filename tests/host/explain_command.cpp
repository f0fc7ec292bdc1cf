#include "tests/host/command_world.h"

namespace Host::Test {

namespace {

using testing::HasSubstr;

class Explain : public Files {};

/// Whether the parts stand in `text` in this order.
testing::AssertionResult inOrder(std::string const& text, std::vector<char const*> const& parts) {
  std::size_t at = 0;
  for (auto const* part : parts) {
    auto const found = text.find(part, at);
    if (found == std::string::npos) return testing::AssertionFailure() << part << " is not in its place in\n" << text;
    at = found + 1;
  }
  return testing::AssertionSuccess();
}

}  // namespace

TEST_F(Explain, aProgrammedTunnelRowByRowDownToThePorts) {
  auto const input = file("state.json", wishTo(3).document());
  auto const ran = run({"explain", "10.255.0.2", input});
  EXPECT_EQ(ran.code, kGood);
  EXPECT_TRUE(inOrder(
      ran.out, {"10.255.0.2, vxlanTunnel generation 1: programmed\n", "  from 10.255.0.1, tunnel id 2", "adjacency 7",
                "10.1.1.1, 02:00:00:00:00:01, Ethernet1", "overlay entry: IngL3EcmpMember0Table 10.255.0.2, row",
                ", written", "\n  virtual port: VirtualPortTableMerged 10.255.0.2, row 2, written",
                "\n    outer header: EgrL3Ipv4TunnelTable 10.255.0.1 > 10.255.0.2",
                "\n  underlay: EcmpGroup1Table adj:7", "\n    members: EcmpMember1Table",
                "\n      next hop: L3NextHop2Table 02:00:00:00:00:01 Vlan101", "\n        outgoing VLAN: EgrL3Oif2",
                "\n        to port 1\n", "\n      next hop: L3NextHop2Table 02:00:00:00:00:02 Vlan102"}));
  auto const json = run({"explain", "10.255.0.2", input, "--format", "json"}).json();
  EXPECT_EQ(json["chain"]["overlay"]["links"][0]["to"]["table"], "VirtualPortTableMerged");
  EXPECT_EQ(json["tunnels"][0]["vtep"], "10.255.0.2");
}

TEST_F(Explain, whatIsMissingAndWhy) {
  auto wish = wishTo(8);
  wish.tunnels[{AgentTest::unicast, AgentTest::vtep(3)}].adjId.reset();
  auto const input = file("state.json", wish.document());
  auto const hopless = run({"explain", "10.255.0.3", input});
  EXPECT_EQ(hopless.code, kNotProgrammed);
  EXPECT_TRUE(inOrder(hopless.out, {"not programmed, no route", "by no route", "overlay entry", "virtual port",
                                    "underlay: L3NextHop2Table ff:ff:ff:ff:ff:ff"}));

  auto const refused = run({"explain", "10.255.0.8", "--profile", "tiny", input});
  EXPECT_EQ(refused.code, kNotProgrammed);
  EXPECT_THAT(refused.out, testing::ContainsRegex("not programmed, table full: [A-Za-z0-9]+"));
  EXPECT_THAT(refused.out, HasSubstr("no row, waits for a row"));

  wish.localVtep.clear();
  auto const early = run({"explain", "10.255.0.2", file("early.json", wish.document())});
  EXPECT_TRUE(inOrder(early.out, {"not programmed, no local VTEP", "from no address yet", "no rows in the chip"}));

  auto const stranger = run({"explain", "10.255.0.99", input});
  EXPECT_EQ(stranger.code, kNotProgrammed);
  EXPECT_THAT(stranger.out, HasSubstr("10.255.0.99 is not wanted"));
}

}  // namespace Host::Test
