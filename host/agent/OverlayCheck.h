#pragma once

#include "platform/document/Document.h"

namespace Host {

/// Refuses overlays that no switch can have: throws `InputError` for
/// - a VNI mapping whose value has another VLAN or VNI than its key, a VLAN outside 1 to 4094, no VNI, or an unknown
///   action; a local one without an action; a VLAN or a VNI that two local mappings have; a remote one of another
///   interface than Vxlan1;
/// - VFIs outside 1 to 4094 and `vlan4095Vfi`; VFIs of VLANs outside 1 to 4094;
/// - a first row of the DSCP maps above 127;
/// - a VTEP group without members, or with one that has no member tunnel;
/// - a multicast route that is not from an IPv4 host to an IPv4 group that routers forward; the record of a corruption.
/// REQUIRES: `document` passes `Stateway::check`.
void checkOverlay(Stateway::StateDocument const& document);

}  // namespace Host
