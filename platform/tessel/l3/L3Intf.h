#pragma once

#include <cstdint>

#include "platform/bridging/VlanId.h"
#include "platform/kiln/Entity.h"
#include "platform/meshal/IntfId.h"

namespace VaneL3Intf {

/// The layer 3 interfaces of the switch. Their ids are VLAN numbers, 0 for none; the value type refuses any other
/// number when a document is read.
class Table final : public Kiln::RevisedEntity {
  KILN_TYPE(VaneL3Intf::Table, Kiln::RevisedEntity)
  KILN_COLL(0x102, Meshal::IntfId, Bridging::VlanIdOrNone, l3Intf)

 public:
  using RevisedEntity::RevisedEntity;

  /// 0 for an interface that does not exist.
  std::uint32_t intfIdToL3Id(Meshal::IntfId intf) const { return l3Intf(intf).value(); }
};

}  // namespace VaneL3Intf

/// Ids of layer 3 interfaces.
class L3Id {
 public:
  /// Throws `RangeException` "Bridging::VlanIdOrNone::value > 4094 not allowed".
  static Bridging::VlanIdOrNone l3IdToVlanId(std::uint32_t l3Id) { return Bridging::VlanIdOrNone(l3Id); }
};

namespace TesselL3 {

/// Stored for its consumers; not read here.
class RoutingStatus final : public Kiln::NamedEntity {
  KILN_TYPE(TesselL3::RoutingStatus, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
};

}  // namespace TesselL3
