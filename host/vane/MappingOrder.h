#pragma once

#include "platform/document/Document.h"

namespace Host {

/// Ends the VNI mappings that `next` has otherwise, before it is applied: a mapping is removed before its VLAN or its
/// VNI is given to another one. Where `next` numbers VFIs otherwise than `previous`, it ends all of them, since each is
/// removed by the numbering that it was added with.
///
/// REQUIRES: both documents pass the agent's checks, and `previous` is applied.
void endChangedMappings(Stateway::StateDocument const& previous, Stateway::StateDocument const& next,
                        Stateway::AgentStores const& stores);

}  // namespace Host
