#pragma once

// Defines the descriptions of classes. For a folder's Descriptions.cpp, which has a line `KILN_DESCRIBE(Ns::Class)` for
// each described class of the folder, and for a source file with a described class of its own.

#include <string>
#include <type_traits>
#include <utility>

#include "platform/kiln/Attribute.h"
#include "platform/kiln/Codec.h"
#include "platform/kiln/Entity.h"
#include "platform/kiln/FunctionRef.h"

namespace Kiln {

/// How an attribute's owner is read and written, for an `Attribute` that knows neither its class nor its types.
///
/// Values and keys are passed by address, as to their codecs; objects too, entities by the address of their `Entity`.
/// What an attribute does not support is null.
struct AttributeAccess {
  ValueCodec const& (*codec)() = nullptr;     ///< Of the value or of a collection's elements; null for objects.
  ValueCodec const& (*keyCodec)() = nullptr;  ///< Of a collection.
  bool areEntities = false;                   ///< The objects are entities.
  /// Used in place of the functions below.
  void (*toJson)(Dovel::Node const& owner, JsonOut& out) = nullptr;

  /// The value, or the object, which may be null.
  void const* (*get)(Dovel::Node const& owner) = nullptr;
  /// `key` is null unless the attribute is a collection.
  void (*set)(Dovel::Node& owner, void const* key, void const* value) = nullptr;
  void (*reset)(Dovel::Node& owner) = nullptr;
  void (*forEach)(Dovel::Node const& owner, FunctionRef<void(void const* key, void const* value)> visit) = nullptr;
  void (*del)(Dovel::Node& owner, void const* key) = nullptr;
  /// The class of an entity.
  Type const& (*type)() = nullptr;
  /// The entity of `key`; otherwise a new one, which is not added.
  Dovel::Ptr<Entity> (*presentOrNew)(Dovel::Node const& owner, void const* key) = nullptr;
  /// The entity of `key`, which is added if there is none.
  Dovel::Ptr<Entity> (*findOrCreate)(Dovel::Node& owner, void const* key) = nullptr;
};

namespace Impl {

void nullToJson(Dovel::Node const& owner, JsonOut& out);

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

/// Null where objects are not made from a name.
template <class C>
Type::Construct constructor() {
  if constexpr (std::is_abstract_v<C>) {
    return nullptr;
  } else if constexpr (std::is_constructible_v<C, std::string const&>) {
    return [](std::string const& name) -> Dovel::Ptr<Dovel::Node> { return Dovel::make<C>(name); };
  } else if constexpr (std::is_default_constructible_v<C>) {
    return [](std::string const&) -> Dovel::Ptr<Dovel::Node> { return Dovel::make<C>(); };
  } else {
    return nullptr;
  }
}

template <class T>
constexpr ValueCodec const& (*codecFunction())() {
  if constexpr (isPtr<T>) {
    return nullptr;
  } else {
    return &codecOf<T>;
  }
}

template <class T>
constexpr bool isEntity() {
  if constexpr (isPtr<T>) {
    return std::is_base_of_v<Entity, std::remove_const_t<typename PtrTarget<T>::type>>;
  } else {
    return false;
  }
}

/// A value as `AttributeAccess` passes it.
template <class T>
void const* addressOf(T const& value) {
  if constexpr (isEntity<T>()) {
    return static_cast<Entity const*>(value.get());
  } else if constexpr (isPtr<T>) {
    return value.get();
  } else {
    return &value;
  }
}

/// Whether an attribute of type `T` can be written from a document.
template <class T>
constexpr bool readable() {
  if constexpr (isPtr<T>) {
    using Target = typename PtrTarget<T>::type;
    return std::is_base_of_v<Entity, Target> && !std::is_const_v<Target> && std::is_default_constructible_v<Target>;
  } else {
    return true;
  }
}

template <class T>
constexpr AttributeKind kindOf = isPtr<T> ? AttributeKind::pointer : AttributeKind::value;

template <class C, class T, auto Read>
struct FixedAccess {
  static void const* get(Dovel::Node const& owner) { return addressOf((static_cast<C const&>(owner).*Read)()); }

