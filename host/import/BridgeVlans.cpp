#include "host/import/BridgeVlans.h"

#include <fmt/format.h>

#include <algorithm>

namespace Host::Import {

namespace {

constexpr std::uint32_t highestVlan = 4094;
constexpr std::uint32_t highestVni = 0xffffff;

std::uint32_t vlanIn(JsonIn at) { return numberIn(at, 1, highestVlan); }

std::vector<JsonIn> listOf(JsonIn at, std::string_view key) {
  auto const list = at.find(key);
  return list ? objects(*list) : std::vector<JsonIn>();
}

/// Calls `visit(device, element)` for each element of the devices' lists under `key`; a null file has none.
template <class Visit>
void eachOf(JsonDocument const* file, std::string_view key, Visit visit) {
  if (!file) return;
  for (auto const device : objects(file->root())) {
    auto const name = std::string(device.member("ifname").text());
    for (auto const element : listOf(device, key)) visit(name, element);
  }
}

}  // namespace

BridgeVlans::BridgeVlans(JsonDocument const* portVlans, JsonDocument const* tunnels, Links const& links)
    : links_(links) {
  eachOf(portVlans, "vlans", [&](std::string const& device, JsonIn at) {
    auto const vlan = vlanIn(at.member("vlan"));
    if (hasFlag(at, "flags", "PVID")) pvids_[device] = vlan;
  });
  eachOf(tunnels, "tunnels", [&](std::string const& device, JsonIn at) { addTunnel(device, at); });
}

void BridgeVlans::addTunnel(std::string const& device, JsonIn at) {
  auto const vlan = vlanIn(at.member("vlan"));
  auto const vlanEnd = at.find("vlanEnd");
  auto const last = vlanEnd ? numberIn(*vlanEnd, vlan, highestVlan) : vlan;
  auto const vni = numberIn(at.member("tunid"), 0, highestVni);
  tunnels_[device].push_back({vni, vni + (last - vlan), vlan});
}

BridgeVlans::Result BridgeVlans::mappedVlan(std::string const& device, std::uint32_t vni) const {
  if (auto const found = tunnels_.find(device); found != tunnels_.end()) {
    for (auto const& range : found->second) {
      if (vni >= range.firstVni && vni <= range.lastVni) return {range.firstVlan + (vni - range.firstVni), {}};
    }
  }
  return {0, fmt::format("bridge-vlan-tunnelshow.json has no VLAN for VNI {} of {}", vni, device)};
}

BridgeVlans::Result BridgeVlans::vlanOf(std::string const& name, std::optional<std::uint32_t> vni) const {
  if (vni) return mappedVlan(name, *vni);
  auto const device = links_.device(name);
  auto const bridge = device ? links_.device(device->master) : nullptr;
  if (!bridge) return {0, fmt::format("ip-link.json has no bridge for {}", name)};
  if (bridge->filtersVlans) {
    auto const found = pvids_.find(name);
    if (found != pvids_.end()) return {found->second, {}};
    return {0, fmt::format("bridge-vlan.json has no PVID for {}", name)};
  }
  auto const number = links_.l3Number(*bridge);
  if (number && *number != Links::noL3Number) return {*number, {}};
  return {0, fmt::format("there is no VLAN id left for the bridge {}", bridge->name)};
}

}  // namespace Host::Import
