#pragma once

#include <array>
#include <cstdint>

#include "TesselVxlan/frame/TesselVxlanTypes.h"
#include "TesselVxlan/nexthop/HerNextHopTableProgrammer.h"
#include "TesselVxlan/nexthop/NextHopTableProgrammer.h"
#include "TesselVxlan/nexthop/UnderlayEcmpProgrammer.h"
#include "TesselVxlan/nexthop/VirtualPortTableProgrammer.h"
#include "TesselVxlan/nexthop/VpLagEcmpProgrammer.h"
#include "TesselVxlan/nexthop/VxlanL3Oif1TableProgrammer.h"
#include "TesselVxlan/overlay/BumVtepSm.h"
#include "TesselVxlan/overlay/EpreEdevConfigCcbeSm.h"
#include "TesselVxlan/overlay/TesselVxlanECNSm.h"
#include "TesselVxlan/overlay/TesselVxlanEgrL3TunnelTablesProgrammer.h"
#include "TesselVxlan/overlay/TesselVxlanPortGroupSm.h"
#include "TesselVxlan/overlay/TesselVxlanTunnelTermTableProgrammer.h"
#include "TesselVxlan/overlay/TesselVxlanUnderlayMulticastSm.h"
#include "TesselVxlan/overlay/TesselVxlanVniSm.h"
#include "TesselVxlan/overlay/TesselVxlanVtepGroupSm.h"
#include "TesselVxlan/overlay/TesselVxlanVtiStatusSm.h"
#include "TesselVxlan/tunnel/HerTunnelHelperSm.h"
#include "TesselVxlan/tunnel/HwTunnelProgrammerBase.h"
#include "TesselVxlan/tunnel/TunnelBaseHelperSm.h"
#include "platform/bridging/BridgingConfig.h"
#include "platform/bridging/VlanStatusDir.h"
#include "platform/dovel/Factory.h"
#include "platform/evpn/EvpnStatus.h"
#include "platform/plugin/L3MounterSmWrapper.h"
#include "platform/tessel/central/VxlanRecords.h"
#include "platform/tessel/central/VxlanToL2State.h"
#include "platform/tessel/features/L3NextHopAttributes.h"
#include "platform/tessel/l3/EgrL3OifHelper.h"
#include "platform/tessel/l3/L3Intf.h"
#include "platform/tessel/l3common/TesselVxlanState.h"
#include "platform/tessel/l3common/VxlanDirs.h"
#include "platform/tessel/opaque/Records.h"
#include "platform/tessel/opaque/StateMachines.h"
#include "platform/tessel/qos/TrustStatus.h"
#include "platform/tessel/tables/EcmpIndirectionTableConfigReg.h"
#include "platform/tessel/tables/EpreTables.h"
#include "platform/tessel/tables/IpmcTable.h"
#include "platform/tessel/tables/VniTables.h"
#include "platform/vane/HerVtep.h"
#include "platform/vane/McastTunnel.h"
#include "platform/vane/VaneVxlanHwHerSm.h"
#include "platform/vane/VaneVxlanMcastSm.h"
#include "platform/vane/VtepGroup.h"
#include "platform/vane/VxlanInfo.h"
#include "platform/vxlan/RemoteVniToSBDVlanMergeSm.h"
#include "platform/vxlan/VxlanConfig.h"

namespace TesselVxlan {

/// Root object of the running feature: owns every programmer and state machine, and decides when each is created.
///
/// In: the mounted and local entities, the chip's profile, and the boot status. Out: tables in their initial state,
/// then the state machines, which do all further work.
///
///   created ──initStatewayState──▶ tables up ──both gates open──▶ state machines up
///
/// Gate 1 is `vaneTunnelSmReady` of the boot status: the forwarding abstraction has seen the status objects. Gate 2 is
/// `tablesInitialized`. The gate that opens last starts the state machines, once. Main thread only. Programmers are
/// shared with the state machines that use them; when this object is destroyed, `hwTunnelProgrammer` is released last.
/// Attributes are declared in the order of their ids. "Held" marks those that no class of this build reads.
class TesselVxlanMounterSmWrapper final : public TesselL3Unicast::L3MounterSmWrapper {
  void vxlanBootStatusDispatch(Dovel::Change const& change);
  void vxlanStateDispatch(Dovel::Change const& change);

