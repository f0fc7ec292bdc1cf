#include "bench/road/Cost.h"

#include <chrono>

#include "bench/road/Heap.h"

namespace RoadBench {

[[gnu::noinline]] void measured(std::function<void()> const& work) { work(); }

Cost costOf(std::function<void()> const& work) {
  auto const heap = Heap::now();
  auto const start = std::chrono::steady_clock::now();
  measured(work);
  auto const end = std::chrono::steady_clock::now();
  auto const after = Heap::now();
  return {std::chrono::duration<double, std::nano>(end - start).count(),
          static_cast<std::int64_t>(after.bytes) - static_cast<std::int64_t>(heap.bytes), after.calls - heap.calls};
}

}  // namespace RoadBench
