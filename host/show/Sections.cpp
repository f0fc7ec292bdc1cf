#include "host/show/Sections.h"

#include <algorithm>

#include "platform/asic/Store.h"
#include "platform/kiln/Entity.h"
#include "platform/kiln/Json.h"
#include "platform/kilnsharedmem/EntityManager.h"
#include "platform/local/EntityManager.h"
#include "platform/stateway/EntityManager.h"

namespace Host {

namespace {

void addEntity(Kiln::JsonOut& store, std::string const& path, Dovel::Ptr<Dovel::Node> const& node) {
  auto const entity = Dovel::cast<Kiln::Entity>(node);
  if (!entity) return;
  auto place = store.member(path);
  Kiln::entityToJson(*entity, place);
}

}  // namespace

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

rapidjson::Document stateDocument(Stateway::AgentStores const& stores) {
  rapidjson::Document document;
  Kiln::JsonOut root(document, document.GetAllocator());
  root.object();
  // A place is good until the next member of the same parent.
  {
    auto stateway = root.member("stateway");
    stateway.object();
    for (auto const& path : stores.stateway->paths()) addEntity(stateway, path, stores.stateway->entity(path));
  }
  {
    auto local = root.member("local");
    local.object();
    for (auto const& path : stores.local->paths()) addEntity(local, path, stores.local->getEntity(path));
  }
  {
    auto shmem = root.member("shmem");
    shmem.object();
    for (auto const& [path, mount] : stores.shmem->mounts()) addEntity(shmem, path, stores.shmem->getEntity(path));
  }
  return document;
}

}  // namespace Host
