#include "platform/stateway/EntityManager.h"

#include <algorithm>

#include "platform/kiln/Dir.h"
#include "platform/stateway/Mounter.h"

namespace Stateway {

Dovel::Ptr<MountGroup> EntityManager::getMountGroup(Mounter& mounter) {
  for (auto const& group : mounter.mountGroups_) {
    if (group->entityManager_.get() == this && !group->closed()) return group;
  }
  return mounter.mountGroups_.emplace_back(Dovel::make<MountGroup>(Dovel::Ptr<EntityManager>(this), mounter));
}

Dovel::Ptr<Dovel::Node> EntityManager::getEntity(std::string_view path) const {
  return mounted(path) ? store_.entity(path) : nullptr;
}

bool EntityManager::mounted(std::string_view path) const {
  if (mounts_.contains(path)) return true;
  for (auto slash = path.rfind('/'); slash != std::string_view::npos && slash != 0;
       slash = path.rfind('/', slash - 1)) {
    auto const above = path.substr(0, slash);
    if (mounts_.contains(above) && Dovel::cast<Kiln::Dir>(store_.entity(above))) return true;
  }
  return false;
}

std::vector<Mount> EntityManager::mounts() const {
  std::vector<Mount> all;
  for (auto const& [path, mount] : mounts_) all.push_back(mount);
  return all;
}

std::size_t EntityManager::completeMounts() {
  std::size_t count = 0;
  Dovel::Ptr<EntityManager> const self(this);
  for (; !closedGroups_.empty(); ++count) {
    Dovel::Ptr<MountGroup> const group(closedGroups_.front());
    closedGroups_.erase(closedGroups_.begin());
    for (auto const& mount : group->mounts()) mountIs(mount);
    if (!group->mounter_) continue;
    Dovel::Ptr<Mounter> const mounter(group->mounter_);
    std::erase(mounter->mountGroups_, group);
    mounter->handleMountStatus(mountSuccess());
    mounter->doStatewayMountsComplete(mountSuccess(), self);
  }
  return count;
}

// A feature that starts again requests the same mounts.
void EntityManager::mountIs(Mount const& mount) {
  auto const [first, last] = mounts_.equal_range(mount.path());
  bool const known = std::any_of(first, last, [&](auto const& present) { return present.second == mount; });
  if (!known) mounts_.emplace(mount.path(), mount);
}

void EntityManager::groupClosed(MountGroup& group) { closedGroups_.push_back(&group); }

void EntityManager::groupGone(MountGroup& group) { std::erase(closedGroups_, &group); }

}  // namespace Stateway
