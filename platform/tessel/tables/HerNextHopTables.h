#pragma once

#include "platform/asic/SwTable.h"
#include "platform/tessel/values/TableKeys.h"

namespace TesselVxlan {

struct HerNextHop1Entry : Asic::EntryBase {
  Asic::EntryHandle::PtrConst vpHandle;
  Asic::EntryHandle::PtrConst l3Oif2Handle;
  Asic::EntryHandle::PtrConst herNextHop2Handle;
  Asic::EntryHandle::PtrConst oif1Handle;
  std::uint32_t reservedLongA = 0;
  std::uint32_t reservedLongB = 0;
  std::uint8_t herFlag = 0;
  std::uint8_t herCode = 0;
  Asic::WriteResponseFn writeResponse;
  ASIC_ENTRY(HerNextHop1Entry, vpHandle, l3Oif2Handle, herNextHop2Handle, oif1Handle, reservedLongA, reservedLongB,
             herFlag, herCode, writeResponse)
};

/// Next hops of packets that are replicated to a remote VTEP.
class HerNextHop1Table final
    : public Asic::CommittedTable<HerNextHop1Table, TesselL3Common::L3NextHop1Key, HerNextHop1Entry> {
  ASIC_TABLE(TesselVxlan::HerNextHop1Table)

 public:
  using CommittedTable::CommittedTable;
};

struct HerNextHop2Entry : Asic::EntryBase {
  Asic::EntryHandle::PtrConst oifHandle;
  Meshal::EthAddr macAddr;
  std::uint8_t herEntry = 0;
  Asic::WriteResponseFn writeResponse;
  ASIC_ENTRY(HerNextHop2Entry, oifHandle, macAddr, herEntry, writeResponse)
};

/// Underlay next hops of replicated packets.
class HerNextHop2Table final : public Asic::RefCountedTable<HerNextHop2Table, L3NextHop2Key, HerNextHop2Entry> {
  ASIC_TABLE(TesselVxlan::HerNextHop2Table)

 public:
  using RefCountedTable::RefCountedTable;
};
inline Dovel::Ptr<HerNextHop2Table> herNextHop2TableFactory() {
  return Dovel::make<HerNextHop2Table>("HerNextHop2Table");
}

}  // namespace TesselVxlan
