#pragma once

#include "platform/asic/SwTable.h"
#include "platform/tessel/values/TableKeys.h"

namespace TesselVxlan {

struct FlexQosEcnEntry : Asic::EntryBase {
  U2 ecn;
  ASIC_ENTRY(FlexQosEcnEntry, ecn)
};

/// The congestion marks of outer headers.
class FlexQoSEgrEcn6Table final : public Asic::CommittedTable<FlexQoSEgrEcn6Table, FlexQosEgrEcn6Key, FlexQosEcnEntry> {
  ASIC_TABLE(TesselVxlan::FlexQoSEgrEcn6Table)

 public:
  using CommittedTable::CommittedTable;
};
inline Dovel::Ptr<FlexQoSEgrEcn6Table> flexQoSEgrEcn6TableFactory() {
  return Dovel::make<FlexQoSEgrEcn6Table>("FlexQoSEgrEcn6Table");
}

/// The congestion marks of packets whose tunnel has ended.
class FlexQosIngEcn final
    : public Asic::CommittedTable<FlexQosIngEcn, TesselCentral::FlexQosIngEcnKey, FlexQosEcnEntry> {
  ASIC_TABLE(TesselVxlan::FlexQosIngEcn)

 public:
  using CommittedTable::CommittedTable;
};
inline Dovel::Ptr<FlexQosIngEcn> flexQosIngEcnFactory() { return Dovel::make<FlexQosIngEcn>("FlexQosIngEcn"); }

}  // namespace TesselVxlan
