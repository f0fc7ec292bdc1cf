#include "host/import/CaptureSet.h"
#include "host/notes/Notes.h"
#include "tests/host/CommandWorld.h"

namespace Host::Test {

using std::filesystem::path;

/// "VTEP>adjacency ... | adjacency: neighbour@port/interface ...", a `?` after a neighbour that is not resolved.
std::string roads(rapidjson::Value const& document) {
  auto const& config = document["stateway"]["hardware/tessel/tunnel/configDir/vxlanTunnel"];
  std::string text;
  for (auto const& [vtep, tunnel] : config["tunnel"].GetObject()) {
    text += std::string(text.empty() ? "" : " ") + vtep.GetString() + ">";
    if (tunnel.HasMember("adjId")) text += std::to_string(tunnel["adjId"].GetUint());
  }
  for (auto const& [id, adjacency] : config["adjacency"].GetObject()) {
    text += std::string(" | ") + id.GetString() + ":";
    for (auto const& hop : adjacency["nextHops"].GetArray()) {
      bool const resolved = hop["type"].GetString() == std::string("nextHopResolved");
      EXPECT_EQ(resolved, hop["ethAddr"].GetString() != std::string("00:00:00:00:00:00"));
      text += std::string(" ") + hop["addr"].GetString() + (resolved ? "" : "?") + "@" + hop["l2Intf"].GetString() +
              "/" + hop["l3Intf"].GetString();
    }
  }
  return text;
}

/// "flood VTEP>adjacency@VLAN,VLAN ..."; empty for a switch that floods to no VTEP.
std::string floods(rapidjson::Value const& document) {
  auto const& lists = document["shmem"]["bridging/l2Rib/floodOutput"]["floodSet"];
  auto const& routes = document["stateway"]["vxlan/version2/vtepStatusDir"]["vtepAdjacency"];
  auto const& adjacencies = document["stateway"]["hardware/tessel/tunnel/configDir/vxlanHwHerTunnel"]["adjacency"];
  std::map<std::string, std::string> vlans;
  for (auto const& [vlan, list] : lists.GetObject()) {
    for (auto const& [vtep, present] : list["vtep"].GetObject()) (vlans[vtep.GetString()] += ',') += vlan.GetString();
  }
  std::string text = vlans.empty() ? "" : "flood";
  std::set<std::string> used;
  for (auto& [vtep, list] : vlans) {
    auto const id = routes.HasMember(vtep.c_str()) ? std::to_string(routes[vtep.c_str()].GetUint()) : "";
    if (!id.empty()) used.insert(id);
    text += " " + vtep + ">" + id + "@" + list.substr(1);
  }
  EXPECT_EQ(used.size(), adjacencies.MemberCount());
  for (auto const& id : used) EXPECT_TRUE(adjacencies.HasMember(id.c_str())) << id;
  return text;
}

/// "vni VLAN=VNI ... | group ID: VTEP>adjacency ..." with the adjacencies of the member tunnels; empty for a switch
/// without VNIs and groups. VLANs of floods that have no VNI are marked by a `!`.
std::string overlay(rapidjson::Value const& document) {
  auto const& stateway = document["stateway"];
  std::set<std::string> floods;
  for (auto const& [vlan, list] : document["shmem"]["bridging/l2Rib/floodOutput"]["floodSet"].GetObject())
    floods.insert(vlan.GetString());
  std::string text;
  for (auto const& [key, entry] : stateway["hardware/tessel/tunnel/vxlan/helperVniConfig"]["vlanVniMap"].GetObject()) {
    auto const vlan = std::to_string(entry["vlanId"].GetUint());
    EXPECT_EQ(key.GetString(), "Vxlan1, vlanId:" + vlan);
    EXPECT_EQ(entry["action"].GetUint(), 0U);
    floods.erase(vlan);
    text += (text.empty() ? "vni " : " ") + vlan + "=" + std::to_string(entry["vni"].GetUint());
  }
  for (auto const& vlan : floods) text += " !" + vlan;
  auto const& members = stateway["hardware/tessel/tunnel/configDir/vxlanMemberTunnel"];
  for (auto const& [id, group] :
       stateway["hardware/tessel/tunnel/vxlan/vaneVtepGroupConfigDir"]["vaneVtepGroupConfig"].GetObject()) {
    text += std::string(" | group ") + id.GetString() + ":";
    for (auto const& [vtep, on] : group["vtepList"].GetObject()) {
      auto const& tunnel = members["tunnel"][vtep];
      text += std::string(" ") + vtep.GetString() + ">";
      if (!tunnel.HasMember("adjId")) continue;
      auto const adjId = std::to_string(tunnel["adjId"].GetUint());
      EXPECT_TRUE(members["adjacency"].HasMember(adjId.c_str())) << adjId;
      text += adjId;
    }
  }
  return text;
}

/// "host NAME local ADDRESS ... ttl N source FIRST+COUNT dscp | ports NAME=NUMBER ...", of what differs from the switch
/// that is written by hand.
std::string headers(rapidjson::Value const& document) {
  auto const& stateway = document["stateway"];
  std::string text;
  if (document.HasMember("notes") && document["notes"].HasMember("host"))
    text += std::string(" host ") + document["notes"]["host"].GetString();
  auto const& vti = stateway["interface/status/eth/vxlan"]["vtiStatus"]["Vxlan1"];
  for (auto const key : {"srcAddr", "srcAddrV6"}) {
    if (vti.HasMember(key) && std::string(vti[key].GetString()) != "10.255.0.1")
      text += std::string(" ") + vti[key].GetString();
  }
  if (document.HasMember("local"))
    text += " ttl " + std::to_string(document["local"]["tesselVxlan/vxlanState"]["ttl"].GetUint());
  if (vti.HasMember("udpSrcPort"))
    text += " source " + std::to_string(vti["udpSrcPort"].GetUint()) + "+" +
            std::to_string(vti["udpSrcPortLength"].GetUint());
  if (stateway.HasMember("vxlan/config")) text += " dscp";
  for (auto const& [name, port] : stateway["hardware/tessel/port/config"]["port"].GetObject()) {
    auto const number = port["number"].GetUint();
    if (number > 60000) text += std::string(" ") + name.GetString() + "=" + std::to_string(number);
  }
  return text.empty() ? text : "has" + text;
}

/// A switch that is written by hand, in tests/data/input/switch: two uplinks, a VXLAN device, a bridge with VLAN 10,
/// and one remote VTEP, 10.255.0.2. Each test replaces the files that it is about.
class HandMade : public Files {
 protected:
  HandMade() { restore(); }

