#include "platform/stateway/MountGroup.h"

#include "platform/kiln/Invariant.h"
#include "platform/stateway/EntityManager.h"

namespace Stateway {

MountGroup::MountGroup(Dovel::Ptr<EntityManager> entityManager, Mounter& mounter)
    : entityManager_(std::move(entityManager)), mounter_(&mounter) {}

MountGroup::~MountGroup() { entityManager_->groupGone(*this); }

void MountGroup::doMount(Mount const& mount) {
  INVARIANT(!closed_);
  entityManager_->entityIs(mount.path(), mount.typeName());
  mounts_.push_back(mount);
}

void MountGroup::doClose(bool, std::string const&, Kiln::Seconds) {
  INVARIANT(!closed_);
  closed_ = true;
  entityManager_->groupClosed(*this);
}

}  // namespace Stateway
