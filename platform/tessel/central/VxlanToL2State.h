#pragma once

#include <cstdint>

#include "platform/kiln/Entity.h"
#include "platform/meshal/IpGenAddr.h"
#include "platform/tessel/values/EntryWriteStatus.h"
#include "platform/tessel/values/MemberTunnelUniqueNhId.h"
#include "platform/vane/Ids.h"
#include "platform/vane/TunnelKey.h"
#include "platform/vane/TunnelType.h"

namespace TesselCentral {

/// What the hardware knows of one remote VTEP: the record between the wanted tunnels and their status.
///
/// The table programmers write the ids of their rows here, each status before its id, since watchers run inside the
/// write of the id and look at the status. The tunnel programmers keep what they last programmed beside them. One VTEP
/// can carry tunnels of several types at once; the ids are common to them. There are as many of these as there are
/// VTEPs: small, no name of its own, no tables.
class VtepIpToTnlIdNhIdMap final : public Kiln::Entity {
  KILN_TYPE(TesselCentral::VtepIpToTnlIdNhIdMap, Kiln::Entity)
  KILN_FIXED(0x102, Meshal::IpGenAddr, vtepIp)
  KILN_ATTR(0x103, EntryWriteStatus, tnlIdEntryStatus)
  KILN_ATTR(0x104, EntryWriteStatus, nhIdEntryStatus)
  KILN_ATTR(0x105, Vane::VaneTunnelId, tnlId)
  KILN_ATTR(0x106, Vane::VaneNextHopId, nhId)
  /// The local address of each family with which the tunnel was last programmed.
  KILN_ATTR(0x107, Meshal::IpGenAddr, localVtep)
  KILN_ATTR(0x108, Meshal::IpGenAddr, localVtep6)
  /// The key in force for each type.
  KILN_SMALL_COLL(0x109, Vane::TunnelType, Vane::TunnelKey, tnlKeys)
  /// The key that a newer generation replaced, until its status is removed.
  KILN_SMALL_COLL(0x10a, Vane::TunnelType, Vane::TunnelKey, oldTnlKey)
  KILN_ATTR(0x10b, std::uint32_t, adjId)
  KILN_ATTR(0x10c, MemberTunnelUniqueNhId, mbrTnlUniqueNhId)

 public:
  explicit VtepIpToTnlIdNhIdMap(Meshal::IpGenAddr const& vtepIp) : vtepIp_(vtepIp) {}
  Dovel::String name() const override { return Kiln::toText(vtepIp_); }

  /// `localVtep` or `localVtep6`. REQUIRES: `af` is one of the two families.
  Meshal::IpGenAddr const& getLocalVtep(Meshal::AddressFamily af) const;
  /// Writes the one of the two that is of the address's family. REQUIRES: it has one.
  void setLocalVtep(Meshal::IpGenAddr const& localVtep);
};

/// The member VTEPs of a multihomed tunnel, as an earlier run of the agent left them.
class RecoveredVtepList final : public Kiln::Entity {
  KILN_TYPE(TesselCentral::RecoveredVtepList, Kiln::Entity)
  KILN_FIXED(0x102, Vane::VaneTunnelId, tnlId)
  KILN_SMALL_COLL(0x103, Meshal::IpGenAddr, bool, activeVtepList)

 public:
  explicit RecoveredVtepList(Vane::VaneTunnelId const& tnlId) : tnlId_(tnlId) {}
  Dovel::String name() const override { return Kiln::toText(tnlId_); }

  void activeVtepListIs(Meshal::IpGenAddr const& vtep) { activeVtepListIs(vtep, true); }
};

/// What the feature publishes about remote VTEPs for the layer 2 features of the agent.
///
/// The recovered collections hold ids of an earlier run of the agent; nothing in this run depends on them.
class VxlanToL2State final : public Kiln::NamedEntity {
  KILN_TYPE(TesselCentral::VxlanToL2State, Kiln::NamedEntity)
  KILN_ENTITY_COLL(0x102, Meshal::IpGenAddr, VtepIpToTnlIdNhIdMap, vtepIp, vtepIpToTnlIdNhIdMap)
  KILN_ATTR(0x103, bool, dataPathLearning)
  KILN_ATTR(0x104, bool, stageVlanVniMappingReady)
  KILN_COLL(0x105, Vane::VaneTunnelId, Meshal::IpGenAddr, recoveredTnlIdToVtep)
  KILN_COLL(0x106, Vane::VaneNextHopId, Meshal::IpGenAddr, recoveredNhIdToVtep)
  KILN_ENTITY_COLL(0x107, Vane::VaneTunnelId, RecoveredVtepList, tnlId, recoveredMHTnlIdToVtepList)

 public:
  using NamedEntity::NamedEntity;
};

}  // namespace TesselCentral
