#include "platform/tessel/l3common/VxlanDirs.h"

#include <algorithm>

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

void FloodUnderlayVlanToVtepList::vtepIpListIs(Meshal::IpGenAddr const& vtep) {
  auto const at = std::lower_bound(vtepIpList_.begin(), vtepIpList_.end(), vtep);
  if (at == vtepIpList_.end() || *at != vtep) vtepIpList_.insert(at, vtep);
}

void FloodUnderlayVlanToVtepList::vtepIpListDel(Meshal::IpGenAddr const& vtep) {
  auto const at = std::lower_bound(vtepIpList_.begin(), vtepIpList_.end(), vtep);
  if (at != vtepIpList_.end() && *at == vtep) vtepIpList_.erase(at);
}

void appendText(std::string& out, FloodUnderlayVlanToVtepList const& list) { Kiln::writeText(out, list.vtepIpList()); }

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
