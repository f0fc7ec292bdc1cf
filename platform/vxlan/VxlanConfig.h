#pragma once

#include <cstdint>

#include "platform/bridging/VlanId.h"
#include "platform/kiln/Entity.h"
#include "platform/meshal/IntfId.h"
#include "platform/meshal/IpAddr.h"
#include "platform/vxlan/Vni.h"

namespace Vxlan {

/// The state of one VXLAN interface. The zero address means that there is none.
class VtiStatus final : public Kiln::Entity {
  KILN_TYPE(Vxlan::VtiStatus, Kiln::Entity)
  KILN_FIXED(0x102, Meshal::IntfId, intfId)
  KILN_ATTR(0x103, std::uint16_t, udpPort)  ///< 0: not configured.
  /// The first UDP source port of packets that leave, and how many there are.
  KILN_ATTR(0x104, std::uint16_t, udpSrcPort)
  KILN_ATTR(0x105, std::uint16_t, udpSrcPortLength)
  KILN_ATTR(0x106, Meshal::IpAddr, srcAddr)
  KILN_ATTR(0x107, Meshal::Ip6Addr, srcAddrV6)
  KILN_ATTR(0x108, Meshal::IpAddr, mlagVtepAddr)
  KILN_ATTR(0x109, Meshal::Ip6Addr, mlagVtepAddr6)
  /// The multicast groups whose packets are received; only presence counts.
  KILN_COLL(0x10a, Meshal::IpAddr, bool, mcastGrpDecap)
  KILN_COLL(0x10b, Meshal::Ip6Addr, bool, mcastGrpDecap6)
  KILN_ATTR(0x10c, Meshal::IpAddr, varpVtepAddr)
  KILN_ATTR(0x10d, Meshal::Ip6Addr, varpVtepAddr6)

 public:
  explicit VtiStatus(Meshal::IntfId const& intfId) : intfId_(intfId) {}
  Dovel::String name() const override { return Kiln::toText(intfId_); }
};

/// The VXLAN interfaces.
class VtiStatusDir final : public Kiln::NamedEntity {
  KILN_TYPE(Vxlan::VtiStatusDir, Kiln::NamedEntity)
  KILN_ENTITY_COLL(0x102, Meshal::IntfId, VtiStatus, intfId, vtiStatus)

 public:
  using NamedEntity::NamedEntity;
};

/// What is configured for VXLAN as a whole.
class VxlanConfigDir final : public Kiln::NamedEntity {
  KILN_TYPE(Vxlan::VxlanConfigDir, Kiln::NamedEntity)
  /// Whether a received packet is treated as its outer header asks.
  KILN_ATTR(0x105, bool, outerHeaderPhb)
  /// Whether the outer header takes its DSCP from the packet.
  KILN_ATTR(0x106, bool, dscpPropagation)

 public:
  using NamedEntity::NamedEntity;
};

/// Whether congestion marks go from the outer header to the inner and back.
class EcnConfig final : public Kiln::NamedEntity {
  KILN_TYPE(Vxlan::EcnConfig, Kiln::NamedEntity)
  KILN_ATTR(0x102, bool, enabled)

 public:
  using NamedEntity::NamedEntity;
};

/// Held only.
class VxlanHwStatusDir final : public Kiln::NamedEntity {
  KILN_TYPE(Vxlan::VxlanHwStatusDir, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
};

/// The VLAN that the multicast traffic of a VNI from elsewhere is sent in.
class RemoteVniToVlanStatus final : public Kiln::NamedEntity {
  KILN_TYPE(Vxlan::RemoteVniToVlanStatus, Kiln::NamedEntity)
  KILN_COLL(0x102, VniExt, Bridging::VlanId, vniToVlan)

 public:
  using NamedEntity::NamedEntity;
};

}  // namespace Vxlan
