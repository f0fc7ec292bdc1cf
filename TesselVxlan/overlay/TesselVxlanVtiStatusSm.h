#pragma once

#include "TesselVxlan/overlay/TesselVxlanEgrL3TunnelTablesProgrammer.h"
#include "TesselVxlan/overlay/TesselVxlanTunnelTermTableProgrammer.h"
#include "TesselVxlan/overlay/VxlanUnsupportedLogger.h"
#include "platform/dovel/Factory.h"
#include "platform/tessel/central/VxlanRecords.h"
#include "platform/tessel/l3common/TesselVxlanState.h"
#include "platform/tessel/l3common/VxlanDirs.h"
#include "platform/vane/VtiStatusDirSm.h"

namespace TesselVxlan {

/// Publishes the addresses and ports of the VXLAN interfaces to the rest of the agent.
///
/// In: the interfaces, through the base's calls; the outer-header PHB setting; three flags of
/// `tesselCentralVxlanState`. Out: DIP rows, of which this is the only writer; addresses and ports in `vxlanState`,
/// whose watchers rewrite tunnels; the same and the flags in `vxlanSliceConfig`, for the rest of the agent. There is
/// one address for each role (source, MLAG, virtual VARP), not one for each interface: the last that is set counts. An
/// address has its DIP row while a role or a group of an interface holds it. Main thread only. A write of `vxlanState`
/// may run any other part of the feature before it returns; the DIP row is written before.
class TesselVxlanVtiStatusSm final : public Vane::VXLAN::VtiStatusDirSm {
  KILN_TYPE(TesselVxlan::TesselVxlanVtiStatusSm, Vane::VXLAN::VtiStatusDirSm)

 public:
  /// Writes the rows of the addresses that `vxlanState` holds, copies the flags, sets up the present interfaces, and
  /// brings `vxlanSliceConfig` up to `vxlanState`.
  TesselVxlanVtiStatusSm(Dovel::String name, Dovel::Ptr<Vxlan::VtiStatusDir const> vtiStatusDir,
                         Dovel::Ptr<Bridging::HwCapabilities const> bridgingHwCapabilities,
                         Dovel::Ptr<Stateway::EntityManager> statewayEm,
                         Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
                         Dovel::Ptr<TesselCentral::VxlanCapabilities const> vxlanCapabilities,
                         Dovel::Ptr<TesselL3Common::TesselVxlanConfig> vxlanConfig,
                         Dovel::Ptr<TesselVxlanTunnelTermTableProgrammer> tunnelTermTableProgrammer,
                         Dovel::Ptr<TesselVxlanEgrL3TunnelTablesProgrammer> egrL3TunnelTablesProgrammer,
                         Dovel::Ptr<TesselCentral::VxlanState const> tesselCentralVxlanState,
                         Dovel::Ptr<TesselL3Common::TesselVxlanState> vxlanState,
                         Dovel::Ptr<TesselCentral::VxlanSliceConfig> vxlanSliceConfig,
                         Dovel::Ptr<Vxlan::VxlanConfigDir const> vxlanConfigDir, bool profileSupportsVxlan);

  void kilnDoZombieReactors(bool zombie) override;

 private:
  void fcsdDispatch(Dovel::Change const& change);
  void tesselCentralVxlanStateDispatch(Dovel::Change const& change);
  void vxlanConfigDirDispatch(Dovel::Change const& change);
  void handleLogicalFapId();
  void handleLogicalFapId(LogicalFap::LogicalFapId fapId);
  void handleCentralFlags();
  void handleVxlanEnabled();
  void handleVxlanNdSnooping();
  void handleControllerClientL3Mode();
  void updateVxlanDipTable();

