#pragma once

#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platform/dovel/Node.h"
#include "platform/dovel/Ptr.h"
#include "platform/kiln/Type.h"

namespace Kiln {
class Dir;
}  // namespace Kiln

namespace Stateway {

/// There is no entity of the requested type at a path, and none can be made. The text names the path and the types.
class MountError : public std::runtime_error {
 public:
  MountError(std::string path, std::string typeName, std::string const& why)
      : std::runtime_error(why), path_(std::move(path)), typeName_(std::move(typeName)) {}
  std::string const& path() const { return path_; }
  std::string const& typeName() const { return typeName_; }

 private:
  std::string path_;
  std::string typeName_;
};

/// Storage of entities by path.
class Backend {
 public:
  virtual ~Backend() = default;
  /// Null if there is no entity at `path`.
  virtual Dovel::Ptr<Dovel::Node> find(std::string_view path) const = 0;
  /// A new object at `path`, named by the last part of the path. REQUIRES: `find(path)` is null, `type` is
  /// constructible.
  virtual Dovel::Ptr<Dovel::Node> create(std::string const& path, Kiln::Type const& type) = 0;
  /// The paths of all entities, sorted.
  virtual std::vector<std::string> paths() const = 0;
};

/// Keeps the entities in this process. The children of a `Kiln::Dir` are the entities one part below its path,
/// whichever is created first.
class MemoryBackend final : public Backend {
 public:
  Dovel::Ptr<Dovel::Node> find(std::string_view path) const override;
  Dovel::Ptr<Dovel::Node> create(std::string const& path, Kiln::Type const& type) override;
  std::vector<std::string> paths() const override;

 private:
  void adoptChildren(std::string const& path, Kiln::Dir& dir);

  std::map<std::string, Dovel::Ptr<Dovel::Node>, std::less<>> entities_;  ///< Without the children of directories.
};

/// Entities by path, with their types checked: what the three kinds of entity managers have in common.
class Store {
 public:
  /// Null: entities are in memory.
  explicit Store(std::unique_ptr<Backend> backend = nullptr);

  /// Null if there is no entity at `path`.
  Dovel::Ptr<Dovel::Node> entity(std::string_view path) const { return backend_->find(path); }
  /// The entity at `path`, made if there is none. Never null. Throws `MountError` for a type that no loaded class has
  /// or that can't be made from a name, and if the present entity is of another type.
  Dovel::Ptr<Dovel::Node> entityIs(std::string const& path, std::string_view typeName);
  std::vector<std::string> paths() const { return backend_->paths(); }

 private:
  std::unique_ptr<Backend> backend_;
};

}  // namespace Stateway
