#pragma once

#include <cstddef>
#include <cstdint>

namespace RoadBench {

/// What this program has taken from the allocator, by whatever way; counted from the first call on.
struct Heap {
  std::uint64_t calls = 0;  ///< Of malloc, calloc, realloc and their like.
  std::size_t bytes = 0;    ///< In use, as the allocator rounds them; of chunks of slabs the cells that are in use.

  static Heap now();
};

}  // namespace RoadBench
