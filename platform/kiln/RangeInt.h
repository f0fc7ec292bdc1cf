#pragma once

#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/kiln/Exceptions.h"
#include "platform/kiln/Hash.h"
#include "platform/kiln/Text.h"

namespace Kiln {

/// A text as a template argument.
template <std::size_t Size>
struct FixedString {
  char text[Size];

  // Implicit: a literal is the argument.
  constexpr FixedString(char const (&literal)[Size]) {
    for (std::size_t i = 0; i < Size; ++i) text[i] = literal[i];
  }
};

/// A whole number from `Min` to `Max`; `Min` by default.
///
/// Never holds a number outside the range: the constructor throws `RangeException` with exactly `Text`, `fromNumber`
/// and `parseText` return failure. Converts to a plain number implicitly, from one explicitly.
template <class Rep, Rep Min, Rep Max, FixedString Text>
class RangeInt {
 public:
  static constexpr Rep min = Min;
  static constexpr Rep max = Max;

  constexpr RangeInt() = default;
  /// Throws `RangeException`. Takes any width, so that a number too large is not cut to one that fits.
  template <std::integral Number>
  constexpr explicit RangeInt(Number number) : value_(static_cast<Rep>(number)) {
    if (!contains(number)) throwRangeException(Text.text);
  }

  /// The value of a number in range, else nothing.
  static constexpr std::optional<RangeInt> fromNumber(std::uint64_t number) {
    if (!contains(number)) return std::nullopt;
    return RangeInt(number);
  }

  constexpr Rep value() const { return value_; }
  // Implicit: reading is free.
  constexpr operator Rep() const { return value_; }

  friend constexpr bool operator==(RangeInt const&, RangeInt const&) = default;
  friend constexpr auto operator<=>(RangeInt const&, RangeInt const&) = default;

 private:
  template <std::integral Number>
  static constexpr bool contains(Number number) {
    return std::cmp_greater_equal(number, Min) && std::cmp_less_equal(number, Max);
  }

  Rep value_ = Min;
};

template <class Rep, Rep Min, Rep Max, FixedString Text>
std::size_t hash_value(RangeInt<Rep, Min, Max, Text> const& value) {
  return mix(value.value());
}

template <class Rep, Rep Min, Rep Max, FixedString Text>
void appendText(std::string& out, RangeInt<Rep, Min, Max, Text> const& value) {
  appendText(out, value.value());
}

template <class Rep, Rep Min, Rep Max, FixedString Text>
bool parseText(std::string_view text, RangeInt<Rep, Min, Max, Text>& out) {
  std::uint64_t number = 0;
  if (!parseText(text, number)) return false;
  auto const value = RangeInt<Rep, Min, Max, Text>::fromNumber(number);
  if (value) out = *value;
  return value.has_value();
}

template <class Rep, Rep Min, Rep Max, FixedString Text>
std::string expectedText(RangeInt<Rep, Min, Max, Text> const*) {
  return "a whole number from " + toText(Min) + " to " + toText(Max);
}

template <class Traits, class Rep, Rep Min, Rep Max, FixedString Text>
std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& out,
                                             RangeInt<Rep, Min, Max, Text> const& value) {
  return out << toText(value);
}

}  // namespace Kiln
