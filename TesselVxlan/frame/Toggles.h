#pragma once

namespace TesselVxlan {

/// Whether the layer-2 agent owns the VNI helper objects. Read once in a process.
bool toggleVaneVniSmInTesselL2Enabled();
/// Whether layer-3 multicast with HER underlay is on. Read once in a process.
bool toggleTessel4L3McastUnderlayHEREnabled();

}  // namespace TesselVxlan
