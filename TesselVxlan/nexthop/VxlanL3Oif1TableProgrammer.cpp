#include "TesselVxlan/nexthop/VxlanL3Oif1TableProgrammer.h"

#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"
#include "platform/tessel/features/TesselChipAttributesVxlan.h"

KILN_TRACE_FILE("VxlanL3Oif1TableProgrammer");

namespace TesselVxlan {

VxlanL3Oif1TableProgrammer::VxlanL3Oif1TableProgrammer(Dovel::Ptr<Stateway::EntityManager> statewayEm,
                                                       Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd)
    : statewayEm_(std::move(statewayEm)), fcsd_(std::move(fcsd)) {}

void VxlanL3Oif1TableProgrammer::initTables(TesselCentral::ChipInfo const& chipInfo) {
  TRACE(0, "initTables");
  INVARIANT(fcsd()->logicalModInfos());
  auto const vxlanAttributes = TesselProfile::feature<TesselChipAttributesVxlan>(chipInfo);
  INVARIANT(vxlanAttributes);
  if (!vxlanAttributes->vxlanHerNextHopTableSupported()) return;
  TRACE(0, "Allocating egrL3Oif1 table");
  vxlanEgrL3Oif1TableIs(vxlanEgrL3Oif1TableFactory());
  Asic::bringUp(*vxlanEgrL3Oif1Table(), statewayEm(), chipInfo);
  INVARIANT(vxlanEgrL3Oif1Table()->entrys() == 0);
}

Asic::SwTableBase::EntryHandle::PtrConst VxlanL3Oif1TableProgrammer::insertEntry(TunnelType key) {
  VxlanEgrL3Oif1Table::Entry entry;
  entry.herEncap = key == TunnelType::her;
  auto handle = vxlanEgrL3Oif1Table()->entryRef(key, entry);
  INVARIANT(handle);
  return handle;
}

}  // namespace TesselVxlan