  static constexpr AttributeAccess access{.codec = codecFunction<T>(), .areEntities = isEntity<T>(), .get = &get};
};

template <class C, class T, auto Read, auto Write, auto Default>
struct ValueAccess : FixedAccess<C, T, Read> {
  static void set(Dovel::Node& owner, void const*, void const* value) {
    (static_cast<C&>(owner).*Write)(*static_cast<T const*>(value));
  }
  static void reset(Dovel::Node& owner) {
    T const initial = Default();
    set(owner, nullptr, &initial);
  }

  static constexpr AttributeAccess access{
      .codec = &codecOf<T>, .get = &FixedAccess<C, T, Read>::get, .set = &set, .reset = &reset};
};

template <class C, class T, auto Read, auto Write, auto Default>
struct EntityAccess : FixedAccess<C, T, Read> {
  using Class = typename PtrTarget<T>::type;

  static void set(Dovel::Node& owner, void const*, void const* value) {
    auto* const object = static_cast<Entity*>(const_cast<void*>(value));
    (static_cast<C&>(owner).*Write)(T(static_cast<Class*>(object)));
  }
  static void reset(Dovel::Node& owner) {
    T const initial = Default();
    set(owner, nullptr, addressOf(initial));
  }

  static constexpr AttributeAccess access{.areEntities = true,
                                          .get = &FixedAccess<C, T, Read>::get,
                                          .set = &set,
                                          .reset = &reset,
                                          .type = &Class::kilnType};
};

template <class C, class K, class V, auto Coll, auto Is, auto Del>
struct CollectionAccess {
  static void forEach(Dovel::Node const& owner, FunctionRef<void(void const*, void const*)> visit) {
    for (auto const& element : (static_cast<C const&>(owner).*Coll)()) visit(&element.first, addressOf(element.second));
  }
  static void set(Dovel::Node& owner, void const* key, void const* value) {
    (static_cast<C&>(owner).*Is)(*static_cast<K const*>(key), *static_cast<V const*>(value));
  }
  static void del(Dovel::Node& owner, void const* key) { (static_cast<C&>(owner).*Del)(*static_cast<K const*>(key)); }
  static constexpr AttributeAccess make() {
    AttributeAccess made{.codec = codecFunction<V>(), .keyCodec = &codecOf<K>, .areEntities = isEntity<V>()};
    made.forEach = &forEach;
    if constexpr (!isPtr<V>) {
      made.set = &set;
      made.del = &del;
    }
    return made;
  }

  static constexpr AttributeAccess access = make();
};

template <class C, class K, class V, auto Coll, auto Is, auto Del>
struct EntityCollectionAccess {
  static void forEach(Dovel::Node const& owner, FunctionRef<void(void const*, void const*)> visit) {
    auto const& map = (static_cast<C const&>(owner).*Coll)();
    for (auto at = map.begin(); at != map.end(); ++at) {
      auto const& key = map.keyAt(at);
      visit(&key, addressOf(*at));
    }
  }
  static void del(Dovel::Node& owner, void const* key) { (static_cast<C&>(owner).*Del)(*static_cast<K const*>(key)); }
  static Dovel::Ptr<Entity> presentOrNew(Dovel::Node const& owner, void const* at) {
    auto const& key = *static_cast<K const*>(at);
    auto const present = (static_cast<C const&>(owner).*Coll)().at(key);
    return present ? present : Dovel::make<V>(key);
  }
  static Dovel::Ptr<Entity> findOrCreate(Dovel::Node& owner, void const* key) {
    return (static_cast<C&>(owner).*Is)(*static_cast<K const*>(key));
  }

  static constexpr AttributeAccess access{.keyCodec = &codecOf<K>,
                                          .areEntities = true,
                                          .forEach = &forEach,
                                          .del = &del,
                                          .presentOrNew = &presentOrNew,
                                          .findOrCreate = &findOrCreate};
};

inline constexpr AttributeAccess reservedAccess{.toJson = &nullToJson};

}  // namespace Impl

/// What a `Describer` collects.
class Description {
 public:
  Type::Members take() { return std::move(members_); }

