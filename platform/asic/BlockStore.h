#pragma once

#include "platform/asic/KeyedStore.h"

namespace Asic {

/// An ordered array of members, built on the stack and passed to a block table.
template <class E>
class EntryBlock {
 public:
  using Members = std::vector<E, Scree::SlabAllocator<E>>;

  /// Sets a member; those before it that were never set are zeros.
  void entryIs(std::size_t index, E const& entry) {
    if (members_.empty()) members_.reserve(kUsual);
    if (index >= members_.size()) members_.resize(index + 1);
    members_[index] = entry;
  }
  /// REQUIRES: index < size().
  E const& entry(std::size_t index) const { return members_[index]; }
  std::size_t size() const { return members_.size(); }
  bool empty() const { return members_.empty(); }
  Members const& members() const { return members_; }
  Members& members() { return members_; }

 private:
  static constexpr std::size_t kUsual = 4;
  Members members_;
};

/// Blocks of consecutive rows. A block is identified by its contents: equal members are the same block.
template <class Table, class E>
class BlockStore final : public StoreBase {
 public:
  using Block = EntryBlock<E>;
  struct Record final : RecordBase {
    Record(StoreBase& store, Block const& block) : RecordBase(store, store), key(block) {}
    Block key;
    RowRange surplus;  ///< Rows that it still owns though it is displaced.
  };

  BlockStore(Chip& chip, TableSpec const& described) : StoreBase(chip, described) {}
  /// How the table's entries become rows. Defined by TableDefinitions.h.
  static TableSpec tableSpec();

  std::size_t entrys() const override { return records_.size(); }
  /// The returned handle is a reference to the block. `former` is what it replaces for the caller, null for nothing:
  /// if nothing else refers to that block and its rows suffice, they become the new block's.
  EntryHandle::PtrConst ref(Block const& block, EntryHandle::PtrConst const& former) {
    auto const [record, isNew] = records_.findOrMake(block, [&] { return newRecord(block); });
    if (!isNew) return refAgain(*record);
    EntryHandle::PtrConst handle(&record->strong());
    auto* const replaced = replaceable(former);
    storeMembers(*record);
    WriteResponseFn none;
    if (replaced && replaced->hasRow() && length(*record) <= length(*replaced)) {
      takeOver(*record, *replaced);
      finishWrite(*record, sendReplacing(*record, *replaced), none);
    } else {
      record->replaces = former && former->row();
      allocateRows(*record);
      if (replaced) inheritPlace(*record, *replaced);
      finishWrite(*record, record->hasRow() ? sendAll(*record) : EntryState::full, none);
      if (replaced) retryWaiting();
    }
    return handle;
  }
  /// Null if there is no block of those members.
  EntryHandle::PtrConst weakRef(Block const& block) const {
    auto const* const found = records_.find(block);
    return found ? EntryHandle::PtrConst(&found->weak()) : nullptr;
  }

  /// The text of the members' handles in brackets.
  void keyText(RecordBase const& record, std::string& out) const override;
  void showFields(RecordBase const& record, FieldVisitor& visitor) const override;

 private:
  static Record& typed(RecordBase& record) { return static_cast<Record&>(record); }
  static Record const& typed(RecordBase const& record) { return static_cast<Record const&>(record); }

  struct BlockHash {
    std::size_t operator()(Block const& block) const {
      std::uint64_t seed = block.size();
      for (auto const& member : block.members()) seed = Row::hash(seed, member);
      return seed;
    }
  };
  struct BlockEqual {
    bool operator()(Block const& a, Block const& b) const {
      return std::equal(a.members().begin(), a.members().end(), b.members().begin(), b.members().end(),
                        [](E const& x, E const& y) { return isEq(x, y); });
    }
  };

