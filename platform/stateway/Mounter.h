#pragma once

#include "platform/dovel/Ptr.h"
#include "platform/kiln/Sm.h"
#include "platform/stateway/Mount.h"

namespace Stateway {

class EntityManager;
class MountGroup;

/// Base of state machines that ask for mounts and are told when they are there.
///
/// The entity manager calls `handleMountStatus`, then `doStatewayMountsComplete`, from the host's loop.
class Mounter : public Kiln::Sm {
  KILN_BASE_TYPE(Stateway::Mounter)

 public:
  /// Leads to `doMountsComplete`, at once unless a subclass has more to wait for.
  virtual void doStatewayMountsComplete(MountStatus status, Dovel::Ptr<EntityManager> const& em);
  virtual void doMountsComplete(MountStatus status, Dovel::Ptr<EntityManager> const& em) = 0;
  /// Keeps the status.
  virtual void handleMountStatus(MountStatus status);
  /// How the last group of mounts went; `none` before one was complete.
  MountStatus mountStatus() const { return mountStatus_; }

 protected:
  Mounter();
  ~Mounter() override;

 private:
  friend class EntityManager;

  MountStatus mountStatus_ = MountStatus::none;
  Dovel::Ptr<MountGroup> mountGroup_;
};

}  // namespace Stateway
