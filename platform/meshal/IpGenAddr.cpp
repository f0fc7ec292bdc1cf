#include "platform/meshal/IpGenAddr.h"

#include <algorithm>

#include "platform/kiln/Exceptions.h"
#include "platform/kiln/Json.h"

namespace Meshal {

static_assert(sizeof(IpGenAddr) == 17);

IpGenAddr::IpGenAddr(std::string_view text) {
  if (!parseText(text, *this)) Kiln::throwRangeException("Meshal::IpGenAddr: not an address");
}

IpGenAddr IpGenAddr::getUpper64V6Addr() const {
  IpGenAddr upper = *this;
  std::fill(upper.bytes_.begin() + 8, upper.bytes_.end(), std::uint8_t{0});
  return upper;
}

void appendText(std::string& out, IpGenAddr const& addr) {
  if (addr.isIpv4()) appendText(out, addr.v4Addr());
  if (addr.isIpv6()) appendText(out, addr.v6Addr());
}

bool parseText(std::string_view text, IpGenAddr& out) {
  IpAddr v4;
  Ip6Addr v6;
  if (text.empty()) {
    out = IpGenAddr();
  } else if (parseText(text, v4)) {
    out = v4;
  } else if (parseText(text, v6)) {
    out = v6;
  } else {
    return false;
  }
  return true;
}

}  // namespace Meshal

KILN_VALUE_CODEC(Meshal::IpGenAddr, "Meshal::IpGenAddr")
