#pragma once

#include <boost/describe/enum.hpp>
#include <cstdint>
#include <limits>

#include "platform/kiln/StrongId.h"
#include "platform/kiln/Text.h"

namespace Asic {

/// A position in a table; `Index(0)` is the first row. Its text is the decimal number.
struct Index : Kiln::StrongId<Index> {
  using StrongId::StrongId;
  /// "No row" in numbers for the chip and for other agents.
  static constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();
};

/// Which instance of a table: one for all units of the agent, or one for each logical FAP.
struct UnitId : Kiln::StrongId<UnitId> {
  // Implicit: a FAP id or the shared one is a unit.
  constexpr UnitId(std::uint32_t value) : StrongId(value) {}
};
/// The instance that all units of the agent share.
inline constexpr UnitId kSharedUnit{511};

/// Progress of the last write of an entry. The loop calls write responses with `written`, `failed` and `full` only.
enum class EntryState : std::uint8_t {
  none = 0,        ///< The entry no longer exists.
  inProgress = 1,  ///< The completion is pending.
  written = 3,     ///< The chip has the row.
  failed = 4,      ///< The chip refused the row.
  full = 5,        ///< There is no room for the row; see the queue of `StoreBase`.
};
BOOST_DESCRIBE_ENUM(EntryState, none, inProgress, written, failed, full)
constexpr bool isOpenEnum(EntryState) { return true; }
KILN_VALUE_STREAM(EntryState)

}  // namespace Asic
