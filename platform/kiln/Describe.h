#pragma once

#include <boost/describe/class.hpp>
#include <boost/describe/enum.hpp>
#include <boost/describe/members.hpp>
#include <boost/mp11/algorithm.hpp>
#include <compare>

#include "platform/kiln/Hash.h"
#include "platform/kiln/Text.h"

/// A member `name_` of a value with its accessor pair `name()` and `nameIs(v)`. A default follows the macro:
/// `KILN_FIELD(std::uint32_t, encapValue) = 0xFFFFFF;`
#define KILN_FIELD(Type, name)                          \
  Type const& name() const { return name##_; }          \
  void name##Is(Type const& value) { name##_ = value; } \
  Type name##_

/// What follows from the description of a struct's members, in the order in which they are described.
///
/// A member's public name is its own without a trailing underscore.
namespace Kiln::described {

template <class T>
using Fields = boost::describe::describe_members<T, boost::describe::mod_any_access | boost::describe::mod_inherited>;

template <class T>
concept Struct = std::is_class_v<T> && boost::describe::has_describe_members<T>::value;

template <Struct T>
bool equal(T const& a, T const& b) {
  bool same = true;
  boost::mp11::mp_for_each<Fields<T>>([&](auto field) { same = same && a.*field.pointer == b.*field.pointer; });
  return same;
}

template <Struct T>
std::strong_ordering compare(T const& a, T const& b) {
  auto order = std::strong_ordering::equal;
  boost::mp11::mp_for_each<Fields<T>>([&](auto field) {
    if (order == 0) order = a.*field.pointer <=> b.*field.pointer;
  });
  return order;
}

template <Struct T>
std::size_t hash(T const& value) {
  std::uint64_t seed = 0;
  boost::mp11::mp_for_each<Fields<T>>([&](auto field) {
    using Field = std::remove_cvref_t<decltype(value.*field.pointer)>;
    seed = mix(seed, Hash<Field>{}(value.*field.pointer));
  });
  return seed;
}

/// Calls `visit(name, member)` for each member.
template <Struct T, class Visit>
void forEachField(T& value, Visit visit) {
  boost::mp11::mp_for_each<Fields<T>>(
      [&](auto field) { visit(TextImpl::withoutTrailingUnderscore(field.name), value.*field.pointer); });
}

/// The same for a value that is only read.
template <Struct T, class Visit>
void forEachField(T const& value, Visit visit) {
  boost::mp11::mp_for_each<Fields<T>>(
      [&](auto field) { visit(TextImpl::withoutTrailingUnderscore(field.name), value.*field.pointer); });
}

/// "{name=value,name=value}".
template <Struct T>
void appendFields(std::string& out, T const& value) {
  char const* separator = "{";
  forEachField(value, [&](std::string_view name, auto const& member) {
    out += separator;
    out += name;
    out += '=';
    writeText(out, member);
    separator = ",";
  });
  out += '}';
}

/// "value, name:value, name:value": the first member is written without its name.
template <Struct T>
void appendLabelled(std::string& out, T const& value) {
  bool first = true;
  forEachField(value, [&](std::string_view name, auto const& member) {
    if (!first) out.append(", ").append(name).append(":");
    writeText(out, member);
    first = false;
  });
}

/// Reads what `appendLabelled` writes. False when any part does not read; `out` is then as it was.
template <Struct T>
bool parseLabelled(std::string_view text, T& out) {
  T value = out;
  bool good = true;
  constexpr std::size_t count = boost::mp11::mp_size<Fields<T>>::value;
  boost::mp11::mp_for_each<boost::mp11::mp_iota_c<count>>([&](auto index) {
    std::string_view part = text;
    if constexpr (index + 1 < count) {
      using Next = boost::mp11::mp_at_c<Fields<T>, index + 1>;
      auto const label = std::string(", ").append(TextImpl::withoutTrailingUnderscore(Next::name)).append(":");
      auto const sides = splitAt(text, label);
      good = good && sides;
      if (!good) return;
      part = sides->first;
      text = sides->second;
    }
    good = good && readText(part, value.*boost::mp11::mp_at_c<Fields<T>, index>::pointer);
  });
  if (good) out = std::move(value);
  return good;
}

}  // namespace Kiln::described

/// `==` and `<=>` of a described struct, at namespace scope after it.
#define KILN_VALUE_COMPARE(T)                                        \
  template <std::same_as<T> Value>                                   \
  bool operator==(Value const& a, Value const& b) {                  \
    return ::Kiln::described::equal(a, b);                           \
  }                                                                  \
  template <std::same_as<T> Value>                                   \
  std::strong_ordering operator<=>(Value const& a, Value const& b) { \
    return ::Kiln::described::compare(a, b);                         \
  }

/// `hash_value` of a described struct.
#define KILN_VALUE_HASH(T)                     \
  template <std::same_as<T> Value>             \
  std::size_t hash_value(Value const& value) { \
    return ::Kiln::described::hash(value);     \
  }

/// The text "{name=value,...}" and the stream operator. An `appendText` of the type itself takes precedence.
#define KILN_VALUE_TEXT(T)                                \
  template <std::same_as<T> Value>                        \
  void appendText(std::string& out, Value const& value) { \
    ::Kiln::described::appendFields(out, value);          \
  }                                                       \
  KILN_VALUE_STREAM(T)

/// All of them: comparison, hash, text.
#define KILN_VALUE_OPS(T) \
  KILN_VALUE_COMPARE(T)   \
  KILN_VALUE_HASH(T)      \
  KILN_VALUE_TEXT(T)
