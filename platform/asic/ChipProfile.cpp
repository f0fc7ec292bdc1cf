#include "platform/asic/ChipProfile.h"

#include <algorithm>

#include "platform/asic/TableRegistry.h"

namespace Asic {

TableSize ChipProfile::table(std::string_view table) const {
  auto const found = tables_.find(table);
  return found == tables_.end() ? TableSize{} : found->second;
}

void ChipProfile::tableIs(std::string_view table, TableSize size) {
  tables_.insert_or_assign(std::string(table), size);
  for (auto const* known : tableClasses()) {
    auto const parts = known->parts();
    auto const has = [&](std::string_view part) { return this->table(part).rows > 0; };
    auto const present = parts.empty() ? has(known->name) : std::all_of(parts.begin(), parts.end(), has);
    if (present) featureIs(known->makeUtil());
  }
}

Dovel::Ptr<Feature const> ChipProfile::feature(Kiln::Type const& type) const {
  auto const found = features_.find(type.name());
  return found == features_.end() ? nullptr : found->second;
}

void ChipProfile::featureIs(Dovel::Ptr<Feature const> const& feature) {
  features_.insert_or_assign(feature->typeData().name(), feature);
}

}  // namespace Asic
