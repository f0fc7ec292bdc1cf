#include "platform/anvil/PerUnitBitmap.h"

#include <fmt/format.h>

#include <boost/container_hash/hash.hpp>
#include <iterator>

namespace Anvil {

void PerUnitBitmap::appendText(std::string& out) const {
  for (std::size_t i = 0; i < kWords; ++i) fmt::format_to(std::back_inserter(out), "{}{:08x}", i ? " " : "", words_[i]);
}

std::size_t hash_value(PerUnitBitmap const& bitmap) {
  return boost::hash_range(bitmap.words_.begin(), bitmap.words_.end());
}

}  // namespace Anvil
