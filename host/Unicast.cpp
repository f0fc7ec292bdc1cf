#include "host/Unicast.h"

namespace Host {

std::string_view whyNotUnicast(Meshal::IpGenAddr const& address) {
  if (address.isUnspecified()) return "unspecified";
  if (address.isIpv6()) {
    if (address.u64(0) == 0 && address.u64(1) == 1) return "loopback";
    return address.v6Addr().isMulticast() ? "multicast" : "";
  }
  auto const v4 = address.v4Addr();
  if (v4.value() >> 24 == 127) return "loopback";
  if (v4.value() == 0xffffffff) return "broadcast";
  return v4.isMulticast() ? "multicast" : "";
}

std::string_view whyNotGroup(Meshal::IpGenAddr const& address) {
  if (whyNotUnicast(address) != "multicast") return "no group";
  // 224.0.0.0/24, and the scopes up to the link.
  if (!address.isIpv6()) return address.v4Addr().isReservedMulticast() ? "reserved" : "";
  return (address.v6Addr().bytes()[1] & 0xf) <= 2 ? "reserved" : "";
}

std::string_view whyNotUnicast(Meshal::EthAddr const& address) {
  if (address.isZero()) return "zero";
  if (address.u64() == 0xffffffffffff) return "broadcast";
  return (address.bytes()[0] & 1) != 0 ? "multicast" : "";
}

}  // namespace Host
