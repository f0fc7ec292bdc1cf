#pragma once

#include <algorithm>
#include <boost/unordered/unordered_flat_set.hpp>

#include "platform/asic/RowCodec.h"
#include "platform/asic/Store.h"
#include "platform/kiln/Invariant.h"

namespace Asic {

/// Finds records by their keys: a pointer a record, no copy of the key.
template <class Record, class Key, class Hash, class Equal>
struct RecordSet {
  struct KeyHash {
    using is_transparent = void;
    using is_avalanching = void;
    std::size_t operator()(Key const& key) const { return Hash{}(key); }
    std::size_t operator()(Record const* record) const { return Hash{}(record->key); }
  };
  struct KeyEqual {
    using is_transparent = void;
    bool operator()(Record const* a, Record const* b) const { return a == b; }
    bool operator()(Key const& key, Record const* record) const { return Equal{}(key, record->key); }
    bool operator()(Record const* record, Key const& key) const { return Equal{}(key, record->key); }
  };
  using type = boost::unordered_flat_set<Record*, KeyHash, KeyEqual>;
};

/// Shows the records of `set` in the order of their keys' text.
template <class Set>
void showSorted(Set const& set, Kiln::FunctionRef<void(EntryView const&)> show) {
  std::vector<std::pair<std::string, RecordBase const*>> order;
  for (auto const* record : set) order.emplace_back(EntryView(*record).key(), record);
  std::sort(order.begin(), order.end());
  for (auto const& [key, record] : order) show(EntryView(*record));
}

/// Entries by key; the store of all families but blocks.
template <class Table, class K, class E>
class KeyedStore final : public StoreBase {
 public:
  struct Record final : RecordBase {
    Record(StoreBase& store, K const& itsKey) : RecordBase(store), key(itsKey) {}
    K const key;
    E entry{};
  };

  KeyedStore(Chip& chip, TableSpec const& tableShape) : StoreBase(chip, tableShape) { records_.reserve(capacity()); }
  /// How the table's entries become rows. Defined by TableDefinitions.h.
  static TableSpec tableSpec();

  std::size_t entrys() const override { return records_.size(); }
  Record* find(K const& key) const {
    if (last_ && last_->key == key) return last_;
    auto const found = records_.find(key);
    if (found == records_.end()) return nullptr;
    last_ = *found;
    return last_;
  }

  /// Writes the entry of `key` in place, or makes it; the handle that is returned is a use of it.
  EntryHandle::PtrConst ref(K const& key, E const& entry) {
    if (auto* const present = find(key)) {
      EntryHandle::PtrConst handle(&present->strong());
      rewrite(*present, entry);
      return handle;
    }
    auto& record = make(key);
    EntryHandle::PtrConst handle(&record.strong());
    rowTake(record, 1);
    firstWrite(record, entry);
    return handle;
  }
  /// The same, pinned; the handle that is returned is weak.
  EntryHandle::PtrConst commit(K const& key, E const& entry) {
    auto* record = find(key);
    if (record) {
      recordPin(*record);
      rewrite(*record, entry);
    } else {
      record = &make(key);
      recordPin(*record);
      rowTake(*record, 1);
      firstWrite(*record, entry);
    }
    return EntryHandle::PtrConst(&record->weak());
  }
  /// The same at a given row.
  EntryHandle::PtrConst commitAt(Index index, K const& key, E const& entry) {
    auto* record = find(key);
    if (record) {
      INVARIANT(record->fixedRow && (!record->hasRow() || record->row == index.value()));
      recordPin(*record);
      rewrite(*record, entry);
    } else {
      record = &make(key);
      recordPin(*record);
      rowTakeAt(*record, index);
      firstWrite(*record, entry);
    }
    return EntryHandle::PtrConst(&record->weak());
  }
  void remove(K const& key) {
    if (auto* const record = find(key)) keyRemoved(*record);
  }
  void removeAll() override {
    std::vector<Record*> all(records_.begin(), records_.end());
    std::sort(all.begin(), all.end(), [](auto const* a, auto const* b) { return a->row < b->row; });
    for (auto* record : all) keyRemoved(*record);
  }

  void forEachEntry(Kiln::FunctionRef<void(EntryView const&)> show) const override { showSorted(records_, show); }
  void keyText(RecordBase const& record, std::string& out) const override { Kiln::writeText(out, typed(record).key); }
  void showFields(RecordBase const& record, FieldVisitor& visitor) const override {
    Row::show(typed(record).entry, visitor);
  }

 private:
  static Record& typed(RecordBase& record) { return static_cast<Record&>(record); }
  static Record const& typed(RecordBase const& record) { return static_cast<Record const&>(record); }

