#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>

#include "host/import/Fields.h"

namespace Host::Import {

/// An IPv4 or IPv6 address as a value; ordered by family, then number. The first four bytes hold an IPv4 address.
struct IpAddr {
  bool v6 = false;
  std::array<std::uint8_t, 16> bytes{};

  auto operator<=>(IpAddr const&) const = default;

  /// Nothing where the text is no address.
  static std::optional<IpAddr> parse(std::string const& text);
  std::string text() const;
  unsigned bits() const { return v6 ? 128 : 32; }
  bool unspecified() const { return *this == IpAddr{v6, {}}; }
  bool multicast() const { return v6 ? bytes[0] == 0xff : (bytes[0] & 0xf0) == 0xe0; }
  /// The address with all but the first `length` bits cleared. REQUIRES: length <= bits().
  IpAddr network(unsigned length) const;
};

struct Prefix {
  IpAddr network;  ///< Without host bits.
  unsigned length = 0;
};

/// Each throws InputError with the value's place where it is no such text.
IpAddr ipAddr(JsonIn at);
/// "10.1.1.0/31", or an address alone for one host.
Prefix prefix(JsonIn at);
/// "02:f1:00:00:00:01", in lower case.
std::string ethAddr(JsonIn at);

}  // namespace Host::Import
