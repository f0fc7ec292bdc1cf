#pragma once

#include <cstdint>

#include "platform/bridging/VlanId.h"
#include "platform/kiln/Entity.h"
#include "platform/meshal/IntfId.h"

namespace Bridging {

/// The ports of one VLAN.
class VlanStatus final : public Kiln::Entity {
  KILN_TYPE(Bridging::VlanStatus, Kiln::Entity)
  KILN_FIXED(0x102, VlanId, vlanId)
  KILN_COLL(0x103, Meshal::IntfId, std::uint8_t, portState)

 public:
  explicit VlanStatus(VlanId const& vlanId) : vlanId_(vlanId) {}
  Dovel::String name() const override { return Kiln::toText(vlanId_); }
};

/// The VLANs of the switch.
class VlanStatusDir final : public Kiln::NamedEntity {
  KILN_TYPE(Bridging::VlanStatusDir, Kiln::NamedEntity)
  KILN_ENTITY_COLL(0x102, VlanId, VlanStatus, vlanId, vlanStatus)

 public:
  using NamedEntity::NamedEntity;
};

}  // namespace Bridging
