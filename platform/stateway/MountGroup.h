#pragma once

#include <string>
#include <vector>

#include "platform/dovel/Node.h"
#include "platform/dovel/Ptr.h"
#include "platform/kiln/Attribute.h"
#include "platform/kiln/Seconds.h"
#include "platform/stateway/Mount.h"

namespace Stateway {

class EntityManager;
class Mounter;

/// The mounts that one mounter requests together.
///
/// open (mounts are added) → closed (waits for the host's loop) → complete (the mounter was called). Owned by its
/// mounter until it is complete; if the mounter is deleted first, the group does not complete.
class MountGroup final : public Dovel::Node {
  KILN_BASE_TYPE(Stateway::MountGroup)

 public:
  MountGroup(Dovel::Ptr<EntityManager> entityManager, Mounter& mounter);
  ~MountGroup() override;

  /// Adds a mount; the entity exists when this returns, and the entity manager returns it once the group is complete.
  /// Throws `MountError` for a type that is not loaded, and for a path whose entity is of another type. REQUIRES: open.
  void doMount(Mount const& mount);
  /// Ends the group. The mounter's `doMountsComplete` runs later, from the host's loop. The arguments are for entity
  /// managers whose entities arrive from another process: whether to wait, for whom, how long.
  void doClose(bool wait, std::string const& name, Kiln::Seconds timeout);

  bool closed() const { return closed_; }
  std::vector<Mount> const& mounts() const { return mounts_; }

 private:
  friend class EntityManager;
  friend class Mounter;

  Dovel::Ptr<EntityManager> entityManager_;
  Mounter* mounter_;  ///< Null when the mounter was deleted.
  std::vector<Mount> mounts_;
  bool closed_ = false;
};

}  // namespace Stateway
