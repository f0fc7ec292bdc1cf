#include "host/import/Address.h"

#include <arpa/inet.h>

#include <cctype>
#include <charconv>

namespace Host::Import {

std::optional<IpAddr> IpAddr::parse(std::string const& text) {
  IpAddr address{text.find(':') != std::string::npos, {}};
  if (text.find('\0') != std::string::npos) return std::nullopt;
  if (inet_pton(address.v6 ? AF_INET6 : AF_INET, text.c_str(), address.bytes.data()) != 1) return std::nullopt;
  return address;
}

std::string IpAddr::text() const {
  std::array<char, INET6_ADDRSTRLEN> buffer{};
  return inet_ntop(v6 ? AF_INET6 : AF_INET, bytes.data(), buffer.data(), buffer.size());
}

IpAddr IpAddr::network(unsigned length) const {
  auto masked = *this;
  for (unsigned bit = length; bit < bits(); ++bit) {
    masked.bytes[bit / 8] = static_cast<std::uint8_t>(masked.bytes[bit / 8] & ~(0x80U >> bit % 8));
  }
  return masked;
}

IpAddr ipAddr(JsonIn at) {
  auto const address = IpAddr::parse(std::string(at.text()));
  if (!address) at.fail("expected an IPv4 or IPv6 address");
  return *address;
}

Prefix prefix(JsonIn at) {
  auto const text = std::string(at.text());
  auto const slash = text.find('/');
  auto const address = IpAddr::parse(text.substr(0, slash));
  if (!address) at.fail("expected an IPv4 or IPv6 prefix");
  auto length = address->bits();
  if (slash != std::string::npos) {
    auto const [end, error] = std::from_chars(text.data() + slash + 1, text.data() + text.size(), length);
    if (error != std::errc() || end != text.data() + text.size() || length > address->bits()) {
      at.fail("expected a prefix with a length from 0 to " + std::to_string(address->bits()));
    }
  }
  return {address->network(length), length};
}

std::string ethAddr(JsonIn at) {
  auto text = std::string(at.text());
  bool good = text.size() == 17;
  for (std::size_t i = 0; good && i < text.size(); ++i) {
    auto const c = static_cast<unsigned char>(text[i]);
    good = i % 3 == 2 ? c == ':' : std::isxdigit(c) != 0;
    text[i] = static_cast<char>(std::tolower(c));
  }
  if (!good) at.fail("expected an Ethernet address");
  return text;
}

}  // namespace Host::Import
