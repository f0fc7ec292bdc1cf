#pragma once

#include "platform/asic/BlockStore.h"
#include "platform/asic/KeyedStore.h"
#include "platform/asic/SwTable.h"

/// The families of tables. One template does the work; a family publishes the operations that fit its lifetime rule.
///
/// A table class names itself, its key and its entry; `ASIC_TABLE` adds it to the list of classes, and
/// `ASIC_DESCRIBE_TABLE` defines what that declares. It may declare
/// - `reservedRows`: rows from 0 on that only `entryWriteAtIndex` writes;
/// - `Parts`: the classes of the parts of a merged entry, whose first fields are the parts' entries in that order;
/// - `static void fill(Entry&)`: computes the fields of a written entry that the table itself provides.
///
/// A key may have two entries, one from `entryWriteAtIndex` and one from ordinary writes: see `StoreBase`.
namespace Asic {

/// What all tables with a key offer.
template <class Self, class K, class E>
class KeyedTable : public SwTable {
 public:
  using Key = K;
  using Entry = E;
  static constexpr std::uint32_t reservedRows = 0;

  using SwTable::SwTable;

  /// How many keys there are.
  std::size_t entrys() const { return store()->entrys(); }
  bool entryHas(K const& key) const { return store()->find(key) != nullptr; }
  /// The entry of `key`, valid until the next write to any table. A missing key reads as zeros that equal nothing; a
  /// changed copy of that may be written.
  E const& entry(K const& key) const {
    static E const absent = makeAbsent<E>();
    auto const* const record = store()->find(key);
    return record ? record->entry : absent;
  }
  /// A weak handle of the entry of `key`; null if there is none.
  EntryHandle::PtrConst entryWeakRef(K const& key) const {
    auto const* const record = store()->find(key);
    return record ? EntryHandle::PtrConst(&record->weak()) : nullptr;
  }
  /// The state of the entry of `key`; `none` if there is none.
  EntryState state(K const& key) const {
    auto const* const record = store()->find(key);
    return record ? record->state : EntryState::none;
  }
  /// The row of `key` as a number for other agents; `Index::none` while it has none.
  std::uint32_t hwIndexOnlyForCrossAgentCommunication(K const& key) const {
    auto const* const record = store()->find(key);
    return record ? record->row : Index::none;
  }
  /// The same as an index.
  Index index(K const& key) const { return Index(hwIndexOnlyForCrossAgentCommunication(key)); }
  /// Removes all keys; entries that are referenced remain, without key, until they are not.
  void entryRemoveAll() { store()->removeAll(); }

  using Store = KeyedStore<Self, K, E>;
  Store* store() const { return static_cast<Store*>(SwTable::store().get()); }

 protected:
  /// Inserts, or replaces in place: row and handles remain. The entry exists until it is removed. Returns a weak
  /// handle, whose state is that of this write.
  EntryHandle::PtrConst entryCommit(K const& key, E const& entry, Report report = Report::later) {
    return store()->commit(key, entry, report);
  }
  EntryHandle::PtrConst entryCommit(K const& key, E&& entry, Report report = Report::later) {
    return store()->commit(key, std::move(entry), report);
  }
  /// The same for the entry at a given row. REQUIRES: index < reservedRows, unless rows are keys; a key is always
  /// written at the same row.
  EntryHandle::PtrConst entryWriteAtIndex(Index index, K const& key, E const& entry) {
    return store()->commitAt(index, key, entry);
  }
  /// Inserts, or replaces in place. The entry exists while it is referenced; the returned handle is a reference.
  EntryHandle::PtrConst entryRef(K const& key, E const& entry, Report report = Report::later) {
    return store()->ref(key, entry, report);
  }
  EntryHandle::PtrConst entryRef(K const& key, E&& entry, Report report = Report::later) {
    return store()->ref(key, std::move(entry), report);
  }
  /// Removes the key at once; the row is released with the last reference to the entry. A missing key is ignored.
  void entryRemove(K const& key) { store()->remove(key); }
};

/// Entries that exist until they are removed.
template <class Self, class K, class E>
class CommittedTable : public KeyedTable<Self, K, E> {
  using Base = KeyedTable<Self, K, E>;

 public:
  using Base::Base;
  using Base::entryCommit;
  using Base::entryRemove;
  using Base::entryWriteAtIndex;
};

/// Entries that exist while they are referenced. A table with fixed rows publishes `entryCommit` or `entryWriteAtIndex`
/// too.
template <class Self, class K, class E>
class RefCountedTable : public KeyedTable<Self, K, E> {
  using Base = KeyedTable<Self, K, E>;

 public:
  using Base::Base;
  using Base::entryRef;
};

/// Entries by row: the key is the row. Registers are such tables.
template <class Self, class E>
class IndexTable : public KeyedTable<Self, Index, E> {
  using Base = KeyedTable<Self, Index, E>;

 public:
  using Base::Base;
  using Base::entryRemove;
  EntryHandle::PtrConst entryCommit(Index index, E const& entry) {
    return Base::entryWriteAtIndex(index, index, entry);
  }
  EntryHandle::PtrConst entryWriteAtIndex(Index index, E const& entry) { return entryCommit(index, entry); }
};

/// Blocks of consecutive rows, identified by their contents, that exist while they are referenced.
template <class Self, class E>
class BlockTable : public SwTable {
 public:
  using Entry = E;
  using EntryBlock = Asic::EntryBlock<E>;
  using Store = BlockStore<Self, E>;
  static constexpr std::uint32_t reservedRows = 0;

  using SwTable::SwTable;

  /// A reference to the block of these members, which is written if it doesn't exist yet or the chip refused it before.
  /// Never null.
  ///
  /// `former` is the handle that the caller is going to replace by the returned one, null if there is none. The new
  /// block then keeps the place of the former one: it takes over its rows if nothing else refers to them and they
  /// suffice, and otherwise precedes blocks that wait. REQUIRES: the caller releases `former` next.
  EntryHandle::PtrConst entryBlockRef(EntryBlock const& block, EntryHandle::PtrConst const& former = nullptr) {
    return store()->ref(block, former);
  }
  /// A weak handle; null if there is no such block.
  EntryHandle::PtrConst entryBlockWeakRef(EntryBlock const& block) const { return store()->weakRef(block); }
  /// How many different blocks exist.
  std::size_t entryBlocks() const { return store()->entrys(); }
  void entryBlockRemoveAll() { store()->removeAll(); }
  Store* store() const { return static_cast<Store*>(SwTable::store().get()); }
};

/// A part of a merged table: a table of the chip whose rows follow those of the merged one at a distance.
template <class Self>
class PartTable : public SwTable {
 public:
  static constexpr std::uint32_t reservedRows = 0;
  using SwTable::SwTable;

  /// The part's row of a merged row; `Index::none` remains. REQUIRES: created by its merged table.
  std::uint32_t hwIndexOnlyForCrossAgentCommunication(Index merged) const {
    return merged.value() == Index::none ? Index::none : merged.value() + base_;
  }
  void baseIs(std::uint32_t base) { base_ = base; }

 private:
  std::uint32_t base_ = 0;
};

}  // namespace Asic
