#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/kiln/Entity.h"

namespace Kiln {

/// An object was requested by a type that is not loaded or that it does not have. A programming fault of the caller.
class TypeException : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

/// An entity whose content are its named children.
///
/// A child is any object of a described class; the directory shares it. Publishes `entityId` with the child's name, a
/// `std::string`, when one is added, removed or replaced. Main thread only.
class Dir : public NamedEntity {
  KILN_TYPE(Kiln::Dir, Kiln::NamedEntity)
  KILN_LINE(own<>(childrenAttribute()))

 public:
  using Children = std::map<std::string, Dovel::Ptr<Dovel::Node>, std::less<>>;
  static constexpr AttributeId entityId = 0x102;

  explicit Dir(Dovel::String name = {}) : NamedEntity(std::move(name)) {}

  /// The child `name`: the present one, else a new object of the named type. Never null.
  /// Throws `TypeException` if no such class can be made by its name, or if the present child is of another type.
  Dovel::Ptr<Dovel::Node> createEntity(std::string_view typeName, std::string const& name);
  /// The same for a class that the caller knows.
  template <class T>
  Dovel::Ptr<T> createEntity(std::string const& name) {
    return Dovel::cast<T>(createEntity(T::kilnType().name(), name));
  }

  /// Puts an object that was made elsewhere under `name`, in place of the present child.
  void childIs(std::string const& name, Dovel::Ptr<Dovel::Node> const& object);
  void childDel(std::string const& name);

  /// The child at `path`, through subdirectories: "slice/1". Null if there is none.
  Dovel::Ptr<Dovel::Node> child(std::string_view path) const;
  template <class T>
  Dovel::Ptr<T> child(std::string_view path) const {
    return Dovel::cast<T>(child(path));
  }
  /// All children, in the order of their names.
  Children const& children() const { return children_; }

 private:
  static Attribute childrenAttribute();

  Children children_;
};

}  // namespace Kiln
