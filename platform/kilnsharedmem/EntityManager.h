#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/dovel/Node.h"
#include "platform/dovel/Ptr.h"
#include "platform/kiln/Attribute.h"
#include "platform/kilnsharedmem/MountInfo.h"
#include "platform/stateway/Backend.h"

namespace KilnSharedMem {

class EntityManager;

/// Several mounts of an entity manager together.
class MountGroup final : public Dovel::Node {
  KILN_BASE_TYPE(KilnSharedMem::MountGroup)

 public:
  explicit MountGroup(EntityManager& entityManager);

  /// Adds a mount. Throws as `EntityManager::doMount`.
  void doMount(std::string const& path, std::string_view typeName, MountInfo const& info);
  /// Completes the mounts before it returns: `getEntity` returns the entities from then on.
  void doClose();

 private:
  Dovel::Ptr<EntityManager> entityManager_;
};

/// The entities that agents share in memory, by path. Found by its name during its lifetime.
///
/// Here the memory is that of the process; the layout that an entity would have in shared memory is recorded with its
/// mount.
class EntityManager final : public Dovel::Node {
  KILN_BASE_TYPE(KilnSharedMem::EntityManager)

 public:
  struct MountRecord {
    std::string typeName;
    MountInfo info;
  };

  explicit EntityManager(std::string name);
  ~EntityManager() override;

  /// The living manager of that name, the latest of several. If there is none: null, or a `Stateway::MountError` if
  /// `required`.
  static Dovel::Ptr<EntityManager> getEntityManager(std::string_view name, bool required);

  std::string const& name() const { return name_; }
  Dovel::Ptr<MountGroup> getMountGroup() { return Dovel::make<MountGroup>(*this); }
  /// Throws `Stateway::MountError` for a type that is not loaded, and for a path whose entity is of another type.
  void doMount(std::string const& path, std::string_view typeName, MountInfo const& info);
  /// Null if nothing is mounted at `path`.
  Dovel::Ptr<Dovel::Node> getEntity(std::string_view path) const;
  template <class T>
  Dovel::Ptr<T> getEntity(std::string_view path) const {
    return Dovel::cast<T>(getEntity(path));
  }
  /// Before the first use of an entity: it is the one that is mounted at `path`.
  void assertSafeToAccess(Dovel::Ptr<Dovel::Node const> const& entity, std::string_view path) const;

  /// For the host: the entity at `path`, made if there is none. Throws as `doMount`.
  Dovel::Ptr<Dovel::Node> entityIs(std::string const& path, std::string_view typeName) {
    return store_.entityIs(path, typeName);
  }
  /// For the host: the entity at `path`, mounted or not. Null if there is none.
  Dovel::Ptr<Dovel::Node> entity(std::string_view path) const { return store_.entity(path); }
  std::map<std::string, MountRecord, std::less<>> const& mounts() const { return mounts_; }

 private:
  std::string name_;
  Stateway::Store store_;
  std::map<std::string, MountRecord, std::less<>> mounts_;
};

}  // namespace KilnSharedMem
