#include "platform/kilnsharedmem/EntityManager.h"

#include <algorithm>

#include "platform/kiln/Invariant.h"

namespace KilnSharedMem {

namespace {

// Those that live, oldest first.
std::vector<EntityManager*>& living() {
  static std::vector<EntityManager*> all;
  return all;
}

}  // namespace

EntityManager::EntityManager(std::string name) : name_(std::move(name)) { living().push_back(this); }

EntityManager::~EntityManager() { std::erase(living(), this); }

Dovel::Ptr<EntityManager> EntityManager::getEntityManager(std::string_view name, bool required) {
  auto const& all = living();
  auto const found =
      std::find_if(all.rbegin(), all.rend(), [&](auto const* manager) { return manager->name_ == name; });
  if (found != all.rend()) return *found;
  if (!required) return nullptr;
  throw Stateway::MountError("", "", std::string("no shared-memory entity manager of the name ").append(name));
}

void EntityManager::doMount(std::string const& path, std::string_view typeName, MountInfo const& info) {
  store_.entityIs(path, typeName);
  mounts_.insert_or_assign(path, MountRecord{std::string(typeName), info});
}

Dovel::Ptr<Dovel::Node> EntityManager::getEntity(std::string_view path) const {
  return mounts_.contains(path) ? store_.entity(path) : nullptr;
}

void EntityManager::assertSafeToAccess(Dovel::Ptr<Dovel::Node const> const& entity, std::string_view path) const {
  INVARIANT(entity && entity == getEntity(path));
}

MountGroup::MountGroup(EntityManager& entityManager) : entityManager_(&entityManager) {}

void MountGroup::doMount(std::string const& path, std::string_view typeName, MountInfo const& info) {
  entityManager_->doMount(path, typeName, info);
}

// The entities lie in this process: each mount was complete when it was made.
void MountGroup::doClose() {}

}  // namespace KilnSharedMem
