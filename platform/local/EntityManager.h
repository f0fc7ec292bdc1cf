#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/dovel/Node.h"
#include "platform/dovel/Ptr.h"
#include "platform/kiln/Attribute.h"
#include "platform/stateway/Backend.h"

namespace Local {

/// Reading side of the entities that the plug-ins of one agent share among themselves.
class EntityStore : public Dovel::Node {
  KILN_BASE_TYPE(Local::EntityStore)

 public:
  /// Null if there is no entity at `path`.
  Dovel::Ptr<Dovel::Node> getEntity(std::string_view path) const { return store_.entity(path); }
  template <class T>
  Dovel::Ptr<T> getEntity(std::string_view path) const {
    return Dovel::cast<T>(getEntity(path));
  }
  std::vector<std::string> paths() const { return store_.paths(); }

 protected:
  EntityStore() = default;
  Stateway::Store store_;
};

/// The entities that the plug-ins of one agent share among themselves: the first request creates one.
class EntityManager final : public EntityStore {
  KILN_TYPE(Local::EntityManager, Local::EntityStore)

 public:
  /// The entity at `path`, made if there is none. Never null. Throws `Stateway::MountError` for a type that is not
  /// loaded, and for a path whose entity is of another type.
  Dovel::Ptr<Dovel::Node> doMount(std::string const& path, std::string_view typeName) {
    return store_.entityIs(path, typeName);
  }
  template <class T>
  Dovel::Ptr<T> doMount(std::string const& path) {
    return Dovel::cast<T>(doMount(path, T::kilnType().name()));
  }
};

}  // namespace Local
