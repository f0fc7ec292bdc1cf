#pragma once

#include <vector>

#include "platform/bridging/VlanId.h"
#include "platform/brisk/BriskMap.h"
#include "platform/meshal/IpAddr.h"
#include "platform/tessel/mroute/IpGenRouteKey.h"

namespace MrouteLib {

/// The multicast routes of the underlay that VXLAN packets arrive on, with the underlay VLAN of each. In shared memory,
/// written by the routing side of the switch.
class MrouteVxlanDecapTable final : public Brisk::BriskMapBase {
  KILN_TYPE(MrouteLib::MrouteVxlanDecapTable, Brisk::BriskMapBase)
  KILN_COLL(0x102, Routing::Multicast::Fib::IpGenRouteKey, Bridging::VlanId, mroute)

 public:
  explicit MrouteVxlanDecapTable(Dovel::String name = {}) : BriskMapBase(std::move(name)) {}

  /// The path of the routes of a family in shared memory.
  static char const* mountPath(Meshal::AddressFamily af) {
    return af == Meshal::AddressFamily::ipv6 ? "routing6/multicast/vxlanDecap" : "routing/multicast/vxlanDecap";
  }

  /// All routes. Throws `Brisk::CorruptionException`.
  std::vector<Routing::Multicast::Fib::IpGenRouteKey> mroutes() const;
};

}  // namespace MrouteLib
