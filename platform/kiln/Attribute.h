#pragma once

#include <utility>

#include "platform/dovel/Ptr.h"
#include "platform/kiln/Collection.h"
#include "platform/kiln/Exceptions.h"
#include "platform/kiln/Type.h"

namespace Kiln {

/// The line of a macro in a described class, counted from the class's first macro. Each derives from the one before it:
/// a call of `kilnDescribe` with a line selects the last macro at or before that line.
template <int Number>
struct Line : Line<Number - 1> {
  static_assert(Number <= 500, "a described class is at most 500 lines long");
  static constexpr int number = Number;
};
template <>
struct Line<0> {
  static constexpr int number = 0;
};

}  // namespace Kiln

/// The vocabulary in which a class describes itself. Macros define the names, templates do the work; the order of
/// declaration is the order of registration.
///
///   KILN_TYPE(Ns::Class, Ns::Base)            first line of the class; Base is described itself
///   KILN_BASE_TYPE(Ns::Class)                 the same where no base is described
///   KILN_ATTR(id, Type, x, default...)        x(), xIs(v): stores and publishes a value that differs
///   KILN_FIXED(id, Type, x)                   x(): set by the constructor (member x_) and never again
///   KILN_READONLY(id, Type, x, default...)    x(): written by the class itself, through the private xSet(v)
///   KILN_INST(id, Class, x)                   x(), xIs(ctorArgs...) creates the object, xDel()
///   KILN_COLL(id, Key, Value, x)              x(k), xHas(k), xIs(k, v), xDel(k), xDelAll(), xColl()
///   KILN_SMALL_COLL(id, Key, Value, x)        the same for a handful of elements
///   KILN_ID_COLL(id, Key, Value, x)           the same for keys that are numbers, assigned one after the other
///   KILN_ENTITY_COLL(id, Key, Class, key, x)  x(k), xHas(k), xIs(k) finds or creates, xIs(ptr), xDel(k), xDelAll(),
///                                             xColl(); `key` is the member of Class that reads its key
///   KILN_METHOD(x)                            void x() may be called by name
///   KILN_RESERVED(id, "Ns::Class", x)         keeps the id of an attribute whose class is not part of this build; null
///   KILN_WATCHED(...)                         in Sm.h: a pointer whose changes run a handler
///
/// Each defines `xId`, the id that a change of the attribute carries. After a macro the access is private. A mutator
/// releases what it replaces or removes after its notification, and may run handlers that release the last reference to
/// its object.
///
/// The macros only declare. `KILN_DESCRIBE(Ns::Class)` of AttributeDefinitions.h, one line in the folder's
/// Descriptions.cpp, defines the description and registers the class when the library is loaded. Without that line the
/// program does not link.

#define KILN_TYPE(Class_, Base_)                                  \
 public:                                                          \
  using KilnSelf = Class_;                                        \
  using KilnBase = Base_;                                         \
  static constexpr char const* kilnName = #Class_;                \
  [[maybe_unused]] static constexpr int kilnFirstLine = __LINE__; \
  static ::Kiln::Type const& kilnType();                          \
  ::Kiln::Type const& typeData() const override;                  \
  template <class Describer_>                                     \
  static void kilnDescribe(Describer_&, ::Kiln::Line<0>) {}       \
                                                                  \
 private:                                                         \
  static ::Kiln::Type const& kilnRegistered_;

#define KILN_BASE_TYPE(Class_) KILN_TYPE(Class_, void)

/// What a line of a class adds to its description, behind what the lines before it add: a call of a member of
/// `Kiln::Describer`. A template, so that only `KILN_DESCRIBE` compiles it.
#define KILN_LINE(...)                                                                          \
 public:                                                                                        \
  template <class Describer_>                                                                   \
  static void kilnDescribe(Describer_& kilnDescriber, ::Kiln::Line<__LINE__ - kilnFirstLine>) { \
    kilnDescribe(kilnDescriber, ::Kiln::Line<__LINE__ - kilnFirstLine - 1>{});                  \
    kilnDescriber.template __VA_ARGS__;                                                         \
  }                                                                                             \
                                                                                                \
 private:

/// Before a member that is compiled in those sources alone that call it. Without it each source would compile the
/// operations of all attributes in the headers that it includes.
#define KILN_ON_USE template <class = void>

