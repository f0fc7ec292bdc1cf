#pragma once

#include "TesselVxlan/overlay/VlanVniMapSm.h"
#include "platform/tessel/tables/VniTables.h"
#include "platform/vane/PktDrv.h"

namespace TesselVxlan {

/// The feature's own pair of mappings and statuses, where no other part of the agent owns one.
class TesselVxlanHelperVni final : public VaneHelper::VaneHelperVni {
  KILN_TYPE(TesselVxlan::TesselVxlanHelperVni, VaneHelper::VaneHelperVni)

 public:
  explicit TesselVxlanHelperVni(Dovel::String name) : VaneHelperVni(std::move(name)) {}
  void verifyHwVni() override {}
};

/// Writes the mappings of VNIs and VLANs into hardware and into the packet driver, and the status of each.
///
/// In: local and remote mappings, and whether both contend for a VNI (`singleVnIdTableUser`). Out: `L2TunnelVnIdTable`
/// (VNI to VFI), `EgrVfiToVniMappingTable` of each logical chip (VLAN to VNI, local mappings alone), the packet driver
/// (VNI to VLAN), `helperVniStatus`; of all but the first this is the only writer.
/// A VNI has one row: a local mapping has it before a remote one, which waits, with status pending, until the local one
/// is removed. A full table is logged for a local mapping; the status says programmed all the same. Main thread only.
class TesselVxlanHelperVniSm final : public VlanVniMapSm {
  KILN_TYPE(TesselVxlan::TesselVxlanHelperVniSm, TesselVxlan::VlanVniMapSm)
  KILN_FIXED(0x108, Dovel::Ptr<TesselCentral::VxlanCapabilities const>, vxlanCapabilities)
  KILN_SMALL_COLL(0x109, LogicalFap::LogicalFapId, Dovel::Ptr<EgrVfiToVniMappingTable>, egrVfiToVniMappingTable)
  KILN_FIXED(0x10a, Dovel::Ptr<L2TunnelVnIdTable>, l2TunnelVnIdTable)
  KILN_INST(0x10b, Vane::PktDrv, pktDrv)

 public:
  /// Writes the present mappings, and ends what a former process has left of others.
  TesselVxlanHelperVniSm(Dovel::Ptr<VaneHelper::VaneHelperVniConfig const> helperVniConfig,
                         Dovel::Ptr<VaneHelper::VaneHelperVniStatus> helperVniStatus,
                         Dovel::Ptr<Stateway::EntityManager> statewayEm,
                         Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
                         Dovel::Ptr<TesselCentral::VfiCapabilityStatus const> vfiCapabilities,
                         Dovel::Ptr<TesselCentral::VxlanCapabilities const> vxlanCapabilities,
                         Dovel::Ptr<TesselCentral::VlanVfiDir const> vlanVfiDir,
                         Dovel::Ptr<L2TunnelVnIdTable> l2TunnelVnIdTable);

  using VlanVniMapSm::handleVlanVniMap;
  void handleVlanVniMap(Vane::VXLAN::VtiVlanKey const& key) override;
  void handleRemoteVniConfig(Vane::VXLAN::VtiVniKey const& key) override;
  /// Every remote mapping.
  void handleRemoteVniConfig();
  void handleInitialized();

 protected:
  void fapTablesIs(LogicalFap::LogicalFapId fapId, TesselCentral::ChipInfo const& chipInfo) override;
  void resynchronise() override;

 private:
  using Vni = Vxlan::VniExtOrNone;
  using StatusEntry = VaneHelper::VaneHelperVniStatusEntry;

  void addVlanVni(Vane::VXLAN::VtiVlanKey const& key, Vxlan::VniExt vni);
  /// A local mapping takes over the row of its VNI: the remote one that has it waits.
  void displaceRemote(Vxlan::VniExt vni);
  void egrVniIs(std::uint16_t vlanId, Vxlan::VniExt vni);
  /// REQUIRES: the mapping has a status.
  void cleanupVlanVni(Vane::VXLAN::VtiVlanKey const& key);
  void cleanupHelperVniStatus();
  void cleanupRemoteVniStatus();
  /// The status of the remote mapping of a VNI; that of none without one.
  StatusEntry const& findRemoteVniStatusEntry(Vxlan::VniExt vni) const;
  void addRemoteVnidVlanMapping(Vxlan::VniExt vni, std::uint16_t vlanId);
  /// REQUIRES: the mapping has a status.
  void removeRemoteVnidVlanMapping(Vxlan::VniExt vni, std::uint16_t vlanId);
  /// Removes the row of a VNI if it is still that of `vlanId`.
  void removeVnIdVlanMapping(Vni vni, std::uint16_t vlanId);
  /// Whether the row of `vni` is that of a local mapping.
  bool isHeldByLocal(Vxlan::VniExt vni) const;
  /// The VLAN of the row of a VNI. REQUIRES: there is one.
  std::uint16_t currentVlan(Vxlan::VniExt vni) const;
};

inline constexpr Dovel::Factory<TesselVxlanHelperVniSm> tesselVxlanHelperVniSmFactory;

}  // namespace TesselVxlan
