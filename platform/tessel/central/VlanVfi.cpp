#include "platform/tessel/central/VlanVfi.h"

#include "platform/bridging/VlanId.h"
#include "platform/kiln/Invariant.h"

namespace TesselCommon {

using TesselCentral::VfiCapabilityStatus;
using TesselCentral::VlanVfiDir;

namespace {

constexpr std::uint16_t vlan4095 = 4095;
constexpr std::uint16_t defaultVlan = 1;

bool isMapped(VfiCapabilityStatus const& vfiCapabilities) {
  return vfiCapabilities.vfiEnabled() && vfiCapabilities.vfiMappingEnabled();
}

}  // namespace

std::uint16_t vlanToVfi(VfiCapabilityStatus const& vfiCapabilities, VlanVfiDir const& vlanVfiDir,
                        std::uint16_t vlanId) {
  if (!isMapped(vfiCapabilities)) return vlanId;
  if (vlanId == 0) return 0;
  bool const hasVfi = vlanId <= Bridging::VlanId::max && vlanVfiDir.vlanToVfiHas(vlanId);
  return hasVfi ? vlanVfiDir.vlanToVfi(vlanId) : vfiCapabilities.vlan4095Vfi();
}

std::uint16_t vfiToVlan(VfiCapabilityStatus const& vfiCapabilities, VlanVfiDir const& vlanVfiDir, std::uint16_t vfi) {
  if (!isMapped(vfiCapabilities)) return vfi;
  if (vfi == 0 || vfi == vfiCapabilities.vlan0Vfi()) return 0;
  if (vfi == vfiCapabilities.vlan4095Vfi()) return vlan4095;
  INVARIANT(vfi > 0 && vfi <= Bridging::VlanId::max);
  return vlanVfiDir.vfiToVlanHas(vfi) ? vlanVfiDir.vfiToVlan(vfi) : defaultVlan;
}

}  // namespace TesselCommon
