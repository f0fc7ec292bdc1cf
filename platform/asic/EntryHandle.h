#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/asic/Index.h"
#include "platform/dovel/Node.h"
#include "platform/dovel/Ptr.h"
#include "platform/kiln/Attribute.h"

namespace Asic {

class RecordBase;

/// Names one entry of one table; an entry of another table stores it to point at that entry.
///
/// A strong handle is a reference to its entry; a weak one keeps nothing alive and can be asked whether the entry still
/// exists. Both kinds are part of the entry's record, so that returning one allocates nothing. A handle that is stored
/// in an entry counts as a reference, whichever kind was passed in. Main thread only.
class EntryHandle : public Dovel::Node {
  KILN_BASE_TYPE(Asic::EntryHandle)

 public:
  using PtrConst = Dovel::Ptr<EntryHandle const>;

  /// Of the entry; `none` if it no longer exists.
  EntryState state() const;
  /// Whether the entry no longer exists; true of weak handles only.
  bool gone() const;
  /// The entry's first row; null if it has none: it waits for one, or no longer exists.
  std::optional<Index> row() const;
  /// Empty for a don't-care handle.
  std::string keyText() const;
  std::string_view tableName() const;

  /// The table's record of the entry, null for a don't-care handle. For the table library.
  RecordBase* record() const;
  /// The number of a don't-care handle. REQUIRES: `record()` is null.
  Index dontCareIndex() const;

 protected:
  enum class Kind : std::uint8_t { strong, weak, dontCare };
  explicit EntryHandle(Kind kind) noexcept : Node(kind == Kind::dontCare ? 1 : 0), kind_(kind) {}

 private:
  Kind kind_;
};

/// Whether both name the same entry, by handles of either kind; two nulls do.
bool sameEntry(EntryHandle::PtrConst const& a, EntryHandle::PtrConst const& b);

/// Handles that no table returns.
struct SwTableWorkaround {
  /// A handle for a field whose target does not matter to the chip in this entry: its number is `index`, its state
  /// `written`. Handles of equal numbers are equal.
  static EntryHandle::PtrConst dontCareHandle(Index index);
};

}  // namespace Asic

#include "platform/asic/Record.h"  // IWYU pragma: export
