#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "platform/asic/EntryHandle.h"

namespace Asic {

/// When the outcome of a write can be seen.
enum class Completion : std::uint8_t {
  direct,    ///< In the handle as soon as the write returns.
  deferred,  ///< When the host's loop delivers it; in progress until then.
};
BOOST_DESCRIBE_ENUM(Completion, direct, deferred)

/// How the rows of one chip table are laid out: numbers by field name, a field being one word or several.
struct RowLayout {
  struct Field {
    std::string_view name;
    std::uint16_t words;
  };
  std::string_view table;
  std::vector<Field> fields;
  std::uint32_t words = 0;
  std::uint32_t base = 0;  ///< The number of the table's first row.
};

/// Which table of a chip, in the order in which the tables were brought up.
using TableId = std::uint32_t;

struct RowWrite {
  TableId table;
  std::uint32_t row;                     ///< From the layout's base on.
  std::span<std::uint64_t const> words;  ///< As many as the layout has.
  EntryHandle const& entry;              ///< Whose row it is, for messages.
};

/// A chip as the table library uses it: four operations on rows of numbers.
///
/// Called on the main thread only, and never from inside one of its own operations.
class ChipDriver {
 public:
  virtual ~ChipDriver() = default;

  /// How many rows the chip has for the table `id`: 0 if it doesn't have the table. Called once, before its first
  /// write. `layout` lives as long as the driver is used.
  virtual std::uint32_t capacity(TableId id, RowLayout const& layout) = 0;
  /// Writes one row; returns `written`, or `failed` or `full` if the row is unchanged.
  virtual EntryState writeRow(RowWrite const& write) = 0;
  virtual void clearRow(TableId table, std::uint32_t row) = 0;
  virtual Completion completion() const = 0;
};

}  // namespace Asic
