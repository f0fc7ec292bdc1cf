#pragma once

#include "platform/asic/RowCodec.h"
#include "platform/asic/Store.h"
#include "platform/kiln/Invariant.h"
#include "platform/kiln/PointerSet.h"

namespace Asic {

template <class Record, class Key>
struct KeyOfRecord {
  Key const& operator()(Record const* record) const { return record->key; }
};
/// Records by their keys, which they hold as their member `key`.
template <class Record, class Key, class Hash = Kiln::Hash<Key>, class Equal = Kiln::Equal<Key>>
using RecordSet = Kiln::PointerSet<Record*, Key, KeyOfRecord<Record, Key>, Hash, Equal>;

/// Entries by key; the store of all families but blocks.
template <class Table, class K, class E>
class KeyedStore final : public StoreBase {
 public:
  struct Record final : RecordBase {
    template <class Entry>
    Record(StoreBase& store, K const& itsKey, Entry&& itsEntry)
        : RecordBase(store, store), key(itsKey), entry(std::forward<Entry>(itsEntry)) {}
    K const key;
    E entry;
  };

  KeyedStore(Chip& chip, TableSpec const& described) : StoreBase(chip, described) { records_.reserve(capacity()); }
  /// How the table's entries become rows. Defined by TableDefinitions.h.
  static TableSpec tableSpec();

  std::size_t entrys() const override { return records_.size() + fixed_.size(); }
  /// The entry that an ordinary write of `key` made, otherwise the one at a fixed row; null if there is none.
  Record* find(K const& key) const {
    if (auto* const ordinary = records_.find(key)) return ordinary;
    return fixed_.empty() ? nullptr : fixed_.find(key);
  }

  /// Inserts the entry of `key`, or replaces it in place; the returned handle is a reference to it. An entry that is
  /// passed as an rvalue is moved.
  template <class Entry>
  EntryHandle::PtrConst ref(K const& key, Entry&& entry, Report report) {
    return write(key, std::forward<Entry>(entry), report,
                 [](Record& record) { return EntryHandle::PtrConst(&record.strong()); });
  }
  /// The same, pinned; the returned handle is weak.
  template <class Entry>
  EntryHandle::PtrConst commit(K const& key, Entry&& entry, Report report) {
    auto handle = write(key, std::forward<Entry>(entry), report, &weaklyPinned);
    dropWithoutChip(*handle->record());
    return handle;
  }
  /// The same at a given row.
  EntryHandle::PtrConst commitAt(Index index, K const& key, E const& entry) {
    auto const [record, isNew] = findOrMake(fixed_, key, entry);
    auto handle = weaklyPinned(*record);
    if (isNew) {
      allocateFixedRow(*record, index);
      firstWrite(*record, Report::later);
    } else {
      INVARIANT(!record->hasRow() || record->row == index.value());
      rewrite(*record, entry, Report::later);
    }
    dropWithoutChip(*record);
    return handle;
  }
  void remove(K const& key) {
    if (auto* const record = find(key)) removeKey(*record);
  }

  void keyText(RecordBase const& record, std::string& out) const override { Kiln::writeText(out, typed(record).key); }
  void showFields(RecordBase const& record, FieldVisitor& visitor) const override {
    Row::show(typed(record).entry, visitor);
  }

 private:
  static Record& typed(RecordBase& record) { return static_cast<Record&>(record); }
  static Record const& typed(RecordBase const& record) { return static_cast<Record const&>(record); }

  std::vector<RecordBase*> all() const override {
    std::vector<RecordBase*> all;
    for (auto const* records : {&records_, &fixed_}) {
      for (auto* const record : records->all()) {
        if (record) all.push_back(record);
      }
    }
    return all;
  }
  /// A new record has the entry already; an entry is moved into a new record only.
  template <class Entry>
  std::pair<Record*, bool> findOrMake(RecordSet<Record, K>& records, K const& key, Entry&& entry) {
    return records.findOrMake(key, [&] {
      return ::new (Scree::slabAllocOrStdMalloc(sizeof(Record))) Record(*this, key, std::forward<Entry>(entry));
    });
  }

  static EntryHandle::PtrConst weaklyPinned(Record& record) {
    pin(record);
    return EntryHandle::PtrConst(&record.weak());
  }
  /// `hold` makes the returned handle before the write, since a former response may remove the entry when it is
  /// destroyed.
  template <class Entry, class Hold>
  EntryHandle::PtrConst write(K const& key, Entry&& entry, Report report, Hold const& hold) {
    auto const response = report == Report::atOnce ? responseOf(entry) : WriteResponseFn();
    auto const [record, isNew] = findOrMake(records_, key, std::forward<Entry>(entry));
    auto handle = hold(*record);
    if (isNew) {
      allocateRow(*record);
      firstWrite(*record, report);
    } else {
      rewrite(*record, std::forward<Entry>(entry), report);
    }
    response(handle->state());
    return handle;
  }
  void firstWrite(Record& record, Report report) {
    auto response = contentsStored(record);
    finishWrite(record, record.hasRow() ? sendFilled(record) : EntryState::full, response, report);
  }
  // The handles of the former contents are dropped last, when the chip no longer has their numbers. `entry` may be the
  // record's own.
  template <class Entry>
  void rewrite(Record& record, Entry&& entry, Report report) {
    E former(std::forward<Entry>(entry));
    std::swap(former, record.entry);
    if (record.dependant) forgetTargets(record, former);
    auto response = contentsStored(record);
    finishWrite(record, record.hasRow() ? sendChanges(record, former, nullptr) : EntryState::full, response, report);
  }
  static WriteResponseFn responseOf(E const& entry) {
    if constexpr (requires { entry.writeResponse; }) return entry.writeResponse;
    return {};
  }
  /// Nothing that is pinned may remain when the chip is gone: nothing would remove it.
  void dropWithoutChip(RecordBase& record) {
    if (!hasChip() && record.keyed) [[unlikely]]
      removeKey(record);
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
    return sendFilled(record);
  }
  EntryState sendFilled(Record& record) {
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
    (record.fixedRow ? fixed_ : records_).take(record.key);
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

  RecordSet<Record, K> records_;
  RecordSet<Record, K> fixed_;  ///< Entries at fixed rows.
};

}  // namespace Asic
