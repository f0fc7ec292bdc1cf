#pragma once

#include "platform/asic/SwTable.h"
#include "platform/tessel/values/L3Keys.h"

namespace TesselMcast {

struct IpmcEntry : Asic::EntryBase {
  std::uint16_t vlanId = 0;
  ASIC_ENTRY(IpmcEntry, vlanId)
};

/// Multicast groups of the agent; this feature only takes handles of them.
class IpmcTable final : public Asic::CommittedTable<IpmcTable, TesselL3Common::L3IpmcKey, IpmcEntry> {
  ASIC_TABLE(TesselMcast::IpmcTable)

 public:
  using CommittedTable::CommittedTable;
};
inline Dovel::Ptr<IpmcTable> ipmcTableFactory() { return Dovel::make<IpmcTable>("IpmcTable"); }

}  // namespace TesselMcast
