// What a trace costs: off, into the ring, and beside them the same line formatted at once.
#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <array>
#include <string>

#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("TraceBench");

namespace TraceBench {

struct Address {
  std::array<unsigned char, 16> bytes{10, 0, 0, 7};
  unsigned family = 1;
};

void appendText(std::string& text, Address const& address) {
  auto const& b = address.bytes;
  fmt::format_to(std::back_inserter(text), "{}.{}.{}.{}", b[0], b[1], b[2], b[3]);
}

/// Sets the levels of this file while a benchmark runs.
class Levels {
 public:
  explicit Levels(char const* list) { Kiln::traceMasksIs(list); }
  ~Levels() { Kiln::traceMasksIs(""); }
};

void traceOff(benchmark::State& state) {
  Address address;
  unsigned genId = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(address);
    TRACE(1, " key: {} genId: {} tunnelType: {}", address, ++genId, 1);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(traceOff);

void traceRingNoArguments(benchmark::State& state) {
  Levels const levels("TraceBench=2");
  for (auto _ : state) {
    TRACE(1, "handleInitialized");
    benchmark::ClobberMemory();
  }
}
BENCHMARK(traceRingNoArguments);

void traceRingThreeArguments(benchmark::State& state) {
  Levels const levels("TraceBench=2");
  Address address;
  unsigned genId = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(address);
    TRACE(1, " key: {} genId: {} tunnelType: {}", address, ++genId, 1);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(traceRingThreeArguments);

void traceFormattedAtOnce(benchmark::State& state) {
  Address address;
  unsigned genId = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(address);
    std::string key;
    appendText(key, address);
    std::string line = fmt::format("{}:  key: {} genId: {} tunnelType: {}", __func__, key, ++genId, 1);
    benchmark::DoNotOptimize(line);
  }
}
BENCHMARK(traceFormattedAtOnce);

}  // namespace TraceBench
