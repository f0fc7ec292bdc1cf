#pragma once

#include <string>
#include <vector>

#include "host/import/Choices.h"
#include "platform/document/Document.h"

namespace Host {

/// The paths of an operand: itself where it exists, otherwise what is between its commas. Throws `InputError` for an
/// empty path.
std::vector<std::string> pathsOf(std::string const& operand);

/// The documents of one state: a document, a directory of captures, or several of them in order, comma-separated. A
/// path that exists with its commas is one. Throws `InputError` for the first that can't be read. REQUIRES: `choices`
/// are about captures.
std::vector<Stateway::StateDocument> readOperand(std::string const& operand, Choices& choices);

}  // namespace Host
