#pragma once

#include <cstdint>
#include <functional>

namespace RoadBench {

struct Cost {
  double nanoseconds = 0;
  std::int64_t bytes = 0;
  std::uint64_t calls = 0;  ///< Of the allocator.
};

/// A name of its own: what happens inside is what callgrind counts.
void measured(std::function<void()> const& work);
Cost costOf(std::function<void()> const& work);

}  // namespace RoadBench
