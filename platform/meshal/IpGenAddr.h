#pragma once

#include <compare>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

#include "platform/kiln/Codec.h"
#include "platform/meshal/IpAddr.h"

namespace Meshal {

/// An address of either family, or of none: 16 bytes and a family.
///
/// The default has no family and zero bytes. An IPv4 address is in the first four bytes, the others are zero.
/// Two addresses are equal when their families and all their bytes are. The order is by family, then by bytes.
class IpGenAddr {
 public:
  using Bytes = Ip6Addr::Bytes;

  constexpr IpGenAddr() = default;
  // Implicit: an address of a family is an address.
  constexpr IpGenAddr(IpAddr const& addr);
  constexpr IpGenAddr(Ip6Addr const& addr) : af_(AddressFamily::ipv6), bytes_(addr.bytes()) {}
  /// Throws `RangeException` unless `text` is an address or empty. For addresses that are written in the program.
  explicit IpGenAddr(std::string_view text);

  constexpr AddressFamily af() const { return af_; }
  constexpr bool isIpv4() const { return af_ == AddressFamily::ipv4; }
  constexpr bool isIpv6() const { return af_ == AddressFamily::ipv6; }
  constexpr Bytes const& bytes() const { return bytes_; }

  /// The first four bytes as an IPv4 address, whatever the family.
  constexpr IpAddr v4Addr() const;
  /// All bytes as an IPv6 address, whatever the family.
  constexpr Ip6Addr v6Addr() const { return Ip6Addr(bytes_); }
  /// The word of eight bytes number `index`, 0 or 1, read in network order.
  std::uint64_t u64(unsigned index) const { return networkOrder(loadWord(bytes_.data() + index * 8)); }

  /// True without a family, and for the zero address of either family.
  bool isUnspecified() const {
    return af_ == AddressFamily::unknown || (loadWord(bytes_.data()) | loadWord(bytes_.data() + 8)) == 0;
  }
  /// The address with its lower 64 bits cut to zero.
  IpGenAddr getUpper64V6Addr() const;

  // By hand: a comparison of fixed length compiles to loads.
  friend bool operator==(IpGenAddr const& a, IpGenAddr const& b) {
    return a.af_ == b.af_ && std::memcmp(a.bytes_.data(), b.bytes_.data(), sizeof a.bytes_) == 0;
  }
  friend std::strong_ordering operator<=>(IpGenAddr const&, IpGenAddr const&) = default;

 private:
  // Before the bytes, so that the order is the one of the members.
  AddressFamily af_ = AddressFamily::unknown;
  Bytes bytes_{};
};

// Compilers turn neither loop into one access of a word.
constexpr IpGenAddr::IpGenAddr(IpAddr const& addr) : af_(AddressFamily::ipv4) {
  if (!std::is_constant_evaluated()) {
    auto const word = networkOrder(std::uint64_t{addr.value()} << 32);
    std::memcpy(bytes_.data(), &word, sizeof word);
    return;
  }
  for (unsigned i = 0; i < 4; ++i) bytes_[i] = static_cast<std::uint8_t>(addr.value() >> (24 - 8 * i));
}

constexpr IpAddr IpGenAddr::v4Addr() const {
  if (!std::is_constant_evaluated()) return IpAddr(static_cast<std::uint32_t>(u64(0) >> 32));
  std::uint32_t value = 0;
  for (unsigned i = 0; i < 4; ++i) value = value << 8 | bytes_[i];
  return IpAddr(value);
}

inline std::size_t hash_value(IpGenAddr const& addr) {
  auto const* const bytes = addr.bytes().data();
  // The second word of an IPv4 address is zero, so the family takes no information from it.
  return Kiln::mix(loadWord(bytes), loadWord(bytes + 8) + static_cast<std::uint64_t>(addr.af()));
}

/// The text of the address; empty without a family.
void appendText(std::string& out, IpGenAddr const& addr);
bool parseText(std::string_view text, IpGenAddr& out);
constexpr char const* expectedText(IpGenAddr const*) { return "an IPv4 or IPv6 address, or an empty string"; }
KILN_VALUE_STREAM(IpGenAddr)

}  // namespace Meshal

KILN_DECLARE_CODEC(Meshal::IpGenAddr);
