#pragma once

#include "platform/asic/SwTable.h"
#include "platform/tessel/values/TunnelType.h"

namespace TesselVxlan {

struct VxlanEgrL3Oif1Entry : Asic::EntryBase {
  std::uint8_t herEncap = 0;
  Asic::WriteResponseFn writeResponse;
  ASIC_ENTRY(VxlanEgrL3Oif1Entry, herEncap, writeResponse)
};

/// Outgoing-interface records by kind of encapsulation.
class VxlanEgrL3Oif1Table final : public Asic::RefCountedTable<VxlanEgrL3Oif1Table, TunnelType, VxlanEgrL3Oif1Entry> {
  ASIC_TABLE(TesselVxlan::VxlanEgrL3Oif1Table)

 public:
  using RefCountedTable::RefCountedTable;
};
inline Dovel::Ptr<VxlanEgrL3Oif1Table> vxlanEgrL3Oif1TableFactory() {
  return Dovel::make<VxlanEgrL3Oif1Table>("VxlanEgrL3Oif1Table");
}

}  // namespace TesselVxlan
