#include "host/show/Sections.h"

#include <algorithm>

#include "platform/asic/Store.h"
#include "platform/kilnsharedmem/EntityManager.h"
#include "platform/local/EntityManager.h"
#include "platform/stateway/EntityManager.h"

namespace Host {

std::vector<Asic::StoreBase const*> sortedStores(Asic::Chip const& chip) {
  auto stores = chip.stores();
  std::sort(stores.begin(), stores.end(), [](auto const* a, auto const* b) { return a->name() < b->name(); });
  return stores;
}

std::vector<Asic::ChipTableReport> sortedChipTables(Asic::Chip const& chip) {
  auto tables = chip.tables();
  std::sort(tables.begin(), tables.end(), [](auto const& a, auto const& b) { return a.name < b.name; });
  return tables;
}

void forEachEntity(Stateway::AgentStores const& stores, std::string_view store,
                   Kiln::FunctionRef<void(std::string const&, Kiln::Entity const&)> visit) {
  auto const visitNode = [&](std::string const& path, Dovel::Ptr<Dovel::Node> const& node) {
    if (auto const entity = Dovel::cast<Kiln::Entity>(node)) visit(path, *entity);
  };
  if (store == "stateway") {
    for (auto const& path : stores.stateway->paths()) visitNode(path, stores.stateway->entity(path));
  } else if (store == "local") {
    for (auto const& path : stores.local->paths()) visitNode(path, stores.local->getEntity(path));
  } else {
    for (auto const& [path, mount] : stores.shmem->mounts()) visitNode(path, stores.shmem->getEntity(path));
  }
}

}  // namespace Host
