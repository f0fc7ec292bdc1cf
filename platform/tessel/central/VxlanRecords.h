#pragma once

#include <cstdint>

#include "platform/kiln/Entity.h"
#include "platform/meshal/IpAddr.h"

namespace TesselCentral {

/// What the agent's centre has decided for VXLAN. The feature copies it into `VxlanSliceConfig`.
class VxlanState final : public Kiln::NamedEntity {
  KILN_TYPE(TesselCentral::VxlanState, Kiln::NamedEntity)
  KILN_ATTR(0x102, bool, controllerClientL3Mode)
  KILN_ATTR(0x103, bool, vxlanEnabled)
  KILN_ATTR(0x104, bool, vxlanNdSnooping)

 public:
  using NamedEntity::NamedEntity;
};

/// The VXLAN configuration of one forwarding slice. Written by the feature for the rest of the agent.
class VxlanSliceConfig final : public Kiln::NamedEntity {
  KILN_TYPE(TesselCentral::VxlanSliceConfig, Kiln::NamedEntity)
  KILN_ATTR(0x102, bool, vxlanEnabled)
  KILN_ATTR(0x103, Meshal::IpAddr, localVtepAddr)
  KILN_ATTR(0x104, Meshal::IpAddr, vArpVtepAddr)
  KILN_ATTR(0x105, Meshal::Ip6Addr, vArpVtepAddr6)
  KILN_ATTR(0x106, std::uint16_t, vxlanUdpPort)
  KILN_ATTR(0x107, bool, vxlanNdSnooping)
  KILN_ATTR(0x108, bool, controllerClientL3Mode)

 public:
  using NamedEntity::NamedEntity;
};

/// What the chip and its software can do for VXLAN; it decides which programmers and state machines exist.
class VxlanCapabilities final : public Kiln::NamedEntity {
  KILN_TYPE(TesselCentral::VxlanCapabilities, Kiln::NamedEntity)
  KILN_ATTR(0x102, bool, mcastTunnelSupported)
  KILN_ATTR(0x103, bool, underlayMcastSupported)
  KILN_ATTR(0x104, bool, bumFloodSupported)
  /// Local and remote mappings contend for the one place of a network identifier.
  KILN_ATTR(0x105, bool, singleVnIdTableUser)
  /// Goes into each virtual port as it is.
  KILN_ATTR(0x106, bool, capabilityFlag)

 public:
  using NamedEntity::NamedEntity;
};

/// How VLANs and forwarding instances are numbered. With either flag clear both numbers are the same.
class VfiCapabilityStatus final : public Kiln::NamedEntity {
  KILN_TYPE(TesselCentral::VfiCapabilityStatus, Kiln::NamedEntity)
  KILN_ATTR(0x102, bool, vfiEnabled)
  KILN_ATTR(0x103, bool, vfiMappingEnabled)
  KILN_ATTR(0x104, std::uint16_t, vlan4095Vfi)
  KILN_ATTR(0x105, std::uint16_t, vlan0Vfi)

 public:
  using NamedEntity::NamedEntity;
};

/// VLAN to forwarding instance and back.
class VlanVfiDir final : public Kiln::NamedEntity {
  KILN_TYPE(TesselCentral::VlanVfiDir, Kiln::NamedEntity)
  KILN_COLL(0x102, std::uint16_t, std::uint16_t, vlanToVfi)
  KILN_COLL(0x103, std::uint16_t, std::uint16_t, vfiToVlan)

 public:
  using NamedEntity::NamedEntity;
};

/// What the layer 2 features publish for this one; fetched only.
class L2ToVxlanState final : public Kiln::NamedEntity {
  KILN_TYPE(TesselCentral::L2ToVxlanState, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
};

/// Held only.
class VlanMappingDir final : public Kiln::NamedEntity {
  KILN_TYPE(TesselCentral::VlanMappingDir, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
};

/// Held only.
class VxlanL3StatusEntryDir final : public Kiln::NamedEntity {
  KILN_TYPE(TesselCentral::VxlanL3StatusEntryDir, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
};

}  // namespace TesselCentral
