#pragma once

#include <array>
#include <cassert>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Anvil {

/// One bit per port of a unit: 352 bits in 11 words of 32, as the chip's profile rows hold them. Plain value.
class PerUnitBitmap {
 public:
  static constexpr std::size_t kWords = 11;
  static constexpr std::size_t kBits = kWords * 32;

  /// Word `index`, its lowest bit is port 32 * index. REQUIRES: index < kWords.
  std::uint32_t bitList(std::size_t index) const {
    assert(index < kWords);
    return words_[index];
  }
  void bitListIs(std::size_t index, std::uint32_t word) {
    assert(index < kWords);
    words_[index] = word;
  }

  friend auto operator<=>(PerUnitBitmap const&, PerUnitBitmap const&) = default;
  friend std::size_t hash_value(PerUnitBitmap const& bitmap);

 private:
  std::array<std::uint32_t, kWords> words_{};
};

/// The words from 0 on as eight hexadecimal digits each, separated by spaces.
void appendText(std::string& out, PerUnitBitmap const& bitmap);
bool parseText(std::string_view text, PerUnitBitmap& bitmap);

}  // namespace Anvil
