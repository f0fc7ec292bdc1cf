#pragma once

#include "platform/asic/BlockStore.h"
#include "platform/asic/KeyedStore.h"
#include "platform/asic/SwTable.h"

/// The families of tables. One template does the work; a family opens the operations that fit its rule of life.
///
/// A table class names itself, its key and its entry, and is put into the list of classes by
/// `ASIC_TABLE`; `ASIC_DESCRIBE_TABLE` defines what that declares. It may declare
/// - `reservedRows`: rows from 0 on that only `entryWriteAtIndex` writes;
/// - `Parts`: the classes of the parts of a merged entry, whose first fields are the parts' entries in that order;
/// - `static void fill(Entry&)`: works out what the table itself puts into an entry that is written.
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
  /// The entry of `key`, good until the next write to any table. A missing key gives zeros that equal nothing.
  E const& entry(K const& key) const {
    static E const absent = makeAbsent<E>();
    auto const* const record = store()->find(key);
    return record ? record->entry : absent;
  }
  /// A handle on the entry of `key` that is no use of it; null if there is none.
  EntryHandle::PtrConst entryWeakRef(K const& key) const {
    auto const* const record = store()->find(key);
    return record ? EntryHandle::PtrConst(&record->weak()) : nullptr;
  }
  /// The row of `key` as a number for other agents; `Index::none` while it has none.
  std::uint32_t hwIndexOnlyForCrossAgentCommunication(K const& key) const {
    auto const* const record = store()->find(key);
    return record ? record->row : Index::none;
  }
  /// The same, by the lookup that all tables have alike.
  Index index(K const& key) const { return Index(hwIndexOnlyForCrossAgentCommunication(key)); }
  /// Removes all keys; entries that others use stay, without key, until they are not used any more.
  void entryRemoveAll() { store()->removeAll(); }

  using Store = KeyedStore<Self, K, E>;
  Store* store() const { return static_cast<Store*>(SwTable::store().get()); }

 protected:
  /// Inserts, or replaces in place: row and handles stay. An entry lives until it is removed. Gives a weak handle,
  /// whose state is the one of this write.
  EntryHandle::PtrConst entryCommit(K const& key, E const& entry) { return store()->commit(key, entry); }
  /// The same at a given row. REQUIRES: index < reservedRows, unless rows are keys.
  EntryHandle::PtrConst entryWriteAtIndex(Index index, K const& key, E const& entry) {
    return store()->commitAt(index, key, entry);
  }
  /// Inserts, or replaces in place. An entry lives as long as it is used; the handle that is returned is a use.
  EntryHandle::PtrConst entryRef(K const& key, E const& entry) { return store()->ref(key, entry); }
  /// Takes the key away at once; the row is given back when nobody uses the entry any more. Nothing happens to a
  /// missing key.
  void entryRemove(K const& key) { store()->remove(key); }
};

/// Entries that stand until they are removed.
template <class Self, class K, class E>
class CommittedTable : public KeyedTable<Self, K, E> {
  using Base = KeyedTable<Self, K, E>;

 public:
  using Base::Base;
  using Base::entryCommit;
  using Base::entryRemove;
  using Base::entryWriteAtIndex;
};

/// Entries that stand while they are used. A table with fixed rows opens `entryCommit` or `entryWriteAtIndex` besides.
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

/// Blocks of consecutive rows, known by their contents, that stand while they are used.
template <class Self, class E>
class BlockTable : public SwTable {
 public:
  using Entry = E;
  using EntryBlock = Asic::EntryBlock<E>;
  using Store = BlockStore<Self, E>;
  static constexpr std::uint32_t reservedRows = 0;

  using SwTable::SwTable;

  /// A use of the block of these members, which is written if it doesn't stand yet. Never null.
  EntryHandle::PtrConst entryBlockRef(EntryBlock const& block) { return store()->ref(block); }
  /// A handle that is no use; null if there is no such block.
  EntryHandle::PtrConst entryBlockWeakRef(EntryBlock const& block) const { return store()->weakRef(block); }
  /// How many different blocks stand.
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

  /// The part's row of a merged row; `Index::none` stays what it is. REQUIRES: made by its merged table.
  std::uint32_t hwIndexOnlyForCrossAgentCommunication(Index merged) const {
    return merged.value() == Index::none ? Index::none : merged.value() + base_;
  }
  void baseIs(std::uint32_t base) { base_ = base; }

 private:
  std::uint32_t base_ = 0;
};

}  // namespace Asic
