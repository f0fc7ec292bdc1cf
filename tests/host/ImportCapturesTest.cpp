#include <utility>
#include <vector>

#include "tests/host/ImportWorld.h"

namespace Host::Test {

// Nothing is learned behind leaf2 any more after a move, but it is flooded to.
TEST(Captures, eachDocumentFollowsTheChange) {
  // A kernel's id of the group of both uplinks, which it keeps while one is missing, and of the second uplink alone.
  for (auto const& [fabric, both, one] : {std::tuple("bridge-per-vni", 36, 37), {"vlan-aware-multihomed", 42, 36}}) {
    CaptureSet set;
    set.overlay(captures(fabric) / "leaf1");
    auto const before = set.stateDocument();
    struct Step {
      char const *event, *vteps;
      int adjId;
      std::string hops;
    };
    std::string const up1 = " 10.1.1.0@up1/up1", up2 = " 10.1.2.0@up2/up2";
    for (auto const& [event, vteps, adjId, hops] : {Step{"01-base", "23", both, up1 + up2},
                                                    {"02-uplink-down", "23", one, up2},
                                                    {"03-uplink-up", "23", both, up2},
                                                    {"04-vtep-gone", "2", both, up2},
                                                    {"05-vtep-back", "23", both, up2},
                                                    {"06-mac-moved", "3", both, up2},
                                                    {"07-vni-removed", "3", both, up2},
                                                    {"08-vni-back", "3", both, up2},
                                                    {"01-base", "23", both, up1 + up2}}) {
      SCOPED_TRACE(event);
      set.overlay(captures(fabric) / "events" / event);
      auto const document = set.stateDocument();
      auto const id = std::to_string(adjId);
      std::string wanted;
      for (char const leaf : std::string(vteps)) wanted += std::string("10.255.0.") + leaf + ">" + id + " ";
      wanted += "| " + id + ":" + hops;
      EXPECT_EQ(roads(document), wanted);
      if (vteps[0] == '3') wanted.insert(0, "10.255.0.2>" + id + " ");
      EXPECT_EQ(roads(document, "vxlanHwHerTunnel"), wanted);
      for (auto const path : {"interface/status/eth/vxlan", "vane/l3IntfTable", "hardware/tessel/port/config"})
        EXPECT_EQ(document["stateway"][path], before["stateway"][path]);
    }
    EXPECT_EQ(set.stateDocument(), before);
  }
}

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
  // No entry of the single device names 10.255.0.3 but the group, and the multicast group is no VTEP.
  for (auto const& [name, road] :
       {std::pair("vlan-aware-multihomed/leaf3", "10.255.0.1>43 10.255.0.2>43 | 43: 10.1.1.4@up1/up1 10.1.2.4@up2/up2"),
        {"single-vxlan-device", "10.255.0.2> 10.255.0.3>"}}) {
    CaptureSet set;
    set.overlay(captures(name));
    EXPECT_EQ(roads(set.stateDocument()), road);
    EXPECT_EQ(roads(set.stateDocument(), "vxlanHwHerTunnel"), road);
  }
}

}  // namespace Host::Test
