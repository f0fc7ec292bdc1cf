#include <algorithm>
#include <map>

#include "tests/host/command_world.h"

namespace Host::Test {

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using Strings = std::vector<std::string>;

class RunCommand : public Files {};

/// The ids of a step's tunnels by VTEP.
std::map<std::string, std::pair<unsigned, unsigned>> idsOf(rapidjson::Value const& report) {
  std::map<std::string, std::pair<unsigned, unsigned>> ids;
  for (auto const& tunnel : report["tunnels"].GetArray()) {
    ids[tunnel["vtep"].GetString()] = {tunnel["tunnelId"].GetUint(), tunnel["nextHopId"].GetUint()};
  }
  return ids;
}

/// Everything that a report says of the chip but rows and counts: keys, and handles by table and key.
std::string chipByKeys(rapidjson::Value const& value) {
  std::string text;
  if (value.IsObject()) {
    for (auto const& member : value.GetObject()) {
      std::string const name = member.name.GetString();
      bool const counted = name == "row" || name == "tunnelIndex" || name.ends_with("UpdateCount");
      if (!counted) text += name + "{" + chipByKeys(member.value) + "}";
    }
  } else if (value.IsArray()) {
    for (auto const& element : value.GetArray()) text += chipByKeys(element) + ",";
  } else if (value.IsString()) {
    text = value.GetString();
  } else if (value.IsUint64()) {
    text = std::to_string(value.GetUint64());
  }
  return text;
}

}  // namespace

TEST_F(RunCommand, withoutAnInputTheBuiltInLeafIsShown) {
  auto const shown = run({"run"});
  EXPECT_EQ(shown.code, kGood) << shown.err;
  EXPECT_THAT(shown.out, HasSubstr("local VTEP 10.255.0.1, UDP port 4789"));
  EXPECT_THAT(shown.out, testing::ContainsRegex("10\\.255\\.0\\.2 +[0-9]+ +[0-9]+ +36 +10\\.1\\.1\\.0 .* up1"));
  EXPECT_THAT(shown.out, EndsWith("2 tunnels, 2 programmed\n"));
  EXPECT_EQ(run({"run", capture("bridge-per-vni/leaf1")}).out, shown.out);
}

TEST_F(RunCommand, jsonKeepsItsShape) {
  auto const json = run({"run", "--format", "json"}).json();
  EXPECT_EQ(json["profile"], "cascaded");
  EXPECT_TRUE(json["settled"].GetBool());
  auto const& tunnel = json["tunnels"][0];
  Strings names;
  for (auto const& member : tunnel.GetObject()) names.emplace_back(member.name.GetString());
  EXPECT_THAT(names, ElementsAre("type", "vtep", "genId", "localVtep", "adjId", "tunnelId", "nextHopId", "programmed",
                                 "reason"));
  EXPECT_EQ(tunnel["type"], "vxlanTunnel");
  EXPECT_EQ(tunnel["localVtep"], "10.255.0.1");
  EXPECT_EQ(tunnel["genId"].GetUint(), 1U);
  EXPECT_TRUE(tunnel["reason"].IsNull());

  auto const& table = json["tables"]["VirtualPortTableMerged"];
  auto const& entry = *std::find_if(table["entries"].Begin(), table["entries"].End(),
                                    [](auto const& one) { return one["key"] == "10.255.0.3"; });
  EXPECT_EQ(table["used"].GetUint(), 4U);
  auto const keys = keysOf(json, "VirtualPortTableMerged");
  EXPECT_TRUE(std::is_sorted(keys.begin(), keys.end()));
  EXPECT_EQ(entry["state"].GetUint(), 3U);
  auto const& handle = entry["fields"]["vp2"]["egrL3TunnelTableHandle"];
  EXPECT_EQ(handle["table"], "EgrL3Ipv4TunnelTable");
  EXPECT_EQ(handle["row"], entry["fields"]["vp2"]["tunnelIndex"]);
  EXPECT_THAT(keysOf(json, "EgrL3Ipv4TunnelTable"), testing::Contains(std::string(handle["key"].GetString())));
  EXPECT_TRUE(json["tables"]["EcmpGroup1Table"]["entries"][0]["fields"]["groupOptionHandle"].IsNull());

  std::uint64_t writes = 0;
  for (auto const& part : json["chip"]["tables"].GetObject()) writes += part.value["writes"].GetUint64();
  EXPECT_EQ(json["chip"]["writes"].GetUint64(), writes);
  EXPECT_EQ(json["chip"]["tables"]["VirtualPort1Table"]["used"].GetUint(), 4U);
  EXPECT_TRUE(json["logs"].Empty());
  EXPECT_FALSE(json.HasMember("state"));
}

