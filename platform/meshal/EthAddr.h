#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "platform/kiln/Codec.h"
#include "platform/kiln/Hash.h"
#include "platform/kiln/Text.h"

namespace Meshal {

/// An Ethernet address, six bytes; all zero by default. Its text is "02:00:00:00:00:01", in lower case.
class EthAddr {
 public:
  using Bytes = std::array<std::uint8_t, 6>;

  constexpr EthAddr() = default;
  constexpr explicit EthAddr(Bytes const& bytes) : bytes_(bytes) {}
  /// The low 48 bits of `value`, the first byte on the wire highest.
  constexpr explicit EthAddr(std::uint64_t value);

  constexpr Bytes const& bytes() const { return bytes_; }
  constexpr std::uint64_t u64() const;
  constexpr bool isZero() const { return u64() == 0; }

  friend bool operator==(EthAddr const&, EthAddr const&) = default;
  friend auto operator<=>(EthAddr const&, EthAddr const&) = default;

 private:
  Bytes bytes_{};
};

constexpr EthAddr::EthAddr(std::uint64_t value) {
  for (unsigned i = 0; i < 6; ++i) bytes_[i] = static_cast<std::uint8_t>(value >> (40 - 8 * i));
}

constexpr std::uint64_t EthAddr::u64() const {
  std::uint64_t value = 0;
  for (auto const byte : bytes_) value = value << 8 | byte;
  return value;
}

inline std::size_t hash_value(EthAddr const& addr) {
  std::uint64_t word = 0;
  std::memcpy(&word, addr.bytes().data(), addr.bytes().size());
  return Kiln::mix(word);
}
void appendText(std::string& out, EthAddr const& addr);
bool parseText(std::string_view text, EthAddr& out);
constexpr char const* expectedText(EthAddr const*) { return "an Ethernet address such as 02:00:00:00:00:01"; }
KILN_VALUE_STREAM(EthAddr)

}  // namespace Meshal

KILN_DECLARE_CODEC(Meshal::EthAddr);
