#include <utility>
#include <vector>

#include "tests/host/import_world.h"

namespace Host::Test {

namespace {

struct Step {
  char const* event;
  std::string vteps;
  unsigned adjId;
  std::string hops;  ///< Without the interface: it is the uplink itself.
};

struct Fabric {
  char const* name;
  unsigned both;  ///< The kernel's id of the group of both uplinks; it keeps it while one is missing.
  unsigned one;   ///< And of the second uplink alone.
};

std::string expected(Step const& step) {
  std::string text;
  for (char const leaf : step.vteps) {
    text += std::string(text.empty() ? "" : " ") + "10.255.0." + leaf + ">" + std::to_string(step.adjId);
  }
  return text + " | " + std::to_string(step.adjId) + ":" + step.hops;
}

class Events : public testing::TestWithParam<Fabric> {};

}  // namespace

TEST_P(Events, eachDocumentFollowsTheChange) {
  auto const [name, both, one] = GetParam();
  std::string const up1 = " 10.1.1.0@up1/up1";
  std::string const up2 = " 10.1.2.0@up2/up2";
  CaptureSet set;
  set.overlay(captures(name) / "leaf1");
  auto const before = set.stateDocument();
  for (auto const& step : std::vector<Step>{{"01-base", "23", both, up1 + up2},
                                            {"02-uplink-down", "23", one, up2},
                                            {"03-uplink-up", "23", both, up2},
                                            {"04-vtep-gone", "2", both, up2},
                                            {"05-vtep-back", "23", both, up2},
                                            {"06-mac-moved", "3", both, up2},
                                            {"07-vni-removed", "3", both, up2},
                                            {"08-vni-back", "3", both, up2},
                                            {"01-base", "23", both, up1 + up2}}) {
    SCOPED_TRACE(step.event);
    set.overlay(captures(name) / "events" / step.event);
    auto const document = set.stateDocument();
    EXPECT_EQ(roads(document), expected(step));
    // Nothing is learned behind leaf2 any more after the move, but it is flooded to.
    if (step.vteps == "3") {
      auto const flooded = Step{step.event, "23", step.adjId, step.hops};
      EXPECT_EQ(roads(document, "vxlanHwHerTunnel"), expected(flooded));
    } else {
      EXPECT_EQ(roads(document, "vxlanHwHerTunnel"), expected(step));
    }
    for (auto const path : {"interface/status/eth/vxlan", "vane/l3IntfTable", "hardware/tessel/port/config"}) {
      EXPECT_EQ(document["stateway"][path], before["stateway"][path]);
    }
  }
  EXPECT_EQ(set.stateDocument(), before);
}

INSTANTIATE_TEST_SUITE_P(Import, Events,
                         testing::Values(Fabric{"bridge-per-vni", 36, 37}, Fabric{"vlan-aware-multihomed", 42, 36}),
                         [](auto const& fabric) { return std::string(fabric.index == 0 ? "bridges" : "vlans"); });

TEST(Captures, interfacesPortsAndTunnelInterfaceOfTheVlanAwareLeaf) {
  CaptureSet set;
  set.overlay(captures("vlan-aware-multihomed/leaf1"));
  auto const document = set.stateDocument();
  rapidjson::Document wanted;
  wanted.Parse(R"({
    "interface/status/eth/vxlan": {"vtiStatus": {"Vxlan1": {"srcAddr": "10.255.0.1", "udpPort": 4789}}},
    "vane/l3IntfTable": {"l3Intf": {"up1": 4094, "up2": 4093, "red": 4092, "br0": 4091, "hmh-p": 4090,
                                    "Vlan10": 10, "Vlan20": 20, "Vlan4001": 4001}},
    "hardware/tessel/port/config": {"port": {
      "up1": {"kind": "port", "number": 2}, "up2": {"kind": "port", "number": 3},
      "h11": {"kind": "port", "number": 12}, "h12": {"kind": "port", "number": 13},
      "hmh-bond": {"kind": "lag", "number": 15}}}})");
  for (auto const& [path, state] : std::as_const(wanted).GetObject())
    EXPECT_EQ(document["stateway"][path], state) << path.GetString();
}

TEST(Captures, hostsBehindAGroupOfVtepsCountForEachMember) {
  CaptureSet leaf3;
  leaf3.overlay(captures("vlan-aware-multihomed/leaf3"));
  auto const road = "10.255.0.1>43 10.255.0.2>43 | 43: 10.1.1.4@up1/up1 10.1.2.4@up2/up2";
  EXPECT_EQ(roads(leaf3.stateDocument()), road);
  EXPECT_EQ(roads(leaf3.stateDocument(), "vxlanHwHerTunnel"), road);

  // No entry names 10.255.0.3 but the group, and the multicast group is no VTEP.
  CaptureSet single;
  single.overlay(captures("single-vxlan-device"));
  EXPECT_EQ(roads(single.stateDocument()), "10.255.0.2> 10.255.0.3>");
  EXPECT_EQ(roads(single.stateDocument(), "vxlanHwHerTunnel"), "10.255.0.2> 10.255.0.3>");
}

}  // namespace Host::Test
