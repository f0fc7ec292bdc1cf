#include "host/import/Routers.h"

#include <set>
#include <utility>

#include "platform/kiln/Text.h"

namespace Host::Import {

namespace {

class Search {
 public:
  Search(JsonDocument const* fdb, Neighbours const& neighbours, Links const& links, BridgeVlans const& vlans)
      : fdb_(fdb), neighbours_(neighbours), links_(links) {
    for (auto const& [vni, entry] : vlans.vnis()) vniOfVlan_.emplace(entry.vlan, vni);
    for (auto const* device : links.devices()) {
      auto const vlan = vlanOf(*device, vlans);
      if (auto const vni = vniOfVlan_.find(vlan); vlan != 0 && vni != vniOfVlan_.end())
        vniOf_[device->name] = vni->second;
    }
  }

  void add(JsonIn route) {
    if (auto const hops = route.find("nexthops"); hops && hops->isArray()) {
      hops->eachElement([&](JsonIn const& hop) { addHop(hop); });
    } else {
      addHop(route);
    }
  }

  std::map<std::uint32_t, std::map<IpGenAddr, std::string>> missing;

 private:
  std::uint32_t vlanOf(Device const& device, BridgeVlans const& vlans) const {
    if (links_.isBridgeVlan(device)) return device.vlanId;
    return device.kind == DeviceKind::bridge ? vlans.vlanOfBridge(device.name) : 0;
  }

  void addHop(JsonIn hop) {
    auto const device = hop.find("dev");
    auto const gateway = hop.find("gateway");
    if (!device || !gateway || !device->isText()) return;
    auto const vni = vniOf_.find(std::string(device->text()));
    if (vni == vniOf_.end()) return;
    auto const router = ipAddr(*gateway);
    auto const mac = neighbours_.ethAddrOf(Hop{router, vni->first});
    if (!mac) {
      missing[vni->second][router] = "no resolved neighbour on " + vni->first;
    } else if (!forwards(*mac, router)) {
      missing[vni->second][router] = "no forwarding entry of " + Kiln::toText(*mac) + " toward it";
    }
  }

  bool forwards(EthAddr const& mac, IpGenAddr const& vtep) {
    if (!fdb_) return true;
    if (!read_) {
      read_ = true;
      for (auto const entry : objects(fdb_->root())) {
        auto const dst = text(entry, "dst");
        auto const address = text(entry, "mac");
        if (dst && address) entries_.emplace(*address, *dst);
      }
    }
    return entries_.contains({Kiln::toText(mac), Kiln::toText(vtep)});
  }

  JsonDocument const* fdb_;
  Neighbours const& neighbours_;
  Links const& links_;
  std::map<std::uint32_t, std::uint32_t> vniOfVlan_;
  std::map<std::string, std::uint32_t> vniOf_;  ///< By the interface of its VLAN.
  bool read_ = false;
  std::set<std::pair<std::string, std::string>> entries_;  ///< MAC address and VTEP.
};

}  // namespace

std::map<std::uint32_t, std::map<IpGenAddr, std::string>> missingRouters(JsonDocument const* routes,
                                                                         JsonDocument const* fdb,
                                                                         Neighbours const& neighbours,
                                                                         Links const& links, BridgeVlans const& vlans) {
  if (!routes) return {};
  Search search(fdb, neighbours, links, vlans);
  for (auto const route : objects(routes->root())) {
    auto const type = text(route, "type");
    if (!type || *type == "unicast") search.add(route);
  }
  return std::move(search.missing);
}

}  // namespace Host::Import
