#include "host/import/Fdb.h"

#include "host/Unicast.h"

namespace Host::Import {

Fdb::Fdb(JsonDocument const& file, Links const& links, BridgeVlans const& vlans, NextHopObjects const& nextHops,
         Warnings& warnings)
    : vti_(links.vti()), warnings_(warnings) {
  for (auto const entry : objects(file.root())) {
    std::string const name(entry.member("ifname").text());
    auto const device = links.device(name);
    devices_.insert(name);
    // A device that was added after the links were captured is a VXLAN device if its entries are those of one.
    bool const vxlan = !device || device->kind == DeviceKind::vxlan;
    if (vxlan && (has(entry, "dst") || has(entry, "nhid"))) {
      readRemote(entry, vlans, nextHops);
    } else {
      readLocal(entry);
    }
  }
}

void Fdb::readRemote(JsonIn entry, BridgeVlans const& vlans, NextHopObjects const& nextHops) {
  // Floods are sent where the entries of the zero address point.
  bool const flood = ethAddr(entry.member("mac")).isZero();
  if (auto const dst = entry.find("dst")) {
    if (flood) {
      readFlood(entry, *dst, vlans);
    } else if (auto const address = vtep(*dst)) {
      unicast_.insert(*address);
    }
  }
  auto const nhid = entry.find("nhid");
  if (!nhid) return;
  if (!flood) return readGroup(*nhid, nextHops);
  for (auto const gateway : nextHops.vteps(*nhid)) readFlood(entry, gateway, vlans);
}

void Fdb::readFlood(JsonIn entry, JsonIn at, BridgeVlans const& vlans) {
  if (whyNotUnicast(ipAddr(at)) == "multicast") return passOver(at, "a multicast group is not a VTEP");
  if (auto const address = vtep(at)) {
    addFlooded(at, *address, vlans.vlanOf(std::string(entry.member("ifname").text()), number(entry, "src_vni")));
  }
}

void Fdb::readGroup(JsonIn nhid, NextHopObjects const& nextHops) {
  std::set<IpGenAddr> members;
  for (auto const gateway : nextHops.vteps(nhid)) {
    if (auto const address = vtep(gateway)) members.insert(*address);
  }
  unicast_.insert(members.begin(), members.end());
  if (!nextHops.isGroup(nhid)) return;
  if (members.empty()) return passOver(nhid, "no member of this group is a remote VTEP");
  groups_[number(nhid)] = std::move(members);
}

std::optional<IpGenAddr> Fdb::vtep(JsonIn at) {
  auto const address = ipAddr(at);
  if (address == vti_.srcAddr || address == vti_.srcAddrV6) {
    passOver(at, "this switch's own address is not a remote VTEP");
  } else if (address.isUnspecified()) {
    passOver(at, "the unspecified address is not a remote VTEP");
  } else {
    return unicastIpAddr(at, "VTEP");
  }
  return std::nullopt;
}

void Fdb::addFlooded(JsonIn at, IpGenAddr const& vtep, BridgeVlans::Result const& vlan) {
  if (vlan.vlan == 0) return passOver(at, "it is unknown which VLAN is flooded to this VTEP: " + vlan.why);
  flooded_.try_emplace(vtep, Flooded{at, {}}).first->second.vlans.insert(vlan.vlan);
}

void Fdb::readLocal(JsonIn entry) {
  auto const bridge = text(entry, "master");
  // Permanent entries are the bridge's own addresses.
  if (!bridge || text(entry, "state") == "permanent") return;
  auto const mac = ethAddr(entry.member("mac"));
  ports_[{*bridge, number(entry, "vlan").value_or(0), mac}] = entry.member("ifname").text();
}

std::string Fdb::portBehind(std::string const& bridge, std::uint32_t vlan, EthAddr const& mac) const {
  for (auto const id : {vlan, 0U}) {
    if (auto const found = ports_.find({bridge, id, mac}); found != ports_.end()) return found->second;
  }
  return "";
}

}  // namespace Host::Import
