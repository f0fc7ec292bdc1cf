#pragma once

#include "platform/asic/SwTable.h"

namespace TesselVxlan {

struct EcmpIndirectionTableConfigEntry : Asic::EntryBase {
  std::uint16_t indirectionBasePtr = 0;
  ASIC_ENTRY(EcmpIndirectionTableConfigEntry, indirectionBasePtr)
};

/// Where the chip's indirection of groups begins.
class EcmpIndirectionTableConfigReg final
    : public Asic::IndexTable<EcmpIndirectionTableConfigReg, EcmpIndirectionTableConfigEntry> {
  ASIC_TABLE(TesselVxlan::EcmpIndirectionTableConfigReg)

 public:
  using IndexTable::IndexTable;
};
inline Dovel::Ptr<EcmpIndirectionTableConfigReg> ecmpIndirectionTableConfigRegFactory() {
  return Dovel::make<EcmpIndirectionTableConfigReg>("EcmpIndirectionTableConfigReg");
}

}  // namespace TesselVxlan
