#include "platform/tessel/l3common/VxlanDirs.h"

#include "platform/kiln/Json.h"

namespace TesselL3Common {

Dovel::Ptr<TesselVxlanVtepNextHop> TesselVxlanBumVtepConfig::nextHopsIs(Meshal::IntfId const& port,
                                                                        Meshal::IpGenAddr const& addr,
                                                                        Meshal::EthAddr const& ethAddr) {
  auto nextHop = nextHops(port);
  bool const isNew = !nextHop;
  if (isNew) nextHop = Dovel::make<TesselVxlanVtepNextHop>(port);
  nextHop->addrIs(addr);
  nextHop->ethAddrIs(ethAddr);
  // Complete before it is published.
  if (isNew) nextHopsIs(nextHop);
  return nextHop;
}

Dovel::Ptr<TesselVxlanBumVtepConfig> TesselVxlanBumVtepConfigDir::bumVtepConfigIs(Meshal::IpGenAddr const& vtepIp,
                                                                                  EncapId encapId) {
  if (auto const& found = bumVtepConfig(vtepIp)) return found;
  auto const config = Dovel::make<TesselVxlanBumVtepConfig>(vtepIp);
  config->encapIdIs(encapId);
  bumVtepConfigIs(config);
  return config;
}

void FloodUnderlayVlanToVtepListDir::vtepIpListIs(Bridging::VlanId const& vlan, Meshal::IpGenAddr const& vtep) {
  auto const changed = vlan;
  if (floodUnderlayVlanToVtepList_.try_emplace(changed).first->second.vtepIpListIs(vtep)) {
    kilnChanged(floodUnderlayVlanToVtepListId, &changed);
  }
}

void FloodUnderlayVlanToVtepListDir::vtepIpListDel(Bridging::VlanId const& vlan, Meshal::IpGenAddr const& vtep) {
  auto const changed = vlan;
  auto const found = floodUnderlayVlanToVtepList_.find(changed);
  if (found == floodUnderlayVlanToVtepList_.end() || !found->second.vtepIpListDel(vtep)) return;
  if (found->second.vtepIpList().empty()) floodUnderlayVlanToVtepList_.erase(found);
  kilnChanged(floodUnderlayVlanToVtepListId, &changed);
}

void appendText(std::string& out, FloodUnderlayVlanToVtepList const& list) {
  out += '[';
  for (auto const& vtep : list.vtepIpList()) {
    if (out.back() != '[') out += ", ";
    appendText(out, vtep);
  }
  out += ']';
}

}  // namespace TesselL3Common

template <>
struct Kiln::JsonTraits<TesselL3Common::FloodUnderlayVlanToVtepList> {
  static void toJson(TesselL3Common::FloodUnderlayVlanToVtepList const& list, JsonOut& out) {
    out.array();
    for (auto const& vtep : list.vtepIpList()) writeJson(vtep, out.element());
  }
  static void fromJson(TesselL3Common::FloodUnderlayVlanToVtepList& list, JsonIn const& in) {
    TesselL3Common::FloodUnderlayVlanToVtepList fresh;
    in.eachElement([&](JsonIn const& element) {
      Meshal::IpGenAddr vtep;
      readJson(vtep, element);
      fresh.vtepIpListIs(vtep);
    });
    list = fresh;
  }
};

KILN_VALUE_CODEC(TesselL3Common::FloodUnderlayVlanToVtepList, "TesselL3Common::FloodUnderlayVlanToVtepList")
