#include "platform/anvil/PerUnitBitmap.h"

#include <fmt/format.h>

#include <boost/container_hash/hash.hpp>
#include <charconv>
#include <iterator>

namespace Anvil {

namespace {
constexpr std::size_t kDigits = 8;
}  // namespace

void appendText(std::string& out, PerUnitBitmap const& bitmap) {
  for (std::size_t i = 0; i < PerUnitBitmap::kWords; ++i) {
    fmt::format_to(std::back_inserter(out), "{}{:08x}", i ? " " : "", bitmap.bitList(i));
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
  return boost::hash_range(bitmap.words_.begin(), bitmap.words_.end());
}

}  // namespace Anvil
