#include "host/import/Fdb.h"

namespace Host::Import {

namespace {

constexpr auto floodMac = "00:00:00:00:00:00";

}  // namespace

Fdb::Fdb(JsonDocument const& file, Links const& links, NextHopObjects const& nextHops) : vti_(links.vti()) {
  for (auto const entry : objects(file.root())) {
    auto const mac = ethAddr(entry.member("mac"));
    auto const device = links.device(std::string(entry.member("ifname").text()));
    // A device that was made after the links were captured is taken for what its entries say.
    bool const vxlan = !device || device->kind == DeviceKind::vxlan;
    if (vxlan && (has(entry, "dst") || has(entry, "nhid"))) {
      readRemote(entry, mac, nextHops);
    } else {
      readLocal(entry, mac);
    }
  }
}

void Fdb::readRemote(JsonIn entry, std::string const& mac, NextHopObjects const& nextHops) {
  auto& vteps = mac == floodMac ? flooded_ : unicast_;
  auto const add = [&](IpAddr const& address) {
    if (isRemote(address)) vteps.insert(address);
  };
  if (auto const dst = entry.find("dst")) add(ipAddr(*dst));
  if (auto const nhid = entry.find("nhid")) {
    for (auto const& address : nextHops.vteps(*nhid)) add(address);
  }
}

void Fdb::readLocal(JsonIn entry, std::string const& mac) {
  auto const bridge = text(entry, "master");
  // Permanent entries are the bridge's own addresses.
  if (!bridge || text(entry, "state") == "permanent") return;
  ports_[{*bridge, number(entry, "vlan").value_or(0), mac}] = entry.member("ifname").text();
}

bool Fdb::isRemote(IpAddr const& address) const {
  return !address.unspecified() && !address.multicast() && address != vti_.srcAddr && address != vti_.srcAddrV6;
}

std::string Fdb::portBehind(std::string const& bridge, std::uint32_t vlan, std::string const& mac) const {
  for (auto const id : {vlan, 0U}) {
    if (auto const found = ports_.find({bridge, id, mac}); found != ports_.end()) return found->second;
  }
  return "";
}

}  // namespace Host::Import
