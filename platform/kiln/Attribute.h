#pragma once

#include <type_traits>
#include <utility>

#include "platform/dovel/Ptr.h"
#include "platform/kiln/Codec.h"
#include "platform/kiln/Collection.h"
#include "platform/kiln/Exceptions.h"
#include "platform/kiln/Type.h"

/// The vocabulary in which a class describes itself. Macros give the names, templates do the work; the order of
/// declaration is the order of registration.
///
///   KILN_TYPE(Ns::Class, Ns::Base)            first line of the class; Base is described itself
///   KILN_BASE_TYPE(Ns::Class)                 the same where no base is described
///   KILN_ATTR(id, Type, x, default...)        x(), xIs(v): stores and publishes a value that differs
///   KILN_FIXED(id, Type, x)                   x(): set by the constructor (member x_) and never again
///   KILN_READONLY(id, Type, x, default…)      x(): written by the class itself, through the private xSet(v)
///   KILN_INST(id, Class, x)                   x(), xIs(ctorArgs…) makes the object, xDel()
///   KILN_COLL(id, Key, Value, x)              x(k), xHas(k), xIs(k, v), xDel(k), xDelAll(), xColl()
///   KILN_SMALL_COLL(id, Key, Value, x)        the same for a handful of elements
///   KILN_ENTITY_COLL(id, Key, Class, key, x)  x(k), xHas(k), xIs(k) finds or makes, xIs(ptr), xDel(k), xDelAll(),
///                                             xColl(); `key` is the member of Class that reads its key
///   KILN_METHOD(x)                            void x() may be called by name
///   KILN_RESERVED(id, "Ns::Class", x)         keeps the id of an attribute whose class is not part of this build; null
///   KILN_WATCHED(…)                           in Sm.h: a pointer whose changes run a handler
///
/// Each defines `xId`, the id that a change of the attribute carries. After a macro the access is private. A mutator
/// releases what it replaces or removes after its notification, and may run handlers that release the last reference to
/// its object.

