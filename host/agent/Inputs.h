#pragma once

#include <string>
#include <vector>

#include "host/InputError.h"
#include "platform/stateway/Document.h"

namespace Host {

/// One input of a command, read: the state that the switch has from then on.
struct Input {
  std::string name;
  Stateway::StateDocument document;
};

/// Reads state documents and directories of captures, in order; a directory replaces the files of those before it that
/// it holds, too. Without any, gives the leaf that is built in. Throws `InputError` for the first that can't be read.
std::vector<Input> readInputs(std::vector<std::string> const& paths);

}  // namespace Host
