#pragma once

#include "platform/asic/SwTable.h"
#include "platform/meshal/IpGenAddr.h"

namespace TesselVxlan {

struct IngL3EcmpMember0Entry : Asic::EntryBase {
  Asic::EntryHandle::PtrConst vpHandle;
  Asic::EntryHandle::PtrConst ulEntryHandle;  ///< An underlay next hop, or a group with `ecmp`.
  std::uint32_t reservedLong = 0;
  std::uint8_t ecmp = 0;
  Asic::WriteResponseFn writeResponse;
  ASIC_ENTRY(IngL3EcmpMember0Entry, vpHandle, ulEntryHandle, reservedLong, ecmp, writeResponse)
};

/// Overlay next hops of chips with cascaded forwarding, by remote VTEP. The row is the tunnel's next-hop id.
class IngL3EcmpMember0Table final
    : public Asic::CommittedTable<IngL3EcmpMember0Table, Meshal::IpGenAddr, IngL3EcmpMember0Entry> {
  ASIC_TABLE(TesselVxlan::IngL3EcmpMember0Table)

 public:
  using CommittedTable::CommittedTable;
};
inline Dovel::Ptr<IngL3EcmpMember0Table> ingL3EcmpMember0TableFactory() {
  return Dovel::make<IngL3EcmpMember0Table>("IngL3EcmpMember0Table");
}

}  // namespace TesselVxlan