  /// Takes over the collection in the destructor. Declared before every other member, so destroyed after them.
  Kiln::SmallMap<Vane::TunnelType, Dovel::Ptr<HwTunnelProgrammerBase>> hwTunnelProgrammersToEnd_;

 public:
  /// Creates the state machines if both gates are open and they do not exist yet.
  void doStartVxlanSms();
  /// Creates the tunnel programmers and their helper state machines.
  void createVxlanTunnelHelperSm();
  /// Creates what makes the tunnels of multicast features, and what publishes those that flood traffic uses.
  void createVaneVxlanMcastHelperSm();
  /// Fetches the entities that the state machines read and write, and clears HER status, which survives no start.
  void doBindEntities();
  /// Writes the default virtual ports once the default outer header exists.
  void programDefaultSvpEntry();
  /// Clears what an earlier run, or an earlier wrapper of this process, has left and this start writes anew.
  void cleanupHitfulRestart();

  KILN_TYPE(TesselVxlan::TesselVxlanMounterSmWrapper, TesselL3Unicast::L3MounterSmWrapper)

  // Local entities and directories of tables: bindLocalEntities, bindTableDirs, makeMcastTunnelPair.
  KILN_ATTR(0x102, Dovel::Ptr<TesselCentral::VxlanToL2State>, vxlanToL2State)
  KILN_WATCHED(0x103, TesselL3Common::TesselVxlanBootStatus, vxlanBootStatus, &KilnSelf::vxlanBootStatusDispatch,
               &KilnSelf::doStartVxlanSms)
  KILN_ATTR(0x104, Dovel::Ptr<TesselCentral::VxlanState>, tesselCentralVxlanState)
  KILN_ATTR(0x105, Dovel::Ptr<Bridging::VlanStatusDir const>, vlanStatusDir)
  KILN_WATCHED(0x106, TesselL3Common::TesselVxlanState, vxlanState, &KilnSelf::vxlanStateDispatch,
               &KilnSelf::programDefaultSvpEntry)
  KILN_ATTR(0x107, Dovel::Ptr<Vane::HwTunnelConfigDir>, hwTunnelConfigDir)
  KILN_ATTR(0x108, Dovel::Ptr<Vane::HwTunnelStatusDir>, hwTunnelStatusDir)
  KILN_ATTR(0x109, Dovel::Ptr<Kiln::Dir>, routeDestinationTableDir)
  KILN_ATTR(0x10a, Dovel::Ptr<Kiln::Dir>, ecmpNhTableDir)
  KILN_ATTR(0x10b, Dovel::Ptr<TesselL3Common::TesselVxlanBumVtepConfigDir>, bumVtepConfigDir)
  KILN_ATTR(0x10c, Dovel::Ptr<TesselL3Common::EncapIdToBumVtepIpConfigDir>, encapIdToBumVtepIpConfigDir)
  KILN_ATTR(0x10d, Dovel::Ptr<Vane::HwTunnelConfig>, hwMcastTunnelConfig)
  KILN_ATTR(0x10e, Dovel::Ptr<Vane::HwTunnelStatus>, hwMcastTunnelStatus)

  // Mounted entities: doBindEntities.
  KILN_ATTR(0x10f, Dovel::Ptr<TesselL3Common::TesselVxlanConfig>, vxlanConfig)
  KILN_ATTR(0x110, Dovel::Ptr<TesselL3Common::TesselVxlanStatus>, vxlanStatus)
  KILN_ATTR(0x111, Dovel::Ptr<Vane::VXLAN::VaneVxlanHwHerVtepConfigDir>, vaneVxlanHwHerVtepConfigDir)
  KILN_ATTR(0x112, Dovel::Ptr<Vane::VXLAN::VaneVxlanHwHerVtepStatusDir>, vaneVxlanHwHerVtepStatusDir)
  KILN_ATTR(0x113, Dovel::Ptr<Vxlan::VtiStatusDir>, vtiStatusDir)
  KILN_ATTR(0x114, Dovel::Ptr<Vane::VaneTunnelConfigDir>, tunnelConfigDir)
  KILN_ATTR(0x115, Dovel::Ptr<Vane::VaneTunnelStatusDir>, tunnelStatusDir)
  KILN_ATTR(0x116, Dovel::Ptr<Interface::VlanIntfConfigDir const>, vlanIntfConfigDir)  ///< Held.
  KILN_ATTR(0x117, Dovel::Ptr<TesselCentral::VfiCapabilityStatus const>, vfiCapabilityStatus)
  KILN_ATTR(0x118, Dovel::Ptr<Bridging::HwCapabilities const>, bridgingHwCapabilities)

