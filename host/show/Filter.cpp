#include "host/show/Filter.h"

#include <algorithm>
#include <set>

#include "host/import/Address.h"
#include "platform/kiln/Text.h"

namespace Host {

Filter::Filter(std::string const& vteps, std::string const& vni) {
  if (!vteps.empty()) {
    auto const slash = vteps.find('/');
    Meshal::IpGenAddr address;
    bool good = Kiln::readText(vteps.substr(0, slash), address);
    auto length = good ? Import::bitsOf(address) : 0;
    if (good && slash != vteps.npos) {
      auto const given = Kiln::fromText<std::uint32_t>(std::string_view(vteps).substr(slash + 1));
      good = given && *given <= length;
      length = given.value_or(0);
    }
    if (!good) throw Kiln::InputError("--vtep", "", "'" + vteps + "'", "expected an address or a prefix");
    vteps_ = Prefix{Import::network(address, length), length};
  }
  if (!vni.empty()) {
    vni_ = Kiln::fromText<std::uint32_t>(std::string_view(vni));
    if (!vni_) throw Kiln::InputError("--vni", "", "'" + vni + "'", "expected a number");
  }
}

bool Filter::has(Meshal::IpGenAddr const& vtep) const {
  if (!vteps_) return true;
  return vtep.isIpv6() == vteps_->network.isIpv6() && Import::network(vtep, vteps_->length) == vteps_->network;
}

void Filter::apply(Report& report) const {
  std::erase_if(report.tunnels, [&](TunnelReport const& tunnel) { return !has(tunnel.vtep); });
  if (vteps_) {
    std::erase_if(report.groups, [&](GroupReport const& group) {
      return std::none_of(group.members.begin(), group.members.end(), [&](auto const& m) { return has(m.vtep); });
    });
  }
  if (!vni_) return;
  std::erase_if(report.mappings, [&](auto const& mapping) { return mapping.vni.value() != *vni_; });
  std::set<std::uint32_t> vlans;
  for (auto const& mapping : report.mappings) vlans.insert(mapping.vlan);
  std::erase_if(report.tunnels, [&](TunnelReport const& tunnel) {
    return std::none_of(tunnel.vlans.begin(), tunnel.vlans.end(),
                        [&](auto vlan) { return vlans.contains(vlan.value()); });
  });
  if (!vteps_) report.groups.clear();
}

}  // namespace Host
