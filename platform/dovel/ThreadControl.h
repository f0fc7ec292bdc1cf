#pragma once

#include <cstdint>

namespace Dovel {

/// Selects how reference counts and flags of nodes are updated: by plain arithmetic, or by locked arithmetic while the
/// host shares objects with threads of its own. The host sets the byte before it starts the first such thread; only
/// `Node` reads it.
struct ThreadControl {
  inline static std::uint8_t tsp_ = 0;
};

}  // namespace Dovel
