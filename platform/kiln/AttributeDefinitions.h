#pragma once

// Builds the descriptions of classes. For the one source file of a folder that includes the folder's headers with
// described classes (Descriptions.cpp), and for a source file that describes a class of its own: what is built there
// serves the whole program, and other files only refer to it.

#include "platform/kiln/Attribute.h"

namespace Kiln::Impl {

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
void valueCheck(JsonIn const& in) {
  if constexpr (isPtr<T>) {
    if (!isNull(in)) entityCheck(PtrTarget<T>::type::kilnType(), in);
  } else {
    T value{};
    codecOf<T>().fromJson(&value, in);
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
    a.check = &valueCheck<T>;
    a.reset = [](Dovel::Node& owner) { (static_cast<C&>(owner).*Write)(Default()); };
    a.fromJson = [](Dovel::Node& owner, JsonIn const& in) {
      auto& self = static_cast<C&>(owner);
      if constexpr (isPtr<T>) {
        if (isNull(in)) return (self.*Write)(nullptr);
        if (!(self.*Read)()) (self.*Write)(Dovel::make<typename PtrTarget<T>::type>());
        entityFromJson(*(self.*Read)(), in);
      } else {
        (self.*Write)(valueIn<T>(in));
      }
    };
  }
  return a;
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
    if (!keys.insert(keyIn<K>(text, member)).second) failKeyAgain(member);
    check(member);
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
    a.check = [](JsonIn const& in) { keysCheck<K>(in, [](JsonIn const& member) { valueCheck<V>(member); }); };
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
          [](JsonIn const& in) { keysCheck<K>(in, [](JsonIn const& member) { entityCheck(V::kilnType(), member); }); },
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
