#pragma once

#include <array>
#include <bit>
#include <compare>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "platform/kiln/Codec.h"
#include "platform/kiln/Hash.h"
#include "platform/kiln/Text.h"

namespace Meshal {

/// The eight bytes at `bytes` as one word, in the machine's order.
inline std::uint64_t loadWord(std::uint8_t const* bytes) {
  std::uint64_t word;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}
/// A word in the machine's order as one in network order, and back.
constexpr std::uint64_t networkOrder(std::uint64_t word) {
  return std::endian::native == std::endian::little ? __builtin_bswap64(word) : word;
}

enum class AddressFamily : std::uint8_t { unknown = 0, ipv4 = 1, ipv6 = 2 };
BOOST_DESCRIBE_ENUM(AddressFamily, unknown, ipv4, ipv6)
KILN_VALUE_STREAM(AddressFamily)

/// An IPv4 address; 0.0.0.0 by default.
class IpAddr {
 public:
  constexpr IpAddr() = default;
  /// `value` is in host order: 0x0a000001 is 10.0.0.1.
  constexpr explicit IpAddr(std::uint32_t value) : value_(value) {}

  constexpr std::uint32_t value() const { return value_; }
  constexpr bool isAny() const { return value_ == 0; }
  constexpr bool isMulticast() const { return value_ >> 28 == 0xe; }
  /// 224.0.0.0/24, the groups that are never forwarded.
  constexpr bool isReservedMulticast() const { return value_ >> 8 == 0xe00000; }

  friend constexpr bool operator==(IpAddr const&, IpAddr const&) = default;
  friend constexpr auto operator<=>(IpAddr const&, IpAddr const&) = default;

 private:
  std::uint32_t value_ = 0;
};

/// An IPv6 address, 16 bytes in network order; "::" by default.
class Ip6Addr {
 public:
  using Bytes = std::array<std::uint8_t, 16>;

  constexpr Ip6Addr() = default;
  constexpr explicit Ip6Addr(Bytes const& bytes) : bytes_(bytes) {}

  constexpr Bytes const& bytes() const { return bytes_; }
  /// The word of eight bytes number `index`, 0 or 1, read in network order.
  std::uint64_t u64(unsigned index) const { return networkOrder(loadWord(bytes_.data() + index * 8)); }
  bool isUnspecified() const { return (loadWord(bytes_.data()) | loadWord(bytes_.data() + 8)) == 0; }
  bool isMulticast() const { return bytes_[0] == 0xff; }
  /// A hash that is the same on every machine and in every run.
  std::uint64_t hash() const { return Kiln::mix(u64(0), u64(1)); }

  friend bool operator==(Ip6Addr const& a, Ip6Addr const& b) {
    return std::memcmp(a.bytes_.data(), b.bytes_.data(), sizeof a.bytes_) == 0;
  }
  friend auto operator<=>(Ip6Addr const&, Ip6Addr const&) = default;

 private:
  Bytes bytes_{};
};

inline std::size_t hash_value(IpAddr const& addr) { return Kiln::mix(addr.value()); }
void appendText(std::string& out, IpAddr const& addr);
bool parseText(std::string_view text, IpAddr& out);
constexpr char const* expectedText(IpAddr const*) { return "an IPv4 address"; }
KILN_VALUE_STREAM(IpAddr)

inline std::size_t hash_value(Ip6Addr const& addr) { return addr.hash(); }
/// The canonical short form, in lower case.
void appendText(std::string& out, Ip6Addr const& addr);
bool parseText(std::string_view text, Ip6Addr& out);
constexpr char const* expectedText(Ip6Addr const*) { return "an IPv6 address"; }
KILN_VALUE_STREAM(Ip6Addr)

}  // namespace Meshal

KILN_DECLARE_CODEC(Meshal::AddressFamily);
KILN_DECLARE_CODEC(Meshal::IpAddr);
KILN_DECLARE_CODEC(Meshal::Ip6Addr);
