#pragma once

#include <boost/describe/enum.hpp>
#include <boost/describe/enumerators.hpp>
#include <boost/mp11/algorithm.hpp>
#include <charconv>
#include <concepts>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

/// Text forms of values.
///
/// A type has a text form when `appendText(std::string&, T const&)` exists in its namespace, and one that can be parsed
/// when `bool parseText(std::string_view, T&)` exists there too. `parseText` accepts the whole text or returns false
/// and leaves the value unchanged. Numbers, strings, ranges and described enumerations have their forms here.
///
/// An enumerator's text is its name without a trailing underscore; a number that has no name is written in decimal.
namespace Kiln {

template <class E>
concept DescribedEnum = std::is_enum_v<E> && boost::describe::has_describe_enumerators<E>::value;

/// An enumeration that accepts numbers without a name declares `constexpr bool isOpenEnum(E) { return true; }` beside
/// it.
template <class E>
concept OpenEnum = DescribedEnum<E> && requires(E e) {
  isOpenEnum(e);
};

namespace TextImpl {
constexpr std::string_view withoutTrailingUnderscore(std::string_view name) {
  if (name.ends_with('_')) name.remove_suffix(1);
  return name;
}
}  // namespace TextImpl

/// The name of `value`, empty when it has none.
template <DescribedEnum E>
std::string_view enumName(E value) {
  std::string_view name;
  boost::mp11::mp_for_each<boost::describe::describe_enumerators<E>>([&](auto enumerator) {
    if (enumerator.value == value) name = TextImpl::withoutTrailingUnderscore(enumerator.name);
  });
  return name;
}

inline void appendText(std::string& out, std::string_view value) { out += value; }

template <class T>
requires std::is_arithmetic_v<T>
void appendText(std::string& out, T value) {
  if constexpr (std::same_as<T, bool>) {
    out += value ? "true" : "false";
  } else {
    char digits[32];
    auto const end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    out.append(digits, end);
  }
}

template <DescribedEnum E>
void appendText(std::string& out, E value) {
  if (auto const name = enumName(value); !name.empty()) {
    out += name;
  } else {
    appendText(out, static_cast<std::underlying_type_t<E>>(value));
  }
}

inline bool parseText(std::string_view text, std::string& out) {
  out = text;
  return true;
}

template <class T>
requires std::is_arithmetic_v<T>
bool parseText(std::string_view text, T& out) {
  if constexpr (std::same_as<T, bool>) {
    if (text != "true" && text != "false") return false;
    out = text == "true";
    return true;
  } else {
    T value{};
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) return false;
    out = value;
    return true;
  }
}

/// Accepts a name, or the number of one, or any number for an open enumeration.
template <DescribedEnum E>
bool parseText(std::string_view text, E& out) {
  bool found = false;
  boost::mp11::mp_for_each<boost::describe::describe_enumerators<E>>([&](auto enumerator) {
    std::string_view const name = enumerator.name;
    if (text != name && text != TextImpl::withoutTrailingUnderscore(name)) return;
    out = enumerator.value;
    found = true;
  });
  std::underlying_type_t<E> number{};
  if (found || !parseText(text, number)) return found;
  if (!OpenEnum<E> && enumName(static_cast<E>(number)).empty()) return false;
  out = static_cast<E>(number);
  return true;
}

template <class T>
concept HasText = requires(std::string& out, T const& value) {
  appendText(out, value);
};

template <class T>
concept HasParse = HasText<T> && requires(std::string_view text, T& out) {
  { parseText(text, out) } -> std::same_as<bool>;
};

/// Appends the text of `value`, a range without a form of its own as "[a, b]"; the function to call from other
/// namespaces.
template <class T>
void writeText(std::string& out, T const& value) {
  if constexpr (HasText<T>) {
    appendText(out, value);
  } else {
    out += '[';
    char const* separator = "";
    for (auto const& element : value) {
      out += separator;
      writeText(out, element);
      separator = ", ";
    }
    out += ']';
  }
}

/// Whether the whole of `text` is a `T`; `out` is written only then.
template <HasParse T>
bool readText(std::string_view text, T& out) {
  return parseText(text, out);
}

template <HasText T>
std::string toText(T const& value) {
  std::string out;
  appendText(out, value);
  return out;
}

/// The value of which `text` is the whole text form, or nothing.
template <HasParse T>
requires std::default_initializable<T> std::optional<T> fromText(std::string_view text) {
  T value{};
  if (!parseText(text, value)) return std::nullopt;
  return value;
}

/// The two sides of the first `separator` in `text`, or nothing when it is not there.
inline std::optional<std::pair<std::string_view, std::string_view>> splitAt(std::string_view text,
                                                                            std::string_view separator) {
  auto const at = text.find(separator);
  if (at == std::string_view::npos) return std::nullopt;
  return std::pair{text.substr(0, at), text.substr(at + separator.size())};
}

}  // namespace Kiln

/// Stream operator of a type with a text form, at namespace scope beside the type. Costs no stream header.
#define KILN_VALUE_STREAM(T)                                                                            \
  template <class Traits>                                                                               \
  std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& out, T const& value) { \
    return out << ::Kiln::toText(value);                                                                \
  }
