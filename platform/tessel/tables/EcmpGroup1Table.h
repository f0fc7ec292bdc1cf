#pragma once

#include "platform/asic/SwTable.h"
#include "platform/tessel/values/L3Keys.h"

namespace TesselL3Tunnel {

struct EcmpGroup1Entry : Asic::EntryBase {
  Asic::EntryHandle::PtrConst memberBlockHandle;
  Asic::EntryHandle::PtrConst groupOptionHandle;
  std::uint16_t lastMemberIndex = 0;
  ASIC_ENTRY(EcmpGroup1Entry, memberBlockHandle, groupOptionHandle, lastMemberIndex)
};

/// Groups of underlay next hops, by adjacency.
class EcmpGroup1Table final
    : public Asic::RefCountedTable<EcmpGroup1Table, TesselL3Common::L3AdjIdKey, EcmpGroup1Entry> {
  ASIC_TABLE(TesselL3Tunnel::EcmpGroup1Table)

 public:
  using RefCountedTable::RefCountedTable;
};

}  // namespace TesselL3Tunnel
