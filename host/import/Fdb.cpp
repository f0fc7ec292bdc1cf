#include "host/import/Fdb.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/Unicast.h"

namespace Host::Import {

namespace {

std::string deviceOf(JsonIn entry) { return std::string(entry.member("ifname").text()); }

/// Floods are sent where the entries of the zero address point.
bool isFlood(JsonIn entry) { return ethAddr(entry.member("mac")).isZero(); }

/// The state as a word, or as numbers of the kernel's flags.
bool isPermanent(JsonIn entry) {
  auto const state = word(entry, "state");
  return state == "permanent" || state == "0x80" || state == "128";
}

}  // namespace

std::map<std::string, std::size_t> Fdb::remotes(JsonDocument const* file) {
  std::map<std::string, std::set<std::string>> named;
  if (file) {
    for (auto const entry : objects(file->root())) {
      for (auto const key : {"dst", "nhid"}) {
        if (auto const remote = word(entry, key)) named[deviceOf(entry)].insert(*remote);
      }
    }
  }
  std::map<std::string, std::size_t> counts;
  for (auto const& [device, remotes] : named) counts.emplace(device, remotes.size());
  return counts;
}

Fdb::Fdb(JsonDocument const* file, Links const& links, BridgeVlans const& vlans, NextHopObjects const& nextHops,
         Warnings& warnings)
    : links_(links), vlans_(vlans), vti_(links.vti()), warnings_(warnings) {
  if (!file) return;
  for (auto const device : links.devices()) {
    if (auto const under = links.boundTo(*device); !under.empty()) boundTo_[device->name] = under;
  }
  for (auto const entry : objects(file->root())) read(entry, nextHops);
}

void Fdb::read(JsonIn entry, NextHopObjects const& nextHops) {
  auto const name = deviceOf(entry);
  auto const device = links_.device(name);
  devices_.insert(name);
  // A device that was added after the links were captured is a VXLAN device if its entries are those of one.
  bool const vxlan = !device || device->kind == DeviceKind::vxlan;
  if (!vxlan || !(has(entry, "dst") || has(entry, "nhid"))) return readLocal(entry);
  if (!device || device->isProgrammed()) readRemote(entry, device, nextHops);
}

void Fdb::readRemote(JsonIn entry, Device const* device, NextHopObjects const& nextHops) {
  bool const flood = isFlood(entry);
  if (!isAsDevice(entry, device)) return;
  if (auto const dst = entry.find("dst")) flood ? readFlood(entry, *dst) : readUnicast(entry, *dst);
  auto const nhid = entry.find("nhid");
  if (!nhid) return;
  if (!flood) return readGroup(entry, *nhid, nextHops);
  for (auto const gateway : nextHops.vteps(*nhid)) readFlood(entry, gateway);
}

bool Fdb::isAsDevice(JsonIn entry, Device const* device) {
  auto const port = entry.find("port");
  if (port && vti_.udpPort && number(*port) != *vti_.udpPort) {
    passOver("fdb-port", entry, *port, fmt::format("the switch sends all VXLAN packets to UDP port {}", *vti_.udpPort));
    return false;
  }
  auto const vni = entry.find("vni");
  auto const own = number(entry, "src_vni").value_or(device ? device->vni : 0);
  if (!vni || own == 0 || number(*vni) == own) return true;
  passOver("fdb-vni", entry, *vni, fmt::format("the switch sends packets of one VLAN with one VNI, here {}", own));
  return false;
}

void Fdb::readUnicast(JsonIn entry, JsonIn at) {
  if (auto const address = vtep(entry, at)) unicast_.insert(*address);
}

void Fdb::readFlood(JsonIn entry, JsonIn at) {
  if (whyNotUnicast(ipAddr(at)) == "multicast") return passOver("fdb", entry, at, "a multicast group is not a VTEP");
  auto const address = vtep(entry, at);
  if (!address) return;
  auto const vlan = vlanOf(entry);
  if (vlan.vlan == 0) {
    passOver("flood-vlan", entry, at, "it is unknown which VLAN is flooded to this VTEP: " + vlan.why);
  } else {
    flooded_.try_emplace(*address, Flooded{at, {}}).first->second.vlans.insert(vlan.vlan);
  }
}

void Fdb::readGroup(JsonIn entry, JsonIn nhid, NextHopObjects const& nextHops) {
  std::set<IpGenAddr> members;
  for (auto const gateway : nextHops.vteps(nhid)) {
    if (auto const address = vtep(entry, gateway)) members.insert(*address);
  }
  unicast_.insert(members.begin(), members.end());
  if (!nextHops.isGroup(nhid)) return;
  if (members.empty()) return passOver("fdb", entry, nhid, "no member of this group is a remote VTEP");
  groups_[number(nhid)] = std::move(members);
}

std::optional<IpGenAddr> Fdb::vtep(JsonIn entry, JsonIn at) {
  auto const address = ipAddr(at);
  auto const why = whyNotUnicast(address);
  if (address == vti_.srcAddr || address == vti_.srcAddrV6) {
    passOver("fdb", entry, at, "this switch's own address is not a remote VTEP");
  } else if (address.isUnspecified()) {
    passOver("fdb", entry, at, "the unspecified address is not a remote VTEP");
  } else if (!why.empty()) {
    passOver("fdb", entry, at, fmt::format("a {} address is not a VTEP", why));
  } else {
    bind(entry, address);
    return address;
  }
  return std::nullopt;
}

void Fdb::bind(JsonIn entry, IpGenAddr const& vtep) {
  // A name, or a number where the device has been removed.
  auto const own = word(entry, "viaIf");
  if (boundTo_.empty() && !own) return;
  auto const device = boundTo_.find(deviceOf(entry));
  auto const bound = own.value_or(device == boundTo_.end() ? "" : device->second);
  auto& all = bindings_[vtep];
  if (std::find(all.begin(), all.end(), bound) == all.end()) all.push_back(bound);
}

void Fdb::passOver(std::string_view kind, JsonIn entry, JsonIn at, std::string const& why) {
  auto const vlan = vlanOf(entry).vlan;
  auto const ofVlan = vlan == 0 ? "of " + deviceOf(entry) : fmt::format("of VLAN {}", vlan);
  warnings_.add(kind, at, "ignored: " + why,
                isFlood(entry) ? fmt::format("frames {} are not flooded there", ofVlan)
                               : fmt::format("frames {} to {} are not sent there", ofVlan, entry.member("mac").text()));
}

BridgeVlans::Result Fdb::vlanOf(JsonIn entry) const { return vlans_.vlanOf(deviceOf(entry), number(entry, "src_vni")); }

void Fdb::readLocal(JsonIn entry) {
  auto const bridge = word(entry, "master");
  // Permanent entries are the bridge's own addresses.
  if (!bridge || isPermanent(entry)) return;
  EthAddr mac;
  // Not all that a bridge can have as a port is Ethernet.
  if (!Kiln::readText(entry.member("mac").text(), mac)) return;
  ports_[{*bridge, number(entry, "vlan").value_or(0), mac}] = deviceOf(entry);
}

std::string Fdb::portBehind(std::string const& bridge, std::uint32_t vlan, EthAddr const& mac) const {
  for (auto const id : {vlan, 0U}) {
    if (auto const found = ports_.find({bridge, id, mac}); found != ports_.end()) return found->second;
  }
  return "";
}

}  // namespace Host::Import
