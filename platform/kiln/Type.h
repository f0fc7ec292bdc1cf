#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/dovel/Node.h"
#include "platform/dovel/Ptr.h"

namespace Kiln {

class Entity;
class JsonIn;
class JsonOut;

using AttributeId = std::uint16_t;

enum class AttributeKind : std::uint8_t { value, pointer, collection, entityCollection };

/// One attribute of a class, for everything that is done with attributes without knowing the class.
struct Attribute {
  AttributeId id;
  std::string_view name;
  std::string_view (*typeName)();     ///< Of the value; of a collection's elements.
  std::string_view (*keyTypeName)();  ///< Null unless the attribute is a collection.
  AttributeKind kind;
  bool writable;  ///< False where there is no setter.
  void (*toJson)(Dovel::Node const& owner, JsonOut& out);
  /// Throws `InputError` for what `in` can't be; changes nothing.
  void (*check)(JsonIn const& in);
  /// Makes the attribute what `in` says, through the owner's setters: only differences are written. A collection ends
  /// with exactly the members of `in`. REQUIRES: `writable`, and `in` passes `check`.
  void (*fromJson)(Dovel::Node& owner, JsonIn const& in);
  /// Makes the attribute what it is in a new object. REQUIRES: `writable`.
  void (*reset)(Dovel::Node& owner);
};

struct Method {
  std::string_view name;
  void (*call)(Dovel::Node& object);
};

/// The description of a class: its name, base, attributes in order of declaration and methods that may be called by
/// name.
class Type {
 public:
  using Construct = Dovel::Ptr<Dovel::Node> (*)(std::string const& name);

  Type(std::string_view name, Type const* base, Construct construct);
  Type(Type const&) = delete;
  Type& operator=(Type const&) = delete;

  std::string_view name() const { return name_; }
  Type const* base() const { return base_; }
  /// The class's own attributes and methods, without those of its bases.
  std::vector<Attribute> const& ownAttributes() const { return attributes_; }
  std::vector<Method> const& ownMethods() const { return methods_; }
  /// All attributes, those of the bases first.
  std::vector<Attribute const*> attributes() const;
  Attribute const* attribute(std::string_view name) const;
  Method const* method(std::string_view name) const;
  bool isA(Type const& other) const;
  /// Whether an object can be made from a name alone.
  bool constructible() const { return construct_ != nullptr; }
  Dovel::Ptr<Dovel::Node> make(std::string const& name) const { return construct_(name); }

 private:
  friend struct TypeLink;

  std::string_view name_;
  Type const* base_;
  Construct construct_;
  std::vector<Attribute> attributes_;
  std::vector<Method> methods_;
};

/// Puts one attribute or method into its class's description, at load time and in order of declaration.
struct TypeLink {
  explicit TypeLink(Type&) {}
  TypeLink(Type& type, Attribute const& attribute);
  TypeLink(Type& type, Method const& method);
};

/// The classes that are loaded, by name.
void kilnModuleIs(Type& type);
/// Null if no class of that name is loaded.
Type const* typeByName(std::string_view name);
std::vector<Type const*> types();
/// An object of the named class; null if there is no such class or it can't be made from a name.
Dovel::Ptr<Dovel::Node> newByTypeName(std::string_view typeName, std::string const& name);

}  // namespace Kiln
