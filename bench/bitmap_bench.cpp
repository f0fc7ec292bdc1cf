// Taking the lowest free id of a nearly full pool and giving it back: the hierarchical bitmap beside a flat one.

#include <benchmark/benchmark.h>

#include <boost/dynamic_bitset.hpp>
#include <cstdint>
#include <random>
#include <vector>

#include "platform/anvil/HBitmap.h"

namespace {

constexpr std::uint32_t kIds = 24'576;

/// The ids that are freed, one per round: anywhere in the pool, the same for both.
std::vector<std::uint32_t> freedIds() {
  std::mt19937 random(1);
  std::vector<std::uint32_t> ids(4096);
  for (auto& id : ids) id = static_cast<std::uint32_t>(random() % kIds);
  return ids;
}

void lowestFreeIdHBitmap(benchmark::State& state) {
  Anvil::HBitmap pool(kIds);
  pool.setRange(0, kIds);
  auto const ids = freedIds();
  std::size_t round = 0;
  for (auto _ : state) {
    pool.clearBit(ids[round++ % ids.size()]);
    auto const id = *pool.findClearBit();
    pool.setBit(id);
    benchmark::DoNotOptimize(id);
  }
}
BENCHMARK(lowestFreeIdHBitmap);

void lowestFreeIdDynamicBitset(benchmark::State& state) {
  boost::dynamic_bitset<std::uint64_t> free(kIds);
  auto const ids = freedIds();
  std::size_t round = 0;
  for (auto _ : state) {
    free.set(ids[round++ % ids.size()]);
    auto const id = free.find_first();
    free.reset(id);
    benchmark::DoNotOptimize(id);
  }
}
BENCHMARK(lowestFreeIdDynamicBitset);

}  // namespace
