#include "platform/stateway/Backend.h"

#include <algorithm>

#include "platform/kiln/Dir.h"

namespace Stateway {

Dovel::Ptr<Dovel::Node> MemoryBackend::find(std::string_view path) const {
  if (auto const found = entities_.find(path); found != entities_.end()) return found->second;
  for (auto slash = path.rfind('/'); slash != std::string_view::npos && slash != 0;
       slash = path.rfind('/', slash - 1)) {
    auto const found = entities_.find(path.substr(0, slash));
    if (found == entities_.end()) continue;
    auto const dir = Dovel::cast<Kiln::Dir>(found->second);
    return dir ? dir->child(path.substr(slash + 1)) : nullptr;
  }
  return nullptr;
}

Dovel::Ptr<Dovel::Node> MemoryBackend::create(std::string const& path, Kiln::Type const& type) {
  auto const slash = path.rfind('/');
  auto const name = path.substr(slash == std::string::npos ? 0 : slash + 1);
  if (slash != std::string::npos) {
    if (auto const dir = Dovel::cast<Kiln::Dir>(find(path.substr(0, slash))))
      return dir->createEntity(type.name(), name);
  }
  auto const made = type.make(name);
  entities_.emplace(path, made);
  return made;
}

std::vector<std::string> MemoryBackend::paths() const {
  std::vector<std::string> all;
  for (auto const& [path, entity] : entities_) {
    all.push_back(path);
    auto const dir = Dovel::cast<Kiln::Dir>(entity);
    if (!dir) continue;
    for (auto const& [name, child] : dir->children()) all.push_back(std::string(path).append("/").append(name));
  }
  std::sort(all.begin(), all.end());
  return all;
}

Store::Store(std::unique_ptr<Backend> backend) : backend_(std::move(backend)) {
  if (!backend_) backend_ = std::make_unique<MemoryBackend>();
}

Dovel::Ptr<Dovel::Node> Store::entityIs(std::string const& path, std::string_view typeName) {
  auto const* type = Kiln::typeByName(typeName);
  if (!type || !type->constructible()) {
    auto const* why = type ? " cannot be created by name" : " is not loaded";
    throw MountError(path, std::string(typeName), path + ": the type " + std::string(typeName) + why);
  }
  auto const present = backend_->find(path);
  if (!present) return backend_->create(path, *type);
  if (present->typeData().isA(*type)) return present;
  throw MountError(path, std::string(typeName),
                   path + " is a " + std::string(present->typeData().name()) + ", expected a " + std::string(typeName));
}

}  // namespace Stateway
