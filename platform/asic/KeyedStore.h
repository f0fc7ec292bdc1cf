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

/// Shows records in the order of their keys' text.
inline void showSorted(std::vector<RecordBase const*> const& records, Kiln::FunctionRef<void(EntryView const&)> show) {
  std::vector<std::pair<std::string, RecordBase const*>> order;
  for (auto const* record : records) order.emplace_back(EntryView(*record).key(), record);
  std::stable_sort(order.begin(), order.end(), [](auto const& a, auto const& b) { return a.first < b.first; });
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

  KeyedStore(Chip& chip, TableSpec const& described) : StoreBase(chip, described) { records_.reserve(capacity()); }
  /// How the table's entries become rows. Defined by TableDefinitions.h.
  static TableSpec tableSpec();

  std::size_t entrys() const override { return records_.size() + fixed_.size(); }
  /// The entry that an ordinary write of `key` made, otherwise the one at a fixed row; null if there is none.
  Record* find(K const& key) const {
    if (auto* const ordinary = findOrdinary(key)) return ordinary;
    return fixed_.empty() ? nullptr : lookUp(fixed_, key);
  }

  /// Inserts the entry of `key`, or replaces it in place; the returned handle is a reference to it.
  EntryHandle::PtrConst ref(K const& key, E const& entry) {
    if (auto* const present = findOrdinary(key)) {
      EntryHandle::PtrConst handle(&present->strong());
      rewrite(*present, entry);
      return handle;
    }
    auto& record = make(key);
    EntryHandle::PtrConst handle(&record.strong());
    allocateRows(record);
    firstWrite(record, entry);
    return handle;
  }
  /// The same, pinned; the returned handle is weak.
  EntryHandle::PtrConst commit(K const& key, E const& entry) {
    if (auto* const present = findOrdinary(key)) return rewritePinned(*present, entry);
    auto& record = make(key);
    pin(record);
    allocateRows(record);
    return firstWritePinned(record, entry);
  }
  /// The same at a given row.
  EntryHandle::PtrConst commitAt(Index index, K const& key, E const& entry) {
    if (auto* const present = lookUp(fixed_, key)) {
      INVARIANT(!present->hasRow() || present->row == index.value());
      return rewritePinned(*present, entry);
    }
    auto& record = newRecord(key);
    fixed_.insert(&record);
    pin(record);
    allocateFixedRow(record, index);
    return firstWritePinned(record, entry);
  }
  void remove(K const& key) {
    if (auto* const record = find(key)) removeKey(*record);
  }
  // Weak handles: removing one entry may be the end of another.
  void removeAll() override {
    std::vector<Record*> order(records_.begin(), records_.end());
    order.insert(order.end(), fixed_.begin(), fixed_.end());
    std::sort(order.begin(), order.end(), [](auto const* a, auto const* b) { return a->row < b->row; });
    std::vector<EntryHandle::PtrConst> handles;
    handles.reserve(order.size());
    for (auto const* record : order) handles.emplace_back(&record->weak());
    for (auto const& handle : handles) {
      if (handle->record()->keyed) removeKey(*handle->record());
    }
  }

  void forEachEntry(Kiln::FunctionRef<void(EntryView const&)> show) const override {
    std::vector<RecordBase const*> all(records_.begin(), records_.end());
    all.insert(all.end(), fixed_.begin(), fixed_.end());
    showSorted(all, show);
  }
  void keyText(RecordBase const& record, std::string& out) const override { Kiln::writeText(out, typed(record).key); }
  void showFields(RecordBase const& record, FieldVisitor& visitor) const override {
    Row::show(typed(record).entry, visitor);
  }

 private:
  using Records = typename RecordSet<Record, K, Kiln::Hash<K>, std::equal_to<K>>::type;

  static Record& typed(RecordBase& record) { return static_cast<Record&>(record); }
  static Record const& typed(RecordBase const& record) { return static_cast<Record const&>(record); }

  static Record* lookUp(Records const& records, K const& key) {
    auto const found = records.find(key);
    return found == records.end() ? nullptr : *found;
  }
  Record* findOrdinary(K const& key) const {
    if (last_ && last_->key == key) return last_;
    auto* const found = lookUp(records_, key);
    if (found) last_ = found;
    return found;
  }
  Record& newRecord(K const& key) { return *::new (Scree::slabAllocOrStdMalloc(sizeof(Record))) Record(*this, key); }
  Record& make(K const& key) {
    last_ = &newRecord(key);
    records_.insert(last_);
    return *last_;
  }

  void firstWrite(Record& record, E const& entry) {
    record.entry = entry;
    auto response = contentsStored(record);
    finishWrite(record, record.hasRow() ? sendAll(record) : EntryState::full, response);
  }
  // The handles of the former contents are dropped last, when the chip no longer has their numbers. `entry` may be the
  // record's own.
  void rewrite(Record& record, E const& entry) {
    E former(entry);
    std::swap(former, record.entry);
    if (record.dependant) forgetTargets(record, former);
    auto response = contentsStored(record);
    finishWrite(record, record.hasRow() ? sendChanges(record, former, nullptr) : EntryState::full, response);
  }
  // The handle is taken first: a former response may remove the entry when it is destroyed.
  EntryHandle::PtrConst firstWritePinned(Record& record, E const& entry) {
    EntryHandle::PtrConst handle(&record.weak());
    firstWrite(record, entry);
    if (!hasChip()) [[unlikely]]
      removeKey(record);
    return handle;
  }
  EntryHandle::PtrConst rewritePinned(Record& record, E const& entry) {
    EntryHandle::PtrConst handle(&record.weak());
    if (hasChip()) pin(record);
    rewrite(record, entry);
    return handle;
  }
  /// Makes new contents the record's own: its handles become references, and its response is returned instead of kept.
  WriteResponseFn contentsStored(Record& record) {
    WriteResponseFn response;
    if constexpr (requires { record.entry.writeResponse; }) response = std::move(record.entry.writeResponse);
    Row::markPresent(record.entry);
    auto const rowless = Row::takeReferences(record.entry);
    fill(record.entry);
    if (rowless) [[unlikely]]
      Row::forEachRowless(record.entry, [&](RecordBase& target) { addDependant(target, record); });
    return response;
  }
  void forgetTargets(Record& record, E const& entry) {
    Row::forEachTarget(entry, [&](RecordBase& target) { removeDependant(target, record); });
    record.dependant = false;
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
      if (outcome == EntryState::written) outcome = writeRow(record, part, record.row, words);
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
      if (before != now && outcome == EntryState::written) outcome = writeRow(record, part, record.row, now);
    });
    return outcome;
  }

  std::uint32_t length(RecordBase const&) const override { return 1; }
  bool refersToRowless(RecordBase const& record) const override { return Row::refersToRowless(typed(record).entry); }
  void eraseKey(RecordBase& base) override {
    auto& record = typed(base);
    if (last_ == &record) last_ = nullptr;
    auto& records = record.fixedRow ? fixed_ : records_;
    records.erase(records.find(record.key));
  }
  void dropContents(RecordBase& base) override {
    auto& record = typed(base);
    E const former(std::move(record.entry));
    if (record.dependant) forgetTargets(record, former);
  }
  void freeRecord(RecordBase& record) override {
    typed(record).~Record();
    Scree::slabFreeOrStdFree(&typed(record), sizeof(Record));
  }

  Records records_;
  Records fixed_;                   ///< Entries at fixed rows.
  mutable Record* last_ = nullptr;  ///< The ordinary entry found last: one is mostly asked for several times in a row.
};

}  // namespace Asic
