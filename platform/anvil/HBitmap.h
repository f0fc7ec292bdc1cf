#pragma once

#include <array>
#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace Anvil {

/// A pool of bits that finds its lowest clear bit in one step per level; a level is 64 times smaller than the one
/// below.
///
/// Inside, a one represents a clear bit: level 0 has one per bit of the pool, a higher level one per word below that
/// has any. So the lowest clear bit is the count of trailing zeros from the top down, and bits past the end are never
/// found. Plain value; bit numbers run from 0 to size() - 1.
class HBitmap {
 public:
  using Bit = std::uint32_t;

  /// `size` bits, all clear.
  explicit HBitmap(Bit size = 0);

  Bit size() const { return size_; }
  /// How many bits are set.
  Bit count() const { return count_; }
  bool isSet(Bit bit) const;

  /// Sets or clears one bit; nothing happens where it is so already. REQUIRES: bit < size().
  void setBit(Bit bit);
  void clearBit(Bit bit);

  /// The same for `length` bits from `first` on. REQUIRES: first + length <= size().
  void setRange(Bit first, Bit length);
  void clearRange(Bit first, Bit length);

  /// The lowest clear bit; nothing where all are set.
  std::optional<Bit> findClearBit() const;

  /// Sets the lowest clear bit and returns it.
  std::optional<Bit> takeClearBit();

  /// The first of the lowest `length` clear bits in a row; nothing where there is no such run. Linear in words of the
  /// pool past its first clear bit. REQUIRES: length > 0.
  std::optional<Bit> findClearRange(Bit length) const;

  friend bool operator==(HBitmap const& a, HBitmap const& b) { return a.size_ == b.size_ && a.words_ == b.words_; }

 private:
  using Word = std::uint64_t;
  static constexpr Bit kWordBits = 64;
  static constexpr std::size_t kMaxLevels = 6;  ///< 64^6 exceeds every 32-bit size.

  static constexpr Word mask(Bit bit) { return Word{1} << (bit % kWordBits); }
  Word& word(std::size_t level, Bit index) { return words_[levelAt_[level] + index]; }
  Word word(std::size_t level, Bit index) const { return words_[levelAt_[level] + index]; }

  /// The lowest bit >= from that is clear (or set); size() where there is none.
  Bit nextClear(Bit from) const;
  Bit nextSet(Bit from) const;

  Bit size_ = 0;
  Bit count_ = 0;
  Bit firstWord_ = 0;       ///< No word of level 0 before this one has a clear bit; itself it may have none.
  std::size_t levels_ = 0;  ///< 0 only for an empty pool.
  std::array<Bit, kMaxLevels> levelAt_{};
  std::vector<Word> words_;
};

inline bool HBitmap::isSet(Bit bit) const {
  assert(bit < size_);
  return !(word(0, bit / kWordBits) & mask(bit));
}

inline void HBitmap::setBit(Bit bit) {
  if (isSet(bit)) return;
  ++count_;
  for (std::size_t level = 0; level < levels_; ++level, bit /= kWordBits) {
    // A word that has others left is still known above.
    if (word(level, bit / kWordBits) &= ~mask(bit)) return;
  }
}

inline void HBitmap::clearBit(Bit bit) {
  if (!isSet(bit)) return;
  --count_;
  if (bit / kWordBits < firstWord_) firstWord_ = bit / kWordBits;
  for (std::size_t level = 0; level < levels_; ++level, bit /= kWordBits) {
    auto& here = word(level, bit / kWordBits);
    auto const known = here != 0;
    here |= mask(bit);
    if (known) return;
  }
}

inline std::optional<HBitmap::Bit> HBitmap::takeClearBit() {
  if (count_ == size_) return {};
  auto& here = words_[firstWord_];
  if ((here & (here - 1)) != 0) [[likely]] {  // at least two: the levels above need not change
    auto const bit = firstWord_ * kWordBits + static_cast<Bit>(std::countr_zero(here));
    here &= here - 1;
    ++count_;
    return bit;
  }
  auto const bit = findClearBit();
  firstWord_ = *bit / kWordBits;
  setBit(*bit);
  return bit;
}

inline std::optional<HBitmap::Bit> HBitmap::findClearBit() const {
  if (count_ == size_) return {};
  Bit at = 0;
  for (auto level = levels_; level-- > 0;) at = at * kWordBits + static_cast<Bit>(std::countr_zero(word(level, at)));
  return at;
}

}  // namespace Anvil
