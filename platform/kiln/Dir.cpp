#include "platform/kiln/Dir.h"

#include "platform/kiln/AttributeDefinitions.h"
#include "platform/kiln/Json.h"

namespace Kiln {

namespace {

void childrenToJson(Dovel::Node const& owner, JsonOut& out) {
  out.object();
  for (auto const& [name, child] : static_cast<Dir const&>(owner).children()) {
    JsonOut place = out.member(name);
    if (auto const* entity = dynamic_cast<Entity const*>(child.get())) {
      entityToJson(*entity, place);
    } else {
      place.text(child->typeData().name());
    }
  }
}

constexpr AttributeAccess kChildren{.toJson = &childrenToJson};

}  // namespace

Attribute Dir::childrenAttribute() {
  return {.id = entityId,
          .name = "entity",
          .typeName = [] { return std::string_view("Dovel::Node"); },
          .keyTypeName = [] { return std::string_view("string"); },
          .kind = AttributeKind::entityCollection,
          .writable = false,
          .access = &kChildren};
}

Dovel::Ptr<Dovel::Node> Dir::createEntity(std::string_view typeName, std::string const& name) {
  auto const* type = typeByName(typeName);
  if (!type || !type->constructible()) {
    throw TypeException(std::string("no class that can be made by the name ").append(typeName));
  }
  if (auto const found = children_.find(name); found != children_.end()) {
    auto const& present = found->second->typeData();
    if (present.isA(*type)) return found->second;
    throw TypeException(
        std::string(name).append(" is a ").append(present.name()).append(", expected a ").append(typeName));
  }
  auto const made = type->make(name);
  childIs(name, made);
  return made;
}

void Dir::childIs(std::string const& name, Dovel::Ptr<Dovel::Node> const& object) {
  if (!object) throwMutatorArgNullPointerException("Kiln::Dir::childIs");
  auto const [at, inserted] = children_.emplace(name, object);
  if (!inserted && at->second == object) return;
  std::string const changed = name;
  // Released after the notification: its deletion may lead back here, or end this directory.
  Dovel::Ptr<Dovel::Node> const former = std::exchange(at->second, object);
  kilnChanged(entityId, &changed);
}

void Dir::childDel(std::string const& name) {
  auto const gone = children_.extract(name);
  if (gone) kilnChanged(entityId, &gone.key());
}

Dovel::Ptr<Dovel::Node> Dir::child(std::string_view path) const {
  auto const slash = path.find('/');
  auto const found = children_.find(path.substr(0, slash));
  if (found == children_.end()) return nullptr;
  if (slash == std::string_view::npos) return found->second;
  auto const dir = Dovel::cast<Dir>(found->second);
  return dir ? dir->child(path.substr(slash + 1)) : nullptr;
}

}  // namespace Kiln
