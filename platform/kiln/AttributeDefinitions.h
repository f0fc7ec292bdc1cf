#pragma once

// Defines the descriptions of classes. For a folder's Descriptions.cpp, which has a line `KILN_DESCRIBE(Ns::Class)` for
// each described class of the folder, and for a source file with a described class of its own.

#include <boost/unordered/unordered_flat_set.hpp>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/kiln/Attribute.h"
#include "platform/kiln/Codec.h"
#include "platform/kiln/Entity.h"
#include "platform/kiln/FunctionRef.h"

namespace Kiln::Impl {

/// The members of a JSON object, in its order; `fn` gets the key's text.
void eachMember(JsonIn const& in, FunctionRef<void(std::string_view, JsonIn const&)> fn);
bool isNull(JsonIn const& in);
[[noreturn]] void failKey(JsonIn const& in, std::string_view keyType);
void nullOut(JsonOut& out);
void textOut(JsonOut& out, std::string_view text);
/// An object whose members are in the order of their keys' text.
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
void valueOut(T const& value, JsonOut& out) {
  if constexpr (isPtr<T>) {
    using Target = std::remove_const_t<typename PtrTarget<T>::type>;
    if (!value) return nullOut(out);
    if constexpr (std::is_base_of_v<Entity, Target>) {
      entityToJson(*value, out);
    } else {
      textOut(out, typeNameOf<T>());
    }
  } else {
    codecOf<T>().toJson(&value, out);
  }
}

template <class T>
T valueIn(JsonIn const& in) {
  T value{};
  codecOf<T>().fromJson(&value, in);
  return value;
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

template <class C, class T, auto Read, auto Write, auto Default>
Attribute attribute(AttributeId id, std::string_view name) {
  Attribute a{id,
              name,
              &typeNameOf<T>,
              nullptr,
              isPtr<T> ? AttributeKind::pointer : AttributeKind::value,
              readable<T>(),
              [](Dovel::Node const& owner, JsonOut& out) { valueOut((static_cast<C const&>(owner).*Read)(), out); },
              nullptr,
              nullptr,
              nullptr};
  if constexpr (readable<T>()) {
    a.check = [](Dovel::Node const& owner, JsonIn const& in) {
      if constexpr (isPtr<T>) {
        if (isNull(in)) return;
        T const present = (static_cast<C const&>(owner).*Read)();
        entityCheck(present ? *present : *Dovel::make<typename PtrTarget<T>::type>(), in);
      } else {
        valueIn<T>(in);
      }
    };
    a.reset = [](Dovel::Node& owner) { (static_cast<C&>(owner).*Write)(Default()); };
    a.fromJson = [](Dovel::Node& owner, JsonIn const& in) {
      auto& self = static_cast<C&>(owner);
      if constexpr (isPtr<T>) {
        if (isNull(in)) return (self.*Write)(nullptr);
        if (!(self.*Read)()) (self.*Write)(Dovel::make<typename PtrTarget<T>::type>());
        T const present = (self.*Read)();
        entityFromJson(*present, in);
      } else {
        (self.*Write)(valueIn<T>(in));
      }
    };
  }
  return a;
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

template <class C, class T, auto Read>
Attribute fixedAttribute(AttributeId id, std::string_view name) {
  return {id,
          name,
          &typeNameOf<T>,
          nullptr,
          isPtr<T> ? AttributeKind::pointer : AttributeKind::value,
          false,
          [](Dovel::Node const& owner, JsonOut& out) { valueOut((static_cast<C const&>(owner).*Read)(), out); },
          nullptr,
          nullptr,
          nullptr};
}

template <class K>
K keyIn(std::string_view text, JsonIn const& in) {
  K key{};
  if (!codecOf<K>().fromText || !codecOf<K>().fromText(text, &key)) failKey(in, codecOf<K>().typeName);
  return key;
}
template <class K>
std::string keyOut(K const& key) {
  std::string text;
  codecOf<K>().toText(&key, text);
  return text;
}

/// Deletes the elements of `coll` that `in` doesn't name.
template <class K, class Coll, class Del>
void dropOthers(Coll const& coll, JsonIn const& in, Del&& del) {
  std::vector<K> wanted;
  eachMember(in, [&](std::string_view text, JsonIn const& member) { wanted.push_back(keyIn<K>(text, member)); });
  boost::unordered_flat_set<K, Hash<K>> const stay(wanted.begin(), wanted.end());
  for (auto const& key : keysOf(coll)) {
    if (!stay.contains(key)) del(key);
  }
}

[[noreturn]] void failKeyAgain(JsonIn const& in);

/// Calls `check` for each member of `in`. Refuses a key that is no `K`, and one that is there a second time in another
/// text.
template <class K, class Check>
void keysCheck(JsonIn const& in, Check check) {
  boost::unordered_flat_set<K, Hash<K>> keys;
  eachMember(in, [&](std::string_view text, JsonIn const& member) {
    auto const key = keyIn<K>(text, member);
    if (!keys.insert(key).second) failKeyAgain(member);
    check(key, member);
  });
}

template <class C, class K, class V, auto Coll, auto Is, auto Del>
Attribute collection(AttributeId id, std::string_view name) {
  Attribute a{id,
              name,
              &typeNameOf<V>,
              &typeNameOf<K>,
              AttributeKind::collection,
              !isPtr<V>,
              [](Dovel::Node const& owner, JsonOut& out) {
                std::vector<std::pair<std::string, void const*>> members;
                for (auto const& element : (static_cast<C const&>(owner).*Coll)()) {
                  members.emplace_back(keyOut(element.first), &element.second);
                }
                sortedOut(out, std::move(members),
                          [](void const* value, JsonOut& to) { valueOut(*static_cast<V const*>(value), to); });
              },
              nullptr,
              nullptr,
              nullptr};
  if constexpr (!isPtr<V>) {
    a.check = [](Dovel::Node const&, JsonIn const& in) {
      keysCheck<K>(in, [](K const&, JsonIn const& member) { valueIn<V>(member); });
    };
    a.fromJson = [](Dovel::Node& owner, JsonIn const& in) {
      auto& self = static_cast<C&>(owner);
      dropOthers<K>((self.*Coll)(), in, [&](K const& key) { (self.*Del)(key); });
      eachMember(in, [&](std::string_view text, JsonIn const& member) {
        (self.*Is)(keyIn<K>(text, member), valueIn<V>(member));
      });
    };
    a.reset = [](Dovel::Node& owner) {
      auto& self = static_cast<C&>(owner);
      for (auto const& key : keysOf((self.*Coll)())) (self.*Del)(key);
    };
  }
  return a;
}

template <class C, class K, class V, class Map, auto Coll, auto Del, auto Make>
Attribute entityCollection(AttributeId id, std::string_view name) {
  return {id,
          name,
          &typeNameOf<Dovel::Ptr<V>>,
          &typeNameOf<K>,
          AttributeKind::entityCollection,
          true,
          [](Dovel::Node const& owner, JsonOut& out) {
            auto const& map = (static_cast<C const&>(owner).*Coll)();
            std::vector<std::pair<std::string, void const*>> members;
            for (auto at = map.begin(); at != map.end(); ++at) members.emplace_back(keyOut(map.keyAt(at)), at->get());
            sortedOut(out, std::move(members),
                      [](void const* value, JsonOut& to) { entityToJson(*static_cast<V const*>(value), to); });
          },
          [](Dovel::Node const& owner, JsonIn const& in) {
            auto const& map = (static_cast<C const&>(owner).*Coll)();
            keysCheck<K>(in, [&](K const& key, JsonIn const& member) {
              auto const present = map.at(key);
              entityCheck(present ? *present : *Dovel::make<V>(key), member);
            });
          },
          [](Dovel::Node& owner, JsonIn const& in) {
            auto& self = static_cast<C&>(owner);
            dropOthers<K>((self.*Coll)(), in, [&](K const& key) { (self.*Del)(key); });
            eachMember(in, [&](std::string_view text, JsonIn const& member) {
              entityFromJson(*(self.*Make)(keyIn<K>(text, member)), member);
            });
          },
          [](Dovel::Node& owner) {
            auto& self = static_cast<C&>(owner);
            for (auto const& key : keysOf((self.*Coll)())) (self.*Del)(key);
          }};
}

}  // namespace Kiln::Impl

namespace Kiln {

/// Collects the attributes and methods of class `C`: its members are what the macros of Attribute.h call.
template <class C>
class Describer {
 public:
  /// All that the class's macros say, in order of declaration.
  static Type::Members describe() {
    Describer describer;
    describer.upTo<500>();
    return std::move(describer.members_);
  }

  template <class T, auto Read, void (C::*Write)(T const&), auto Default>
  void attribute(AttributeId id, std::string_view name) {
    add(Impl::attribute<C, T, Read, Write, Default>(id, name));
  }
  template <class T, auto Read>
  void fixed(AttributeId id, std::string_view name) {
    add(Impl::fixedAttribute<C, T, Read>(id, name));
  }
  template <class K, class V, auto Coll, void (C::*Is)(K const&, V const&), V (C::*Del)(K const&)>
  void collection(AttributeId id, std::string_view name) {
    add(Impl::collection<C, K, V, Coll, Is, Del>(id, name));
  }
  template <class K, class V, class Map, auto Coll, Dovel::Ptr<V> (C::*Is)(K const&), Dovel::Ptr<V> (C::*Del)(K const&)>
  void entityCollection(AttributeId id, std::string_view name) {
    add(Impl::entityCollection<C, K, V, Map, Coll, Del, Is>(id, name));
  }
  template <void (C::*Run)()>
  void method(std::string_view name) {
    members_.methods.push_back({name, [](Dovel::Node& object) { (static_cast<C&>(object).*Run)(); }});
  }
  template <class...>
  void reserved(AttributeId id, std::string_view name, std::string_view (*typeName)()) {
    add(Impl::reservedAttribute(id, name, typeName));
  }
  template <class...>
  void add(Attribute const& attribute) {
    members_.attributes.push_back(attribute);
  }

 private:
  /// The macros at or before a line: finds the last of them, takes those before it, then itself.
  template <int Number>
  void upTo() {
    using Last = decltype(C::kilnDescribe(*this, Line<Number>{}));
    if constexpr (Last::number > 0) {
      upTo<Last::number - 1>();
      C::kilnDescribe(*this, Last{});
    }
  }

  Type::Members members_;
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
