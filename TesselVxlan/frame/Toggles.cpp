#include "TesselVxlan/frame/Toggles.h"

#include "platform/kiln/Toggle.h"

namespace TesselVxlan {

bool toggleVaneVniSmInTesselL2Enabled() {
  static bool const enabled = getToggleState("TesselL2.json", "VaneVniSmInTesselL2", true);
  return enabled;
}

bool toggleTessel4L3McastUnderlayHEREnabled() {
  static bool const enabled = getToggleState("TesselLib.json", "Tessel4L3McastUnderlayHER", true);
  return enabled;
}

}  // namespace TesselVxlan
