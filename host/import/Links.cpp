#include "host/import/Links.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

namespace Host::Import {

namespace {

constexpr std::uint32_t highestVlan = 4094;
constexpr std::uint32_t highestVni = 0xffffff;

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
  if (text(at, "link_type") == "loopback" || hasFlag(at, "flags", "LOOPBACK")) return DeviceKind::loopback;
  auto const kind = kinds.find(infoKind);
  if (kind != kinds.end()) return kind->second;
  return tunnels.contains(infoKind) ? DeviceKind::tunnel : DeviceKind::port;
}

std::string tableIn(std::optional<JsonIn> data) {
  auto const table = data ? number(*data, "table") : std::nullopt;
  return table ? std::to_string(*table) : "";
}

std::uint32_t vniIn(JsonIn data) {
  auto const id = data.find("id");
  return id ? numberIn(*id, 0, highestVni) : 0;
}

void readInfo(JsonIn info, Device& device) {
  auto const data = info.find("info_data");
  device.slaveKind = text(info, "info_slave_kind").value_or("");
  if (device.kind == DeviceKind::bridge && data) device.filtersVlans = number(*data, "vlan_filtering").value_or(0) != 0;
  if (device.kind == DeviceKind::vlan && data) device.vlanId = numberIn(data->member("id"), 0, highestVlan);
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
                .master = text(at, "master").value_or(""),
                .slaveKind = "",
                .link = text(at, "link").value_or(""),
                .vlanId = 0,
                .vni = 0,
                .filtersVlans = false,
                .table = ""};
  if (info) readInfo(*info, device);
  return device;
}

/// Only `ip -d` prints the kinds of devices.
bool hasDetails(JsonDocument const& file) {
  auto const all = objects(file.root());
  return std::any_of(all.begin(), all.end(), [](JsonIn at) { return has(at, "linkinfo"); });
}

/// One device in two files of the same age.
void requireSameSource(JsonIn known, JsonIn data, std::string const& name) {
  for (auto const key : {"local", "local6", "port"}) {
    auto const theirs = known.find(key);
    auto const mine = data.find(key);
    auto const wanted = theirs ? theirs->shown() : "nothing";
    if ((mine ? mine->shown() : "nothing") == wanted) continue;
    mine.value_or(data).fail(fmt::format("expected the {} {} that {} has for {}", key, wanted, known.source(), name));
  }
}

}  // namespace

Links::Links(JsonDocument const* links, JsonDocument const* vxlanLinks, std::strong_ordering vxlanLinksAge)
    : complete_(links != nullptr) {
  bool const detailed = links && hasDetails(*links);
  bool const superseded = vxlanLinks && vxlanLinksAge > 0;
  if (links) addDevices(*links);
  // What the newer file does not have has been removed.
  if (superseded) std::erase_if(devices_, [](auto const& each) { return each.second.kind == DeviceKind::vxlan; });
  if (detailed && !superseded) addVxlanDevices(*links);
  if (vxlanLinks && !(detailed && vxlanLinksAge < 0)) addVxlanDevices(*vxlanLinks);
  for (auto const& [name, data] : vxlanData_) mergeVti(data, name);
  for (auto const& [name, device] : devices_) ordered_.push_back(&device);
  std::sort(ordered_.begin(), ordered_.end(), [](auto a, auto b) { return a->ifindex < b->ifindex; });
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

void Links::mergeVti(JsonIn data, std::string const& name) {
  auto const agreed = [&](char const* key) {
    auto const value = data.find(key);
    if (!value) return value;
    auto const [first, isNew] = agreed_.try_emplace(key, *value, name);
    auto const& [theirs, owner] = first->second;
    if (!isNew && theirs.shown() != value->shown()) {
      value->fail(fmt::format("expected {} for {}, as {} has it", theirs.shown(), name, owner));
    }
    return value;
  };
  auto const address = [&](char const* key, bool v6, std::optional<IpGenAddr>& into) {
    auto const value = agreed(key);
    if (!value) return;
    auto const parsed = ipAddr(*value);
    if (parsed.isIpv6() != v6) value->fail(v6 ? "expected an IPv6 address" : "expected an IPv4 address");
    if (!parsed.isUnspecified()) into = unicastIpAddr(*value, "local VTEP");
  };
  address("local", false, vti_.srcAddr);
  address("local6", true, vti_.srcAddrV6);
  if (auto const port = agreed("port")) vti_.udpPort = numberIn(*port, 0, 0xffff);
}

std::string Links::underlayTable() const {
  std::set<std::string> tables;
  for (auto const& [name, data] : vxlanData_) {
    auto const under = device(text(data, "link").value_or(""));
    tables.insert(under ? under->table : "");
  }
  return tables.size() == 1 && !tables.begin()->empty() ? *tables.begin() : "main";
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

Device const* Links::port(Device const& from) const {
  auto at = &from;
  // Limited by the number of devices: a capture can claim a cycle of sub-interfaces.
  auto const isUpper = [](Device const& device) {
    return device.kind == DeviceKind::vlan || device.kind == DeviceKind::macvlan;
  };
  for (std::size_t steps = 0; at && isUpper(*at) && steps < devices_.size(); ++steps) at = device(at->link);
  return at && isPort(*at) ? at : nullptr;
}

}  // namespace Host::Import
