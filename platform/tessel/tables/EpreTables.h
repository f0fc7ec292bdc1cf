#pragma once

#include "platform/asic/SwTable.h"
#include "platform/tessel/values/TableKeys.h"

namespace TesselEpre {

struct EpreCcbeNextHopRemapEntry : Asic::EntryBase {
  Asic::EntryHandle::PtrConst virtualPortHandle;
  Asic::EntryHandle::PtrConst l3NextHop2Handle;
  std::uint8_t remapType = 0;
  ASIC_ENTRY(EpreCcbeNextHopRemapEntry, virtualPortHandle, l3NextHop2Handle, remapType)
};

/// Next hops of flooded packets, by port and VTEP. Row 0 is the default row.
class EpreCcbeNextHopRemapTable final
    : public Asic::CommittedTable<EpreCcbeNextHopRemapTable, EpreRemapKey, EpreCcbeNextHopRemapEntry> {
  ASIC_TABLE(TesselEpre::EpreCcbeNextHopRemapTable)

 public:
  using CommittedTable::CommittedTable;
  static constexpr std::uint32_t reservedRows = 1;
};

}  // namespace TesselEpre

namespace TesselVxlan {

struct EpreEdevConfigCcbeEntry : Asic::EntryBase {
  std::uint32_t value = 0;
  ASIC_ENTRY(EpreEdevConfigCcbeEntry, value)
};

/// Set-up of the device that remaps next hops.
class EpreEdevConfigCcbeRegister final : public Asic::IndexTable<EpreEdevConfigCcbeRegister, EpreEdevConfigCcbeEntry> {
  ASIC_TABLE(TesselVxlan::EpreEdevConfigCcbeRegister)

 public:
  using IndexTable::IndexTable;
};
inline Dovel::Ptr<EpreEdevConfigCcbeRegister> epreEdevConfigCcbeRegisterFactory() {
  return Dovel::make<EpreEdevConfigCcbeRegister>("EpreEdevConfigCcbeRegister");
}

}  // namespace TesselVxlan
