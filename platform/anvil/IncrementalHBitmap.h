#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/anvil/HBitmap.h"
#include "platform/dovel/Node.h"
#include "platform/dovel/Ptr.h"
#include "platform/kiln/Attribute.h"

namespace Anvil {

/// A pool of ids that several objects share: a set bit is an allocated id.
///
/// Bits are numbered from `base` on. Publishes nothing. Main thread only; shared by its holders.
class IncrementalHBitmap final : public Dovel::Node {
  KILN_BASE_TYPE(Anvil::IncrementalHBitmap)

 public:
  /// `size` bits from `base` on, all clear.
  IncrementalHBitmap(std::uint32_t base, std::uint32_t size) : base_(base), bits_(size) {}

  std::uint32_t base() const { return base_; }
  std::uint32_t size() const { return bits_.size(); }
  /// How many bits are set.
  std::uint32_t count() const { return bits_.count(); }

  /// The lowest clear bit; nothing where all are set.
  std::optional<std::uint32_t> findClearBit() const {
    auto const bit = bits_.findClearBit();
    return bit ? std::optional(base_ + *bit) : std::nullopt;
  }

  /// REQUIRES: base() <= bit < base() + size(). Nothing happens where the bit is so already.
  bool isSet(std::uint32_t bit) const { return bits_.isSet(bit - base_); }
  void setBit(std::uint32_t bit) { bits_.setBit(bit - base_); }
  void clearBit(std::uint32_t bit) { bits_.clearBit(bit - base_); }

 private:
  std::uint32_t const base_;
  HBitmap bits_;
};

/// "3 of 24576 set".
void appendText(std::string& out, IncrementalHBitmap const& bitmap);

/// A pool of `size` ids from `base` on. It is clear initially and returns the lowest id first; `bitState` and
/// `indexPreference` are ignored.
Dovel::Ptr<IncrementalHBitmap> incrementalHBitmapFactory(std::uint32_t base, std::uint32_t size, std::uint32_t bitState,
                                                         std::uint32_t indexPreference);

}  // namespace Anvil
