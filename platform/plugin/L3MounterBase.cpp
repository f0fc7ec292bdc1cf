#include "platform/plugin/L3MounterBase.h"

#include <array>
#include <string>

#include "platform/bridging/BridgingConfig.h"
#include "platform/plugin/L3MounterSmWrapper.h"
#include "platform/tessel/central/VxlanRecords.h"
#include "platform/tessel/l3/L3Intf.h"
#include "platform/tessel/opaque/Records.h"

namespace TesselL3Unicast {

namespace {

struct BootMount {
  char const* path;
  Kiln::Type const& (*type)();
};

constexpr std::array<BootMount, 6> kBootMounts{{
    {"interface/config/eth/vlan", &Interface::VlanIntfConfigDir::kilnType},
    {"hardware/tessel/centralStatus/vfiCapabilityStatus", &TesselCentral::VfiCapabilityStatus::kilnType},
    {"bridging/hwcapabilities", &Bridging::HwCapabilities::kilnType},
    {"hardware/tessel/centralStatus/vxlanCapabilities", &TesselCentral::VxlanCapabilities::kilnType},
    {"hardware/tessel/centralStatus/feature/l3/routingStatus", &TesselL3::RoutingStatus::kilnType},
    {"vane/l3IntfTable", &VaneL3Intf::Table::kilnType},
}};

}  // namespace

void L3MounterBase::doBootStageMount(Stateway::MountGroup& mountGroup) {
  for (auto const& [path, type] : kBootMounts) {
    Stateway::Mount mount(path, std::string(type().name()));
    mount.flags().valIs(0);
    mount.handleFlags("r");
    mountGroup.doMount(mount);
  }
}

}  // namespace TesselL3Unicast
