#pragma once

#include <vector>

#include "host/compare/Change.h"
#include "platform/document/Document.h"

namespace Host {

/// What two documents state otherwise: single values by the path of their entity and the names below it. Elements of
/// arrays are compared as a set. An object without members states nothing.
std::vector<Change> wishChanges(Stateway::StateDocument const& from, Stateway::StateDocument const& to);

}  // namespace Host
