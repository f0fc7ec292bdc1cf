#include <fmt/format.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <map>

#include "host/import/CaptureSet.h"
#include "tests/host/CommandWorld.h"

namespace Host::Test {

using testing::ElementsAre;
using testing::HasSubstr;
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

/// The rows of a report's table by key; empty if the chip has no such table.
std::map<std::string, unsigned> statesOf(rapidjson::Value const& report, char const* table) {
  std::map<std::string, unsigned> states;
  if (!report["tables"].HasMember(table)) return states;
  for (auto const& entry : report["tables"][table]["entries"].GetArray())
    states[entry["key"].GetString()] = entry["state"].GetUint();
  return states;
}

/// "VTEP@VLAN,VLAN #id port>next hop row" for each VTEP in the published flood status; the row where the chip has it.
std::string floodSide(rapidjson::Value const& report) {
  auto const& state = report["state"];
  auto const& statuses = state["stateway"]["hardware/tessel/tunnel/vxlan/herVtepStatus"]["vaneVxlanHwHerVtepStatus"];
  auto const& records = state["local"]["vxlan/bumVtepConfigDir"]["bumVtepConfig"];
  auto const remap = statesOf(report, "EpreCcbeNextHopRemapTable"), her = statesOf(report, "HerNextHop1Table");
  EXPECT_EQ(remap.size() + her.size(), statuses.MemberCount());
  std::string text;
  for (auto const& [vtep, status] : statuses.GetObject()) {
    std::string const name = vtep.GetString();
    text += name + '@';
    for (auto const& [vlan, on] : status["vlanList"].GetObject()) (text += vlan.GetString()) += ',';
    auto const& record = records[name.c_str()];
    text += fmt::format(" #{}", record["encapId"].GetUint());
    for (auto const& [port, hop] : record["nextHops"].GetObject()) {
      text += fmt::format(" {}>{}", port.GetString(), hop["addr"].GetString());
      auto const row = remap.find(fmt::format("({} , {})", port.GetString(), name));
      if (row != remap.end() && row->second == 3) text += " remap";
    }
    auto const row = her.find("{vtep=" + name + ",herEntry=1}");
    if (row != her.end() && row->second == 3) text += " her";
    text += '\n';
  }
  return text;
}

TEST_F(Flood, theCapturedLeafFloodsToEachVtepThroughoutTheEvents) {
  for (auto const& [chip, row] : {std::pair("cascaded", "remap"), {"flat", "her"}}) {
    for (auto const& [fabric, vlans, left] :
         {std::tuple("bridge-per-vni", "4091,4092,", "4092,"), {"vlan-aware-multihomed", "10,20,", "10,"}}) {
      auto const vtep = [row = row](unsigned n, char const* in) {
        return fmt::format("10.255.0.{}@{} #{} up2>10.1.2.0 {}\n", n, in, 4095 + n, row);
      };
      auto const both = vtep(2, vlans) + vtep(3, vlans);
      std::vector<std::pair<std::string, std::string>> const events{
          {"leaf1", both},
          {"events/01-base", both},
          {"events/02-uplink-down", both},
          {"events/03-uplink-up", both},
          {"events/04-vtep-gone", vtep(2, vlans)},
          {"events/05-vtep-back", both},
          {"events/06-mac-moved", both},
          {"events/07-vni-removed", vtep(2, left) + vtep(3, left)},
          {"events/08-vni-back", both},
      };
      Strings arguments{"run", "--profile", chip, "--show-each", "--format", "json", "--show", "state"};
      for (auto const& [event, wanted] : events) arguments.push_back(capture(fabric + ("/" + event)));
      auto const ran = run(arguments);
      EXPECT_EQ(ran.code, kGood) << ran.err;
      auto const json = ran.json();
      for (unsigned i = 0; i < events.size(); ++i)
        EXPECT_EQ(floodSide(json["steps"][i]), events[i].second) << chip << ' ' << fabric << ' ' << events[i].first;
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
  auto const name = file("many/ip-link.json", R"([{"ifindex":2,"ifname":"br0","linkinfo":{"info_kind":"bridge"}},
      {"ifindex":3,"ifname":"vx1","master":"br0","linkinfo":{"info_kind":"vxlan","info_data":{}}}])");
  CaptureSet set;
  set.overlay(std::filesystem::path(name).parent_path());
  Strings warnings;
  auto const document = set.stateDocument(warnings);
  EXPECT_THAT(warnings, ElementsAre(testing::EndsWith("/0/dst: found \"11.0.96.1\", ignored: a switch floods to at "
                                                      "most 24576 VTEPs")));
  EXPECT_EQ(document["shmem"]["bridging/l2Rib/floodOutput"]["floodSet"]["4094"]["vtep"].MemberCount(), 24'576U);
}

/// Types by a letter, as in "H10.255.0.2 !why".
Strings verdicts(Ran const& ran) {
  auto const json = ran.json();
  auto lines = tunnelsOf(json);
  for (unsigned i = 0; i < lines.size(); ++i) lines[i].insert(0, 1, json["tunnels"][i]["type"].GetString()[5]);
  EXPECT_EQ(ran.code, std::any_of(lines.begin(), lines.end(), [](auto& line) { return line.find('!') != line.npos; }));
  return lines;
}

TEST_F(Flood, tunnelsOfAllTypesAreReported) {
  auto const input = file("state.json", document());
  auto const shown = [&](std::string const& chip) {
    return verdicts(run({"run", "--profile", chip, "--format", "json", input}));
  };
  for (auto const* chip : {"cascaded", "flat"}) {
    EXPECT_THAT(shown(chip),
                ElementsAre("T10.255.0.2 7", "H10.255.0.2 7", "H10.255.0.3 7", "H10.255.0.4 !no route", "M239.1.1.1",
                            "M10.255.0.2", "B10.255.0.2", "B10.255.0.4 !no next hop of its flood tunnel",
                            "B10.255.0.9 !no flood list has this VTEP"));
  }
  EXPECT_THAT(shown("compact"),
              testing::IsSupersetOf({"H10.255.0.3 7 !no such table on this chip: EpreCcbeNextHopRemapTable",
                                     "M239.1.1.1 !no multicast tunnels on this chip",
                                     "M10.255.0.2 !no head-end copies of multicast traffic on this chip"}));
  auto const text = run({"run", "--show", "summary,tunnels", input}).out;
  EXPECT_TRUE(inOrder(text, {"flood tunnel, VLANs 10 20\n", "VLANs 20  not programmed: no route\n",
                             "  multicast tunnel\n", "9 tunnels, 6 programmed\n", "vxlanHwHerTunnel  10.255.0.3 "}));
  auto const json = run({"run", "--format", "json", input}).json();
  EXPECT_EQ(json["tunnels"][2]["vlans"][1].GetUint(), 20U);
  EXPECT_EQ(json["tunnels"][2]["encapId"].GetUint(), 4099U);
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
    auto const lines = verdicts(run({"run", "--profile", profile(chip, table, rows), "--format", "json", input}));
    auto const isFull = [reason = std::string("!table full: ") + table](std::string const& line) {
      return line.ends_with(reason);
    };
    EXPECT_GE(std::count_if(lines.begin(), lines.end(), isFull), waiting) << chip << ' ' << table;
  }
}

TEST_F(Flood, theRoadOfTheCopiesIsExplained) {
  auto const input = file("state.json", document());
  auto const copies = [&](std::string const& chip, std::string const& table) {
    auto const ran = run({"explain", "10.255.0.3", "--profile", chip, input});
    EXPECT_EQ(ran.code, kGood);
    EXPECT_TRUE(inOrder(
        ran.out, {"10.255.0.3, vxlanHwHerTunnel generation 1: programmed\n", "  floods VLANs 10 20\n",
                  "virtual port: VirtualPortTableMerged 10.255.0.3, row 4, written\n",
                  "\nflood copies, encapsulation id 4099\n", "\n  by Ethernet2 to 10.1.2.1: " + table,
                  "\n    virtual port: VirtualPortTableMerged 10.255.0.3, row 4, written, as above\n",
                  "next hop: ", "02:00:00:00:00:02", "\npackets from the VTEP: L2TunnelIpv4SipTable 10.255.0.3, row ",
                  "\npackets to the local VTEP: L2TunnelIpv4DipTable 10.255.0.1, row 0, written\n"}));
    EXPECT_THAT(ran.out, testing::Not(HasSubstr("overlay entry")));
  };
  copies("cascaded", "EpreCcbeNextHopRemapTable (Ethernet2 , 10.255.0.3), row 4, written");
  copies("flat", "HerNextHop1Table {vtep=10.255.0.3,herEntry=1}, row ");
  auto const json = run({"explain", "239.1.1.1", input, "--format", "json"}).json();
  auto const& chain = json["chain"];
  EXPECT_EQ(chain["encapId"].GetUint(), 4097U);
  ASSERT_EQ(chain["copies"].Size(), 2U);
  EXPECT_EQ(chain["copies"][1]["port"], "Ethernet2");
  EXPECT_EQ(chain["copies"][1]["row"]["links"][0]["to"]["key"], "239.1.1.1");
  EXPECT_TRUE(chain["source"].IsNull());
  EXPECT_EQ(chain["destination"]["key"], "10.255.0.1");
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
