#pragma once

#include <string>
#include <vector>

#include "host/import/Choices.h"
#include "platform/document/Document.h"

namespace Host {

/// Reads state documents and directories of captures, in order; a directory replaces the files that it has in common
/// with those before it. Without any, returns the built-in leaf. Each document is the state of the switch from then on.
/// `choices` are about captures. Throws `InputError` for the first that can't be read.
std::vector<Stateway::StateDocument> readInputs(std::vector<std::string> const& paths, Choices& choices);

}  // namespace Host
