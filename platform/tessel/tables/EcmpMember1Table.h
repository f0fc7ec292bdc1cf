#pragma once

#include "platform/asic/SwTable.h"

namespace TesselVxlan {

struct EcmpMember1Entry : Asic::EntryBase {
  Asic::EntryHandle::PtrConst nextHopHandle;
  std::uint32_t reservedLong = 0;
  std::uint8_t reservedByte = 0;
  ASIC_ENTRY(EcmpMember1Entry, nextHopHandle, reservedLong, reservedByte)
};

/// Members of the groups of underlay next hops.
class EcmpMember1Table final : public Asic::BlockTable<EcmpMember1Table, EcmpMember1Entry> {
  ASIC_TABLE(TesselVxlan::EcmpMember1Table)

 public:
  using BlockTable::BlockTable;
};
inline Dovel::Ptr<EcmpMember1Table> ecmpMember1TableFactory() {
  return Dovel::make<EcmpMember1Table>("EcmpMember1Table");
}

}  // namespace TesselVxlan
