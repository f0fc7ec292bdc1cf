#include <algorithm>
#include <random>

#include "tests/support/AgentWorld.h"

namespace AgentTest {

namespace {

/// Which message tells that a chip table is full.
std::map<std::string, std::string> const fullMessages{
    {"VirtualPort1Table", "TESSEL_VXLAN_VP_TABLE_RESOURCE_FULL"},
    {"IngL3EcmpMember0Table", "TESSEL_VXLAN_CASCADED_NEXTHOP_RESOURCE_FULL"},
    {"EgrL3Ipv4TunnelTable", "TESSEL_VXLAN_TUNNEL_TABLE_RESOURCE_FULL"},
    {"IngL3NextHop2Table", "TESSEL_VXLAN_UL_NEXT_HOP_RESOURCES_FULL"},
    {"L2TunnelIpv4SipTable", "TESSEL_VXLAN_SIP_SVP_MAPPING_RESOURCE_FULL"},
};

std::map<std::string, unsigned> refusedByMessage(AgentWorld& agent) {
  std::map<std::string, unsigned> counts;
  for (auto const& report : agent.agent().chip().tables()) {
    auto const message = fullMessages.find(report.name);
    if (message != fullMessages.end() && report.refused != 0) {
      counts[message->second] = static_cast<unsigned>(report.refused);
    }
  }
  return counts;
}

/// A chip with fewer rows than there are VTEPs.
class TinyChip : public testing::TestWithParam<ChipKind> {
 protected:
  static constexpr unsigned vteps = 10;

  /// In some order, each over one of two adjacencies.
  void comeAll(AgentWorld& agent, std::mt19937_64& random) {
    agent.together([](AgentWorld& a) {
      a.localVtep(vtep(1)).udpPort(4789).adjacency(1, {uplink(1), uplink(2)}).adjacency(2, {uplink(2), uplink(3)});
    });
    for (auto const n : shuffled(random)) agent.tunnel(unicast, vtep(n)).over(n % 2 + 1);
  }
  static std::vector<unsigned> shuffled(std::mt19937_64& random) {
    std::vector<unsigned> all;
    for (unsigned n = 2; n < 2 + vteps; ++n) all.push_back(n);
    std::shuffle(all.begin(), all.end(), random);
    return all;
  }
};
INSTANTIATE_TEST_SUITE_P(Chips, TinyChip, testing::ValuesIn(chipKinds({"tiny"})), kindName);

TEST_P(TinyChip, tellsEachRefusedWriteOnce) {
  for (unsigned seed = 1; seed <= 4; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937_64 random(seed);
    AgentWorld agent(GetParam());
    comeAll(agent, random);
    // Learning writes every virtual port again, those without a row too.
    agent.learning(true);
    auto const refused = refusedByMessage(agent);
    EXPECT_EQ(refused.size(), fullMessages.size() - 2) << "headers, virtual ports and overlay entries have run out";
    EXPECT_EQ(agent.messageCounts(), refused);
  }
}

TEST_P(TinyChip, servesInOrderOfArrival) {
  AgentWorld agent(GetParam());
  agent.together([](AgentWorld& a) { a.localVtep(vtep(1)).udpPort(4789); });
  for (unsigned n = 2; n <= 8; ++n) agent.tunnel(unicast, vtep(n)).via(uplink(1));
  agent.messages();
  auto const before = agent.statusByKey();
  EXPECT_NE(before.find("unicast 10.255.0.5 tnl=[10.255.0.5] nh=[10.255.0.5]"), std::string::npos) << before;
  EXPECT_NE(before.find("unicast 10.255.0.6 tnl=[10.255.0.6] nh=[unprogrammed]"), std::string::npos) << before;
  EXPECT_NE(before.find("unicast 10.255.0.7 tnl=[unprogrammed] nh=[unprogrammed]"), std::string::npos) << before;
  agent.tunnel(unicast, vtep(3)).gone();
  auto const after = agent.statusByKey();
  EXPECT_NE(after.find("unicast 10.255.0.6 tnl=[10.255.0.6] nh=[10.255.0.6]"), std::string::npos) << after;
  EXPECT_NE(after.find("unicast 10.255.0.7 tnl=[10.255.0.7] nh=[unprogrammed]"), std::string::npos) << after;
  EXPECT_NE(after.find("unicast 10.255.0.8 tnl=[unprogrammed] nh=[unprogrammed]"), std::string::npos) << after;
}

}  // namespace

}  // namespace AgentTest
