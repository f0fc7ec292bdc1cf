#include "platform/tessel/mroute/MrouteVxlanDecapTable.h"

namespace MrouteLib {

std::vector<Routing::Multicast::Fib::IpGenRouteKey> MrouteVxlanDecapTable::mroutes() const {
  checkMemory();
  return Kiln::keysOf(mrouteColl());
}

}  // namespace MrouteLib
