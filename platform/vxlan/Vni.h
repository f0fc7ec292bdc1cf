#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/kiln/Codec.h"
#include "platform/kiln/RangeInt.h"

namespace Vxlan {

/// The number of a VXLAN network.
using VniExt = Kiln::RangeInt<std::uint32_t, 1, 0xFFFFFF,
                              "Vxlan::VniExt::value < Vxlan::VniExt::min or > Vxlan::VniExt::max not allowed">;

/// The number of a VXLAN network, or none; none by default. Its text is the number or "none".
class VniExtOrNone {
 public:
  /// No VNI, as a plain number.
  static constexpr std::uint32_t noneValue = 0xFFFFFFFF;

  constexpr VniExtOrNone() = default;
  // Implicit: a network is one of the two.
  constexpr VniExtOrNone(VniExt vni) : value_(vni.value()) {}
  /// Throws `RangeException` with the text of `VniExt` unless `value` is a network or `noneValue`.
  constexpr explicit VniExtOrNone(std::uint32_t value)
      : value_(value == noneValue ? noneValue : VniExt(value).value()) {}

  static constexpr VniExtOrNone none() { return {}; }
  static constexpr std::optional<VniExtOrNone> fromNumber(std::uint64_t number) {
    if (number == noneValue) return none();
    if (auto const vni = VniExt::fromNumber(number)) return *vni;
    return std::nullopt;
  }

  constexpr bool isNone() const { return value_ == noneValue; }
  /// The network's number or `noneValue`.
  constexpr std::uint32_t value() const { return value_; }

  friend constexpr bool operator==(VniExtOrNone const&, VniExtOrNone const&) = default;
  friend constexpr auto operator<=>(VniExtOrNone const&, VniExtOrNone const&) = default;

 private:
  std::uint32_t value_ = noneValue;
};

inline std::size_t hash_value(VniExtOrNone const& vni) { return Kiln::mix(vni.value()); }
void appendText(std::string& out, VniExtOrNone const& vni);
bool parseText(std::string_view text, VniExtOrNone& out);
constexpr char const* expectedText(VniExtOrNone const*) { return "a whole number from 1 to 16777215, or \"none\""; }
KILN_VALUE_STREAM(VniExtOrNone)

}  // namespace Vxlan

KILN_DECLARE_CODEC(Vxlan::VniExt);
KILN_DECLARE_CODEC(Vxlan::VniExtOrNone);
