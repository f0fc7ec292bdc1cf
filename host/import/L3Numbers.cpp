#include "host/import/L3Numbers.h"

namespace Host::Import {

namespace {

constexpr std::uint32_t highestVlan = 4094;

bool canBeL3(Links const& links, Device const& device) {
  auto const master = links.device(device.master);
  bool const bridged = device.slaveKind == "bridge" || (master && master->kind == DeviceKind::bridge);
  return !bridged && device.kind != DeviceKind::loopback && device.kind != DeviceKind::vxlan;
}

std::uint32_t vlanOf(Links const& links, BridgeVlans const& vlans, Device const& device) {
  return links.isBridgeVlan(device) ? device.vlanId : vlans.vlanOfBridge(device.name);
}

}  // namespace

L3Numbers::L3Numbers(Links const& links, BridgeVlans const& vlans) {
  auto next = highestVlan;
  for (auto const device : links.devices()) {
    if (auto const vlan = vlanOf(links, vlans, *device)) {
      numbers_[device->name] = vlan;
    } else if (canBeL3(links, *device)) {
      while (vlans.used().contains(next)) --next;
      numbers_[device->name] = next == none ? next : next--;
    }
  }
}

std::optional<std::uint32_t> L3Numbers::of(Device const& device) const {
  auto const found = numbers_.find(device.name);
  return found == numbers_.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace Host::Import
