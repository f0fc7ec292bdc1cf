#include "host/import/BridgeVlans.h"

#include <fmt/format.h>

namespace Host::Import {

namespace {

constexpr std::uint32_t firstAssigned = 2;  ///< VLAN 1 is the default VLAN of every port.
constexpr std::uint32_t highestVlan = 4094;
constexpr std::uint32_t highestVni = 0xffffff;

std::uint32_t vlanIn(JsonIn at) { return numberIn(at, 1, highestVlan); }

/// The last number of a range whose end is left out where it has one number.
std::uint32_t lastOf(JsonIn at, std::string_view key, std::uint32_t first) {
  auto const end = at.find(key);
  return end ? numberIn(*end, first, highestVlan) : first;
}

std::vector<JsonIn> listOf(JsonIn at, std::string_view key) {
  auto const list = at.find(key);
  return list ? objects(*list) : std::vector<JsonIn>();
}

/// Where a VXLAN device has its settings, its VNI among them.
JsonIn dataOf(Device const& device) { return device.at.member("linkinfo").member("info_data"); }
JsonIn vniAt(Device const& device) { return dataOf(device).member("id"); }

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

BridgeVlans::BridgeVlans(Files const& files, Links const& links, VlanChoices& choices, Warnings& warnings)
    : links_(links), warnings_(warnings), files_(files), next_(firstAssigned) {
  for (auto const device : links_.devices()) {
    if (links_.isBridgeVlan(*device)) used_.insert(device->vlanId);
  }
  readPortVlans(files.portVlans);
  readTunnels(files.tunnels, choices);
  readDevices(choices);
  assign(choices);
}

void BridgeVlans::readPortVlans(JsonDocument const* file) {
  eachOf(file, "vlans", [&](std::string const& name, JsonIn at) {
    auto const vlan = number(at.member("vlan"));
    auto const last = number(at, "vlanEnd").value_or(vlan);
    if (vlan == 0 || last > highestVlan) return;
    if (hasFlag(at, "flags", "PVID")) pvids_[name] = vlan;
    auto const port = links_.device(name);
    auto const bridge = port && !port->master.empty() ? links_.device(port->master) : port;
    // A bridge without VLANs shows the default VLAN of its ports.
    if (bridge && bridge->kind == DeviceKind::bridge && !bridge->filtersVlans) return;
    for (auto used = vlan; used <= last; ++used) used_.insert(used);
  });
}

void BridgeVlans::readTunnels(JsonDocument const* file, VlanChoices& choices) {
  eachOf(file, "tunnels", [&](std::string const& device, JsonIn at) { addTunnels(device, at, choices); });
}

bool BridgeVlans::isOtherVti(std::string const& name) const {
  auto const device = links_.device(name);
  return device && device->otherVti;
}

void BridgeVlans::addTunnels(std::string const& device, JsonIn at, VlanChoices& choices) {
  if (isOtherVti(device)) return;
  auto const vlan = vlanIn(at.member("vlan"));
  auto const length = lastOf(at, "vlanEnd", vlan) - vlan;
  auto const tunid = at.member("tunid");
  auto const vni = numberIn(tunid, 0, highestVni - length);
  if (auto const end = at.find("tunidEnd")) numberIn(*end, vni + length, vni + length);
  for (std::uint32_t i = 0; i <= length; ++i) {
    if (vni + i != 0) {
      addKernelVlan(tunid, vni + i, {vlan + i, device, false}, choices);
    } else {
      passOver(tunid, 0, device, "a switch has no VNI 0");
    }
  }
}

void BridgeVlans::readDevices(VlanChoices& choices) {
  for (auto const device : links_.devices()) {
    if (device->kind != DeviceKind::vxlan) continue;
    if (!files_.tunnels && !device->otherVti && has(dataOf(*device), "external")) {
      warnMissing("bridge-vlan-tunnelshow.json", "the VNIs of " + device->name + " have no VLAN");
    }
    if (device->vni == 0) continue;
    choices.take(device->vni);
    if (device->otherVti) {
      passedOver_.emplace(device->name, device->name + " is no part of the tunnel interface");
      continue;
    }
    auto const id = vniAt(*device);
    auto const bridge = links_.device(device->master);
    if (!bridge) {
      passOver(id, device->vni, device->name, fmt::format("ip-link.json has no bridge for {}", device->name));
    } else if (bridge->filtersVlans) {
      addFiltered(*device, choices);
    } else if (auto const [first, isNew] = unnumbered_.try_emplace(device->vni, Unnumbered{id, device}); !isNew) {
      passOver(id, device->vni, device->name, fmt::format("{} has this VNI, too", first->second.device->name));
    }
  }
}

void BridgeVlans::addFiltered(Device const& device, VlanChoices& choices) {
  auto const id = vniAt(device);
  if (auto const pvid = pvids_.find(device.name); pvid != pvids_.end()) {
    addKernelVlan(id, device.vni, {pvid->second, device.name, false}, choices);
  } else {
    if (!files_.portVlans) warnMissing("bridge-vlan.json", "VNIs of bridges that filter VLANs have no VLAN");
    passOver(id, device.vni, device.name, fmt::format("bridge-vlan.json has no PVID for {}", device.name));
  }
}

void BridgeVlans::addKernelVlan(JsonIn at, std::uint32_t vni, Vni const& entry, VlanChoices& choices) {
  if (choices.take(vni).value_or(entry.vlan) != entry.vlan) {
    choices.fail(vni, fmt::format("expected VLAN {}, which {} has in its bridge", entry.vlan, entry.device));
  }
  add(at, vni, entry);
}

bool BridgeVlans::add(JsonIn at, std::uint32_t vni, Vni const& entry) {
  auto const sameVni = vnis_.find(vni);
  auto const sameVlan = vniOfVlan_.find(entry.vlan);
  if (sameVni != vnis_.end()) {
    passOver(at, vni, entry.device, fmt::format("VNI {} has VLAN {} already", vni, sameVni->second.vlan));
  } else if (sameVlan != vniOfVlan_.end()) {
    passOver(at, vni, entry.device, fmt::format("VLAN {} has VNI {} already", entry.vlan, sameVlan->second));
  } else {
    vnis_.emplace(vni, entry);
    vniOfVlan_.emplace(entry.vlan, vni);
    used_.insert(entry.vlan);
    return true;
  }
  return false;
}

// Over all devices of the links, so that a VNI that is removed later does not renumber the others.
void BridgeVlans::assign(VlanChoices& choices) {
  for (auto const& [vni, unnumbered] : unnumbered_) {
    auto const& [at, device] = unnumbered;
    if (auto const known = bridgeVlans_.find(device->master); known != bridgeVlans_.end()) {
      auto const first = vniOfVlan_.at(known->second);
      passOver(at, vni, device->name, fmt::format("the bridge {} has VNI {} already", device->master, first));
    } else if (auto const vlan = vlanFor(vni, choices); vlan > highestVlan) {
      passOver(at, vni, device->name, fmt::format("there is no VLAN id left for the bridge {}", device->master));
    } else if (add(at, vni, {vlan, device->name, true})) {
      bridgeVlans_.emplace(device->master, vlan);
    }
  }
}

std::uint32_t BridgeVlans::vlanFor(std::uint32_t vni, VlanChoices& choices) {
  if (auto const chosen = choices.take(vni)) {
    if (used_.contains(*chosen)) choices.fail(vni, "expected a VLAN that the captures do not use otherwise");
    return *chosen;
  }
  while (used_.contains(next_) || choices.hasVlan(next_)) ++next_;
  return next_;
}

void BridgeVlans::passOver(JsonIn at, std::uint32_t vni, std::string const& device, std::string const& why) {
  passedOver_.emplace(device, why);
  warnings_.add("no-vlan", at, "ignored: " + why,
                vni == 0 ? "the VLAN has no VNI" : fmt::format("VNI {} of {} is not programmed", vni, device));
}

void BridgeVlans::warnMissing(std::string const& file, std::string const& consequence) {
  warnings_.add({"missing-file", files_.directory + file, "", "no such file", consequence});
}

BridgeVlans::Result BridgeVlans::vlanOf(std::string const& name, std::optional<std::uint32_t> vni) const {
  auto const device = links_.device(name);
  auto const number = vni.value_or(device ? device->vni : 0);
  if (auto const found = vnis_.find(number); found != vnis_.end() && found->second.device == name) {
    return {found->second.vlan, {}};
  }
  if (vni) return {0, fmt::format("bridge-vlan-tunnelshow.json has no VLAN for VNI {} of {}", *vni, name)};
  if (auto const why = passedOver_.find(name); why != passedOver_.end()) return {0, why->second};
  if (!device) return {0, fmt::format("ip-link.json has no bridge for {}", name)};
  return {0, fmt::format("the captured links have no VNI for {}", name)};
}

std::uint32_t BridgeVlans::vlanOfBridge(std::string const& bridge) const {
  auto const found = bridgeVlans_.find(bridge);
  return found == bridgeVlans_.end() ? 0 : found->second;
}

}  // namespace Host::Import
