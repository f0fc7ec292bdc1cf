#include "host/commands/Operands.h"

#include "platform/kiln/Json.h"

namespace Host {

Meshal::IpGenAddr vtepOperand(std::string const& text) {
  Meshal::IpGenAddr vtep;
  if (!Kiln::readText(text, vtep) || vtep.isUnspecified()) {
    throw Kiln::InputError("VTEP", "", "'" + text + "'", "expected an IPv4 or IPv6 address");
  }
  return vtep;
}

std::uint32_t numberOperand(char const* name, std::string const& text, std::uint32_t min, std::uint32_t max) {
  auto const number = Kiln::fromText<std::uint32_t>(text);
  if (number && *number >= min && *number <= max) return *number;
  throw Kiln::InputError(name, "", "'" + text + "'",
                         "expected a whole number from " + Kiln::toText(min) + " to " + Kiln::toText(max));
}

}  // namespace Host
