#include "platform/meshal/EthAddr.h"

#include <charconv>

#include "platform/kiln/Json.h"

namespace Meshal {

void appendText(std::string& out, EthAddr const& addr) {
  static constexpr char digits[] = "0123456789abcdef";
  for (std::size_t i = 0; i < addr.bytes().size(); ++i) {
    if (i > 0) out += ':';
    out += digits[addr.bytes()[i] >> 4];
    out += digits[addr.bytes()[i] & 0xf];
  }
}

bool parseText(std::string_view text, EthAddr& out) {
  EthAddr::Bytes bytes{};
  if (text.size() != 17) return false;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    char const* const first = text.data() + 3 * i;
    auto const [end, error] = std::from_chars(first, first + 2, bytes[i], 16);
    if (error != std::errc{} || end != first + 2) return false;
    if (i > 0 && first[-1] != ':') return false;
  }
  out = EthAddr(bytes);
  return true;
}

}  // namespace Meshal

KILN_VALUE_CODEC(Meshal::EthAddr, "Meshal::EthAddr")