  std::vector<RecordBase*> all() const override {
    std::vector<RecordBase*> all;
    for (auto* const record : records_.all()) {
      if (record) all.push_back(record);
    }
    return all;
  }
  /// A reference to a block that exists, which is sent again if the chip refused it.
  EntryHandle::PtrConst refAgain(Record& record) {
    EntryHandle::PtrConst handle(&record.strong());
    if (!record.sent && record.hasRow()) {
      WriteResponseFn none;
      finishWrite(record, sendAll(record), none);
    }
    return handle;
  }
  Record* newRecord(Block const& block) {
    return ::new (Scree::slabAllocOrStdMalloc(sizeof(Record))) Record(*this, block);
  }
  /// The block of `former` if the caller's reference is the only one.
  Record* replaceable(EntryHandle::PtrConst const& former) {
    auto* const record = former ? former->record() : nullptr;
    if (!record || &record->store() != this || !record->keyed || record->strong().useCount() != 1) return nullptr;
    return &typed(*record);
  }
  // What is left over stays with the former block until its holder has let go of it: up to then the chip may use it.
  void takeOver(Record& record, Record& former) {
    record.row = former.row;
    former.surplus = {former.row + length(record), length(former) - length(record)};
    displace(former);
  }
  void storeMembers(Record& record) {
    for (auto& member : record.key.members()) {
      Row::markPresent(member);
      if (!Row::takeReferences(member)) continue;
      Row::forEachRowless(member, [&](RecordBase& target) { addDependant(target, record); });
    }
  }
  EntryState sendAll(RecordBase& record) override {
    return send(typed(record), [](std::size_t, auto const&) { return true; });
  }
  EntryState sendSince(RecordBase& base, RecordBase const& target) override {
    auto& record = typed(base);
    return send(record, [&](std::size_t i, auto const& words) {
      return !record.sent || words != encoded(record.key.entry(i), &target);
    });
  }
  /// Sends the members that differ from those of `former`, whose rows these were.
  EntryState sendReplacing(Record& record, Record const& former) {
    return send(record, [&](std::size_t i, auto const& words) {
      return !former.sent || words != encoded(former.key.entry(i), nullptr);
    });
  }
  static Row::Words<E> encoded(E const& member, RecordBase const* rowless) {
    Row::Words<E> words;
    Row::encode(member, words, rowless);
    return words;
  }
  /// Sends the members for which `differs(number of the member, its words)`.
  template <class Differs>
  EntryState send(Record& record, Differs const& differs) {
    for (std::uint32_t i = 0; i < record.key.size(); ++i) {
      auto const words = encoded(record.key.entry(i), nullptr);
      if (!differs(i, words)) continue;
      if (auto const outcome = writeRow(record, 0, record.row + i, words); outcome != EntryState::written)
        return outcome;
    }
    return EntryState::written;
  }

  std::uint32_t length(RecordBase const& record) const override {
    return static_cast<std::uint32_t>(typed(record).key.size());
  }
  RowRange surplusRows(RecordBase const& record) const override { return typed(record).surplus; }
  bool refersToRowless(RecordBase const& record) const override {
    for (auto const& member : typed(record).key.members()) {
      if (Row::refersToRowless(member)) return true;
    }
    return false;
  }
  void eraseKey(RecordBase& record) override { records_.take(typed(record).key); }
  // The members are the key, which was erased before.
  void dropContents(RecordBase& base) override {
    auto& record = typed(base);
    Block const former(std::move(record.key));
    if (!record.dependant) return;
    for (auto const& member : former.members())
      Row::forEachTarget(member, [&](RecordBase& target) { removeDependant(target, record); });
    record.dependant = false;
  }
  void freeRecord(RecordBase& record) override {
    typed(record).~Record();
    Scree::slabFreeOrStdFree(&typed(record), sizeof(Record));
  }

  RecordSet<Record, Block, BlockHash, BlockEqual> records_;
};

template <class Table, class E>
void BlockStore<Table, E>::keyText(RecordBase const& record, std::string& out) const {
  char const* separator = "[";
  for (auto const& member : typed(record).key.members()) {
    Row::forEachHandle(member, [&](EntryHandle::PtrConst const& handle) {
      out.append(separator).append(handle ? handle->keyText() : "null");
      separator = ", ";
    });
  }
  out += ']';
}

template <class Table, class E>
void BlockStore<Table, E>::showFields(RecordBase const& record, FieldVisitor& visitor) const {
  std::size_t index = 0;
  for (auto const& member : typed(record).key.members()) {
    visitor.groupBegin(Kiln::toText(index++));
    Row::show(member, visitor);
    visitor.groupEnd();
  }
}

}  // namespace Asic