  KILN_FIXED(0x105, Dovel::Ptr<Stateway::EntityManager>, statewayEm)
  KILN_WATCHED(0x106, TesselCentral::FeatureAgentCommonSmData const, fcsd, &KilnSelf::fcsdDispatch,
               static_cast<void (KilnSelf::*)()>(&KilnSelf::handleLogicalFapId))
  KILN_FIXED(0x107, Dovel::Ptr<TesselCentral::VxlanCapabilities const>, vxlanCapabilities)
  KILN_FIXED(0x108, Dovel::Ptr<TesselL3Common::TesselVxlanConfig>, vxlanConfig)
  KILN_FIXED(0x109, Dovel::Ptr<TesselVxlanTunnelTermTableProgrammer>, tunnelTermTableProgrammer)
  KILN_FIXED(0x10a, Dovel::Ptr<TesselVxlanEgrL3TunnelTablesProgrammer>, egrL3TunnelTablesProgrammer)
  KILN_WATCHED(0x10b, TesselCentral::VxlanState const, tesselCentralVxlanState,
               &KilnSelf::tesselCentralVxlanStateDispatch, &KilnSelf::handleCentralFlags)
  KILN_FIXED(0x10c, Dovel::Ptr<TesselL3Common::TesselVxlanState>, vxlanState)
  KILN_FIXED(0x10d, Dovel::Ptr<TesselCentral::VxlanSliceConfig>, vxlanSliceConfig)
  KILN_WATCHED(0x10e, Vxlan::VxlanConfigDir const, vxlanConfigDir, &KilnSelf::vxlanConfigDirDispatch,
               &KilnSelf::updateVxlanDipTable)
  KILN_FIXED(0x10f, bool, profileSupportsVxlan)
  KILN_INST(0x110, VxlanUnsupportedLogger, vxlanUnsupportedLogger)

  void doSetupVxlanDestUdpPort(Meshal::IntfId intf, std::uint16_t port) override;
  void doSetupVxlanSrcUdpPortRange(Meshal::IntfId intf, std::uint16_t port, std::uint16_t length) override;
  void doSetupVxlanSrcAddr(Meshal::IntfId intf, Meshal::IpAddr address) override;
  void doSetupVxlanSrcAddrV6(Meshal::IntfId intf, Meshal::Ip6Addr const& address) override;
  void doSetupMlagVtepAddr(Meshal::IntfId intf, Meshal::IpAddr address) override;
  void doSetupMcastGrpDecap(Meshal::IntfId intf, Meshal::IpAddr mcastGrp) override;
  void doSetupMcastGrpDecap6(Meshal::IntfId intf, Meshal::Ip6Addr const& mcastGrp) override;
  void doSetupVxlanVarpVtepAddr(Meshal::IntfId intf, Meshal::IpAddr address) override;
  void doSetupVxlanVarpVtepAddr6(Meshal::IntfId intf, Meshal::Ip6Addr const& address) override;
  void doCleanup(Meshal::IntfId intf) override;
  void handleInitialized() override;

  /// Moves the DIP row of a role from one address to another. REQUIRES: `vxlanState` still has `oldAddr` in the role.
  void doSetupVxlanVtepAddr(Meshal::IntfId intf, Meshal::IpGenAddr const& newAddr, Meshal::IpGenAddr const& oldAddr,
                            bool skipOldAddrCleanup);
  /// Whether a group change is to be followed.
  template <class Group>
  bool followsGroup(Meshal::IntfId intf, Group const& mcastGrp) const;
  /// Writes or removes the DIP row of a group. REQUIRES: `mcastGrp` is a multicast group and not a reserved one.
  template <class Group>
  void setupGroup(Group const& mcastGrp, bool present);
  /// Removes the DIP row of `addr` unless more than `ownRoles` roles or a group hold the address.
  void deleteDipUnlessHeld(Meshal::IpGenAddr const& addr, unsigned ownRoles);
  bool groupHas(Meshal::IpGenAddr const& addr) const;
};

inline constexpr Dovel::Factory<TesselVxlanVtiStatusSm> tesselVxlanVtiStatusSmFactory;

}  // namespace TesselVxlan
