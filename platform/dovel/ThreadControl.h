#pragma once

#include <cstdint>

namespace Dovel {

/// Tells how use counts are updated: plainly, or with locked arithmetic once the host shares objects with threads of
/// its own. The host sets the byte before it starts the first such thread; nothing else looks at it.
struct ThreadControl {
  inline static std::uint8_t tsp_ = 0;
};

}  // namespace Dovel
