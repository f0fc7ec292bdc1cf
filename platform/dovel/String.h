#pragma once

#include <string>

namespace Dovel {

/// The string type of the framework.
using String = std::string;

}  // namespace Dovel
