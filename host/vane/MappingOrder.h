#pragma once

#include "platform/document/Document.h"

namespace Host {

/// What precedes the application of `next`, for the sake of VNI mappings.
///
/// A mapping is removed before its VLAN or its VNI is given to another one: those are ended that `next` has otherwise.
/// A mapping is removed by the numbering of VFIs that it was added with: where `next` has another numbering than
/// `previous`, all are ended and the numbering is applied.
///
/// REQUIRES: both documents pass the agent's checks, and `previous` is applied.
void prepareMappings(Stateway::StateDocument const& previous, Stateway::StateDocument const& next,
                     Stateway::AgentStores const& stores);

}  // namespace Host
