#include "platform/tessel/l3/EgrL3OifHelper.h"

#include "platform/kiln/Invariant.h"
#include "platform/stateway/EntityManager.h"

namespace TesselL3Tunnel {

L3TunnelEgrL3OifHelper::L3TunnelEgrL3OifHelper(Dovel::Ptr<Local::EntityManager> localEntityManager)
    : localEntityManager_(std::move(localEntityManager)) {}

void L3TunnelEgrL3OifHelper::initTables(TesselCentral::ChipInfo const& chipInfo) {
  if (initialized()) return;
  egrL3Oif2_ = egrL3Oif2Factory();
  Asic::bringUp(*egrL3Oif2(), nullptr, chipInfo);
}

Asic::EntryHandle::PtrConst L3TunnelEgrL3OifHelper::getEgrL3OifHandle(Bridging::VlanIdOrNone vlanId) const {
  INVARIANT(initialized());
  EgrL3Oif2::Entry entry;
  entry.vlanId = vlanId.value();
  return egrL3Oif2()->entryRef(vlanId.value(), entry);
}

}  // namespace TesselL3Tunnel