#define KILN_ATTR(id_, Type_, name_, ...)                                 \
 public:                                                                  \
  [[maybe_unused]] static constexpr ::Kiln::AttributeId name_##Id = id_;  \
  Type_ const& name_() const { return name_##_; }                         \
  KILN_ON_USE                                                             \
  void name_##Is(Type_ const& value) {                                    \
    if (name_##_ == value) return;                                        \
    [[maybe_unused]] Type_ const former = std::exchange(name_##_, value); \
    this->kilnChanged(id_);                                               \
  }                                                                       \
                                                                          \
 private:                                                                 \
  Type_ name_##_{__VA_ARGS__};                                            \
  static Type_ name_##Default_() { return Type_{__VA_ARGS__}; }           \
  KILN_LINE(attribute<Type_, &KilnSelf::name_, &KilnSelf::name_##Is, &KilnSelf::name_##Default_>(id_, #name_))

#define KILN_FIXED(id_, Type_, name_)                                    \
 public:                                                                 \
  [[maybe_unused]] static constexpr ::Kiln::AttributeId name_##Id = id_; \
  Type_ const& name_() const { return name_##_; }                        \
                                                                         \
 private:                                                                \
  Type_ name_##_{};                                                      \
  KILN_LINE(fixed<Type_, &KilnSelf::name_>(id_, #name_))

#define KILN_READONLY(id_, Type_, name_, ...)                             \
 public:                                                                  \
  [[maybe_unused]] static constexpr ::Kiln::AttributeId name_##Id = id_;  \
  Type_ const& name_() const { return name_##_; }                         \
                                                                          \
 private:                                                                 \
  KILN_ON_USE                                                             \
  void name_##Set(Type_ const& value) {                                   \
    if (name_##_ == value) return;                                        \
    [[maybe_unused]] Type_ const former = std::exchange(name_##_, value); \
    this->kilnChanged(id_);                                               \
  }                                                                       \
  Type_ name_##_{__VA_ARGS__};                                            \
  KILN_LINE(fixed<Type_, &KilnSelf::name_>(id_, #name_))

#define KILN_INST(id_, Class_, name_)                                      \
 public:                                                                   \
  [[maybe_unused]] static constexpr ::Kiln::AttributeId name_##Id = id_;   \
  ::Dovel::Ptr<Class_> const& name_() const { return name_##_; }           \
  template <class... Args_>                                                \
  ::Dovel::Ptr<Class_> name_##Is(Args_&&... args) {                        \
    if (name_##_) ::Kiln::Impl::throwMutatorReinstantiating(#name_);       \
    auto const made = ::Dovel::make<Class_>(std::forward<Args_>(args)...); \
    name_##_ = made;                                                       \
    this->kilnChanged(id_);                                                \
    return made;                                                           \
  }                                                                        \
  KILN_ON_USE                                                              \
  void name_##Del() {                                                      \
    auto const former = std::exchange(name_##_, nullptr);                  \
    if (!former) return;                                                   \
    former->hasNotificationActiveIs(false);                                \
    this->kilnChanged(id_);                                                \
  }                                                                        \
                                                                           \
 private:                                                                  \
  ::Dovel::Ptr<Class_> name_##_;                                           \
  KILN_LINE(fixed<::Dovel::Ptr<Class_>, &KilnSelf::name_>(id_, #name_))

#define KILN_COLL_OF(Map_, id_, Key_, Value_, name_)                                                 \
 public:                                                                                             \
  [[maybe_unused]] static constexpr ::Kiln::AttributeId name_##Id = id_;                             \
  using name_##Key = Key_;                                                                           \
  using name_##Value = Value_;                                                                       \
  Map_<Key_, Value_> const& name_##Coll() const { return name_##_; }                                 \
  KILN_ON_USE                                                                                        \
  Value_ const& name_(Key_ const& key) const { return ::Kiln::Impl::valueOrDefault(name_##_, key); } \
  KILN_ON_USE                                                                                        \
  bool name_##Has(Key_ const& key) const { return name_##_.find(key) != name_##_.end(); }            \
  KILN_ON_USE                                                                                        \
  void name_##Is(Key_ const& key, Value_ const& value) {                                             \
    Key_ const changed = key;                                                                        \
    Value_ former{};                                                                                 \
    if (::Kiln::Impl::assign(name_##_, changed, value, former)) this->kilnChanged(id_, &changed);    \
  }                                                                                                  \
  KILN_ON_USE                                                                                        \
  Value_ name_##Del(Key_ const& key) {                                                               \
    auto const found = name_##_.find(key);                                                           \
    if (found == name_##_.end()) return {};                                                          \
    Value_ former = std::move(found->second);                                                        \
    Key_ const gone = found->first;                                                                  \
    name_##_.erase(found);                                                                           \
    this->kilnChanged(id_, &gone);                                                                   \
    return former;                                                                                   \
  }                                                                                                  \
  KILN_ON_USE                                                                                        \
  void name_##DelAll() {                                                                             \
    ::Dovel::Ptr<KilnSelf const> const alive(this);                                                  \
    for (auto const& key : ::Kiln::keysOf(name_##_)) name_##Del(key);                                \
  }                                                                                                  \
                                                                                                     \
 private:                                                                                            \
  Map_<Key_, Value_> name_##_;                                                                       \
  KILN_LINE(collection<Key_, Value_, &KilnSelf::name_##Coll, &KilnSelf::name_##Is, &KilnSelf::name_##Del>(id_, #name_))

#define KILN_COLL(id_, Key_, Value_, name_) KILN_COLL_OF(::Kiln::HashMap, id_, Key_, Value_, name_)
#define KILN_ID_COLL(id_, Key_, Value_, name_) KILN_COLL_OF(::Kiln::IdMap, id_, Key_, Value_, name_)
#define KILN_SMALL_COLL(id_, Key_, Value_, name_) KILN_COLL_OF(::Kiln::SmallMap, id_, Key_, Value_, name_)

#define KILN_ENTITY_COLL(id_, Key_, Class_, key_, name_)                                                               \
 public:                                                                                                               \
  [[maybe_unused]] static constexpr ::Kiln::AttributeId name_##Id = id_;                                               \
  using name_##Map = ::Kiln::EntityMap<Key_, Class_, &Class_::key_>;                                                   \
  name_##Map const& name_##Coll() const { return name_##_; }                                                           \
  KILN_ON_USE                                                                                                          \
  ::Dovel::Ptr<Class_> const& name_(Key_ const& key) const { return name_##_.at(key); }                                \
  KILN_ON_USE                                                                                                          \
  bool name_##Has(Key_ const& key) const { return name_##_.at(key) != nullptr; }                                       \
  KILN_ON_USE                                                                                                          \
  ::Dovel::Ptr<Class_> name_##Is(Key_ const& key) {                                                                    \
    auto const [found, isNew] = name_##_.findOrMake(key, [&] { return ::Dovel::make<Class_>(key); });                  \
    ::Dovel::Ptr<Class_> const object = found;                                                                         \
    if (isNew) {                                                                                                       \
      Key_ const added = key;                                                                                          \
      this->kilnChanged(id_, &added);                                                                                  \
    }                                                                                                                  \
    return object;                                                                                                     \
  }                                                                                                                    \
  KILN_ON_USE                                                                                                          \
  void name_##Is(::Dovel::Ptr<Class_> const& object) {                                                                 \
    if (!object) ::Kiln::throwMutatorArgNullPointerException(#name_);                                                  \
    auto const former = name_##_.assign(object);                                                                       \
    if (former == object) return;                                                                                      \
    Key_ const key = (object.get()->*(&Class_::key_))();                                                               \
    this->kilnChanged(id_, &key);                                                                                      \
  }                                                                                                                    \
  KILN_ON_USE                                                                                                          \
  ::Dovel::Ptr<Class_> name_##Del(Key_ const& key) {                                                                   \
    ::Dovel::Ptr<Class_> former = name_##_.take(key);                                                                  \
    if (!former) return former;                                                                                        \
    Key_ const gone = key;                                                                                             \
    this->kilnChanged(id_, &gone);                                                                                     \
    return former;                                                                                                     \
  }                                                                                                                    \
  KILN_ON_USE                                                                                                          \
  void name_##DelAll() {                                                                                               \
    ::Dovel::Ptr<KilnSelf const> const alive(this);                                                                    \
    for (auto const& key : ::Kiln::keysOf(name_##_)) name_##Del(key);                                                  \
  }                                                                                                                    \
                                                                                                                       \
 private:                                                                                                              \
  name_##Map name_##_;                                                                                                 \
  KILN_LINE(                                                                                                           \
      entityCollection<Key_, Class_, name_##Map, &KilnSelf::name_##Coll, &KilnSelf::name_##Is, &KilnSelf::name_##Del>( \
          id_, #name_))

#define KILN_METHOD(name_) KILN_LINE(method<&KilnSelf::name_>(#name_))

#define KILN_RESERVED(id_, typeName_, name_) \
  KILN_LINE(reserved<>(id_, #name_, [] { return std::string_view(typeName_); }))
