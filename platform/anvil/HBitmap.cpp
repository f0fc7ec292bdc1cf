#include "platform/anvil/HBitmap.h"

#include <algorithm>
#include <bit>

namespace Anvil {

HBitmap::HBitmap(Bit size) : size_(size) {
  for (Bit bits = size; bits;) {
    auto const words = (bits - 1) / kWordBits + 1;
    levelAt_[levels_++] = static_cast<Bit>(words_.size());
    words_.resize(words_.size() + words, ~Word{0});
    // The bits past the end of a level are never clear.
    if (bits % kWordBits) words_.back() = mask(bits) - 1;
    bits = words > 1 ? words : 0;
  }
}

void HBitmap::setRange(Bit first, Bit length) {
  for (Bit i = 0; i < length; ++i) setBit(first + i);
}

void HBitmap::clearRange(Bit first, Bit length) {
  for (Bit i = 0; i < length; ++i) clearBit(first + i);
}

std::optional<HBitmap::Bit> HBitmap::findClearRange(Bit length) const {
  assert(length > 0);
  for (auto first = findClearBit().value_or(size_); size_ - first >= length;) {
    auto const end = nextSet(first);
    if (end - first >= length) return first;
    first = nextClear(end);
  }
  return {};
}

HBitmap::Bit HBitmap::nextClear(Bit from) const {
  while (from < size_) {
    if (auto const rest = word(0, from / kWordBits) >> (from % kWordBits)) {
      return from + static_cast<Bit>(std::countr_zero(rest));
    }
    from = from / kWordBits * kWordBits + kWordBits;
  }
  return size_;
}

HBitmap::Bit HBitmap::nextSet(Bit from) const {
  while (from < size_) {
    if (auto const rest = ~word(0, from / kWordBits) >> (from % kWordBits)) {
      return std::min(size_, from + static_cast<Bit>(std::countr_zero(rest)));
    }
    from = from / kWordBits * kWordBits + kWordBits;
  }
  return size_;
}

}  // namespace Anvil