  // Chip attributes, VNI helper and VXLAN information: bindChipAttributes, bindMountedEntities, bindVxlanInfo.
  KILN_ATTR(0x119, Dovel::Ptr<TesselL3Unicast::L3NextHopAttributes const>, nhAttributes)
  KILN_ATTR(0x11a, bool, vxlanUnderlayFloodingHw)
  KILN_ATTR(0x11b, Dovel::Ptr<TesselCentral::VlanVfiDir>, vlanVfiDir)
  KILN_INST(0x11c, TesselVxlanHelperVni, helperVni)  ///< Null where the layer-2 agent owns the mappings.
  KILN_ATTR(0x11d, Dovel::Ptr<VaneHelper::VaneHelperVniConfig const>, helperVniConfig)
  KILN_ATTR(0x11e, Dovel::Ptr<VaneHelper::VaneHelperVniStatus>, helperVniStatus)
  KILN_INST(0x11f, Vane::VXLAN::VaneVxlanInfo, vxlanInfo)

  // Remote VNIs, hardware status and published tunnels: doBindEntities.
  KILN_ATTR(0x120, Dovel::Ptr<Vxlan::RemoteVniToVlanStatus const>, irbRemoteVniToVlanStatus)
  KILN_ATTR(0x121, Dovel::Ptr<Vxlan::RemoteVniToVlanStatus const>, staticRemoteVniToVlanStatus)
  KILN_ATTR(0x122, Dovel::Ptr<Vxlan::RemoteVniToVlanStatus>, remoteVniToVlanStatus)
  KILN_INST(0x123, Vxlan::RemoteVniToSBDVlanMergeSm, remoteVniToSBDVlanMergeSm)
  KILN_ATTR(0x124, Dovel::Ptr<Vxlan::VxlanHwStatusDir>, vxlanHwStatusDir)  ///< Held.
  KILN_ATTR(0x125, Dovel::Ptr<Bridging::Config const>, bridgingConfig)     ///< Held.
  KILN_ATTR(0x126, Dovel::Ptr<Vxlan::VxlanConfigDir const>, vxlanConfigDir)
  KILN_INST(0x127, TesselVxlanCommon::L3McastEvpnStatusSmCommon, l3McastEvpnStatusSm)
  KILN_ATTR(0x128, Dovel::Ptr<Vane::VaneTunnelConfig>, vxlanTunnelConfig)
  KILN_ATTR(0x129, Dovel::Ptr<Vane::VaneTunnelStatus>, vxlanTunnelStatus)
  KILN_ATTR(0x12a, Dovel::Ptr<Vane::VaneTunnelConfig>, vxlanMemberTunnelConfig)
  KILN_ATTR(0x12b, Dovel::Ptr<Vane::VaneTunnelStatus>, vxlanMemberTunnelStatus)
  KILN_INST(0x12c, Vane::VXLAN::VtepGroupConfigDir, vtepGroupConfigDir)  ///< Held.
  KILN_INST(0x12d, Vane::VXLAN::VtepGroupStatusDir, vtepGroupStatusDir)  ///< Held.
  KILN_ATTR(0x12e, Dovel::Ptr<Vane::VXLAN::VaneVtepGroupConfigDir const>, vaneVtepGroupConfigDir)
  KILN_ATTR(0x12f, Dovel::Ptr<Vane::VXLAN::VaneVtepGroupStatusDir>, vaneVtepGroupStatusDir)

