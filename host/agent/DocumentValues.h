#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/document/Document.h"
#include "platform/kiln/Json.h"

// How checks read documents that pass `Stateway::check`.

namespace Host {

template <class T>
T valueOf(Kiln::JsonIn const& in) {
  T value{};
  Kiln::readJson(value, in);
  return value;
}

/// The same for the name of a member.
template <class T>
T keyOf(std::string_view text) {
  T key{};
  Kiln::readText(text, key);
  return key;
}

/// Calls `visit(name, in)` for each member of the object under `name`, if there is one.
template <class Visit>
void eachMemberOf(Kiln::JsonIn const& in, std::string_view name, Visit visit) {
  if (auto const members = in.find(name)) members->eachMember(visit);
}

/// The attributes that a document has for a path of a store; nothing where it does not name the path.
inline std::optional<Kiln::JsonIn> attributesAt(Stateway::StateDocument const& document, std::string_view store,
                                                std::string_view path) {
  auto const paths = document.root().find(store);
  return paths ? paths->find(path) : std::nullopt;
}

}  // namespace Host
