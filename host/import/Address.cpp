#include "host/import/Address.h"

#include "host/Unicast.h"

namespace Host::Import {

namespace {

bool parsed(std::string_view text, IpGenAddr& address) { return !text.empty() && Kiln::readText(text, address); }

template <class Address>
Address required(JsonIn at, Address const& address, std::string const& what) {
  auto const why = whyNotUnicast(address);
  if (!why.empty()) at.fail("expected a unicast address as " + what + ", not a " + std::string(why) + " one");
  return address;
}

}  // namespace

IpGenAddr network(IpGenAddr const& address, unsigned length) {
  auto bytes = address.bytes();
  for (unsigned bit = length; bit < bitsOf(address); ++bit) {
    bytes[bit / 8] = static_cast<std::uint8_t>(bytes[bit / 8] & ~(0x80U >> bit % 8));
  }
  Meshal::Ip6Addr const masked(bytes);
  return address.isIpv6() ? IpGenAddr(masked)
                          : IpGenAddr(Meshal::IpAddr(static_cast<std::uint32_t>(masked.u64(0) >> 32)));
}

IpGenAddr ipAddr(JsonIn at) {
  IpGenAddr address;
  if (!parsed(at.text(), address)) at.fail("expected an IPv4 or IPv6 address");
  return address;
}

Prefix prefix(JsonIn at) {
  auto const parts = Kiln::splitAt(at.text(), "/");
  IpGenAddr address;
  if (!parsed(parts ? parts->first : at.text(), address)) at.fail("expected an IPv4 or IPv6 prefix");
  auto length = bitsOf(address);
  if (parts && (!Kiln::readText(parts->second, length) || length > bitsOf(address))) {
    at.fail("expected a prefix with a length from 0 to " + Kiln::toText(bitsOf(address)));
  }
  return {network(address, length), length};
}

EthAddr ethAddr(JsonIn at) {
  EthAddr address;
  if (!Kiln::readText(at.text(), address)) at.fail("expected an Ethernet address");
  return address;
}

IpGenAddr unicastIpAddr(JsonIn at, std::string const& what) { return required(at, ipAddr(at), what); }

EthAddr unicastEthAddr(JsonIn at, std::string const& what) { return required(at, ethAddr(at), what); }

}  // namespace Host::Import
