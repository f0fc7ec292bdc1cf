#pragma once

// What the macros of Attribute.h expand to.

#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/dovel/Ptr.h"
#include "platform/kiln/Codec.h"
#include "platform/kiln/Collection.h"
#include "platform/kiln/Exceptions.h"
#include "platform/kiln/FunctionRef.h"
#include "platform/kiln/Type.h"

namespace Kiln {

void entityToJson(Entity const& entity, JsonOut& out);
void entityCheck(Entity const& entity, JsonIn const& in);
void entityFromJson(Entity& entity, JsonIn const& in);

namespace Impl {

/// The members of a JSON object, in its order; `fn` gets the key's text.
void eachMember(JsonIn const& in, FunctionRef<void(std::string_view, JsonIn const&)> fn);
bool isNull(JsonIn const& in);
[[noreturn]] void failKey(JsonIn const& in, std::string_view keyType);
void nullOut(JsonOut& out);
void textOut(JsonOut& out, std::string_view text);
/// An object whose members stand in the order of their keys' text.
void sortedOut(JsonOut& out, std::vector<std::pair<std::string, void const*>>&& members,
               FunctionRef<void(void const*, JsonOut&)> value);

template <class T>
struct PtrTarget {};
template <class T>
struct PtrTarget<Dovel::Ptr<T>> {
  using type = T;
};
template <class T>
constexpr bool isPtr = requires {
  typename PtrTarget<T>::type;
};

template <class T>
std::string_view typeNameOf() {
  if constexpr (isPtr<T>) {
    using Target = std::remove_const_t<typename PtrTarget<T>::type>;
    if constexpr (requires { Target::kilnType(); }) {
      return Target::kilnType().name();
    } else {
      return "object";
    }
  } else {
    return codecOf<T>().typeName;
  }
}

// What a description is made of is declared here and built where AttributeDefinitions.h is included: once for each
// class, not in every file that includes its header. There the compiler has to keep the function under its name: not
// inlined, not specialised, not found to be constant.
#ifdef __clang__
#define KILN_BUILT_ONCE [[gnu::noinline, gnu::used]]
#else
#define KILN_BUILT_ONCE [[gnu::noipa]]
#endif

/// Null where objects are not made from a name.
template <class C>
KILN_BUILT_ONCE Type::Construct constructor();
template <class C, class T, auto Read, auto Write, auto Default>
KILN_BUILT_ONCE Attribute attribute(AttributeId id, std::string_view name);
template <class C, class T, auto Read>
KILN_BUILT_ONCE Attribute fixedAttribute(AttributeId id, std::string_view name);
template <class C, class K, class V, auto Coll, auto Is, auto Del>
KILN_BUILT_ONCE Attribute collection(AttributeId id, std::string_view name);
template <class C, class K, class V, class Map, auto Coll, auto Del, auto Make>
KILN_BUILT_ONCE Attribute entityCollection(AttributeId id, std::string_view name);
template <class C, class Member, Member Run>
Method method(std::string_view name) {
  return {name, [](Dovel::Node& object) { (static_cast<C&>(object).*Run)(); }};
}

inline Attribute reservedAttribute(AttributeId id, std::string_view name, std::string_view (*typeName)()) {
  return {id,
          name,
          typeName,
          nullptr,
          AttributeKind::pointer,
          false,
          [](Dovel::Node const&, JsonOut& out) { nullOut(out); },
          nullptr,
          nullptr,
          nullptr};
}

}  // namespace Impl

}  // namespace Kiln
