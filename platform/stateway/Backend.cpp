#include "platform/stateway/Backend.h"

#include <algorithm>

#include "platform/kiln/Dir.h"

namespace Stateway {

namespace {

void addPaths(std::string const& path, Dovel::Ptr<Dovel::Node> const& entity, std::vector<std::string>& all) {
  all.push_back(path);
  auto const dir = Dovel::cast<Kiln::Dir>(entity);
  if (!dir) return;
  for (auto const& [name, child] : dir->children()) addPaths(std::string(path).append("/").append(name), child, all);
}

}  // namespace

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
  auto const parent = slash == std::string::npos ? nullptr : Dovel::cast<Kiln::Dir>(find(path.substr(0, slash)));
  auto const made = type.make(name);
  if (auto const dir = Dovel::cast<Kiln::Dir>(made)) adoptChildren(path, *dir);
  if (parent) {
    parent->childIs(name, made);
  } else {
    entities_.emplace(path, made);
  }
  return made;
}

void MemoryBackend::adoptChildren(std::string const& path, Kiln::Dir& dir) {
  auto const prefix = path + "/";
  for (auto at = entities_.lower_bound(prefix); at != entities_.end() && at->first.starts_with(prefix);) {
    auto const name = at->first.substr(prefix.size());
    if (name.find('/') != std::string::npos) {
      ++at;
      continue;
    }
    dir.childIs(name, at->second);
    at = entities_.erase(at);
  }
}

std::vector<std::string> MemoryBackend::paths() const {
  std::vector<std::string> all;
  for (auto const& [path, entity] : entities_) addPaths(path, entity, all);
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
