#pragma once

#include <cstdint>

#include "platform/tessel/central/VxlanRecords.h"

/// How the chip numbers VLANs: VLAN to forwarding instance (VFI) and back. Both numbers are the same unless the agent
/// numbers them itself.
namespace TesselCommon {

/// The VFI of a VLAN; that of VLAN 4095 for a VLAN that has none.
std::uint16_t vlanToVfi(TesselCentral::VfiCapabilityStatus const& vfiCapabilities,
                        TesselCentral::VlanVfiDir const& vlanVfiDir, std::uint16_t vlanId);

/// The VLAN of a VFI; 4095 for its VFI, 1 for a VFI that has none. REQUIRES: `vfi` is 0, one of the two that the
/// capabilities name, or a number of a VLAN.
std::uint16_t vfiToVlan(TesselCentral::VfiCapabilityStatus const& vfiCapabilities,
                        TesselCentral::VlanVfiDir const& vlanVfiDir, std::uint16_t vfi);

}  // namespace TesselCommon