  // State machines and tunnel programmers: doStartVxlanSms; their inputs from doBindEntities.
  KILN_ATTR(0x130, Dovel::Ptr<TesselVxlanVtiStatusSm>, vxlanVtiStatusSm)
  KILN_ATTR(0x131, Dovel::Ptr<TesselCentral::VxlanSliceConfig>, vxlanSliceConfig)
  KILN_SMALL_COLL(0x132, Vane::TunnelType, Dovel::Ptr<HwTunnelProgrammerBase>, hwTunnelProgrammer)
  KILN_ATTR(0x133, Dovel::Ptr<TunnelBaseHelperSm>, vxlanMcastTunnelHelperSm)  ///< Null without multicast tunnels.
  KILN_ATTR(0x134, Dovel::Ptr<TunnelBaseHelperSm>, vxlanTunnelHelperSm)
  KILN_ATTR(0x135, Dovel::Ptr<TunnelBaseHelperSm>, vxlanMemberTunnelHelperSm)
  KILN_ATTR(0x136, Dovel::Ptr<HerTunnelHelperSm>, herTunnelHelperSm)
  KILN_INST(0x137, TesselVxlanHelperPortGroupSm, tesselVxlanHelperPortGroupSm)  // A chip has this one
  KILN_INST(0x138, TesselVxlanHelperVniSm, tesselVxlanHelperVniSm)              // or this one.
  KILN_ATTR(0x139, Dovel::Ptr<TesselVxlanECNSm>, tesselVxlanECNSm)              ///< Null on a chip without its tables.
  KILN_ATTR(0x13a, Dovel::Ptr<Vane::VXLAN::VaneVxlanHwHerSm>, vaneVxlanHwHerSm)
  KILN_ATTR(0x13b, Dovel::Ptr<L2Rib::FloodSetOutput const>, l2RibFloodSet)
  KILN_ATTR(0x13c, Dovel::Ptr<VxlanController::VtepStatusDirV2 const>, vxlanVtepStatusDir)
  KILN_ATTR(0x13d, Dovel::Ptr<VxlanVtepGroupDirSm>, vxlanVtepGroupDirSm)  ///< Null without groups.
  KILN_READONLY(0x13e, bool, tablesInitialized)

  // Flooding and multicast: createVaneVxlanMcastHelperSm.
  KILN_INST(0x13f, Multicast::Tunnel::ConfigDirColl, mcastTunnelConfigDirColl)
  KILN_INST(0x140, Multicast::Tunnel::StatusDirColl, mcastTunnelStatusDirColl)
  KILN_ATTR(0x141, Dovel::Ptr<Vane::VXLAN::VaneVxlanMcastSm>, vaneVxlanMcastSm)
  KILN_ATTR(0x142, Dovel::Ptr<BumVtepSm>, bumVtepSm)
  KILN_ATTR(0x143, Dovel::Ptr<BumVtepSm>, mcastHerVtepSm)  ///< Null without flooding of multicast traffic.
  KILN_ATTR(0x144, Dovel::Ptr<BumVtepSm>, mcastVtepSm)     ///< Null without multicast tunnels.

  // Quality of service, capabilities, layer 3: bindQos, bindMountedEntities.
  KILN_INST(0x145, TesselL3Common::FloodUnderlayVlanToVtepListDir, floodUnderlayVlanToVtepListDir)
  KILN_ATTR(0x146, Dovel::Ptr<TesselCommon::Qos::TrustStatus>, qosTrustStatusAllLocal)
  KILN_ATTR(0x147, Dovel::Ptr<Kiln::Dir const>, qosTrustStatusDir)
  KILN_INST(0x148, TesselCommon::Qos::TrustStatusSm, qosTrustStatusSm)
  KILN_ATTR(0x149, Dovel::Ptr<TesselCentral::VxlanCapabilities const>, vxlanCapabilities)
  KILN_ATTR(0x14a, Dovel::Ptr<TesselL3::RoutingStatus const>, routingStatus)
  KILN_ATTR(0x14b, Dovel::Ptr<Vxlan::EcnConfig const>, ecnConfig)
  KILN_ATTR(0x14c, Dovel::Ptr<EpreEdevConfigCcbeSm>, epreSm)  ///< Null on a chip without remap table.
  KILN_ATTR(0x14d, Dovel::Ptr<VaneL3Intf::Table const>, vaneL3IntfTable)
  KILN_ATTR(0x14e, Dovel::Ptr<VxlanVtepGroupTunnelIdMapDir>, vtepGrpTnlIdMapDir)
  KILN_ATTR(0x14f, Dovel::Ptr<Evpn::EvpnStatus const>, evpnStatus)
  KILN_ATTR(0x150, Dovel::Ptr<MrouteLib::MrouteVxlanDecapTable>, mrouteVxlanDecapTable)