  void restore() const {
    remove_all(base());
    put("links", vxlan(R"("local":"10.255.0.1","port":4789)"));
    put("remotes", "10.255.0.2");
    put("routes", "");
    put("ip-neigh.json", given("ip-neigh.json"));
  }
  static std::string vxlan(std::string const& data) {
    return R"({"ifindex":9,"ifname":"vx1","linkinfo":{"info_kind":"vxlan","info_data":{)" + data + "}}}";
  }

  path dir(std::string const& name = "base") const { return base() / name; }

  /// Writes a file; of "links", "remotes" and "routes" only what differs between tests is given. "-" removes the file.
  void put(std::string const& name, std::string const& text, std::string const& directory = "base") const {
    if (name == "links") return put("ip-link.json", given("ip-link.json") + text + "]");
    if (name == "remotes") return remotes(text);
    if (name == "routes") return put("ip-route-all.json", "[" + text + "]");
    if (text == "EMPTY") return put(name, "", directory);
    if (text == "DIR") return void(create_directories(dir(directory) / name));
    text == "-" ? void(remove(dir(directory) / name)) : void(file(directory + "/" + name, text));
  }

  /// "= " and the roads of the capture or what is wrong with it, then the warnings, without the directory of the test.
  std::string shown(std::string const& name = "base") const {
    std::vector<Warning> warnings;
    std::string text = "= ";
    try {
      CaptureSet set;
      set.overlay(dir(name));
      auto choices = choices_;
      Stateway::StateDocument const state(Kiln::JsonDocument(set.stateDocument(choices), "state"));
      auto const& document = state.root().value();
      choices.vlans.checkTaken();
      auto const notes = notesOf(state);
      warnings = notes.warnings;
      text += roads(document);
      if (auto const flooded = floods(document); !flooded.empty()) text += "\n= " + flooded;
      if (auto const vnis = overlay(document); !vnis.empty()) text += "\n= " + vnis;
      if (withReasons_) text += reasons(notes);
      if (auto const host = headers(document); !host.empty()) text += "\n= " + host;
    } catch (Kiln::InputError const& error) {
      text += error.what();
      EXPECT_EQ(text.find(error.file() + ": "), 2U);
    }
    for (auto const& warning : warnings) text += "\n! " + warning.text();
    for (auto at = text.find(prefix()); at != text.npos; at = text.find(prefix())) text.erase(at, prefix().size());
    return text + '\n';
  }

