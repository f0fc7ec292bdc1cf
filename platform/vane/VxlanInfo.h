#pragma once

#include <cstdint>

#include "platform/kiln/Entity.h"

namespace Vane::VXLAN {

/// The settings that all VXLAN interfaces share.
class VaneGlobalVtiStatus final : public Kiln::NamedEntity {
  KILN_TYPE(Vane::VXLAN::VaneGlobalVtiStatus, Kiln::NamedEntity)
  /// Whether remote MAC addresses are learnt from received packets.
  KILN_ATTR(0x104, bool, dataPathLearning)

 public:
  using NamedEntity::NamedEntity;
};

/// The VXLAN interfaces that are in service. Stored for its consumers; not read here.
class VaneVxlanActivedVti final : public Kiln::NamedEntity {
  KILN_TYPE(Vane::VXLAN::VaneVxlanActivedVti, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
};

/// The state of the VNI state machine.
class VaneVniSmState final : public Kiln::Entity {
  KILN_TYPE(Vane::VXLAN::VaneVniSmState, Kiln::Entity)
  KILN_ATTR(0x102, std::uint8_t, vniSmState)
};

/// Access to the state of the VXLAN interfaces through one object.
class VaneVxlanInfo final : public Kiln::NamedEntity {
  KILN_TYPE(Vane::VXLAN::VaneVxlanInfo, Kiln::NamedEntity)
  KILN_ATTR(0x107, Dovel::Ptr<VaneGlobalVtiStatus>, vaneGlobalVtiStatus)
  KILN_ATTR(0x108, Dovel::Ptr<VaneVxlanActivedVti>, vaneActivatedVti)
  KILN_ATTR(0x109, Dovel::Ptr<VaneVniSmState>, vaneVniSmState, Dovel::make<VaneVniSmState>())

 public:
  using NamedEntity::NamedEntity;
};

}  // namespace Vane::VXLAN
