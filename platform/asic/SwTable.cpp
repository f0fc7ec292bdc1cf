#include "platform/asic/SwTable.h"

#include <algorithm>

#include "platform/kiln/Invariant.h"

namespace Asic {

namespace {

std::vector<TableClass>& registry() {
  static std::vector<TableClass> all;
  return all;
}

}  // namespace

TableLink::TableLink(Kiln::Type const& type, std::vector<std::string_view> (*parts)(),
                     Dovel::Ptr<Feature const> (*makeUtil)()) {
  registry().push_back({shortName(type.name()), &type, parts, makeUtil});
}

std::vector<TableClass const*> tableClasses() {
  std::vector<TableClass const*> all;
  for (auto const& one : registry()) all.push_back(&one);
  std::sort(all.begin(), all.end(), [](auto const* a, auto const* b) { return a->name < b->name; });
  return all;
}

TableClass const* tableClass(std::string_view name) {
  for (auto const& one : registry()) {
    if (one.name == name) return &one;
  }
  return nullptr;
}

SwTable::~SwTable() = default;

void SwTable::doInit(UnitId unit, Dovel::Ptr<Stateway::EntityManager> const&, ChipInfo const& chipInfo) {
  INVARIANT(chipInfo.chip());
  store_ = bind(*chipInfo.chip(), unit);
  bound();
}

void SwTable::doPublishHwTableMountInfo() {
  INVARIANT(store_);
  store_->publishedIs(true);
}

std::uint32_t SwTable::numEntries() const { return store_->capacity(); }

bool ChipInfo::isTestChip() const { return chip_ && chip_->profile()->isTestChip(); }

}  // namespace Asic
