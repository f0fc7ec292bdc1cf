#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/agent/Agent.h"
#include "host/compare/Waiting.h"

namespace Host {

/// How many more of a kind would fit.
struct Growth {
  std::string_view what;                ///< "VTEPs", "next hops" or "VNIs".
  std::optional<std::uint32_t> more{};  ///< Nothing if there is none to take as a model, or no limit.
  std::string limit{};                  ///< The table in which the next one finds no row, or what else ends it.
};
/// Whether a state fits into a chip.
struct Fit {
  std::vector<Waiting> waiting;  ///< What finds no row, oldest first.
  std::vector<Growth> growth;    ///< Empty if it does not fit.

  bool fits() const { return waiting.empty(); }
};

/// Tried with agents of their own, each of which takes one document in its start state: each number of `growth` fits,
/// and one more does not. What waits in the start state does not count.
Fit fitOf(Stateway::StateDocument const& document, std::function<std::unique_ptr<Agent>()> const& makeAgent);

}  // namespace Host
