#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "host/import/VlanChoices.h"
#include "platform/document/Document.h"

namespace Host {

/// Reads state documents and directories of captures, in order; a directory replaces the files that it has in common
/// with those before it. Without any, returns the built-in leaf. Each document is the state of the switch from then on.
/// `choices` are the VLANs of VNIs of captures. Throws `InputError` for the first that can't be read. Prints to `err`
/// what captures have that is passed over.
std::vector<Stateway::StateDocument> readInputs(std::vector<std::string> const& paths, VlanChoices& choices,
                                                std::ostream& err);

/// Prints each warning once.
void printWarnings(std::vector<std::string> const& warnings, std::ostream& err);

}  // namespace Host
