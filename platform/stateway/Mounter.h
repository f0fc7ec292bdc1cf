#pragma once

#include <vector>

#include "platform/dovel/Ptr.h"
#include "platform/kiln/Sm.h"
#include "platform/stateway/Mount.h"

namespace Stateway {

class EntityManager;
class MountGroup;

/// Base of state machines that request mounts and are called when these are complete.
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
  /// The result of the last complete group of mounts; `none` before.
  MountStatus mountStatus() const { return mountStatus_; }

 protected:
  Mounter();
  ~Mounter() override;

 private:
  friend class EntityManager;

  MountStatus mountStatus_ = MountStatus::none;
  std::vector<Dovel::Ptr<MountGroup>> mountGroups_;  ///< Those that are not complete; one open group a manager.
};

}  // namespace Stateway
