#include "platform/meshal/IpAddr.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>
#include <iterator>

#include "platform/kiln/Json.h"

namespace Meshal {
namespace {

/// A terminated copy of `text`, for the system's parser. False when it cannot be an address at all.
bool terminated(std::string_view text, char (&out)[INET6_ADDRSTRLEN]) {
  if (text.size() >= sizeof out || text.find('\0') != std::string_view::npos) return false;
  *std::copy(text.begin(), text.end(), out) = '\0';
  return true;
}

}  // namespace

void appendText(std::string& out, IpAddr const& addr) {
  // By hand: reports and documents have very many of them.
  char text[INET_ADDRSTRLEN];
  auto* end = text;
  for (int shift = 24; shift >= 0; shift -= 8) {
    end = std::to_chars(end, std::end(text), (addr.value() >> shift) & 0xff).ptr;
    if (shift != 0) *end++ = '.';
  }
  out.append(text, end);
}

bool parseText(std::string_view text, IpAddr& out) {
  char copy[INET6_ADDRSTRLEN];
  in_addr raw{};
  if (!terminated(text, copy) || inet_pton(AF_INET, copy, &raw) != 1) return false;
  out = IpAddr(ntohl(raw.s_addr));
  return true;
}

void appendText(std::string& out, Ip6Addr const& addr) {
  char text[INET6_ADDRSTRLEN];
  out += inet_ntop(AF_INET6, addr.bytes().data(), text, sizeof text);
}

bool parseText(std::string_view text, Ip6Addr& out) {
  char copy[INET6_ADDRSTRLEN];
  Ip6Addr::Bytes bytes;
  if (!terminated(text, copy) || inet_pton(AF_INET6, copy, bytes.data()) != 1) return false;
  out = Ip6Addr(bytes);
  return true;
}

}  // namespace Meshal

KILN_VALUE_CODEC(Meshal::AddressFamily, "Meshal::AddressFamily")
KILN_VALUE_CODEC(Meshal::IpAddr, "Meshal::IpAddr")
KILN_VALUE_CODEC(Meshal::Ip6Addr, "Meshal::Ip6Addr")
