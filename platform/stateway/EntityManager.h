#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/dovel/Node.h"
#include "platform/dovel/Ptr.h"
#include "platform/kiln/Attribute.h"
#include "platform/stateway/Backend.h"
#include "platform/stateway/Mount.h"
#include "platform/stateway/MountGroup.h"

namespace Stateway {

class Mounter;

/// The central state database of an agent: entities by path, which features mount and which the host fills.
///
/// A backend keeps the entities; an entity exists from its first mount, or from its creation by the host. Features see
/// what is mounted, the host sees everything. Modes are recorded and shown; they do not restrict writers. Main thread
/// only.
class EntityManager final : public Dovel::Node {
  KILN_BASE_TYPE(Stateway::EntityManager)

 public:
  /// Null: entities are in memory.
  explicit EntityManager(std::unique_ptr<Backend> backend = nullptr) : store_(std::move(backend)) {}

  /// The open mount group of `mounter` with this manager, made if it has none.
  Dovel::Ptr<MountGroup> getMountGroup(Mounter& mounter);
  /// The entity at a mounted path, or below a mounted directory; null if nothing is mounted there.
  Dovel::Ptr<Dovel::Node> getEntity(std::string_view path) const;
  template <class T>
  Dovel::Ptr<T> getEntity(std::string_view path) const {
    return Dovel::cast<T>(getEntity(path));
  }
  /// Every mount of complete groups, in order of path.
  std::vector<Mount> mounts() const;

  // For the host.

  /// Completes the closed groups in the order of closing, those that are closed meanwhile included, and calls their
  /// mounters. Returns how many groups that were.
  std::size_t completeMounts();
  /// The entity at `path`, made if there is none. Never null. Throws `MountError` as `MountGroup::doMount`.
  Dovel::Ptr<Dovel::Node> entityIs(std::string const& path, std::string_view typeName) {
    return store_.entityIs(path, typeName);
  }
  /// The entity at `path`, mounted or not. Null if there is none.
  Dovel::Ptr<Dovel::Node> entity(std::string_view path) const { return store_.entity(path); }
  std::vector<std::string> paths() const { return store_.paths(); }

 private:
  friend class MountGroup;

  void groupClosed(MountGroup& group);
  void groupGone(MountGroup& group);
  void mountIs(Mount const& mount);
  bool mounted(std::string_view path) const;

  Store store_;
  std::multimap<std::string, Mount, std::less<>> mounts_;
  std::vector<MountGroup*> closedGroups_;  ///< In order of closing. A group removes itself when it is deleted.
};

}  // namespace Stateway