#define KILN_TYPE_COMMON(Class_, base_)                                              \
 public:                                                                             \
  using KilnSelf = Class_;                                                           \
  static ::Kiln::Type& kilnType() {                                                  \
    static ::Kiln::Type type(#Class_, base_, ::Kiln::Impl::constructor<KilnSelf>()); \
    return type;                                                                     \
  }                                                                                  \
  ::Kiln::Type const& typeData() const override { return kilnType(); }               \
                                                                                     \
 private:                                                                            \
  inline static ::Kiln::TypeLink const kilnTypeLink_{kilnType()};

#define KILN_TYPE(Class_, Base_) KILN_TYPE_COMMON(Class_, &Base_::kilnType())
#define KILN_BASE_TYPE(Class_) KILN_TYPE_COMMON(Class_, nullptr)

#define KILN_ATTR(id_, Type_, name_, ...)                                                                           \
 public:                                                                                                            \
  static constexpr ::Kiln::AttributeId name_##Id = id_;                                                             \
  Type_ const& name_() const { return name_##_; }                                                                   \
  void name_##Is(Type_ const& value) {                                                                              \
    if (name_##_ == value) return;                                                                                  \
    [[maybe_unused]] Type_ const former = std::exchange(name_##_, value);                                           \
    this->kilnChanged(id_);                                                                                         \
  }                                                                                                                 \
                                                                                                                    \
 private:                                                                                                           \
  Type_ name_##_{__VA_ARGS__};                                                                                      \
  static Type_ name_##Default_() { return Type_{__VA_ARGS__}; }                                                     \
  inline static ::Kiln::TypeLink const name_##Link_{                                                                \
      kilnType(),                                                                                                   \
      ::Kiln::Impl::attribute<KilnSelf, Type_, &KilnSelf::name_, &KilnSelf::name_##Is, &KilnSelf::name_##Default_>( \
          id_, #name_)};

#define KILN_FIXED(id_, Type_, name_)                   \
 public:                                                \
  static constexpr ::Kiln::AttributeId name_##Id = id_; \
  Type_ const& name_() const { return name_##_; }       \
                                                        \
 private:                                               \
  Type_ name_##_{};                                     \
  inline static ::Kiln::TypeLink const name_##Link_{    \
      kilnType(), ::Kiln::Impl::fixedAttribute<KilnSelf, Type_, &KilnSelf::name_>(id_, #name_)};

#define KILN_READONLY(id_, Type_, name_, ...)                             \
 public:                                                                  \
  static constexpr ::Kiln::AttributeId name_##Id = id_;                   \
  Type_ const& name_() const { return name_##_; }                         \
                                                                          \
 private:                                                                 \
  void name_##Set(Type_ const& value) {                                   \
    if (name_##_ == value) return;                                        \
    [[maybe_unused]] Type_ const former = std::exchange(name_##_, value); \
    this->kilnChanged(id_);                                               \
  }                                                                       \
  Type_ name_##_{__VA_ARGS__};                                            \
  inline static ::Kiln::TypeLink const name_##Link_{                      \
      kilnType(), ::Kiln::Impl::fixedAttribute<KilnSelf, Type_, &KilnSelf::name_>(id_, #name_)};

#define KILN_INST(id_, Class_, name_)                                      \
 public:                                                                   \
  static constexpr ::Kiln::AttributeId name_##Id = id_;                    \
  ::Dovel::Ptr<Class_> const& name_() const { return name_##_; }           \
  template <class... Args_>                                                \
  ::Dovel::Ptr<Class_> name_##Is(Args_&&... args) {                        \
    if (name_##_) ::Kiln::Impl::throwMutatorReinstantiating(#name_);       \
    auto const made = ::Dovel::make<Class_>(std::forward<Args_>(args)...); \
    name_##_ = made;                                                       \
    this->kilnChanged(id_);                                                \
    return made;                                                           \
  }                                                                        \
  void name_##Del() {                                                      \
    auto const former = std::exchange(name_##_, nullptr);                  \
    if (!former) return;                                                   \
    former->hasNotificationActiveIs(false);                                \
    this->kilnChanged(id_);                                                \
  }                                                                        \
                                                                           \
 private:                                                                  \
  ::Dovel::Ptr<Class_> name_##_;                                           \
  inline static ::Kiln::TypeLink const name_##Link_{                       \
      kilnType(), ::Kiln::Impl::fixedAttribute<KilnSelf, ::Dovel::Ptr<Class_>, &KilnSelf::name_>(id_, #name_)};

#define KILN_COLL_OF(Map_, id_, Key_, Value_, name_)                                                             \
 public:                                                                                                         \
  static constexpr ::Kiln::AttributeId name_##Id = id_;                                                          \
  using name_##Key = Key_;                                                                                       \
  using name_##Value = Value_;                                                                                   \
  Map_<Key_, Value_> const& name_##Coll() const { return name_##_; }                                             \
  Value_ const& name_(Key_ const& key) const { return ::Kiln::Impl::valueOrDefault(name_##_, key); }             \
  bool name_##Has(Key_ const& key) const { return name_##_.find(key) != name_##_.end(); }                        \
  void name_##Is(Key_ const& key, Value_ const& value) {                                                         \
    Key_ const changed = key;                                                                                    \
    Value_ former{};                                                                                             \
    if (::Kiln::Impl::assign(name_##_, changed, value, former)) this->kilnChanged(id_, &changed);                \
  }                                                                                                              \
  Value_ name_##Del(Key_ const& key) {                                                                           \
    auto const found = name_##_.find(key);                                                                       \
    if (found == name_##_.end()) return {};                                                                      \
    Value_ former = std::move(found->second);                                                                    \
    Key_ const gone = found->first;                                                                              \
    name_##_.erase(found);                                                                                       \
    this->kilnChanged(id_, &gone);                                                                               \
    return former;                                                                                               \
  }                                                                                                              \
  void name_##DelAll() {                                                                                         \
    ::Dovel::Ptr<KilnSelf const> const alive(this);                                                              \
    for (auto const& key : ::Kiln::keysOf(name_##_)) name_##Del(key);                                            \
  }                                                                                                              \
                                                                                                                 \
 private:                                                                                                        \
  Map_<Key_, Value_> name_##_;                                                                                   \
  inline static ::Kiln::TypeLink const name_##Link_{                                                             \
      kilnType(), ::Kiln::Impl::collection<KilnSelf, Key_, Value_, &KilnSelf::name_##Coll, &KilnSelf::name_##Is, \
                                           &KilnSelf::name_##Del>(id_, #name_)};

#define KILN_COLL(id_, Key_, Value_, name_) KILN_COLL_OF(::Kiln::HashMap, id_, Key_, Value_, name_)
#define KILN_SMALL_COLL(id_, Key_, Value_, name_) KILN_COLL_OF(::Kiln::SmallMap, id_, Key_, Value_, name_)

#define KILN_ENTITY_COLL(id_, Key_, Class_, key_, name_)                                                     \
 public:                                                                                                     \
  static constexpr ::Kiln::AttributeId name_##Id = id_;                                                      \
  using name_##Map = ::Kiln::EntityMap<Key_, Class_, &Class_::key_>;                                         \
  name_##Map const& name_##Coll() const { return name_##_; }                                                 \
  ::Dovel::Ptr<Class_> const& name_(Key_ const& key) const { return name_##_.at(key); }                      \
  bool name_##Has(Key_ const& key) const { return name_##_.at(key) != nullptr; }                             \
  ::Dovel::Ptr<Class_> name_##Is(Key_ const& key) {                                                          \
    if (auto const& found = name_##_.at(key)) return found;                                                  \
    auto const made = ::Dovel::make<Class_>(key);                                                            \
    name_##Is(made);                                                                                         \
    return made;                                                                                             \
  }                                                                                                          \
  void name_##Is(::Dovel::Ptr<Class_> const& object) {                                                       \
    if (!object) ::Kiln::throwMutatorArgNullPointerException(#name_);                                        \
    auto const former = name_##_.assign(object);                                                             \
    if (former == object) return;                                                                            \
    Key_ const key = (object.get()->*(&Class_::key_))();                                                     \
    this->kilnChanged(id_, &key);                                                                            \
  }                                                                                                          \
  ::Dovel::Ptr<Class_> name_##Del(Key_ const& key) {                                                         \
    ::Dovel::Ptr<Class_> former = name_##_.take(key);                                                        \
    if (!former) return former;                                                                              \
    Key_ const gone = key;                                                                                   \
    this->kilnChanged(id_, &gone);                                                                           \
    return former;                                                                                           \
  }                                                                                                          \
  void name_##DelAll() {                                                                                     \
    ::Dovel::Ptr<KilnSelf const> const alive(this);                                                          \
    for (auto const& key : ::Kiln::keysOf(name_##_)) name_##Del(key);                                        \
  }                                                                                                          \
                                                                                                             \
 private:                                                                                                    \
  name_##Map name_##_;                                                                                       \
  void name_##DelKey_(Key_ const& key) { name_##Del(key); }                                                  \
  ::Dovel::Ptr<Class_> name_##MakeKey_(Key_ const& key) { return name_##Is(key); }                           \
  inline static ::Kiln::TypeLink const name_##Link_{                                                         \
      kilnType(), ::Kiln::Impl::entityCollection<KilnSelf, Key_, Class_, name_##Map, &KilnSelf::name_##Coll, \
                                                 &KilnSelf::name_##DelKey_, &KilnSelf::name_##MakeKey_>(id_, #name_)};

#define KILN_METHOD(name_)                           \
  inline static ::Kiln::TypeLink const name_##Link_{ \
      kilnType(), ::Kiln::Impl::method<KilnSelf, void (KilnSelf::*)(), &KilnSelf::name_>(#name_)};

#define KILN_RESERVED(id_, typeName_, name_)         \
  inline static ::Kiln::TypeLink const name_##Link_{ \
      kilnType(), ::Kiln::Impl::reservedAttribute(id_, #name_, [] { return std::string_view(typeName_); })};

#include "platform/kiln/AttributeImpl.h"
