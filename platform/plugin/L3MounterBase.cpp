#include "platform/plugin/L3MounterBase.h"

#include <array>
#include <utility>

#include "platform/plugin/L3MounterSmWrapper.h"

namespace TesselL3Unicast {

namespace {

constexpr std::array<std::pair<char const*, char const*>, 6> kBootMounts{{
    {"interface/config/eth/vlan", "Interface::VlanIntfConfigDir"},
    {"hardware/tessel/centralStatus/vfiCapabilityStatus", "TesselCentral::VfiCapabilityStatus"},
    {"bridging/hwcapabilities", "Bridging::HwCapabilities"},
    {"hardware/tessel/centralStatus/vxlanCapabilities", "TesselCentral::VxlanCapabilities"},
    {"hardware/tessel/centralStatus/feature/l3/routingStatus", "TesselL3::RoutingStatus"},
    {"vane/l3IntfTable", "VaneL3Intf::Table"},
}};

}  // namespace

void L3MounterBase::doBootStageMount(Stateway::MountGroup& mountGroup) {
  for (auto const& [path, typeName] : kBootMounts) {
    Stateway::Mount mount(path, typeName);
    mount.flags().valIs(0);
    mount.handleFlags("r");
    mountGroup.doMount(mount);
  }
}

}  // namespace TesselL3Unicast