  // Tables and their programmers: makeProgrammers and the init functions.
  KILN_ATTR(0x151, Dovel::Ptr<L2TunnelVnIdTable>, l2TunnelVnIdTable)
  KILN_ATTR(0x152, Dovel::Ptr<TesselEpre::EpreCcbeNextHopRemapTable>, epreNextHopRemapTable)
  KILN_ATTR(0x153, Dovel::Ptr<TesselL3Common::VxlanDvpToVtepMap>, dvpToVtepMapping)
  KILN_ATTR(0x154, Dovel::Ptr<VxlanV4UnderlayMcastTable>, vxlanV4UnderlayMcastTable)
  KILN_INST(0x155, TesselVxlanUnderlayMulticastSm, underlayMulticastSm)  ///< Null without underlay multicast.
  KILN_ATTR(0x156, Dovel::Ptr<TesselL3Common::VxlanTunnelIndexToVtepMap>, tunnelIndexToVtepMapping)
  KILN_INST(0x157, TesselVxlanTunnelTermTableProgrammer, tunnelTermTableProgrammer)
  KILN_INST(0x158, VirtualPortProgrammer, virtualPortTableProgrammer)
  KILN_INST(0x159, TesselL3Tunnel::L3TunnelEgrL3OifHelper, l3Oif2TableHelper)
  KILN_INST(0x15a, NextHopTableProgrammer, nextHopTableProgrammer)
  KILN_INST(0x15b, VxlanL3Oif1TableProgrammer, l3Oif1TableProgrammer)
  KILN_INST(0x15c, HerNextHopTableProgrammer, herNextHopTableProgrammer)
  KILN_INST(0x15d, UnderlayEcmpProgrammer, underlayEcmpProgrammer)
  KILN_ATTR(0x15e, Dovel::Ptr<VpLagEcmpProgrammer>, vpLagEcmpProgrammer)
  KILN_INST(0x15f, TesselVxlanEgrL3TunnelTablesProgrammer, egrL3TunnelTablesProgrammer)
  KILN_ATTR(0x160, Dovel::Ptr<EcmpIndirectionTableConfigReg>, ecmpIndirectionTableConfigReg)
  KILN_ATTR(0x161, std::uint16_t, indirectionBasePtr)  ///< 0: nothing assigns it.
  KILN_METHOD(doStartVxlanSms)
  KILN_METHOD(createVxlanTunnelHelperSm)
  KILN_METHOD(createVaneVxlanMcastHelperSm)
  KILN_METHOD(doBindEntities)
  KILN_METHOD(programDefaultSvpEntry)
  KILN_METHOD(cleanupHitfulRestart)

 public:
  TesselVxlanMounterSmWrapper(Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData> fcsd,
                              Dovel::Ptr<Stateway::EntityManager> statewayEm, TesselL3Unicast::AgentSmId agentSmId,
                              Dovel::Ptr<Local::EntityStore> localEntityStore,
                              Dovel::Ptr<KilnSharedMem::EntityManager> shmemEm, Dovel::Ptr<Kiln::Dir> agentDir);

  ~TesselVxlanMounterSmWrapper() override;
  static constexpr Dovel::Factory<TesselVxlanMounterSmWrapper> TesselVxlanMounterSmWrapperIs{};

  // Each creates its programmer from this object's entities and the arguments.
  Dovel::Ptr<TesselVxlanTunnelTermTableProgrammer> tunnelTermTableProgrammerIs();
  Dovel::Ptr<NextHopTableProgrammer> nextHopTableProgrammerIs(
      Dovel::Ptr<TesselL3Tunnel::L3TunnelEgrL3OifHelper> l3Oif2TableHelper,
      Dovel::Ptr<TesselMcast::IpmcTable> ipmcTable, bool vxlanUnderlayFloodingHw);
  Dovel::Ptr<VxlanL3Oif1TableProgrammer> l3Oif1TableProgrammerIs();
  Dovel::Ptr<HerNextHopTableProgrammer> herNextHopTableProgrammerIs(
      Dovel::Ptr<VxlanL3Oif1TableProgrammer> l3Oif1TableProgrammer,
      Dovel::Ptr<TesselL3Tunnel::L3TunnelEgrL3OifHelper> l3Oif2TableHelper);
  Dovel::Ptr<TesselVxlanEgrL3TunnelTablesProgrammer> egrL3TunnelTablesProgrammerIs();
  Dovel::Ptr<VirtualPortProgrammer> virtualPortTableProgrammerIs();
  Dovel::Ptr<UnderlayEcmpProgrammer> underlayEcmpProgrammerIs();

