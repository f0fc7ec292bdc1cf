#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/dovel/Node.h"
#include "platform/dovel/Ptr.h"
#include "platform/kiln/FunctionRef.h"

namespace Kiln {

class Entity;
class JsonIn;
class JsonOut;

using AttributeId = std::uint16_t;

struct AttributeAccess;

enum class AttributeKind : std::uint8_t { value, pointer, collection, entityCollection };

/// One attribute of a class, for everything that is done with attributes without knowing the class.
struct Attribute {
  AttributeId id;
  std::string_view name;
  std::string_view (*typeName)();     ///< Of the value; of a collection's elements.
  std::string_view (*keyTypeName)();  ///< Null unless the attribute is a collection.
  AttributeKind kind;
  bool writable;  ///< False where there is no setter.
  AttributeAccess const* access;

  void toJson(Dovel::Node const& owner, JsonOut& out) const;
  /// Throws `InputError` unless `in` can be read into this attribute of `owner`; changes nothing. REQUIRES: `writable`.
  void check(Dovel::Node const& owner, JsonIn const& in) const;
  /// Makes the attribute what `in` says, through the owner's setters: only differences are written. A collection ends
  /// with exactly the members of `in`. REQUIRES: `writable`, and `in` passes `check`.
  void fromJson(Dovel::Node& owner, JsonIn const& in) const;
  /// Makes the attribute what it is in a new object. REQUIRES: `writable`.
  void reset(Dovel::Node& owner) const;

 private:
  void oneToJson(void const* value, JsonOut& out) const;
  void membersToJson(Dovel::Node const& owner, JsonOut& out) const;
  void objectFromJson(Dovel::Node& owner, JsonIn const& in) const;
  void dropOthers(Dovel::Node& owner, JsonIn const& in) const;
  void dropUnless(Dovel::Node& owner, FunctionRef<bool(void const* key)> isWanted) const;
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

  struct Members {
    std::vector<Attribute> attributes;
    std::vector<Method> methods;
  };

  /// Registers the class under its name, which outlives it.
  Type(std::string_view name, Type const* base, Construct construct, Members members = {});
  Type(Type const&) = delete;
  Type& operator=(Type const&) = delete;

  std::string_view name() const { return name_; }
  Type const* base() const { return base_; }
  /// The class's own attributes and methods, without those of its bases.
  std::vector<Attribute> const& ownAttributes() const { return members_.attributes; }
  std::vector<Method> const& ownMethods() const { return members_.methods; }
  /// All attributes, those of the bases first.
  std::vector<Attribute const*> attributes() const;
  Attribute const* attribute(std::string_view name) const;
  Method const* method(std::string_view name) const;
  bool isA(Type const& other) const;
  /// Whether an object can be made from a name alone.
  bool constructible() const { return construct_ != nullptr; }
  Dovel::Ptr<Dovel::Node> make(std::string const& name) const { return construct_(name); }

 private:
  std::string_view name_;
  Type const* base_;
  Construct construct_;
  Members members_;
};

/// Registers a class by its name. A second class of a name is not registered, and counted by `typesRefused`.
void kilnModuleIs(Type const& type);
/// The names of the classes that were not registered, in order.
std::vector<std::string> const& typesRefused();
/// Null if no class of that name is loaded.
Type const* typeByName(std::string_view name);
std::vector<Type const*> types();
/// An object of the named class; null if there is no such class or it can't be made from a name.
Dovel::Ptr<Dovel::Node> newByTypeName(std::string_view typeName, std::string const& name);

}  // namespace Kiln
