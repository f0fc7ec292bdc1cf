#include "platform/anvil/PerUnitBitmap.h"

#include <charconv>

#include "platform/kiln/Hash.h"

namespace Anvil {

namespace {
constexpr std::size_t kDigits = 8;
}  // namespace

void appendText(std::string& out, PerUnitBitmap const& bitmap) {
  for (std::size_t i = 0; i < PerUnitBitmap::kWords; ++i) {
    if (i) out += ' ';
    for (auto shift = 4 * kDigits; shift != 0; shift -= 4) {
      out += "0123456789abcdef"[bitmap.bitList(i) >> (shift - 4) & 0xf];
    }
  }
}

bool parseText(std::string_view text, PerUnitBitmap& bitmap) {
  if (text.size() != PerUnitBitmap::kWords * (kDigits + 1) - 1) return false;
  PerUnitBitmap parsed;
  for (std::size_t i = 0; i < PerUnitBitmap::kWords; ++i) {
    auto const digits = text.data() + i * (kDigits + 1);
    std::uint32_t word = 0;
    if (i && digits[-1] != ' ') return false;
    if (std::from_chars(digits, digits + kDigits, word, 16).ptr != digits + kDigits) return false;
    parsed.bitListIs(i, word);
  }
  bitmap = parsed;
  return true;
}

std::size_t hash_value(PerUnitBitmap const& bitmap) {
  std::uint64_t seed = 0;
  for (auto const word : bitmap.words_) seed = Kiln::mix(seed, word);
  return seed;
}

}  // namespace Anvil
