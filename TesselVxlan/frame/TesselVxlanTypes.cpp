#include "TesselVxlan/frame/TesselVxlanTypes.h"

namespace TesselVxlan {

Dovel::Ptr<TunnelNextHopUpdateConfig> tunnelNextHopUpdateConfigFactory() {
  return Dovel::make<TunnelNextHopUpdateConfig>();
}

Dovel::Ptr<VxlanVtepGroupTunnelIdMapDir> vxlanVtepGroupTunnelIdMapDirFactory() {
  return Dovel::make<VxlanVtepGroupTunnelIdMapDir>();
}

}  // namespace TesselVxlan
