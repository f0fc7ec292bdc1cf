#pragma once

#include "platform/bridging/VlanId.h"
#include "platform/dovel/Factory.h"
#include "platform/kiln/Entity.h"
#include "platform/meshal/IpGenAddr.h"

// Head-end replication: the VLANs whose flooded frames are copied to a remote VTEP by this switch.

namespace Vane::VXLAN {

/// The attributes of a VLAN of a flood VTEP; the feature reads none.
struct VlanInfo {
  friend bool operator==(VlanInfo const&, VlanInfo const&) = default;
};
void appendText(std::string& out, VlanInfo const& info);
KILN_VALUE_STREAM(VlanInfo)

/// The VLANs to flood to one remote VTEP.
class VaneVxlanHwHerVtepConfig final : public Kiln::Entity {
  KILN_TYPE(Vane::VXLAN::VaneVxlanHwHerVtepConfig, Kiln::Entity)
  KILN_FIXED(0x102, Meshal::IpGenAddr, vtepIp)
  KILN_COLL(0x103, Bridging::VlanId, VlanInfo, vlanList)

 public:
  explicit VaneVxlanHwHerVtepConfig(Meshal::IpGenAddr const& vtepIp) : vtepIp_(vtepIp) {}
  Dovel::String name() const override { return Kiln::toText(vtepIp_); }
};

/// The wanted flood VTEPs.
class VaneVxlanHwHerVtepConfigDir final : public Kiln::NamedEntity {
  KILN_TYPE(Vane::VXLAN::VaneVxlanHwHerVtepConfigDir, Kiln::NamedEntity)
  KILN_ENTITY_COLL(0x102, Meshal::IpGenAddr, VaneVxlanHwHerVtepConfig, vtepIp, vaneVxlanHwHerVtepConfig)

 public:
  using NamedEntity::NamedEntity;
};

/// The VLANs on which one remote VTEP participates in flooding. Written by the feature.
class VaneVxlanHwHerVtepStatus final : public Kiln::Entity {
  KILN_TYPE(Vane::VXLAN::VaneVxlanHwHerVtepStatus, Kiln::Entity)
  KILN_FIXED(0x102, Meshal::IpGenAddr, vtepIp)
  KILN_COLL(0x103, Bridging::VlanId, bool, vlanList)

 public:
  explicit VaneVxlanHwHerVtepStatus(Meshal::IpGenAddr const& vtepIp) : vtepIp_(vtepIp) {}
  Dovel::String name() const override { return Kiln::toText(vtepIp_); }
};

/// The statuses of the flood VTEPs. Each start of the feature clears it.
class VaneVxlanHwHerVtepStatusDir final : public Kiln::NamedEntity {
  KILN_TYPE(Vane::VXLAN::VaneVxlanHwHerVtepStatusDir, Kiln::NamedEntity)
  KILN_ENTITY_COLL(0x102, Meshal::IpGenAddr, VaneVxlanHwHerVtepStatus, vtepIp, vaneVxlanHwHerVtepStatus)

 public:
  using NamedEntity::NamedEntity;
};

inline constexpr Dovel::Factory<VaneVxlanHwHerVtepConfigDir> vaneVxlanHwHerVtepConfigDirFactory;

}  // namespace Vane::VXLAN

KILN_DECLARE_CODEC(Vane::VXLAN::VlanInfo);
