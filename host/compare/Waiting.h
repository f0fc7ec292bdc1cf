#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/asic/Chip.h"

namespace Host {

/// An entry that waits for a row.
struct Waiting {
  std::uint32_t write;  ///< The number of its last write, for their order.
  std::string table;
  std::string key;

  auto operator<=>(Waiting const&) const = default;
};

/// All of a chip, oldest first.
std::vector<Waiting> waitingIn(Asic::Chip const& chip);
/// Those of `after` that are not in `before`.
std::vector<Waiting> newlyWaiting(std::vector<Waiting> const& before, std::vector<Waiting> after);

}  // namespace Host