  /// Binds entities, clears stale state, creates the table programmers, brings every table to its initial state in a
  /// fixed order, and opens gate 2. Does not wait for the chip. REQUIRES: once.
  void initStatewayState() override;
  Dovel::Ptr<VaneHelper::VaneHelperVni> ownHelperVni() const override { return helperVni(); }
  /// Opens gate 2.
  void tablesInitializedIs(bool tablesInitialized);
  /// Both pass on to the state machines that this object instantiates itself.
  void hasNotificationActiveIs(bool active) override;
  void kilnDoZombieReactors(bool zombie) override;

 private:
  /// The running state becomes true when all three are.
  struct TablesDone {
    bool egrL3 = false;
    bool uecmp = false;
    bool dvp = false;
  };

  // Binding, in the order of the calls.
  void bindLocalEntities();
  void bindTableDirs();
  void bindQos();
  void makeMcastTunnelPair();
  void bindMountedEntities();
  void bindChipAttributes();
  void bindHerAndL3Status();
  void bindVaneTunnels();
  void bindVxlanInfo();
  void makeTunnelStatuses();
  void bindFloodSet();
  void bindRemoteVniStatus();
  void bindMrouteDecap();

  // Tables, in the order of the calls.
  void makeProgrammers();
  void initTermAndPortTables();
  void initNextHopTables(TablesDone& done);
  void initHeaderTables(TablesDone& done);
  void initVniAndRemapTables();
  void runningStateIfDone(TablesDone const& done);
  void initIndirection();

  void clearLocalState();
  std::array<Dovel::Node*, 6> nestedSms() const;
  /// Configuration and status of a type; of multicast tunnels, this object's own pair.
  Vane::VXLAN::HwTunnelPair tunnelPair(Vane::TunnelType type) const;
  TunnelProgrammerInputs tunnelProgrammerInputs(Vane::TunnelType type,
                                                Dovel::Ptr<Anvil::IncrementalHBitmap> const& encapIdBitmap) const;
  // State machines, in the order of the calls.
  void startVniSm();
  void startMulticastAndFlooding();
  void startEcnAndEpre();
  void startVtepGroups();

  Dovel::Ptr<TunnelBaseHelperSm> tunnelHelper(Vane::TunnelType type) const;
  /// Adds the directories of one kind to the two collections.
  template <class ConfigDir, class StatusDir>
  void mcastTunnelDirsIs(Vane::TunnelType type, std::string const& path);
  Dovel::Ptr<BumVtepSm> bumVtepSmOf(Vane::VXLAN::HwTunnelPair const& pair) const;

  template <class Table>
  bool chipHas() const;
  template <class T>
  Dovel::Ptr<T> mounted(std::string_view path) const;
  template <class T>
  Dovel::Ptr<T> local(std::string const& path) const;

  bool started_ = false;  ///< The state machines exist, or are being created.
  Dovel::Ptr<Kiln::Dir> herNextHop1Dir_;
  Dovel::Ptr<Kiln::Dir> nextHop2Dir_;
  Dovel::Ptr<Kiln::Dir> virtualPortDir_;
  Dovel::Ptr<TesselMcast::IpmcTable> ipmcTable_;
};

// Used by the source files of this class.

template <class Table>
bool TesselVxlanMounterSmWrapper::chipHas() const {
  return TesselProfile::feature<typename Table::Util>(chipInfo()) != nullptr;
}

template <class T>
Dovel::Ptr<T> TesselVxlanMounterSmWrapper::mounted(std::string_view path) const {
  return statewayEm()->getEntity<T>(path);
}

template <class T>
Dovel::Ptr<T> TesselVxlanMounterSmWrapper::local(std::string const& path) const {
  return localEntityManager()->doMount<T>(path);
}

}  // namespace TesselVxlan
