#include "platform/tessel/mroute/IpGenRouteKey.h"

#include "platform/kiln/Json.h"

namespace Routing::Multicast::Fib {

void appendText(std::string& out, IpGenRouteKey const& key) { Kiln::described::appendLabelled(out, key); }
bool parseText(std::string_view text, IpGenRouteKey& out) { return Kiln::described::parseLabelled(text, out); }

}  // namespace Routing::Multicast::Fib

KILN_VALUE_CODEC(Routing::Multicast::Fib::IpGenRouteKey, "Routing::Multicast::Fib::IpGenRouteKey")
