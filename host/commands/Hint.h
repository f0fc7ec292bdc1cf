#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Host {

/// "did you mean WORD?" for the one of `known` that is nearest to what was typed; empty where none is near.
std::string hintFor(std::string_view typed, std::vector<std::string> const& known);

}  // namespace Host
