#pragma once

#include <fmt/format.h>

#include "platform/kiln/Text.h"

/// Every value with a text form can be formatted, with the width and alignment of a string.
template <Kiln::HasText T>
requires(std::is_class_v<T> || std::is_enum_v<T>) &&
    (!std::is_convertible_v<T const&, std::string_view>)struct fmt::formatter<T, char, void>
    : fmt::formatter<fmt::string_view> {
  template <class Context>
  auto format(T const& value, Context& context) const {
    auto const text = Kiln::toText(value);
    return fmt::formatter<fmt::string_view>::format(fmt::string_view(text.data(), text.size()), context);
  }
};