 protected:
  // Out of line: each is called once for every attribute of every class.
  void add(Attribute const& attribute);
  void add(Method const& method);

 private:
  Type::Members members_;
};

/// Collects the attributes and methods of class `C`: its members are what the macros of Attribute.h call.
template <class C>
class Describer : private Description {
 public:
  /// All that the class's macros say, in order of declaration.
  static Type::Members describe() {
    Describer describer;
    C::kilnDescribe(describer, Line<500>{});
    return describer.take();
  }

  template <class T, auto Read, void (C::*Write)(T const&), auto Default>
  void attribute(AttributeId id, std::string_view name) {
    if constexpr (!Impl::isPtr<T>) {
      addValue<T>(id, name, true, Impl::ValueAccess<C, T, Read, Write, Default>::access);
    } else if constexpr (Impl::readable<T>()) {
      addValue<T>(id, name, true, Impl::EntityAccess<C, T, Read, Write, Default>::access);
    } else {
      fixed<T, Read>(id, name);
    }
  }
  template <class T, auto Read>
  void fixed(AttributeId id, std::string_view name) {
    addValue<T>(id, name, false, Impl::FixedAccess<C, T, Read>::access);
  }
  template <class K, class V, auto Coll, void (C::*Is)(K const&, V const&), V (C::*Del)(K const&)>
  void collection(AttributeId id, std::string_view name) {
    add({id, name, &Impl::typeNameOf<V>, &Impl::typeNameOf<K>, AttributeKind::collection, !Impl::isPtr<V>,
         &Impl::CollectionAccess<C, K, V, Coll, Is, Del>::access});
  }
  template <class K, class V, class Map, auto Coll, Dovel::Ptr<V> (C::*Is)(K const&), Dovel::Ptr<V> (C::*Del)(K const&)>
  void entityCollection(AttributeId id, std::string_view name) {
    add({id, name, &Impl::typeNameOf<Dovel::Ptr<V>>, &Impl::typeNameOf<K>, AttributeKind::entityCollection, true,
         &Impl::EntityCollectionAccess<C, K, V, Coll, Is, Del>::access});
  }
  template <void (C::*Run)()>
  void method(std::string_view name) {
    add(Method{name, [](Dovel::Node& object) { (static_cast<C&>(object).*Run)(); }});
  }
  template <class...>
  void reserved(AttributeId id, std::string_view name, std::string_view (*typeName)()) {
    add({id, name, typeName, nullptr, AttributeKind::pointer, false, &Impl::reservedAccess});
  }
  /// An attribute that the class describes itself.
  template <class...>
  void own(Attribute const& attribute) {
    add(attribute);
  }

 private:
  template <class T>
  void addValue(AttributeId id, std::string_view name, bool writable, AttributeAccess const& access) {
    add({id, name, &Impl::typeNameOf<T>, nullptr, Impl::kindOf<T>, writable, &access});
  }
};

namespace Impl {

template <class C>
Type const* baseOf() {
  if constexpr (std::is_void_v<typename C::KilnBase>) {
    return nullptr;
  } else {
    return &C::KilnBase::kilnType();
  }
}

}  // namespace Impl

}  // namespace Kiln

/// Defines the description of a class whose header declares it, and registers it at load time. In the namespace of the
/// class or one around it.
#define KILN_DESCRIBE(Class_)                                                                                         \
  ::Kiln::Type const& Class_::kilnType() {                                                                            \
    static ::Kiln::Type const type(kilnName, ::Kiln::Impl::baseOf<KilnSelf>(), ::Kiln::Impl::constructor<KilnSelf>(), \
                                   ::Kiln::Describer<KilnSelf>::describe());                                          \
    return type;                                                                                                      \
  }                                                                                                                   \
  ::Kiln::Type const& Class_::typeData() const { return kilnType(); }                                                 \
  ::Kiln::Type const& Class_::kilnRegistered_ = kilnType();
