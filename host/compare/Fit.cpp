#include "host/compare/Fit.h"

#include <algorithm>

#include "host/agent/DocumentCheck.h"
#include "host/compare/Growth.h"
#include "host/show/Resource.h"

namespace Host {

namespace {

constexpr std::uint32_t kMost = 1U << 20;  ///< More than any chip has rows.

/// What became of a document in a new agent.
struct Attempt {
  std::vector<Waiting> waiting{};
  std::vector<Resource> resources{};
  std::string limit{};  ///< Empty if it fits.
};

class Attempts {
 public:
  Attempts(Stateway::StateDocument const& document, std::function<std::unique_ptr<Agent>()> const& makeAgent)
      : document_(document), makeAgent_(makeAgent) {}

  Attempt of(Grown what, std::uint32_t count) const {
    auto document = grown(document_, what, count);
    if (!document) return {.limit = "the range of VLANs"};
    if (floodTunnels(*document).vteps > maxFloodTunnels) return {.limit = "the range of encapsulation ids"};
    return of(std::move(*document));
  }
  Attempt of(Stateway::StateDocument document) const {
    auto const agent = makeAgent_();
    auto const before = waitingIn(agent->chip());
    agent->apply(std::move(document));
    Attempt attempt{.waiting = newlyWaiting(before, waitingIn(agent->chip())), .resources = resourcesOf(agent->chip())};
    if (!attempt.waiting.empty()) attempt.limit = attempt.waiting.front().table;
    return attempt;
  }

 private:
  Stateway::StateDocument const& document_;
  std::function<std::unique_ptr<Agent>()> const& makeAgent_;
};

/// How many more the free rows suffice for, if each takes as many as the first.
std::uint32_t estimate(std::vector<Resource> const& none, std::vector<Resource> const& one) {
  std::uint32_t most = kMost;
  for (std::size_t i = 0; i < none.size(); ++i) {
    if (one[i].used > none[i].used) most = std::min(most, none[i].free / (one[i].used - none[i].used));
  }
  return most;
}

/// Looks for the largest number that fits, from the estimate on.
Growth growthOf(Attempts const& attempts, Grown what, std::string_view name, std::vector<Resource> const& none) {
  auto const first = attempts.of(what, 1);
  if (!first.limit.empty()) return {name, 0, first.limit};
  auto const estimated = estimate(none, first.resources);
  if (estimated == kMost) return {name, std::nullopt, "they take no rows"};
  std::uint32_t fitting = 1;
  std::uint32_t tooMany = kMost;
  std::string limit;
  // The estimate is right as a rule: its neighbours are tried first.
  std::uint32_t step = 1;
  for (auto next = std::max(2U, estimated); fitting + 1 < tooMany; step *= 2) {
    auto attempt = attempts.of(what, next);
    bool const fits = attempt.limit.empty();
    (fits ? fitting : tooMany) = next;
    if (!fits) limit = std::move(attempt.limit);
    auto const half = fitting + (tooMany - fitting) / 2;
    if (tooMany == kMost) {
      next = std::min(fitting + step, half);
    } else {
      next = fitting == 1 && tooMany > step ? std::max(tooMany - step, half) : half;
    }
  }
  return {name, fitting, limit};
}

}  // namespace

Fit fitOf(Stateway::StateDocument const& document, std::function<std::unique_ptr<Agent>()> const& makeAgent) {
  Attempts const attempts(document, makeAgent);
  auto const none = attempts.of(copyOf(document));
  Fit fit{none.waiting, {}};
  if (!fit.fits()) return fit;
  for (auto const& [what, name] : kGrown) {
    bool const any = grown(document, what, 0).has_value();
    fit.growth.push_back(any ? growthOf(attempts, what, name, none.resources) : Growth{name});
  }
  return fit;
}

}  // namespace Host
