#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "platform/kiln/Hash.h"
#include "platform/kiln/Text.h"

namespace Kiln {

/// A 32-bit id that does not mix with other ids or with plain numbers; `Default` until one is assigned.
///
/// `Derived` is the id's own type: `struct EncapId : Kiln::StrongId<EncapId> { using StrongId::StrongId; };`
template <class Derived, std::uint32_t Default = 0>
class StrongId {
 public:
  constexpr StrongId() = default;
  constexpr explicit StrongId(std::uint32_t value) : value_(value) {}

  constexpr std::uint32_t value() const { return value_; }

  /// The id of a number of 32 bits, nothing for a larger one.
  static constexpr std::optional<Derived> fromNumber(std::uint64_t number) {
    if (number > std::numeric_limits<std::uint32_t>::max()) return std::nullopt;
    return Derived(static_cast<std::uint32_t>(number));
  }

  friend constexpr bool operator==(StrongId const&, StrongId const&) = default;
  friend constexpr auto operator<=>(StrongId const&, StrongId const&) = default;

 private:
  std::uint32_t value_ = Default;
};

template <class Derived, std::uint32_t Default>
std::size_t hash_value(StrongId<Derived, Default> const& id) {
  return mix(id.value());
}

template <class Derived, std::uint32_t Default>
void appendText(std::string& out, StrongId<Derived, Default> const& id) {
  appendText(out, id.value());
}

template <class Derived, std::uint32_t Default>
bool parseText(std::string_view text, StrongId<Derived, Default>& out) {
  std::uint32_t number = 0;
  if (!parseText(text, number)) return false;
  out = StrongId<Derived, Default>(number);
  return true;
}

template <class Derived, std::uint32_t Default>
std::string expectedText(StrongId<Derived, Default> const*) {
  return "an id, a whole number of 32 bits";
}

template <class Traits, class Derived, std::uint32_t Default>
std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& out,
                                             StrongId<Derived, Default> const& id) {
  return out << id.value();
}

}  // namespace Kiln
