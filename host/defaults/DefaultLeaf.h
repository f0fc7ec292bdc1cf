#pragma once

#include <string_view>

namespace Host {

/// The state document of a captured leaf switch (`leaf.json` beside this file), which commands use when none is given.
std::string_view defaultLeaf();

}  // namespace Host
