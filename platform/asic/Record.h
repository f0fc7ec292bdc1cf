#pragma once

#include <new>

#include "platform/asic/EntryHandle.h"
#include "platform/asic/WriteResponse.h"

namespace Asic {

class StoreBase;

class StrongHandle : public EntryHandle {
 protected:
  StrongHandle() noexcept : EntryHandle(Kind::strong) {}
};
class WeakHandle : public EntryHandle {
 protected:
  WeakHandle() noexcept : EntryHandle(Kind::weak) {}
};

/// What a table keeps of one entry, whatever its type: one allocation, with both of its handles inside.
///
/// Lives in three steps. While the strong handle is used the entry stands; pinning is such a use. With its last use the
/// row is given back, the stored handles are dropped and the key leaves the table. The memory goes with the last weak
/// handle; the standing entry counts as one of those. A key that is removed leaves the table at once, the rest stays.
class RecordBase : public StrongHandle, public WeakHandle {
 public:
  static constexpr std::uint32_t kNoRow = Index::none;

  StrongHandle const& strong() const { return *this; }
  WeakHandle const& weak() const { return *this; }
  StoreBase& store() const { return *store_; }
  bool hasRow() const { return row != kNoRow; }

  // Written by the table library alone.
  std::uint32_t row = kNoRow;   ///< The first row.
  std::uint32_t lastWrite = 0;  ///< Number of the last write whose outcome is still to show.
  std::uint32_t waitingAs = 0;  ///< Place in the table's queue. REQUIRES: `waiting`.
  EntryState state = EntryState::none;
  bool pinned : 1 = false;
  bool keyed : 1 = true;       ///< The table finds it by its key.
  bool goneBy : 1 = false;     ///< The last use has gone.
  bool waiting : 1 = false;    ///< Stands in the table's queue.
  bool sent : 1 = false;       ///< The chip has the numbers of the entry as it is.
  bool fixedRow : 1 = false;   ///< Was written at a row of the writer's choice.
  bool dependant : 1 = false;  ///< Stores a handle whose entry has no row yet.

  /// Runs when the last use of either handle goes; see the steps above.
  static void operator delete(RecordBase* record, std::destroying_delete_t);

 protected:
  explicit RecordBase(StoreBase& store);
  ~RecordBase() override;

 private:
  StoreBase* store_;
};

}  // namespace Asic
