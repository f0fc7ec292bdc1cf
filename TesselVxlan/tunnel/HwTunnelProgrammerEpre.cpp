#include <algorithm>
#include <boost/container/small_vector.hpp>

#include "TesselVxlan/tunnel/HwTunnelProgrammerBase.h"
#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("HwTunnelProgrammerBase");

namespace TesselVxlan {

using TesselL3Common::EncapId;
using TesselL3Common::TesselVxlanBumVtepConfig;

namespace {

/// The id of the pool's first bit.
constexpr std::uint32_t firstEncapId = 4097;

/// A tunnel has a handful of next hops.
using Ports = boost::container::small_vector<Meshal::IntfId, 8>;

/// Throws the range exception of `Bridging::VlanId`. REQUIRES: a VLAN interface.
Bridging::VlanId vlanOf(Meshal::IntfId port) { return Bridging::VlanId(Meshal::VlanIntfId::vlanId(port)); }

}  // namespace

EncapId HwTunnelProgrammerBase::getEncapId() {
  auto const bit = encapIdBitmap()->findClearBit();
  INVARIANT(bit);
  encapIdBitmap()->setBit(*bit);
  EncapId const encapId(*bit + firstEncapId);
  TRACE(1, " EncapId: {} EncapIdBitmap: {}", encapId, *encapIdBitmap());
  return encapId;
}

void HwTunnelProgrammerBase::releaseEncapId(EncapId encapId) {
  encapIdBitmap()->clearBit(encapId.value() - firstEncapId);
  TRACE(1, " EncapId: {} EncapIdBitmap: {}", encapId, *encapIdBitmap());
}

Meshal::IntfId HwTunnelProgrammerBase::getCorePort(Vane::NextHopEntry const& nextHop) const {
  TRACE(2, " l2Intf: {} l3Intf: {}", nextHop.l2Intf(), nextHop.l3Intf());
  return vxlanUnderlayFloodingHw() && nextHop.l2Intf().empty() ? nextHop.l3Intf() : nextHop.l2Intf();
}

void HwTunnelProgrammerBase::programEpreTable(ConfigEntry const& entry, FinalNextHopSet const& finalNextHops) {
  auto const key = entry->tunnelKey();
  auto const& vtep = key.dst();
  TRACE(1, " tunnelType: {} key: {}", tunnelType(), key);
  auto const config = bumVtepConfigOf(vtep);
  Ports wantedPorts;
  for (auto const& nextHop : finalNextHops.nextHop()) {
    auto const port = getCorePort(nextHop);
    wantedPorts.push_back(port);
    if (Meshal::VlanIntfId::isVlanIntfId(port)) floodUnderlayVlanToVtepListDir()->vtepIpListIs(vlanOf(port), vtep);
  }
  Ports stalePorts;
  for (auto const& nextHop : config->nextHopsColl()) {
    if (std::find(wantedPorts.begin(), wantedPorts.end(), nextHop->port()) == wantedPorts.end()) {
      stalePorts.push_back(nextHop->port());
    }
  }
  std::sort(stalePorts.begin(), stalePorts.end());
  for (auto const& nextHop : finalNextHops.nextHop()) programEpreEntry(*config, nextHop);
  for (auto const port : stalePorts) deleteEpreEntryByPort(key, port);
  if (auto const left = bumVtepConfigDir()->bumVtepConfig(vtep)) left->versionIs(left->version() + 1);
}

Dovel::Ptr<TesselVxlanBumVtepConfig> HwTunnelProgrammerBase::bumVtepConfigOf(Meshal::IpGenAddr const& vtep) {
  if (auto const& present = bumVtepConfigDir()->bumVtepConfig(vtep)) return present;
  auto const encapId = getEncapId();
  auto config = bumVtepConfigDir()->bumVtepConfigIs(vtep, encapId);
  encapIdToBumVtepIpConfigDir()->vxlanReverseConfigIs(encapId)->vtepIpIs(vtep);
  return config;
}

// The same address is taken for the same next hop: its entry stays as it is.
void HwTunnelProgrammerBase::programEpreEntry(TesselVxlanBumVtepConfig& config, Vane::NextHopEntry const& nextHop) {
  auto const port = getCorePort(nextHop);
  if (auto const& present = config.nextHops(port)) {
    if (present->addr() == nextHop.addr()) return;
    config.nextHopsDel(port);
  }
  if (!vxlanAttr()->vxlanHerNextHopTableSupported()) {
    TesselEpre::EpreRemapKey const remapKey{port, config.vtepIp()};
    TRACE_IN("programEpreTable", 1, " Programming Remap table, epreSwKey: ( {} , {} ) , nextHopIp: {}", port,
             config.vtepIp(), nextHop.addr());
    if (!epreEdevConfigCcbeSm() || !epreEdevConfigCcbeSm()->writeRemapObjectEntry(remapKey, nextHop)) {
      TRACE_IN("programEpreTable", 1, " failed Programming Remap table, key: ( {} , {} ) , nextHopIp: {}", port,
               config.vtepIp(), nextHop.addr());
    }
  }
  // One that was not written too: its end must find it.
  config.nextHopsIs(port, nextHop.addr(), nextHop.ethAddr())->l3IntfIs(nextHop.l3Intf());
}

void HwTunnelProgrammerBase::deleteEpreTable(Vane::TunnelKey const& tunnelKey) {
  TRACE(1, " tunnelType: {}", tunnelType());
  auto const config = bumVtepConfigDir()->bumVtepConfig(tunnelKey.dst());
  if (!config) return;
  for (auto const& port : Kiln::keysOf(config->nextHopsColl())) deleteEpreEntryByPort(tunnelKey, port);
}

void HwTunnelProgrammerBase::deleteEpreEntryByPort(Vane::TunnelKey const& tunnelKey, Meshal::IntfId port) {
  TRACE(1, " tunnelType: {}", tunnelType());
  auto const& vtep = tunnelKey.dst();
  auto const config = bumVtepConfigDir()->bumVtepConfig(vtep);
  if (config && config->nextHopsHas(port)) {
    if (!vxlanAttr()->vxlanHerNextHopTableSupported() && epreEdevConfigCcbeSm()) {
      TRACE(1, " Deleting Remap table, epreSwKey: ( {} , {} )", port, vtep);
      epreEdevConfigCcbeSm()->delRemapObjectEntry({port, vtep});
    }
    config->nextHopsDel(port);
    releaseIfUnused(vtep);
  }
  if (vxlanUnderlayFloodingHw() && Meshal::VlanIntfId::isVlanIntfId(port)) {
    floodUnderlayVlanToVtepListDir()->vtepIpListDel(vlanOf(port), vtep);
  }
}

void HwTunnelProgrammerBase::releaseIfUnused(Meshal::IpGenAddr const& vtep) {
  auto const config = bumVtepConfigDir()->bumVtepConfig(vtep);
  if (!config || !config->nextHopsColl().empty()) return;
  auto const encapId = config->encapId();
  bumVtepConfigDir()->bumVtepConfigDel(vtep);
  encapIdToBumVtepIpConfigDir()->vxlanReverseConfigDel(encapId);
  releaseEncapId(encapId);
}

}  // namespace TesselVxlan