  static std::string reasons(Notes const& notes) {
    std::string text;
    for (auto const& [vtep, why] : notes.unreachable) text += "\n= " + Kiln::toText(vtep) + ": " + why;
    for (auto const& [hop, why] : notes.unresolved)
      text += "\n= " + Kiln::toText(hop.first) + '%' + hop.second + ": " + why;
    return text;
  }

  Choices choices_;
  bool withReasons_ = false;

 private:
  std::string prefix() const { return base().string() + "/"; }
  void remotes(std::string const& vteps) const {
    std::istringstream stream(vteps);
    std::string list;
    for (std::string vtep; stream >> vtep;)
      list += std::string(list.empty() ? "" : ",") + R"({"mac":"02:00:00:00:00:09","ifname":"vx1","dst":")" + vtep +
              R"(","flags":["self"],"state":""})";
    put("bridge-fdb.json", "[" + list + "]");
  }
  static std::string given(std::string const& name) {
    std::ifstream in(path(TESSEL_SOURCE_DIR) / "tests/data/input/switch" / name);
    return {std::istreambuf_iterator<char>(in), {}};
  }
};

TEST_F(HandMade, isReadOrRefusedAsWrittenDown) {
  for (auto const& [given, result] : cases("input/captures.txt")) {
    restore();
    choices_ = {};
    withReasons_ = false;
    std::string all;
    for (auto const& line : given) {
      auto const blank = line.find(' ');
      if (line == "--reasons")
        withReasons_ = true;
      else if (line.starts_with("--vlan"))
        choices_.vlans.add(line.substr(blank + 1));
      else if (line.starts_with("--vti"))
        choices_.vti = line.substr(blank + 1);
      else
        put(line.substr(0, blank), line.substr(blank + 1));
      all += line + '\n';
    }
    EXPECT_EQ(shown(), result) << all;
  }
}

TEST_F(HandMade, ownNumbersFollowFromTheContentsAlone) {
  auto const ids = [this](std::string const& list) {
    put("routes", R"({"dst":"10.1.2.0/24","nhid":18,"dev":"up2"},{"dst":"10.0.0.9","gateway":"10.1.1.0","dev":"up1"},
                      {"dst":"10.255.0.2","gateway":"10.1.1.0","dev":"up1"})");
    put("remotes", list);
    CaptureSet set;
    set.overlay(dir());
    auto const document = set.stateDocument();
    std::map<std::string, unsigned> all;
    for (auto const& [vtep, tunnel] :
         document["stateway"]["hardware/tessel/tunnel/configDir/vxlanTunnel"]["tunnel"].GetObject())
      all[vtep.GetString()] = tunnel["adjId"].GetUint();
    return all;
  };
  auto alone = ids("10.255.0.2"), more = ids("10.255.0.1 10.0.0.9 10.1.2.7 10.1.2.8 10.255.0.2");
  EXPECT_GE(alone["10.255.0.2"], 0x40000000U);
  EXPECT_EQ(more["10.255.0.2"], alone["10.255.0.2"]);
  EXPECT_EQ(more["10.0.0.9"], alone["10.255.0.2"]);
  // A connected VTEP is its own next hop, so that the id of the route means another neighbour for each.
  EXPECT_NE(more["10.1.2.7"], more["10.1.2.8"]);
  EXPECT_EQ(more.size(), 4U) << "the local address is no VTEP";
}