  Record& make(K const& key) {
    last_ = ::new (Scree::slabAllocOrStdMalloc(sizeof(Record))) Record(*this, key);
    records_.insert(last_);
    return *last_;
  }
  void firstWrite(Record& record, E const& entry) {
    contentsIs(record, E(entry));
    conclude(record, record.hasRow() ? sendAll(record) : EntryState::full, responseOf(entry));
  }
  // Uses of the former contents are dropped last, when the chip no longer has them.
  void rewrite(Record& record, E const& entry) {
    E former(std::move(record.entry));
    if (record.dependant) contentsForget(record, former);
    contentsIs(record, E(entry));
    auto const outcome = record.hasRow() ? sendChanges(record, former, nullptr) : EntryState::full;
    conclude(record, outcome, responseOf(entry));
  }
  void contentsIs(Record& record, E&& entry) {
    record.entry = std::move(entry);
    if constexpr (requires { record.entry.writeResponse; }) record.entry.writeResponse = {};
    auto const rowless = Row::takeUses(record.entry);
    fill(record.entry);
    if (rowless) [[unlikely]] {
      Row::forEachHandle(record.entry, [&](EntryHandle::PtrConst const& handle) {
        auto* const target = handle ? handle->record() : nullptr;
        if (target && !target->goneBy && !target->hasRow()) dependOn(*target, record);
      });
    }
  }
  void contentsForget(Record& record, E const& entry) {
    Row::forEachHandle(entry, [&](EntryHandle::PtrConst const& handle) {
      if (auto* const target = handle ? handle->record() : nullptr) dependOff(*target, record);
    });
    record.dependant = false;
  }
  static WriteResponseFn responseOf(E const& entry) {
    if constexpr (requires { entry.writeResponse; }) {
      return entry.writeResponse;
    } else {
      return {};
    }
  }
  static void fill(E& entry) {
    if constexpr (requires { Table::fill(entry); }) Table::fill(entry);
  }

  /// Calls `visit(number of the part, entry of the part)`.
  template <class Visit>
  static void forEachPart(Visit&& visit) {
    if constexpr (requires { typename Table::Parts; }) {
      using Fields = Kiln::described::Fields<E>;
      boost::mp11::mp_for_each<boost::mp11::mp_iota<boost::mp11::mp_size<typename Table::Parts>>>([&](auto index) {
        using Field = boost::mp11::mp_at<Fields, decltype(index)>;
        visit(
            index, [](E const& entry) -> auto const& { return entry.*Field::pointer; });
      });
    } else {
      visit(
          std::size_t{0}, [](E const& entry) -> auto const& { return entry; });
    }
  }

  EntryState sendAll(RecordBase& base) override {
    auto& record = typed(base);
    // A target may have got its row while this entry had none.
    fill(record.entry);
    auto outcome = EntryState::written;
    forEachPart([&](std::size_t part, auto const& of) {
      using PartEntry = std::remove_cvref_t<decltype(of(record.entry))>;
      Row::Words<PartEntry> words;
      Row::encode(of(record.entry), words);
      if (outcome == EntryState::written) outcome = rowWrite(record, part, record.row, words);
    });
    return outcome;
  }
  EntryState sendSince(RecordBase& base, RecordBase const& target) override {
    auto& record = typed(base);
    E const former(record.entry);
    fill(record.entry);
    return sendChanges(record, former, &target);
  }
  /// Sends the parts whose numbers are not those of `former`, read while `rowless` had no row.
  EntryState sendChanges(Record& record, E const& former, RecordBase const* rowless) {
    if (!record.sent) return sendAll(record);
    auto outcome = EntryState::written;
    forEachPart([&](std::size_t part, auto const& of) {
      using PartEntry = std::remove_cvref_t<decltype(of(former))>;
      Row::Words<PartEntry> before;
      Row::Words<PartEntry> now;
      Row::encode(of(former), before, rowless);
      Row::encode(of(record.entry), now);
      if (before != now && outcome == EntryState::written) outcome = rowWrite(record, part, record.row, now);
    });
    return outcome;
  }

  std::uint32_t length(RecordBase const&) const override { return 1; }
  void keyErase(RecordBase& record) override {
    if (last_ == &record) last_ = nullptr;
    records_.erase(records_.find(typed(record).key));
  }
  void contentsDrop(RecordBase& base) override {
    auto& record = typed(base);
    E const former(std::move(record.entry));
    if (record.dependant) contentsForget(record, former);
  }
  void recordFree(RecordBase& record) override {
    typed(record).~Record();
    Scree::slabFreeOrStdFree(&typed(record), sizeof(Record));
  }

  typename RecordSet<Record, K, Kiln::Hash<K>, std::equal_to<K>>::type records_;
  mutable Record* last_ = nullptr;  ///< Found last: a row is mostly asked for several times in a row.
};

}  // namespace Asic
