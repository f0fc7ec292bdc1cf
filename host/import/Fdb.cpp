#include "host/import/Fdb.h"

#include "host/Unicast.h"

namespace Host::Import {

Fdb::Fdb(JsonDocument const& file, Links const& links, NextHopObjects const& nextHops,
         std::vector<std::string>& warnings)
    : vti_(links.vti()), warnings_(warnings) {
  for (auto const entry : objects(file.root())) {
    auto const device = links.device(std::string(entry.member("ifname").text()));
    // A device that was added after the links were captured is a VXLAN device if its entries are those of one.
    bool const vxlan = !device || device->kind == DeviceKind::vxlan;
    if (vxlan && (has(entry, "dst") || has(entry, "nhid"))) {
      readRemote(entry, nextHops);
    } else {
      readLocal(entry);
    }
  }
}

void Fdb::readRemote(JsonIn entry, NextHopObjects const& nextHops) {
  // Floods are sent where the entries of the zero address point.
  bool const flood = ethAddr(entry.member("mac")).isZero();
  if (auto const dst = entry.find("dst")) addVtep(*dst, flood);
  if (auto const nhid = entry.find("nhid")) {
    for (auto const gateway : nextHops.vteps(*nhid)) addVtep(gateway, flood);
  }
}

void Fdb::addVtep(JsonIn at, bool flood) {
  auto const address = ipAddr(at);
  if (address == vti_.srcAddr || address == vti_.srcAddrV6) {
    warnings_.push_back(remark(at, "ignored: this switch's own address is not a remote VTEP"));
  } else if (address.isUnspecified()) {
    warnings_.push_back(remark(at, "ignored: the unspecified address is not a remote VTEP"));
  } else if (!flood || whyNotUnicast(address) != "multicast") {
    // A multicast group is where floods may go, but it is not a VTEP.
    (flood ? flooded_ : unicast_).insert(unicastIpAddr(at, "VTEP"));
  }
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
