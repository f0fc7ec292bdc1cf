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
/// Life cycle: an entry exists while its strong handle is referenced; pinning is such a reference. With the last one it
/// expires: its row is released, the handles that it stores are dropped, and its key leaves the table. The memory is
/// freed with the last weak handle; the existing entry counts as one of those. A key that is removed leaves the table
/// at once, the rest remains until the last reference.
class RecordBase : public StrongHandle, public WeakHandle {
 public:
  static constexpr std::uint32_t kNoRow = Index::none;

  StrongHandle const& strong() const { return *this; }
  WeakHandle const& weak() const { return *this; }
  StoreBase& store() const { return *store_; }
  bool hasRow() const { return row != kNoRow; }

  // Written by the table library alone.
  std::uint32_t row = kNoRow;   ///< The first row.
  std::uint32_t lastWrite = 0;  ///< Number of the last write; its outcome is the entry's state.
  EntryState state = EntryState::none;
  bool pinned : 1 = false;
  bool keyed : 1 = true;       ///< The table finds it by its key.
  bool expired : 1 = false;    ///< The last reference was released.
  bool waiting : 1 = false;    ///< Is in the table's queue.
  bool replaces : 1 = false;   ///< Was written in place of an entry that had rows: waits before new entries.
  bool sent : 1 = false;       ///< The chip has the numbers of the entry as it is.
  bool fixedRow : 1 = false;   ///< Was written at a row of the writer's choice.
  bool displaced : 1 = false;  ///< Another entry owns its row; entries that refer to this one still hold the number.
  bool kept : 1 = false;       ///< The store keeps its response for a later write.
  bool dependant : 1 = false;  ///< Stores a handle whose entry has no row yet.

  /// Runs when the last reference to either handle is released; see the life cycle above.
  static void operator delete(RecordBase* record, std::destroying_delete_t);

 protected:
  /// `counted` is the store as a node, whose use the record holds.
  RecordBase(StoreBase& store, Dovel::Node const& counted) : store_(&store) {
    counted.useInc();
    weak().useInc();
  }
  ~RecordBase() override;

 private:
  StoreBase* store_;
};

inline RecordBase* EntryHandle::record() const {
  if (kind_ == Kind::dontCare) return nullptr;
  auto* const self = const_cast<EntryHandle*>(this);
  if (kind_ == Kind::strong) return static_cast<RecordBase*>(static_cast<StrongHandle*>(self));
  return static_cast<RecordBase*>(static_cast<WeakHandle*>(self));
}

inline EntryState EntryHandle::state() const {
  auto const* of = record();
  return of ? of->state : EntryState::written;
}

inline bool EntryHandle::gone() const {
  auto const* of = record();
  return of && of->expired;
}

inline std::optional<Index> EntryHandle::row() const {
  auto const* of = record();
  if (!of) return dontCareIndex();
  return of->hasRow() ? std::optional(Index(of->row)) : std::nullopt;
}

}  // namespace Asic
