#include <fstream>
#include <iterator>

#include "host/agent/Agent.h"
#include "platform/vxlan/VxlanConfig.h"
#include "tests/host/CommandWorld.h"

namespace Host::Test {

using testing::HasSubstr;

class Explain : public Files {};

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
  wish.localVtep.clear();
  auto const early = file("early.json", wish.document());
  for (auto const& [arguments, parts] : std::vector<std::pair<std::vector<std::string>, std::vector<std::string>>>{
           {{"10.255.0.3", input},
            {"not programmed, no route", "by no route", "overlay entry", "virtual port",
             "underlay: L3NextHop2Table ff:ff:ff:ff:ff:ff"}},
           {{"10.255.0.8", "--profile", "tiny", input}, {"not programmed, table full: ", "no row, waits for a row"}},
           {{"10.255.0.2", early}, {"not programmed, no local VTEP", "from no address yet", "no rows in the chip"}},
           {{"10.255.0.99", input}, {"10.255.0.99 is not wanted"}}}) {
    auto command = arguments;
    command.insert(command.begin(), "explain");
    auto const ran = run(command);
    EXPECT_EQ(ran.code, kNotProgrammed);
    EXPECT_TRUE(inOrder(ran.out, parts));
  }
}

TEST(OtherCommands, printWhatTheyAreAskedFor) {
  auto const leaf = capture("bridge-per-vni/leaf1"), gone = capture("bridge-per-vni/events/04-vtep-gone");
  for (auto const& [from, to] : {std::pair("bridge-per-vni/leaf1", "host/defaults/leaf.json"),
                                 {"vlan-aware-multihomed/leaf1", "tests/data/input/vlan-aware-leaf1.json"}}) {
    std::ifstream wanted(std::filesystem::path(TESSEL_SOURCE_DIR) / to);
    EXPECT_EQ(run({"import", "iproute2", capture(from)}).out, std::string(std::istreambuf_iterator<char>(wanted), {}));
  }
  EXPECT_THAT(run({"import", "iproute2", leaf, gone}).out, testing::Not(HasSubstr("10.255.0.3")));
  auto const usage = "Usage: tessel-agent";
  for (auto const& [arguments, parts] : std::vector<std::pair<std::vector<std::string>, std::vector<std::string>>>{
           {{"types"}, {"\nTesselVxlan::TesselVxlanMounter\n", "\nVane::HwTunnelConfig\n"}},
           {{"types", "Vane::HwTunnelConfig"},
            {"is a Kiln::Entity", "0x83", "hwInit", "u32", "yes", "0x85", "hwTunnelConfigList",
             "Vane::TunnelKey to Vane::HwTunnelConfigEntry"}},
           {{"profiles"}, {"\ncascaded ", "\ncompact ", "\nflat ", "\nflooding ", "\ntiny "}},
           {{"profiles", "tiny"},
            {"\nVirtualPort1Table                 7  4096\n", "vxlanCascadedForwardingSupport=true"}},
           {{"--help"}, {usage}},
           {{"run", "--help"}, {usage}},
           {{"import", "iproute2", "--help"}, {usage}},
           {{"--version"}, {"tessel-agent "}},
       }) {
    auto const ran = run(arguments);
    EXPECT_EQ(ran.code, kGood);
    EXPECT_TRUE(inOrder(ran.out, parts));
  }
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
