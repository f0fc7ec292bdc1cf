#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "host/import/CaptureSet.h"

namespace Host::Test {

inline std::filesystem::path captures(std::string const& name) {
  return std::filesystem::path(TESSEL_SOURCE_DIR) / "tests/data/captures" / name;
}

/// "VTEP>adjacency ... | adjacency: neighbour@port/interface ...", a `?` after a neighbour that is not resolved.
inline std::string roads(rapidjson::Document const& document, std::string const& type = "vxlanTunnel") {
  auto const path = "hardware/tessel/tunnel/configDir/" + type;
  auto const& config = document["stateway"][path.c_str()];
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

/// A switch that is written by hand: two uplinks, a VXLAN device, a bridge with VLAN 10, and one remote VTEP,
/// 10.255.0.2. Each test replaces the files that it is about.
class HandMade : public testing::Test {
 protected:
  HandMade() { restore(); }
  ~HandMade() override { std::filesystem::remove_all(base_); }

  void restore() const {
    std::filesystem::remove_all(base_);
    links(vxlan("vx1", R"("local":"10.255.0.1","port":4789)"));
    remotes({"10.255.0.2"});
    file("ip-neigh.json", R"([{"dst":"10.1.1.0","dev":"up1","lladdr":"02:F1:00:00:00:01","state":["STALE"]},
                              {"dst":"10.1.2.0","dev":"up2","lladdr":"02:f2:00:00:00:01","state":["NOARP"]}])");
  }

  std::filesystem::path dir(std::string const& name = "base") const { return base_ / name; }

  void file(std::string const& name, std::string const& text, std::string const& directory = "base") const {
    std::filesystem::create_directories(dir(directory));
    std::ofstream(dir(directory) / name) << text;
  }

  static std::string vxlan(std::string const& name, std::string const& data, unsigned ifindex = 9) {
    return R"({"ifindex":)" + std::to_string(ifindex) + R"(,"ifname":")" + name +
           R"(","linkinfo":{"info_kind":"vxlan","info_data":{)" + data + "}}}";
  }
  void remotes(std::vector<std::string> const& vteps, std::string const& more = "") const {
    std::string list;
    for (auto const& vtep : vteps)
      list += std::string(list.empty() ? "" : ",") + R"({"mac":"02:00:00:00:00:09","ifname":"vx1","dst":")" + vtep +
              R"(","flags":["self"],"state":""})";
    file("bridge-fdb.json", "[" + list + more + "]");
  }
  void links(std::string const& more) const {
    file("ip-link.json",
         R"([{"ifindex":1,"ifname":"lo","flags":["LOOPBACK"],"link_type":"loopback"},
      {"ifindex":2,"ifname":"up1"},{"ifindex":3,"ifname":"up2"},{"ifindex":4,"ifname":"br0","linkinfo":{"info_kind":"bridge"}},
      {"ifindex":5,"ifname":"vlan10","link":"br0","linkinfo":{"info_kind":"vlan","info_data":{"id":10}}},
      {"ifindex":6,"ifname":"h1","master":"br0","linkinfo":{"info_kind":"veth","info_slave_kind":"bridge"}},
      {"ifindex":7,"ifname":"red","linkinfo":{"info_kind":"vrf","info_data":{"table":1001}}},
      {"ifindex":8,"ifname":"lo-red","master":"red","linkinfo":{"info_kind":"dummy","info_slave_kind":"vrf",
        "info_slave_data":{"table":1001}}},)" +
             more + "]");
  }
  void routes(std::string const& list) const { file("ip-route-all.json", "[" + list + "]"); }

  /// The roads of the capture, or what is wrong with it, without the directory of the test.
  std::string shown(std::string const& name = "base") const {
    try {
      CaptureSet set;
      set.overlay(dir(name));
      return roads(set.stateDocument());
    } catch (Kiln::InputError const& error) {
      std::string text = error.what();
      EXPECT_EQ(text.find(error.file() + ": "), 0U);
      auto const prefix = base_.string() + "/";
      for (auto at = text.find(prefix); at != std::string::npos; at = text.find(prefix)) text.erase(at, prefix.size());
      return text;
    }
  }

 private:
  std::filesystem::path base_ =
      std::filesystem::temp_directory_path() /
      ("captures-" + std::to_string(getpid()) + testing::UnitTest::GetInstance()->current_test_info()->name());
};

}  // namespace Host::Test
