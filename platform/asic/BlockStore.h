#pragma once

#include "platform/asic/KeyedStore.h"

namespace Asic {

/// An ordered array of members, built on the stack and handed to a block table.
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

/// Blocks of consecutive rows. A block is known by its contents: equal members give the block that stands.
template <class Table, class E>
class BlockStore final : public StoreBase {
 public:
  using Block = EntryBlock<E>;
  struct Record final : RecordBase {
    Record(StoreBase& store, Block const& block) : RecordBase(store), key(block) {}
    Block key;
  };

  BlockStore(Chip& chip, TableSpec const& tableShape) : StoreBase(chip, tableShape) {}
  /// How the table's entries become rows. Defined by TableDefinitions.h.
  static TableSpec tableSpec();

  std::size_t entrys() const override { return records_.size(); }
  /// The handle that is returned is a use of the block.
  EntryHandle::PtrConst ref(Block const& block) {
    if (auto const found = records_.find(block); found != records_.end())
      return EntryHandle::PtrConst(&(*found)->strong());
    auto* const record = ::new (Scree::slabAllocOrStdMalloc(sizeof(Record))) Record(*this, block);
    records_.insert(record);
    EntryHandle::PtrConst handle(&record->strong());
    usesTake(*record);
    rowTake(*record, length(*record));
    conclude(*record, record->hasRow() ? sendAll(*record) : EntryState::full, {});
    return handle;
  }
  /// Null if there is no block of those members.
  EntryHandle::PtrConst weakRef(Block const& block) const {
    auto const found = records_.find(block);
    return found == records_.end() ? nullptr : EntryHandle::PtrConst(&(*found)->weak());
  }
  void removeAll() override {
    std::vector<Record*> const all(records_.begin(), records_.end());
    for (auto* record : all) keyRemoved(*record);
  }

  void forEachEntry(Kiln::FunctionRef<void(EntryView const&)> show) const override { showSorted(records_, show); }
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

  void usesTake(Record& record) {
    for (auto& member : record.key.members()) {
      if (!Row::takeUses(member)) continue;
      Row::forEachHandle(member, [&](EntryHandle::PtrConst const& handle) {
        auto* const target = handle ? handle->record() : nullptr;
        if (target && !target->goneBy && !target->hasRow()) dependOn(*target, record);
      });
    }
  }
  EntryState sendAll(RecordBase& record) override { return send(typed(record), nullptr); }
  EntryState sendSince(RecordBase& record, RecordBase const& target) override {
    return send(typed(record), record.sent ? &target : nullptr);
  }
  /// Sends all members, or those that hold `target`.
  EntryState send(Record& record, RecordBase const* target) {
    auto row = record.row;
    for (auto const& member : record.key.members()) {
      Row::Words<E> words;
      Row::Words<E> before;
      Row::encode(member, words);
      Row::encode(member, before, target);
      if (!target || words != before) {
        if (auto const outcome = rowWrite(record, 0, row, words); outcome != EntryState::written) return outcome;
      }
      ++row;
    }
    return EntryState::written;
  }

  std::uint32_t length(RecordBase const& record) const override {
    return static_cast<std::uint32_t>(typed(record).key.size());
  }
  void keyErase(RecordBase& record) override { records_.erase(records_.find(typed(record).key)); }
  // Its contents are its key, which has been taken out by now.
  void contentsDrop(RecordBase& base) override {
    auto& record = typed(base);
    Block const former(std::move(record.key));
    if (!record.dependant) return;
    for (auto const& member : former.members()) {
      Row::forEachHandle(member, [&](EntryHandle::PtrConst const& handle) {
        if (auto* const target = handle ? handle->record() : nullptr) dependOff(*target, record);
      });
    }
    record.dependant = false;
  }
  void recordFree(RecordBase& record) override {
    typed(record).~Record();
    Scree::slabFreeOrStdFree(&typed(record), sizeof(Record));
  }

  typename RecordSet<Record, Block, BlockHash, BlockEqual>::type records_;
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
