#pragma once

namespace TesselVxlan {

/// True if the layer-2 agent owns the VNI helper objects. Read once in a process, from TesselL2.json.
bool toggleVaneVniSmInTesselL2Enabled();
/// True if layer-3 multicast with HER underlay is on. Read once in a process, from TesselLib.json.
bool toggleTessel4L3McastUnderlayHEREnabled();

}  // namespace TesselVxlan
