#include "host/show/Chain.h"

#include <algorithm>

#include "host/show/FieldText.h"
#include "platform/tessel/tables/IngL3EcmpMember0Table.h"
#include "platform/tessel/tables/L3NextHop1Table.h"
#include "platform/tessel/tables/L3NextHop2Table.h"
#include "platform/tessel/tables/VirtualPortTableMerged.h"

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

/// A weak handle on the entry of `key`; null if the chip has no such table or entry.
template <class Table>
Handle entryOf(Asic::Chip const& chip, typename Table::Key const& key) {
  auto const* const store = chip.store(Asic::shortName(Table::kilnType().name()));
  if (!store) return nullptr;
  auto const* const record = static_cast<typename Table::Store const*>(store)->find(key);
  return record ? Handle(&record->weak()) : nullptr;
}

using L3NextHop2Table = TesselL3Common::L3NextHop2Table;

Asic::StoreBase const* nextHopStore(Asic::Chip const& chip) {
  return chip.store(Asic::shortName(L3NextHop2Table::kilnType().name()));
}

/// Whether a row of the underlay next hops sends packets anywhere. The broadcast address is the key of the one that
/// drops them, which tunnels without next hops of their own point to.
bool sendsPackets(Asic::RecordBase const& record) {
  auto const& key = static_cast<L3NextHop2Table::Store::Record const&>(record).key;
  return key.macAddr() != Meshal::EthAddr(0xffffffffffff);
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

Chain::Chain(Asic::Chip const& chip, Meshal::IpGenAddr const& vtep)
    : nextHopStore_(nextHopStore(chip)),
      virtualPort_(entryOf<TesselL3Common::VirtualPortTableMerged>(chip, vtep)),
      overlay_(entryOf<TesselVxlan::IngL3EcmpMember0Table>(chip, vtep)) {
  if (!overlay_) overlay_ = entryOf<TesselVxlan::L3NextHop1Table>(chip, vtep);
  add(virtualPort_);
  add(overlay_);
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    for (auto const& link : linksOf(*rows_[i])) add(link.target);
  }
}

void Chain::add(Handle const& handle) {
  auto const same = [&](Handle const& other) { return Asic::sameEntry(handle, other); };
  if (handle && std::none_of(rows_.begin(), rows_.end(), same)) rows_.push_back(handle);
}

Handle Chain::firstUnwritten() const {
  auto const unwritten = [](Handle const& row) { return row->state() != Asic::EntryState::written; };
  auto const found = std::find_if(rows_.begin(), rows_.end(), unwritten);
  return found == rows_.end() ? nullptr : *found;
}

std::size_t Chain::nextHops() const {
  return std::count_if(rows_.begin(), rows_.end(), [&](Handle const& row) {
    return &row->record()->store() == nextHopStore_ && sendsPackets(*row->record());
  });
}

CarriedVteps::CarriedVteps(Asic::Chip const& chip) : chip_(chip), nextHopStore_(nextHopStore(chip)) {}

bool CarriedVteps::carries(Meshal::IpGenAddr const& vtep) {
  auto const virtualPort = entryOf<TesselL3Common::VirtualPortTableMerged>(chip_, vtep);
  auto overlay = entryOf<TesselVxlan::IngL3EcmpMember0Table>(chip_, vtep);
  if (!overlay) overlay = entryOf<TesselVxlan::L3NextHop1Table>(chip_, vtep);
  if (!virtualPort || !overlay) return false;
  auto const port = at(virtualPort);
  auto const way = at(overlay);
  return port.written && way.written && way.nextHop;
}

CarriedVteps::Verdict CarriedVteps::at(Handle const& handle) {
  auto const* record = handle->record();
  if (auto const known = known_.find(record); known != known_.end()) return known->second;
  Verdict verdict{handle->state() == Asic::EntryState::written,
                  &record->store() == nextHopStore_ && sendsPackets(*record)};
  for (auto const& link : linksOf(*handle)) {
    auto const below = at(link.target);
    verdict.written = verdict.written && below.written;
    verdict.nextHop = verdict.nextHop || below.nextHop;
  }
  known_.emplace(record, verdict);
  return verdict;
}

}  // namespace Host
