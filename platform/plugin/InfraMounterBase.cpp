#include "platform/plugin/InfraMounterBase.h"

#include <algorithm>

namespace TesselInfra {

void ProgrammingTypeSet::progTypeSetIs(std::uint32_t type) {
  if (!has(type)) types_.push_back(type);
}

bool ProgrammingTypeSet::has(std::uint32_t type) const {
  return std::find(types_.begin(), types_.end(), type) != types_.end();
}

void MounterBase::doAsicMountsComplete(std::uint32_t, bool, Dovel::Ptr<Stateway::EntityManager> const&) {}

MounterBase::RecoveredTable& MounterBase::tableIs(Kiln::Type const& type) {
  auto const found = std::find_if(swTables_.begin(), swTables_.end(),
                                  [&](RecoveredTable const& table) { return table.type == &type; });
  return found != swTables_.end() ? *found : swTables_.emplace_back(RecoveredTable{&type, {}});
}

}  // namespace TesselInfra
