#include "platform/kiln/Type.h"

#include <map>

namespace Kiln {

namespace {

std::map<std::string_view, Type const*>& registry() {
  static std::map<std::string_view, Type const*> all;
  return all;
}

std::vector<std::string>& refused() {
  static std::vector<std::string> names;
  return names;
}

}  // namespace

Type::Type(std::string_view name, Type const* base, Construct construct, Members members)
    : name_(name), base_(base), construct_(construct), members_(std::move(members)) {
  kilnModuleIs(*this);
}

std::vector<Attribute const*> Type::attributes() const {
  std::vector<Attribute const*> all;
  if (base_) all = base_->attributes();
  for (auto const& attribute : members_.attributes) all.push_back(&attribute);
  return all;
}

Attribute const* Type::attribute(std::string_view name) const {
  for (auto const& attribute : members_.attributes) {
    if (attribute.name == name) return &attribute;
  }
  return base_ ? base_->attribute(name) : nullptr;
}

Method const* Type::method(std::string_view name) const {
  for (auto const& method : members_.methods) {
    if (method.name == name) return &method;
  }
  return base_ ? base_->method(name) : nullptr;
}

bool Type::isA(Type const& other) const {
  for (auto const* type = this; type; type = type->base_) {
    if (type == &other) return true;
  }
  return false;
}

void kilnModuleIs(Type const& type) {
  bool const added = registry().emplace(type.name(), &type).second;
  if (!added) refused().emplace_back(type.name());
}

std::vector<std::string> const& typesRefused() { return refused(); }

Type const* typeByName(std::string_view name) {
  auto const found = registry().find(name);
  return found == registry().end() ? nullptr : found->second;
}

std::vector<Type const*> types() {
  std::vector<Type const*> all;
  for (auto const& [name, type] : registry()) all.push_back(type);
  return all;
}

Dovel::Ptr<Dovel::Node> newByTypeName(std::string_view typeName, std::string const& name) {
  auto const* type = typeByName(typeName);
  return type && type->constructible() ? type->make(name) : nullptr;
}

}  // namespace Kiln