TEST_F(HandMade, interfacesWithoutAVlanIdAreRefusedForTheUnderlay) {
  std::string many = vxlan("");
  for (unsigned i = 100; i < 4190; ++i)
    many += R"(,{"ifindex":)" + std::to_string(i) + R"(,"ifname":"p)" + std::to_string(i) + "\"}";
  put("links", many);
  put("routes", R"({"dst":"10.255.0.2","nhid":1,"gateway":"10.1.1.0","dev":"p4187"})");
  EXPECT_EQ(shown(), "= 10.255.0.2>1 | 1: 10.1.1.0?@p4187/p4187\n");
  put("routes", R"({"dst":"10.255.0.2","nhid":1,"gateway":"10.1.1.0","dev":"p4189"})");
  EXPECT_EQ(shown(),
            "= base/ip-link.json: /4098/ifname: found \"p4189\", expected an earlier interface for the underlay: all "
            "VLAN ids are in use\n");
}

TEST_F(HandMade, aLaterCaptureMayDifferAndABadOneLeavesTheSetAsItWas) {
  put("ip-link-vxlan.json", "[" + vxlan(R"("port":4790)") + "]", "later");
  CaptureSet set;
  set.overlay(dir());
  set.overlay(dir("later"));
  auto const document = set.stateDocument();
  auto const& vti = document["stateway"]["interface/status/eth/vxlan"]["vtiStatus"]["Vxlan1"];
  EXPECT_FALSE(vti.HasMember("srcAddr"));
  EXPECT_EQ(vti["udpPort"].GetUint(), 4790U);
  put("bridge-fdb.json", "[]", "bad");
  put("ip-neigh.json", "[", "bad");
  EXPECT_THROW(set.overlay(dir("bad")), Kiln::InputError);
  EXPECT_EQ(set.stateDocument(), document);
  put("readme.txt", "no capture", "other");
  EXPECT_THAT(shown("other"),
              testing::StartsWith("= other: found no capture in the directory, expected captures: ip-"));
  EXPECT_EQ(shown("nowhere"), "= nowhere: found no directory there, expected a directory of captures\n");
}

TEST_F(HandMade, aNewerListOfVxlanDevicesReplacesTheOlder) {
  auto const device = [](char const* name, unsigned vni) {
    return R"({"ifindex":9,"ifname":")" + std::string(name) + R"(","master":"br0","linkinfo":{"info_kind":"vxlan",)" +
           R"("info_data":{"id":)" + std::to_string(vni) + "}}}";
  };
  put("links", device("vx1", 300));
  put("ip-link-vxlan.json", "[" + device("vx2", 400) + "]", "later");
  // As new as the devices: that they have no entries does not mean that they have been removed.
  put("bridge-fdb.json", "[]", "later");
  CaptureSet set;
  set.overlay(dir());
  EXPECT_EQ(overlay(set.stateDocument()), "vni 2=300");
  set.overlay(dir("later"));
  EXPECT_EQ(overlay(set.stateDocument()), "vni 2=400");
}

// Kernels number the group of both uplinks, which keeps its id while one is missing, and the second uplink alone.
// Nothing is learned behind leaf2 any more after a move, but it is flooded to. Of groups of VTEPs each member counts. A
// VNI whose device has left the forwarding database is removed, and the VLANs of the others remain.
TEST(Captures, eachDocumentIsAsWrittenDown) {
  for (auto const& [given, result] : cases("input/fabrics.txt")) {
    CaptureSet set;
    std::string all;
    for (auto const& name : given) {
      set.overlay(capture(name));
      auto const document = set.stateDocument();
      all += "= " + roads(document) + "\n= " + floods(document) + "\n= " + overlay(document) + '\n';
    }
    EXPECT_EQ(all, result);
  }
}

}  // namespace Host::Test
