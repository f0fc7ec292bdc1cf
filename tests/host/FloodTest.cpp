#include <fmt/format.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <map>

#include "host/import/CaptureSet.h"
#include "tests/host/CommandWorld.h"

namespace Host::Test {

using testing::ElementsAre;
using Strings = std::vector<std::string>;

std::string contents(std::string const& name) {
  std::ifstream in(std::filesystem::path(TESSEL_SOURCE_DIR) / name);
  EXPECT_TRUE(in) << name;
  return {std::istreambuf_iterator<char>(in), {}};
}

std::string replaced(std::string text, std::string const& from, std::string const& to) {
  auto const at = text.find(from);
  EXPECT_NE(at, text.npos) << from;
  for (auto i = at; i != text.npos; i = text.find(from, i + to.size())) text.replace(i, from.size(), to);
  return text;
}

/// tests/data/input/flood.json: known traffic to 10.255.0.2; floods to it and .3 over two uplinks, and to .4 without a
/// route; a multicast group; copies of flooded traffic to .2, .4 and .9, which no flood list has.
class Flood : public Files {
 protected:
  static std::string document() { return contents("tests/data/input/flood.json"); }

  /// The profile with a table of another size.
  std::string profile(std::string const& name, std::string const& table, unsigned rows) const {
    rapidjson::Document json;
    json.Parse(contents("profiles/" + name + ".json").c_str());
    json["tables"][table.c_str()]["rows"].SetUint(rows);
    rapidjson::StringBuffer text;
    rapidjson::Writer<rapidjson::StringBuffer> writer(text);
    json.Accept(writer);
    return file(name + '-' + table + ".json", text.GetString());
  }
};

/// "VTEP@VLAN,VLAN, #id port>next hop" for each VTEP in the published flood status, with "!" if it is not in the chip.
std::string floodSide(rapidjson::Value const& report) {
  auto const& state = report["state"];
  auto const& statuses = state["stateway"]["hardware/tessel/tunnel/vxlan/herVtepStatus"]["vaneVxlanHwHerVtepStatus"];
  auto const& records = state["local"]["vxlan/bumVtepConfigDir"]["bumVtepConfig"];
  std::map<std::string, bool> rows;
  for (auto const* table : {"EpreCcbeNextHopRemapTable", "HerNextHop1Table"}) {
    if (!report["tables"].HasMember(table)) continue;
    for (auto const& row : report["tables"][table]["entries"].GetArray())
      rows[row["key"].GetString()] = row["state"] == "written";
  }
  EXPECT_EQ(rows.size(), statuses.MemberCount());
  std::string text = "=";
  for (auto const& [vtep, status] : statuses.GetObject()) {
    std::string const name = vtep.GetString();
    text += ' ' + name + '@';
    for (auto const& [vlan, on] : status["vlanList"].GetObject()) (text += vlan.GetString()) += ',';
    auto const& record = records[name.c_str()];
    text += fmt::format(" #{}", record["encapId"].GetUint());
    for (auto const& [port, hop] : record["nextHops"].GetObject()) {
      text += fmt::format(" {}>{}", port.GetString(), hop["addr"].GetString());
      auto const one = rows.find(fmt::format("({} , {})", port.GetString(), name));
      auto const row = one == rows.end() ? rows.find("{vtep=" + name + ",herEntry=1}") : one;
      if (row == rows.end() || !row->second) text += '!';
    }
  }
  return text + '\n';
}

TEST_F(Flood, theCapturedLeafFloodsToEachVtepThroughoutTheEvents) {
  for (auto const* chip : {"cascaded", "flat"}) {
    for (auto const& [given, result] : cases("input/floods.txt")) {
      Strings arguments{"run", "--profile", chip, "--show-each", "--format", "json", "--show", "state"};
      for (auto const& event : given) arguments.push_back(capture(event));
      auto const ran = run(arguments);
      EXPECT_EQ(ran.code, kGood) << ran.err;
      auto const json = ran.json();
      std::string all;
      for (auto const& step : json["steps"].GetArray()) all += floodSide(step);
      EXPECT_EQ(all, result) << chip;
    }
  }
}

TEST_F(Flood, aCaptureWithMoreVtepsThanIdsIsFloodedToAsFarAsTheyGo) {
  std::string entries;
  for (unsigned i = 0; i < 24'577; ++i) {
    entries += fmt::format(R"({}{{"mac":"00:00:00:00:00:00","ifname":"vx1","dst":"{}"}})", i == 0 ? "[" : ",",
                           Kiln::toText(Meshal::IpAddr(0x0b000000 + 24'577 - i)));
  }
  file("many/bridge-fdb.json", entries + "]");
  file("many/ip-route-all.json", R"([{"dst":"default","nhid":7,"dev":"br0","gateway":"10.1.1.1"}])");
  file("many/ip-neigh.json", "[]");
  auto const name = file("many/ip-link.json", R"([{"ifindex":2,"ifname":"br0","linkinfo":{"info_kind":"bridge"}},
      {"ifindex":3,"ifname":"vx1","master":"br0","linkinfo":{"info_kind":"vxlan","info_data":{"id":10010}}}])");
  CaptureSet set;
  set.overlay(std::filesystem::path(name).parent_path());
  auto const document = set.stateDocument();
  auto const& warnings = document["notes"]["warnings"];
  ASSERT_EQ(warnings.Size(), 1U);
  EXPECT_EQ(warnings[0]["entry"], "/0/dst: found \"11.0.96.1\"");
  EXPECT_EQ(warnings[0]["ignored"], "ignored: a switch floods to at most 24576 VTEPs");
  EXPECT_EQ(document["shmem"]["bridging/l2Rib/floodOutput"]["floodSet"]["2"]["vtep"].MemberCount(), 24'576U);
}

// Whatever the traffic needs in either direction: a chip that has no room for one row of it does not carry it.
TEST_F(Flood, aRowThatFoundNoPlaceMakesATunnelNotProgrammed) {
  auto const many = file("many.json", wishTo(13).document());
  auto pair = wishTo(2);
  pair.mlagVtep = "10.255.0.100";
  auto const shared = file("pair.json", pair.document());
  auto const flood = file("flood.json", document());
  for (auto const& [chip, table, rows, input, waiting] : {std::tuple("cascaded", "L2TunnelIpv4SipTable", 3U, many, 9),
                                                          {"flat", "L2TunnelIpv4SipTable", 3U, many, 9},
                                                          {"cascaded", "EgrL3Ipv4TunnelTable", 4U, many, 9},
                                                          {"cascaded", "L2TunnelIpv4DipTable", 1U, shared, 1},
                                                          {"cascaded", "L2TunnelIpv4SipTable", 1U, flood, 1},
                                                          {"cascaded", "EpreCcbeNextHopRemapTable", 4U, flood, 1},
                                                          {"flat", "HerNextHop1Table", 2U, flood, 1},
                                                          {"flat", "HerNextHop2Table", 1U, flood, 1}}) {
    auto const json = run({"run", "--profile", profile(chip, table, rows), "--format", "json", input}).json();
    auto const& tunnels = json["tunnels"];
    auto const isFull = [reason = std::string("table full: ") + table](rapidjson::Value const& tunnel) {
      return tunnel["reason"].IsString() && tunnel["reason"].GetString() == reason;
    };
    EXPECT_GE(std::count_if(tunnels.Begin(), tunnels.End(), isFull), waiting) << chip << ' ' << table;
  }
}

// What the agent publishes is compared with the state that a former run printed.
TEST_F(Flood, thePrintedStateIsReadBackForComparison) {
  auto const input = file("state.json", document());
  auto const json = run({"run", "--format", "json", "--show", "state", input}).json();
  rapidjson::StringBuffer text;
  rapidjson::Writer<rapidjson::StringBuffer> writer(text);
  json["state"].Accept(writer);
  std::string const state = text.GetString();
  for (auto const& [wanted, code] :
       {std::pair(state, kGood), {replaced(state, "\"encapId\":4099", "\"encapId\":4098"), kNotProgrammed}}) {
    auto const story = fmt::format(R"({{"state":{},"steps":[{{"expect":{{"/state":{}}}}}]}})", document(), wanted);
    EXPECT_EQ(run({"run", file("story.json", story)}).code, code);
  }
}

}  // namespace Host::Test
