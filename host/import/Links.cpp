#include "host/import/Links.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <set>
#include <tuple>

namespace Host::Import {

namespace {

constexpr std::uint32_t highestVlan = 4094;
constexpr std::uint32_t highestVni = 0xffffff;
/// What the devices of one tunnel interface have in common.
constexpr std::array<std::string_view, 3> vtiKeys{"local", "local6", "port"};

DeviceKind kindOf(JsonIn at, std::string const& infoKind) {
  static std::map<std::string, DeviceKind> const kinds{
      {"", DeviceKind::port},           {"veth", DeviceKind::port},       {"bond", DeviceKind::lag},
      {"team", DeviceKind::lag},        {"bridge", DeviceKind::bridge},   {"vlan", DeviceKind::vlan},
      {"macvlan", DeviceKind::macvlan}, {"macvtap", DeviceKind::macvlan}, {"ipvlan", DeviceKind::macvlan},
      {"ipvtap", DeviceKind::macvlan},  {"vrf", DeviceKind::vrf},         {"vxlan", DeviceKind::vxlan},
      {"dummy", DeviceKind::dummy},     {"ifb", DeviceKind::dummy},
  };
  static std::set<std::string> const tunnels{
      "bareudp", "erspan", "geneve", "gre",   "gretap", "gtp", "ip6erspan", "ip6gre", "ip6gretap", "ip6tnl", "ipip",
      "nlmon",   "ovpn",   "ppp",    "rmnet", "sit",    "tun", "vti",       "vti6",   "wireguard", "xfrm"};
  if (word(at, "link_type") == "loopback" || hasFlag(at, "flags", "LOOPBACK")) return DeviceKind::loopback;
  auto const kind = kinds.find(infoKind);
  if (kind != kinds.end()) return kind->second;
  return tunnels.contains(infoKind) ? DeviceKind::tunnel : DeviceKind::port;
}

std::string tableIn(std::optional<JsonIn> data) { return data ? word(*data, "table").value_or("") : ""; }

/// 0 also for one that is no VLAN of a switch: kernels accept 0 and 4095, for frames with a priority alone.
std::uint32_t vlanIn(JsonIn data) {
  auto const id = number(data, "id").value_or(0);
  return id <= highestVlan ? id : 0;
}

bool isUp(JsonIn at) {
  return !has(at, "flags") || (hasFlag(at, "flags", "UP") && !hasFlag(at, "flags", "NO-CARRIER"));
}

std::uint32_t vniIn(JsonIn data) {
  auto const id = data.find("id");
  return id ? numberIn(*id, 0, highestVni) : 0;
}

void readInfo(JsonIn info, Device& device) {
  auto const data = info.find("info_data");
  device.slaveKind = text(info, "info_slave_kind").value_or("");
  if (device.kind == DeviceKind::bridge && data) device.filtersVlans = number(*data, "vlan_filtering").value_or(0) != 0;
  if (device.kind == DeviceKind::vlan && data) device.vlanId = vlanIn(*data);
  if (device.kind == DeviceKind::vxlan && data) device.vni = vniIn(*data);
  if (device.kind == DeviceKind::vrf) device.table = tableIn(data);
  if (device.slaveKind == "vrf") device.table = tableIn(info.find("info_slave_data"));
}

Device readDevice(JsonIn at) {
  auto const info = at.find("linkinfo");
  auto const infoKind = info ? text(*info, "info_kind").value_or("") : "";
  Device device{.at = at,
                .name = std::string(at.member("ifname").text()),
                .ifindex = numberIn(at.member("ifindex"), 1),
                .kind = kindOf(at, infoKind),
                .kindName = infoKind,
                .master = word(at, "master").value_or(""),
                .slaveKind = "",
                .link = word(at, "link").value_or(""),
                .vlanId = 0,
                .vni = 0,
                .filtersVlans = false,
                .table = "",
                .up = isUp(at),
                .otherVti = false};
  if (info) readInfo(*info, device);
  return device;
}

/// Only `ip -d` prints the kinds of devices.
bool hasDetails(JsonDocument const& file) {
  auto const all = objects(file.root());
  return std::any_of(all.begin(), all.end(), [](JsonIn at) { return has(at, "linkinfo"); });
}

/// Only `ip -d` prints how often a device is promiscuous, of any kind of device.
bool isWithoutDetails(JsonDocument const& file) {
  auto const all = objects(file.root());
  return !all.empty() &&
         std::none_of(all.begin(), all.end(), [](JsonIn at) { return has(at, "linkinfo") || has(at, "promiscuity"); });
}

/// A member that says something: no address of all zeros.
std::optional<JsonIn> vtiValue(JsonIn data, std::string_view key) {
  auto const value = data.find(key);
  if (value && value->isText() && (value->text() == "0.0.0.0" || value->text() == "::")) return std::nullopt;
  return value;
}

std::string lossOf(Device const& device, VtiChoice const& choice) {
  auto const remotes = choice.remotes.find(device.name);
  return fmt::format("its {} VTEPs and {} are not programmed", remotes == choice.remotes.end() ? 0 : remotes->second,
                     device.vni == 0 ? "VNIs" : fmt::format("VNI {}", device.vni));
}

/// One device in two files of the same age.
void requireSameSource(JsonIn known, JsonIn data, std::string const& name) {
  for (auto const key : {"local", "local6", "port"}) {
    auto const theirs = known.find(key);
    auto const mine = data.find(key);
    if (mine && theirs ? mine->shown() == theirs->shown() : !mine && !theirs) continue;
    mine.value_or(data).fail(
        theirs ? fmt::format("expected the {} {} that {} has for {}", key, theirs->shown(), known.source(), name)
               : fmt::format("expected no {}, as in {} for {}", key, known.source(), name));
  }
}

}  // namespace

Links::Links(JsonDocument const* links, JsonDocument const* vxlanLinks, std::strong_ordering vxlanLinksAge,
             VtiChoice const& choice, Warnings& warnings)
    : complete_(links != nullptr),
      source_(vxlanLinks ? vxlanLinks->source()
              : links    ? links->source()
                         : "") {
  bool const detailed = links && hasDetails(*links);
  bool const superseded = vxlanLinks && vxlanLinksAge > 0;
  if (links) addDevices(*links);
  // What the newer file does not have has been removed.
  if (superseded) std::erase_if(devices_, [](auto const& each) { return each.second.kind == DeviceKind::vxlan; });
  if (detailed && !superseded) addVxlanDevices(*links);
  if (vxlanLinks && !(detailed && vxlanLinksAge < 0)) addVxlanDevices(*vxlanLinks);
  if (links && isWithoutDetails(*links)) {
    warnings.add({"no-details", links->source(), "", "printed without -d: no device has its kind",
                  vxlanLinks ? "bridges, VLANs and bonds are taken for ports"
                             : "VXLAN devices, bridges, VLANs and bonds are taken for ports: there is no local VTEP"});
  }
  for (auto const& [name, device] : devices_) ordered_.push_back(&device);
  std::sort(ordered_.begin(), ordered_.end(), [](auto a, auto b) { return a->ifindex < b->ifindex; });
  addToVti(choice, warnings);
  readVti();
}

void Links::addDevices(JsonDocument const& file) {
  for (auto const at : objects(file.root())) {
    auto device = readDevice(at);
    auto name = device.name;
    devices_.insert_or_assign(std::move(name), std::move(device));
  }
}

void Links::addVxlanDevices(JsonDocument const& file) {
  for (auto const at : objects(file.root())) {
    auto device = readDevice(at);
    if (device.kind != DeviceKind::vxlan) continue;
    auto const data = at.member("linkinfo").member("info_data");
    auto const [known, isNew] = vxlanData_.try_emplace(device.name, data);
    if (!isNew) requireSameSource(known->second, data, device.name);
    auto name = device.name;
    devices_.insert_or_assign(std::move(name), std::move(device));
  }
}

std::vector<Device*> Links::byPreference(VtiChoice const& choice) {
  std::vector<Device*> devices;
  for (auto const& [name, data] : vxlanData_) devices.push_back(&devices_.at(name));
  auto const rank = [&](Device const* device) {
    auto const remotes = choice.remotes.find(device->name);
    auto const count = remotes == choice.remotes.end() ? 0 : remotes->second;
    return std::tuple(device->name != choice.name, !device->up, ~count, device->ifindex);
  };
  std::sort(devices.begin(), devices.end(), [&](auto a, auto b) { return rank(a) < rank(b); });
  if (!choice.name.empty() && (devices.empty() || devices.front()->name != choice.name)) {
    std::string names;
    for (auto const device : devices) names += ' ' + device->name;
    throw Kiln::InputError("--vti", "", "'" + choice.name + "'",
                           names.empty() ? "expected captures with a VXLAN device" : "expected one of" + names);
  }
  return devices;
}

void Links::addToVti(VtiChoice const& choice, Warnings& warnings) {
  auto const devices = byPreference(choice);
  for (auto const device : devices) {
    auto const data = vxlanData_.at(device->name);
    if (!device->up) {
      warnings.add("down", device->at.member("flags"), "ignored: " + device->name + " is down",
                   lossOf(*device, choice));
      // The chosen one says which devices belong together, even so.
      if (device != devices.front()) continue;
    }
    if (auto const value = disagreement(data)) {
      device->otherVti = true;
      warnings.add(
          "other-vti", *value,
          fmt::format("ignored: {} is no part of the tunnel interface of {}", device->name, devices.front()->name),
          lossOf(*device, choice));
      continue;
    }
    for (auto const key : vtiKeys) {
      if (auto const value = vtiValue(data, key)) agreed_.try_emplace(std::string(key), *value, device->name);
    }
    if (device->up) vtiDevices_.push_back(device);
  }
  std::erase_if(vxlanData_, [this](auto const& each) { return devices_.at(each.first).otherVti; });
}

std::optional<JsonIn> Links::disagreement(JsonIn data) const {
  for (auto const key : vtiKeys) {
    auto const value = vtiValue(data, key);
    auto const known = agreed_.find(std::string(key));
    if (value && known != agreed_.end() && known->second.first.shown() != value->shown()) return value;
  }
  return std::nullopt;
}

void Links::readVti() {
  if (vtiDevices_.empty()) return;
  auto const address = [&](char const* key, bool v6, std::optional<IpGenAddr>& into) {
    auto const found = agreed_.find(key);
    if (found == agreed_.end()) return;
    auto const at = found->second.first;
    if (ipAddr(at).isIpv6() != v6) at.fail(v6 ? "expected an IPv6 address" : "expected an IPv4 address");
    into = unicastIpAddr(at, "local VTEP");
  };
  address("local", false, vti_.srcAddr);
  address("local6", true, vti_.srcAddrV6);
  if (auto const port = agreed_.find("port"); port != agreed_.end()) {
    vti_.udpPort = numberIn(port->second.first, 0, 0xffff);
  }
}

std::string Links::boundTo(Device const& device) const {
  auto const data = vxlanData_.find(device.name);
  return data == vxlanData_.end() ? "" : word(data->second, "link").value_or("");
}

Device const* Links::device(std::string const& name) const {
  auto const found = devices_.find(name);
  return found == devices_.end() ? nullptr : &found->second;
}

bool Links::isBridgeVlan(Device const& vlan) const {
  // A kernel accepts 0, for frames with a priority alone.
  if (vlan.kind != DeviceKind::vlan || vlan.vlanId == 0) return false;
  auto const under = device(vlan.link);
  return under && under->kind == DeviceKind::bridge;
}

std::string Links::l3Name(Device const& device) const {
  return isBridgeVlan(device) ? fmt::format("Vlan{}", device.vlanId) : device.name;
}

bool Links::isPort(Device const& device) const {
  bool const member = device.slaveKind == "bond" || device.slaveKind == "team";
  return !member && (device.kind == DeviceKind::port || device.kind == DeviceKind::lag);
}

Device const* Links::under(Device const& from) const {
  auto const isUpper = [](Device const& device) {
    return device.kind == DeviceKind::vlan || device.kind == DeviceKind::macvlan;
  };
  auto at = &from;
  // Limited by the number of devices: a capture can claim a cycle of them.
  for (std::size_t steps = 0; at && isUpper(*at) && steps < devices_.size(); ++steps) at = device(at->link);
  return at;
}

Device const* Links::port(Device const& from) const {
  auto const at = under(from);
  return at && isPort(*at) ? at : nullptr;
}

Device const* Links::bridgeUnder(Device const& from) const {
  auto const at = under(from);
  return at && at->kind == DeviceKind::bridge ? at : nullptr;
}

}  // namespace Host::Import
