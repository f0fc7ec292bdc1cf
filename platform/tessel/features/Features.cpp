#include "platform/tessel/features/ChipAttributes.h"
#include "platform/tessel/features/EcnTunnelTableAttributes.h"
#include "platform/tessel/features/EgrL3TunnelTableAttributes.h"
#include "platform/tessel/features/L3NextHopAttributes.h"
#include "platform/tessel/features/TesselChipAttributesVxlan.h"
#include "platform/tessel/features/TesselSbrAttributes.h"

namespace TesselVxlan {

std::string TesselChipAttributesVxlan::fault() const {
  if (vpClassCode() > 15) return "vpClassCode: " + Kiln::toText(vpClassCode()) + ": expected a number from 0 to 15";
  if (!vxlanCascadedForwardingSupport() && !vxlanHerNextHopTableSupported()) {
    return "vxlanCascadedForwardingSupport: false: a chip without cascaded forwarding needs the HER next-hop tables "
           "(vxlanHerNextHopTableSupported)";
  }
  return {};
}

}  // namespace TesselVxlan

namespace TesselCentral {

Dovel::Ptr<ChipAttributes const> tesselAttributes(Asic::ChipInfo const& chipInfo) {
  return TesselProfile::feature<ChipAttributes>(chipInfo);
}

}  // namespace TesselCentral

namespace Tessel {

bool isQosFeatureAgent(Asic::ChipInfo const& chipInfo) {
  auto const attributes = TesselCentral::tesselAttributes(chipInfo);
  return attributes && attributes->qosFeatureAgent();
}

}  // namespace Tessel
