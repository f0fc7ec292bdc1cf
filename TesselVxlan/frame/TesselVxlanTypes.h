#pragma once

#include <cstdint>

#include "platform/kiln/Entity.h"
#include "platform/meshal/IpGenAddr.h"
#include "platform/tessel/values/EntryWriteStatus.h"
#include "platform/vane/Ids.h"
#include "platform/vane/VtepGroup.h"

namespace TesselVxlan {

/// A doorbell by VTEP: an overlay programmer counts up where the contents behind an unchanged next-hop id have changed,
/// and the tunnel programmer that watches looks at the VTEP's status again.
///
/// One for each tunnel programmer. What the count is does not matter, only that it is another one.
class TunnelNextHopUpdateConfig final : public Kiln::Entity {
  KILN_TYPE(TesselVxlan::TunnelNextHopUpdateConfig, Kiln::Entity)
  KILN_COLL(0x102, Meshal::IpGenAddr, std::uint32_t, tunnelNhUpdate)
};

/// What the chip gave to a group of VTEPs; written by the group's programmer.
///
/// `hwTunnelId` is written after `tnlIdEntryStatus`, so that who watches the id finds its status.
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

Dovel::Ptr<TunnelNextHopUpdateConfig> tunnelNextHopUpdateConfigFactory();
Dovel::Ptr<VxlanVtepGroupTunnelIdMapDir> vxlanVtepGroupTunnelIdMapDirFactory();

}  // namespace TesselVxlan
