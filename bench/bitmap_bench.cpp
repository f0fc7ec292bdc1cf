// The lowest free id of a nearly full pool: the hierarchical bitmap beside a flat one.

#include <benchmark/benchmark.h>

#include <boost/dynamic_bitset.hpp>
#include <cstdint>
#include <optional>
#include <random>
#include <vector>

#include "platform/anvil/HBitmap.h"

namespace {

constexpr std::uint32_t kIds = 24'576;
constexpr std::size_t kPools = 64;

/// The flat bitmap in the hierarchical one's words.
class FlatPool {
 public:
  explicit FlatPool(std::uint32_t size) : free_(size) { free_.set(); }
  void setBit(std::uint32_t bit) { free_.reset(bit); }
  void clearBit(std::uint32_t bit) { free_.set(bit); }
  std::optional<std::uint32_t> findClearBit() const { return static_cast<std::uint32_t>(free_.find_first()); }

 private:
  boost::dynamic_bitset<std::uint64_t> free_;
};

std::vector<std::uint32_t> randomIds(std::size_t count) {
  std::mt19937 random(1);
  std::vector<std::uint32_t> ids(count);
  for (auto& id : ids) id = static_cast<std::uint32_t>(random() % kIds);
  return ids;
}

template <typename Pool>
Pool fullPool() {
  Pool pool(kIds);
  for (std::uint32_t id = 0; id < kIds; ++id) pool.setBit(id);
  return pool;
}

/// Only the search: pools with one free id each, in turn.
template <typename Pool>
void lowestFreeId(benchmark::State& state) {
  std::vector<Pool> pools(kPools, fullPool<Pool>());
  auto const ids = randomIds(kPools);
  for (std::size_t i = 0; i < kPools; ++i) pools[i].clearBit(ids[i]);
  std::size_t round = 0;
  for (auto _ : state) benchmark::DoNotOptimize(*pools[round++ % kPools].findClearBit());
}
BENCHMARK(lowestFreeId<Anvil::HBitmap>);
BENCHMARK(lowestFreeId<FlatPool>);

/// A whole round: an id anywhere is given back, the lowest free one is found and taken.
template <typename Pool>
void giveBackAndTake(benchmark::State& state) {
  auto pool = fullPool<Pool>();
  auto const ids = randomIds(4096);
  std::size_t round = 0;
  for (auto _ : state) {
    pool.clearBit(ids[round++ % ids.size()]);
    auto const id = *pool.findClearBit();
    pool.setBit(id);
    benchmark::DoNotOptimize(id);
  }
}
BENCHMARK(giveBackAndTake<Anvil::HBitmap>);
BENCHMARK(giveBackAndTake<FlatPool>);

}  // namespace
