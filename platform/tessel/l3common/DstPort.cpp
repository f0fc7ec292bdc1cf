#include "platform/tessel/l3common/DstPort.h"

#include "platform/kiln/Json.h"
#include "platform/tessel/central/CommonData.h"

namespace TesselL3Common {

DestPort getDstPort(Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> const& fcsd, Meshal::IntfId intf,
                    Vane::NextHopEntryType, bool) {
  auto const& ports = fcsd->portConfigDir();
  if (!ports || !ports->portHas(intf)) return {};
  return DestPort(ports->port(intf));
}

}  // namespace TesselL3Common

KILN_VALUE_CODEC(TesselCentral::PortKind, "TesselCentral::PortKind")
KILN_VALUE_CODEC(TesselCentral::PortInfo, "TesselCentral::PortInfo")
