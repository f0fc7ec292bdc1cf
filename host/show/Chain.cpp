#include "host/show/Chain.h"

#include <algorithm>

#include "host/show/FieldText.h"
#include "platform/tessel/tables/HerNextHopTables.h"
#include "platform/tessel/tables/L3NextHop2Table.h"

namespace Host {

using Handle = Asic::EntryHandle::PtrConst;

namespace {

class LinkCollector final : public Asic::FieldVisitor {
 public:
  void number(std::string_view, std::uint64_t) override {}
  void text(std::string_view, std::string) override {}
  void handle(std::string_view name, Handle const& target) override {
    if (target && target->record()) links.push_back({name, target});
  }
  void groupBegin(std::string_view) override {}
  void groupEnd() override {}

  std::vector<Link> links;
};

class NumberFinder final : public Asic::FieldVisitor {
 public:
  explicit NumberFinder(std::string_view name) : name_(name) {}
  void number(std::string_view name, std::uint64_t value) override {
    if (name == name_) found = value;
  }
  void text(std::string_view, std::string) override {}
  void handle(std::string_view, Handle const&) override {}
  void groupBegin(std::string_view) override {}
  void groupEnd() override {}

  std::uint64_t found = 0;

 private:
  std::string_view name_;
};

void visit(Asic::EntryHandle const& handle, Asic::FieldVisitor& visitor) {
  if (auto const* record = handle.record()) record->store().showFields(*record, visitor);
}

using L3NextHop2Table = TesselL3Common::L3NextHop2Table;

template <class Table>
Asic::StoreBase const* storeOf(Asic::Chip const& chip) {
  return chip.store(Asic::shortName(Table::kilnType().name()));
}

}  // namespace

std::vector<Link> linksOf(Asic::EntryHandle const& handle) {
  LinkCollector collector;
  visit(handle, collector);
  return std::move(collector.links);
}

std::string valuesOf(Asic::EntryHandle const& handle) {
  FieldText text(FieldText::Handles::leftOut);
  visit(handle, text);
  return text.take();
}

std::uint64_t numberOf(Asic::EntryHandle const& handle, std::string_view field) {
  NumberFinder finder(field);
  visit(handle, finder);
  return finder.found;
}

std::optional<Meshal::EthAddr> nextHopMac(Asic::EntryHandle const& handle) {
  for (auto const& link : linksOf(handle)) {
    if (link.target->tableName() != Asic::shortName(L3NextHop2Table::kilnType().name())) continue;
    return static_cast<L3NextHop2Table::Store::Record const*>(link.target->record())->key.macAddr();
  }
  return std::nullopt;
}

Handle firstUnwritten(std::vector<NeededRow> const& needed) {
  std::vector<Handle> rows;
  auto const add = [&](Handle const& handle) {
    auto const same = [&](Handle const& other) { return Asic::sameEntry(handle, other); };
    if (handle && std::none_of(rows.begin(), rows.end(), same)) rows.push_back(handle);
  };
  auto const unwritten = [](Handle const& row) { return row->state() != Asic::EntryState::written; };
  for (auto const& row : needed) add(row.row);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    for (auto const& link : linksOf(*rows[i])) add(link.target);
  }
  auto const first = std::find_if(rows.begin(), rows.end(), unwritten);
  return first == rows.end() ? nullptr : *first;
}

SendingRows::SendingRows(Asic::Chip const& chip)
    : nextHopStore_(storeOf<L3NextHop2Table>(chip)), herNextHopStore_(storeOf<TesselVxlan::HerNextHop2Table>(chip)) {}

bool SendingRows::has(Asic::RecordBase const& record) const {
  auto const* const store = &record.store();
  if (store != nextHopStore_) return store == herNextHopStore_;
  auto const& key = static_cast<L3NextHop2Table::Store::Record const&>(record).key;
  return key.macAddr() != Meshal::EthAddr(0xffffffffffff);
}

bool WrittenRows::has(NeededRow const& row) {
  if (!row.row) return false;
  auto const verdict = at(row.row);
  return verdict.written && (verdict.nextHop || !row.sends);
}

WrittenRows::Verdict WrittenRows::at(Handle const& handle) {
  auto const* record = handle->record();
  if (auto const known = known_.find(record); known != known_.end()) return known->second;
  Verdict verdict{handle->state() == Asic::EntryState::written, sending_.has(*record)};
  for (auto const& link : linksOf(*handle)) {
    auto const below = at(link.target);
    verdict.written = verdict.written && below.written;
    verdict.nextHop = verdict.nextHop || below.nextHop;
  }
  known_.emplace(record, verdict);
  return verdict;
}

}  // namespace Host
