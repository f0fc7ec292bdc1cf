#pragma once

#include "platform/bridging/VlanId.h"
#include "platform/kiln/Entity.h"
#include "platform/meshal/IpGenAddr.h"
#include "platform/vane/VaneTunnel.h"

// Which remote VTEPs get a copy of the flooded frames of a VLAN, and over which adjacency each of them is reached.

namespace L2Rib {

/// The flood list of one VLAN.
class FloodSet final : public Kiln::Entity {
  KILN_TYPE(L2Rib::FloodSet, Kiln::Entity)
  KILN_FIXED(0x102, Bridging::VlanId, vlanId)
  KILN_COLL(0x103, Meshal::IpGenAddr, bool, vtep)  ///< Only presence counts.

 public:
  explicit FloodSet(Bridging::VlanId const& vlanId) : vlanId_(vlanId) {}
  Dovel::String name() const override { return Kiln::toText(vlanId_); }
};

/// The flood lists of all VLANs.
class FloodSetOutput final : public Kiln::NamedEntity {
  KILN_TYPE(L2Rib::FloodSetOutput, Kiln::NamedEntity)
  KILN_ENTITY_COLL(0x102, Bridging::VlanId, FloodSet, vlanId, floodSet)

 public:
  using NamedEntity::NamedEntity;
};

}  // namespace L2Rib

namespace VxlanController {

/// How flood VTEPs are reached. A VTEP that is absent has no route.
class VtepStatusDirV2 final : public Kiln::NamedEntity {
  KILN_TYPE(VxlanController::VtepStatusDirV2, Kiln::NamedEntity)
  KILN_COLL(0x102, Meshal::IpGenAddr, Vane::AdjIdOrNone, vtepAdjacency)

 public:
  using NamedEntity::NamedEntity;
};

}  // namespace VxlanController
