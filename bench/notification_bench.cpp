// What one notification costs, by subscribers: ours, a bare intrusive list that must not change during the walk, and
// Boost.Signals2.

#include <benchmark/benchmark.h>

#include <boost/intrusive/list.hpp>
#include <boost/signals2/signal.hpp>
#include <deque>

#include "platform/dovel/Ptr.h"
#include "platform/dovel/Publisher.h"
#include "platform/kiln/AttributeDefinitions.h"
#include "platform/kiln/Entity.h"

namespace NotificationBench {

class Source final : public Kiln::Entity {
  KILN_TYPE(NotificationBench::Source, Kiln::Entity)
  KILN_ATTR(0x102, std::uint32_t, value)

 public:
  Dovel::String name() const override { return "source"; }
};
KILN_DESCRIBE(Source)

/// Notes each change, so that the call can't be optimised away.
struct Ours final : Dovel::Subscriber {
  Ours() : Subscriber(&Ours::told) {}
  static void told(Subscriber& self, Dovel::Change const& change) { static_cast<Ours&>(self).sum += change.id; }
  std::uint64_t sum = 0;
};

void ours(benchmark::State& state) {
  auto const source = Dovel::make<Source>();
  std::deque<Ours> subscribers(static_cast<std::size_t>(state.range(0)));
  for (auto& subscriber : subscribers) source->publisher()->subscriberAdd(subscriber);
  std::uint32_t value = 0;
  for (auto _ : state) source->valueIs(++value);
  for (auto& subscriber : subscribers) {
    benchmark::DoNotOptimize(subscriber.sum);
    source->publisher()->subscriberRemove(subscriber);
  }
}
BENCHMARK(ours)->Arg(1)->Arg(4)->Arg(16);

struct Bare : boost::intrusive::list_base_hook<> {
  void (*dispatch)(Bare&, Dovel::Change const&) = [](Bare& self, Dovel::Change const& change) {
    self.sum += change.id;
  };
  std::uint64_t sum = 0;
};

void bareIntrusiveList(benchmark::State& state) {
  std::deque<Bare> subscribers(static_cast<std::size_t>(state.range(0)));
  boost::intrusive::list<Bare> list(subscribers.begin(), subscribers.end());
  std::uint32_t value = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(++value);
    Dovel::Change const change{0x102, nullptr};
    for (auto& subscriber : list) subscriber.dispatch(subscriber, change);
    benchmark::ClobberMemory();
  }
  list.clear();
}
BENCHMARK(bareIntrusiveList)->Arg(1)->Arg(4)->Arg(16);

void signals2(benchmark::State& state) {
  boost::signals2::signal<void(Dovel::Change const&)> signal;
  std::deque<std::uint64_t> sums(static_cast<std::size_t>(state.range(0)));
  for (auto& sum : sums) signal.connect([&sum](Dovel::Change const& change) { sum += change.id; });
  std::uint32_t value = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(++value);
    signal(Dovel::Change{0x102, nullptr});
  }
}
BENCHMARK(signals2)->Arg(1)->Arg(4)->Arg(16);

}  // namespace NotificationBench
