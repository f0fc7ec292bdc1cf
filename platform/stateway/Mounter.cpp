#include "platform/stateway/Mounter.h"

#include "platform/stateway/EntityManager.h"

namespace Stateway {

Mounter::Mounter() = default;

Mounter::~Mounter() {
  for (auto const& group : mountGroups_) group->mounter_ = nullptr;
}

void Mounter::doStatewayMountsComplete(MountStatus status, Dovel::Ptr<EntityManager> const& em) {
  doMountsComplete(status, em);
}

void Mounter::handleMountStatus(MountStatus status) { mountStatus_ = status; }

}  // namespace Stateway