struct Fabric {
  char const* name;
  unsigned both;  ///< The kernel's id of the group of both uplinks; it keeps it while one is missing.
  unsigned one;   ///< And of the second uplink alone.
};
class FabricEvents : public testing::TestWithParam<Fabric> {};

TEST_P(FabricEvents, afterEachTheChipHasWhatTheCaptureSays) {
  auto const [name, both, one] = GetParam();
  auto const fabric = std::string(name);
  Strings arguments{"run", "--show-each", "--format", "json", capture(fabric + "/leaf1")};
  for (auto const* event : {"01-base", "02-uplink-down", "03-uplink-up", "04-vtep-gone", "05-vtep-back", "06-mac-moved",
                            "07-vni-removed", "08-vni-back"}) {
    arguments.push_back(capture(fabric + "/events/" + event));
  }
  auto const ran = run(arguments);
  EXPECT_EQ(ran.code, kGood) << ran.err;
  auto const json = ran.json();
  auto const& steps = json["steps"];
  ASSERT_EQ(steps.Size(), 9U);

  auto const via = [](std::string const& vteps, unsigned adjId) {
    Strings lines;
    for (char const leaf : vteps) lines.push_back(std::string("10.255.0.") + leaf + " " + std::to_string(adjId));
    return lines;
  };
  std::vector<std::pair<std::string, unsigned>> const wanted{{"23", both}, {"23", both}, {"23", one},
                                                             {"23", both}, {"2", both},  {"23", both},
                                                             {"3", both},  {"3", both},  {"3", both}};
  for (unsigned i = 0; i < steps.Size(); ++i) {
    SCOPED_TRACE(steps[i]["input"].GetString());
    auto const& [vteps, adjId] = wanted[i];
    EXPECT_EQ(tunnelsOf(steps[i]), via(vteps, adjId));
    EXPECT_THAT(keysOf(steps[i], "EcmpGroup1Table"), ElementsAre("adj:" + std::to_string(adjId)));
    Strings vps;
    for (char const leaf : vteps) vps.push_back(std::string("10.255.0.") + leaf);
    EXPECT_EQ(keysOf(steps[i], "IngL3EcmpMember0Table"), vps);
    EXPECT_TRUE(steps[i]["logs"].Empty());
  }
  // Who stays keeps its ids.
  for (unsigned i = 1; i <= 5; ++i) EXPECT_EQ(idsOf(steps[i])["10.255.0.2"], idsOf(steps[0])["10.255.0.2"]);
}

TEST_P(FabricEvents, backWhereItBeganTheChipIsAsItWas) {
  auto const fabric = std::string(GetParam().name);
  auto const event = [&](char const* number) { return capture(fabric + "/events/" + number); };
  auto const leaf = capture(fabric + "/leaf1");
  auto const once = run({"run", "--format", "json", leaf, event("01-base")}).json();
  auto const round = run({"run", "--format", "json", leaf, event("01-base"), event("02-uplink-down"),
                          event("04-vtep-gone"), event("01-base")});
  EXPECT_EQ(chipByKeys(round.json()["tables"]), chipByKeys(once["tables"]));

  // Nothing is written for an input that changes nothing.
  auto const again = run({"run", "--format", "json", leaf, event("01-base"), event("01-base")}).json();
  EXPECT_EQ(again["chip"]["writes"], once["chip"]["writes"]);
}

INSTANTIATE_TEST_SUITE_P(Run, FabricEvents,
                         testing::Values(Fabric{"bridge-per-vni", 36, 37}, Fabric{"vlan-aware-multihomed", 42, 36}),
                         [](auto const& fabric) { return std::string(fabric.index == 0 ? "bridges" : "vlans"); });

