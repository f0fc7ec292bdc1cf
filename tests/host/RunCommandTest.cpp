#include <algorithm>

#include "tests/host/CommandWorld.h"

namespace Host::Test {

using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using Strings = std::vector<std::string>;

class RunCommand : public Files {};

/// The ids of the first tunnel of a report.
std::string idsOf(rapidjson::Value const& report) {
  auto const& tunnel = report["tunnels"][0];
  return std::to_string(tunnel["tunnelId"].GetUint()) + "/" + std::to_string(tunnel["nextHopId"].GetUint());
}

TEST_F(RunCommand, withoutAnInputTheBuiltInLeafIsShown) {
  auto const shown = run({"run"});
  EXPECT_EQ(shown.code, kGood) << shown.err;
  EXPECT_THAT(shown.out, HasSubstr("local VTEP 10.255.0.1, UDP port 4789"));
  EXPECT_THAT(shown.out, testing::ContainsRegex("10\\.255\\.0\\.2 +[0-9]+ +[0-9]+ +36 +10\\.1\\.1\\.0 .* up1"));
  EXPECT_THAT(shown.out, EndsWith("  flood tunnel, VLANs 4091 4092\n\n4 tunnels, 4 programmed\n"));
  EXPECT_EQ(run({"run", capture("bridge-per-vni/leaf1")}).out, shown.out);
}

TEST_F(RunCommand, jsonKeepsItsShape) {
  auto const json = run({"run", "--format", "json"}).json();
  EXPECT_EQ(json["profile"], "cascaded");
  EXPECT_TRUE(json["settled"].GetBool());
  auto const tunnel = json["tunnels"][0].GetObject();
  EXPECT_STREQ(tunnel["type"].GetString(), "vxlanTunnel");
  EXPECT_STREQ(tunnel["localVtep"].GetString(), "10.255.0.1");
  EXPECT_EQ(tunnel["genId"].GetUint(), 1U);

  auto const& table = json["tables"]["VirtualPortTableMerged"];
  auto const& entry = *std::find_if(table["entries"].Begin(), table["entries"].End(),
                                    [](auto const& one) { return one["key"] == "10.255.0.3"; });
  EXPECT_EQ(table["used"].GetUint(), 4U);
  EXPECT_EQ(entry["state"].GetUint(), 3U);
  auto const& handle = entry["fields"]["vp2"]["egrL3TunnelTableHandle"];
  EXPECT_EQ(handle["row"], entry["fields"]["vp2"]["tunnelIndex"]);
  EXPECT_THAT(keysOf(json, handle["table"].GetString()), Contains(std::string(handle["key"].GetString())));

  std::uint64_t writes = 0;
  for (auto const& part : json["chip"]["tables"].GetObject()) writes += part.value["writes"].GetUint64();
  EXPECT_EQ(json["chip"]["writes"].GetUint64(), writes);
  EXPECT_TRUE(json["logs"].Empty());
  EXPECT_FALSE(json.HasMember("state"));
}

TEST_F(RunCommand, eachInputIsFollowedAndTheSameAgainWritesNothing) {
  for (auto const& [fabric, both, one] :
       {std::tuple("bridge-per-vni", "36", "37"), {"vlan-aware-multihomed", "42", "36"}}) {
    auto const after = [fabric = fabric](Strings const& events) {
      Strings arguments{"run", "--show-each", "--format", "json", capture(std::string(fabric) + "/leaf1")};
      for (auto const& event : events) arguments.push_back(capture(fabric + ("/events/" + event)));
      return run(arguments).json();
    };
    auto const once = after({"01-base", "01-base"});
    auto const round = after({"02-uplink-down", "04-vtep-gone", "01-base", "06-mac-moved", "01-base"});
    auto const& steps = round["steps"];
    ASSERT_EQ(steps.Size(), 6U);
    std::string shown;
    for (auto const& step : steps.GetArray()) {
      EXPECT_TRUE(step["logs"].Empty());
      for (auto const& tunnel : tunnelsOf(step)) shown += tunnel.substr(9) + ", ";
      shown += keysOf(step, "EcmpGroup1Table")[0] + "; ";
    }
    // Known traffic, then flood tunnels: a VTEP behind which nothing is learned any more is still flooded to.
    auto const all = "2 #, 3 #, 2 #, 3 #, adj:#; ", hub = "2 %, 3 %, 2 %, 3 %, adj:%; ";
    auto wanted = std::string(all) + hub + "2 #, 2 #, adj:#; " + all + "3 #, 2 #, 3 #, adj:#; " + all;
    for (auto at = wanted.find_first_of("#%"); at != std::string::npos; at = wanted.find_first_of("#%"))
      wanted.replace(at, 1, wanted[at] == '#' ? both : one);
    EXPECT_EQ(shown, wanted);
    for (unsigned const i : {1, 2, 3})
      EXPECT_EQ(idsOf(steps[i]), idsOf(steps[0])) << "a tunnel that stays keeps its ids";
    EXPECT_EQ(once["steps"][2]["chip"]["writes"], once["steps"][1]["chip"]["writes"]) << "nothing has changed";
  }
}

TEST_F(RunCommand, reasonsOfTunnelsThatAreNotProgrammed) {
  auto wish = wishTo(3);
  wish.adjacencies[8] = {AgentTest::unresolved(1)};
  wish.adjacencies[9] = {AgentTest::uplink(11)};
  wish.adjacencies[10] = {};
  std::optional<std::uint32_t> const adjacencies[] = {{}, 8, 9, 10, 99};
  for (unsigned n = 0; n < 5; ++n) wish.tunnels[{AgentTest::unicast, AgentTest::vtep(4 + n)}].adjId = adjacencies[n];
  wish.tunnels[{AgentTest::unicast, AgentTest::vtep6(2)}].adjId = 7;
  auto const shown = [&] {
    auto const ran = run({"run", "--format", "json", file("state.json", wish.document())});
    EXPECT_EQ(ran.code, kNotProgrammed);
    return tunnelsOf(ran.json());
  };
  EXPECT_THAT(
      shown(),
      ElementsAre("10.255.0.2 7", "10.255.0.3 7", "10.255.0.4 !no route", "10.255.0.5 8 !next hop unresolved: 10.1.1.1",
                  "10.255.0.6 9 !no port for the next hop's interface Vlan111",
                  "10.255.0.7 10 !adjacency 10 has no next hop", "10.255.0.8 99 !adjacency 99 is not in the state",
                  "fd00::2 7 !no local VTEP for IPv6"));
  wish = wishTo(2);
  wish.udpPort = 0;
  EXPECT_THAT(shown(), ElementsAre("10.255.0.2 7 !no UDP port"));
  wish.localVtep.clear();
  EXPECT_THAT(shown(), ElementsAre("10.255.0.2 7 !no local VTEP"));
  auto const full = run({"run", "--profile", "tiny", "--format", "json", file("full.json", wishTo(9).document())});
  EXPECT_EQ(full.code, kNotProgrammed);
  EXPECT_THAT(tunnelsOf(full.json()), Contains(HasSubstr(" !table full: ")));
  EXPECT_THAT(full.json()["logs"][0]["name"].GetString(), EndsWith("RESOURCE_FULL"));
}

TEST_F(RunCommand, sectionsAreShownInTheOrderOfTheRequest) {
  auto wish = wishTo(2);
  wish.tunnels[{AgentTest::member, AgentTest::vtep(3)}].adjId = 7;
  auto const input = file("state.json", wish.document());
  auto const ran = run({"run", "--show", "tunnels,tables,chip,state", input});
  EXPECT_EQ(ran.code, kGood) << ran.err;
  EXPECT_TRUE(inOrder(ran.out, {"vxlanTunnel        10.255.0.2", "vxlanMemberTunnel  10.255.0.3",
                                "VirtualPortTableMerged: 4 of", "  10.255.0.2: row 2, vp1.", "CHIP TABLE",
                                "stateway hardware/tessel/port/config", "local tesselVxlan/vxlanState"}));
  auto const json = run({"run", "--format", "json", "--show", "state", input}).json();
  EXPECT_TRUE(json["state"]["local"]["vxlanBootStatus"]["vaneTunnelSmReady"].GetBool());
}

}  // namespace Host::Test
