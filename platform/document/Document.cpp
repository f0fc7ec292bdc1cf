#include "platform/document/Document.h"

#include <algorithm>
#include <array>

#include "platform/kiln/Entity.h"
#include "platform/kiln/Json.h"
#include "platform/kilnsharedmem/EntityManager.h"
#include "platform/local/EntityManager.h"
#include "platform/stateway/EntityManager.h"

namespace Stateway {

namespace {

using Kiln::JsonIn;

struct Member {
  std::string_view name;
  Dovel::Ptr<Dovel::Node> (*find)(AgentStores const& stores, std::string_view path);
};

constexpr std::array<Member, 3> members{{
    {"stateway", [](AgentStores const& stores, std::string_view path) { return stores.stateway->getEntity(path); }},
    {"local", [](AgentStores const& stores, std::string_view path) { return stores.local->getEntity(path); }},
    {"shmem", [](AgentStores const& stores, std::string_view path) { return stores.shmem->entity(path); }},
}};

/// Null if there is no entity at `path`, or none with attributes.
Dovel::Ptr<Kiln::Entity> entityAt(Member const& member, AgentStores const& stores, std::string_view path) {
  return Dovel::cast<Kiln::Entity>(member.find(stores, path));
}

/// Calls `visit(member, path, attributes)` for each path of the document.
template <class Visit>
void eachPath(StateDocument const& document, Visit visit) {
  auto const root = document.root();
  for (auto const& member : members) {
    auto const paths = root.find(member.name);
    if (!paths) continue;
    paths->eachMember([&](std::string_view path, JsonIn const& attributes) { visit(member, path, attributes); });
  }
}

/// Whether `document` names the attribute.
bool names(StateDocument const& document, Member const& member, std::string_view path, std::string_view attribute) {
  auto const root = document.root();
  auto const paths = root.find(member.name);
  if (!paths) return false;
  auto const attributes = paths->find(path);
  return attributes && attributes->find(attribute);
}

void checkMembers(JsonIn const& root) {
  root.eachMember([](std::string_view name, JsonIn const& value) {
    if (name == StateDocument::notes) return;
    if (name == "format") {
      if (value.text() != StateDocument::format) value.fail("expected " + std::string(StateDocument::format));
      return;
    }
    if (std::none_of(members.begin(), members.end(), [&](Member const& member) { return member.name == name; })) {
      value.fail("unknown member, expected one of format stateway local shmem notes");
    }
  });
}

void resetLeftOut(StateDocument const& previous, StateDocument const& next, AgentStores const& stores) {
  eachPath(previous, [&](Member const& member, std::string_view path, JsonIn const& former) {
    auto const entity = entityAt(member, stores, path);
    // The state of a removed path was removed with it.
    if (!entity) return;
    for (auto const* attribute : entity->typeData().attributes()) {
      if (!attribute->writable || !former.find(attribute->name)) continue;
      if (!names(next, member, path, attribute->name)) attribute->reset(*entity);
    }
  });
}

void write(StateDocument const& next, AgentStores const& stores) {
  eachPath(next, [&](Member const& member, std::string_view path, JsonIn const& attributes) {
    auto const entity = entityAt(member, stores, path);
    for (auto const* attribute : entity->typeData().attributes()) {
      if (!attribute->writable) continue;
      if (auto const value = attributes.find(attribute->name)) attribute->fromJson(*entity, *value);
    }
  });
}

}  // namespace

void check(StateDocument const& document, AgentStores const& stores) {
  checkMembers(document.root());
  eachPath(document, [&](Member const& member, std::string_view path, JsonIn const& attributes) {
    auto const entity = entityAt(member, stores, path);
    if (!entity) attributes.fail("unknown path, nothing of this agent is mounted there");
    Kiln::entityCheck(*entity, attributes);
  });
}

void apply(StateDocument const& previous, StateDocument const& next, AgentStores const& stores) {
  resetLeftOut(previous, next, stores);
  write(next, stores);
}

}  // namespace Stateway