TEST_F(RunCommand, moreVtepsThanRows) {
  auto const full = file("full.json", wishTo(9).document());
  auto const ran = run({"run", "--profile", "tiny", "--format", "json", full});
  EXPECT_EQ(ran.code, kNotProgrammed);
  auto const json = ran.json();
  Strings refused;
  for (auto const& line : tunnelsOf(json)) {
    if (line.find('!') != std::string::npos) refused.push_back(line.substr(line.find('!') + 1));
  }
  EXPECT_THAT(refused, testing::Not(IsEmpty()));
  EXPECT_THAT(refused, Each(testing::StartsWith("table full: ")));
  std::map<std::string, unsigned> messages;
  for (auto const& log : json["logs"].GetArray()) {
    EXPECT_THAT(log["name"].GetString(), EndsWith("RESOURCE_FULL"));
    ++messages[log["text"].GetString()];
  }
  EXPECT_THAT(messages, testing::Not(IsEmpty()));
  for (auto const& [text, count] : messages) EXPECT_EQ(count, 1U) << text;

  // Whoever waits is programmed when there is room, and nobody has to ask.
  auto const room = file("room.json", wishTo(4).document());
  auto const after = run({"run", "--profile", "tiny", "--format", "json", full, room});
  EXPECT_EQ(after.code, kGood);
  EXPECT_THAT(tunnelsOf(after.json()), ElementsAre("10.255.0.2 7", "10.255.0.3 7", "10.255.0.4 7"));
  auto late = wishTo(9);
  for (unsigned n = 2; n <= 6; ++n) late.tunnels.erase({AgentTest::unicast, AgentTest::vtep(n)});
  auto const others = run({"run", "--profile", "tiny", "--format", "json", full, file("late.json", late.document())});
  EXPECT_THAT(tunnelsOf(others.json()), ElementsAre("10.255.0.7 7", "10.255.0.8 7", "10.255.0.9 7"));
}

TEST_F(RunCommand, reasonsOfTunnelsThatAreNotProgrammed) {
  auto wish = wishTo(3);
  wish.adjacencies[8] = {AgentTest::unresolved(1)};
  wish.adjacencies[9] = {AgentTest::uplink(11)};
  wish.adjacencies[10] = {};
  auto const over = [&](unsigned n, std::optional<std::uint32_t> adjId) {
    wish.tunnels[{AgentTest::unicast, AgentTest::vtep(n)}].adjId = adjId;
  };
  over(4, {});
  over(5, 8);
  over(6, 9);
  over(7, 10);
  over(8, 99);
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
  wish.tunnels.clear();
  over(2, 7);
  wish.udpPort = 0;
  EXPECT_THAT(shown(), ElementsAre("10.255.0.2 7 !no UDP port"));
  wish.localVtep.clear();
  EXPECT_THAT(shown(), ElementsAre("10.255.0.2 7 !no local VTEP"));
}

TEST_F(RunCommand, sectionsAreShownInTheOrderThatWasAsked) {
  auto const wish = [] {
    auto one = wishTo(2);
    one.tunnels[{AgentTest::member, AgentTest::vtep(3)}].adjId = 7;
    return one;
  }();
  auto const input = file("state.json", wish.document());
  auto const ran = run({"run", "--show", "tunnels,tables,chip,state", input});
  EXPECT_EQ(ran.code, kGood) << ran.err << ran.out;
  std::size_t at = 0;
  for (auto const* part : {"vxlanTunnel        10.255.0.2", "vxlanMemberTunnel  10.255.0.3",
                           "VirtualPortTableMerged: 4 of", "  10.255.0.2: row 2, vp1.", "CHIP TABLE",
                           "stateway hardware/tessel/port/config", "local tesselVxlan/vxlanState"}) {
    auto const found = ran.out.find(part, at);
    EXPECT_NE(found, std::string::npos) << part << " in\n" << ran.out;
    if (found != std::string::npos) at = found;
  }
  EXPECT_THAT(run({"run", "--format", "json", "--show", "state", input})
                  .json()["state"]["local"]["vxlanBootStatus"]["vaneTunnelSmReady"]
                  .GetBool(),
              true);
}

}  // namespace Host::Test
