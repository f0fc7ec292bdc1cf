#pragma once

#include "platform/asic/SwTable.h"
#include "platform/tessel/values/TableKeys.h"

namespace TesselVxlan {

struct VpLagGroupEntry : Asic::EntryBase {
  Asic::EntryHandle::PtrConst memberBlockHandle;
  std::uint16_t reservedWord = 0;
  std::uint32_t reservedLong = 0;
  std::uint16_t lastMemberIndex = 0;
  Asic::WriteResponseFn writeResponse;
  ASIC_ENTRY(VpLagGroupEntry, memberBlockHandle, reservedWord, reservedLong, lastMemberIndex, writeResponse)
};

/// Groups of virtual ports.
class VpLagGroupTable final : public Asic::CommittedTable<VpLagGroupTable, VpLagKey, VpLagGroupEntry> {
  ASIC_TABLE(TesselVxlan::VpLagGroupTable)

 public:
  using CommittedTable::CommittedTable;
};

struct VpLagEcmpMember0Entry : Asic::EntryBase {
  Asic::EntryHandle::PtrConst dvpHandle;
  Asic::EntryHandle::PtrConst nhHandle;
  std::uint32_t reservedLong = 0;
  std::uint8_t reservedByte = 0;
  ASIC_ENTRY(VpLagEcmpMember0Entry, dvpHandle, nhHandle, reservedLong, reservedByte)
};

/// Members of the groups of virtual ports.
class VpLagEcmpMember0Table final : public Asic::BlockTable<VpLagEcmpMember0Table, VpLagEcmpMember0Entry> {
  ASIC_TABLE(TesselVxlan::VpLagEcmpMember0Table)

 public:
  using BlockTable::BlockTable;
};
inline Dovel::Ptr<VpLagEcmpMember0Table> vpLagEcmpMember0TableFactory() {
  return Dovel::make<VpLagEcmpMember0Table>("VpLagEcmpMember0Table");
}

}  // namespace TesselVxlan
