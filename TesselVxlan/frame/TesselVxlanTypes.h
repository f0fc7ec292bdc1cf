#pragma once

#include <cstdint>

#include "platform/dovel/Factory.h"
#include "platform/kiln/Entity.h"
#include "platform/meshal/IpGenAddr.h"
#include "platform/tessel/values/EntryWriteStatus.h"
#include "platform/vane/Ids.h"
#include "platform/vane/VtepGroup.h"

namespace TesselVxlan {

/// A counter by VTEP. An overlay programmer increments it where the contents behind an unchanged next-hop id have
/// changed; the tunnel programmer that watches it brings the VTEP's status up to date.
///
/// One for each tunnel programmer. Only the change matters, not the value.
class TunnelNextHopUpdateConfig final : public Kiln::Entity {
  KILN_TYPE(TesselVxlan::TunnelNextHopUpdateConfig, Kiln::Entity)
  KILN_COLL(0x102, Meshal::IpGenAddr, std::uint32_t, tunnelNhUpdate)
};

/// The tunnel id of a group of VTEPs; written by the group's programmer.
///
/// `hwTunnelId` is written after `tnlIdEntryStatus`, so that its watchers read the matching status.
class VxlanVtepGroupTunnelIdMap final : public Kiln::Entity {
  KILN_TYPE(TesselVxlan::VxlanVtepGroupTunnelIdMap, Kiln::Entity)
  KILN_FIXED(0x102, Vane::VXLAN::VaneVtepGroupKey, vaneVtepGroupKey)
  KILN_ATTR(0x103, TesselCentral::EntryWriteStatus, tnlIdEntryStatus)
  KILN_ATTR(0x104, Vane::VaneTunnelId, hwTunnelId)

 public:
  explicit VxlanVtepGroupTunnelIdMap(Vane::VXLAN::VaneVtepGroupKey const& key) : vaneVtepGroupKey_(key) {}
};

/// The maps of all groups.
class VxlanVtepGroupTunnelIdMapDir final : public Kiln::Entity {
  KILN_TYPE(TesselVxlan::VxlanVtepGroupTunnelIdMapDir, Kiln::Entity)
  KILN_ENTITY_COLL(0x102, Vane::VXLAN::VaneVtepGroupKey, VxlanVtepGroupTunnelIdMap, vaneVtepGroupKey, vtepGrpTnlIdMap)
};

inline constexpr Dovel::Factory<TunnelNextHopUpdateConfig> tunnelNextHopUpdateConfigFactory;
inline constexpr Dovel::Factory<VxlanVtepGroupTunnelIdMapDir> vxlanVtepGroupTunnelIdMapDirFactory;

}  // namespace TesselVxlan
