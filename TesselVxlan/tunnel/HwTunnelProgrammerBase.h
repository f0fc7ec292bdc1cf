#pragma once

#include <cstdint>

#include "TesselVxlan/frame/TesselVxlanTypes.h"
#include "TesselVxlan/nexthop/HerNextHopTableProgrammer.h"
#include "TesselVxlan/nexthop/NextHopTableProgrammer.h"
#include "TesselVxlan/nexthop/OverlayTableProgrammerBase.h"
#include "TesselVxlan/nexthop/UnderlayEcmpProgrammer.h"
#include "TesselVxlan/nexthop/VirtualPortTableProgrammer.h"
#include "TesselVxlan/nexthop/VxlanL3Oif1TableProgrammer.h"
#include "TesselVxlan/overlay/EpreEdevConfigCcbeSm.h"
#include "TesselVxlan/overlay/TesselVxlanEgrL3TunnelTablesProgrammer.h"
#include "TesselVxlan/overlay/TesselVxlanTunnelTermTableProgrammer.h"
#include "platform/anvil/IncrementalHBitmap.h"
#include "platform/evpn/EvpnStatus.h"
#include "platform/kiln/FunctionRef.h"
#include "platform/kiln/Sm.h"
#include "platform/stateway/EntityManager.h"
#include "platform/tessel/central/CommonData.h"
#include "platform/tessel/central/VxlanRecords.h"
#include "platform/tessel/central/VxlanToL2State.h"
#include "platform/tessel/features/TesselChipAttributesVxlan.h"
#include "platform/tessel/l3common/TesselVxlanState.h"
#include "platform/tessel/l3common/VxlanDirs.h"
#include "platform/tessel/qos/TrustStatus.h"
#include "platform/tessel/values/FinalNextHopSet.h"
#include "platform/vane/HwTunnel.h"
#include "platform/vxlan/VxlanConfig.h"

namespace TesselVxlan {

class HwTunnelProgrammerBase;

/// What a tunnel programmer is made from, in the order of its attributes. The programmers of all tunnel types share the
/// table programmers and the pool of encapsulation ids; configuration, status and type are their own.
struct TunnelProgrammerInputs {
  Dovel::Ptr<Stateway::EntityManager> statewayEm;
  Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd;
  Dovel::Ptr<TesselCentral::VxlanToL2State> vxlanToL2State;
  Dovel::Ptr<VirtualPortProgrammer> virtualPortTableProgrammer;
  Dovel::Ptr<TesselVxlanTunnelTermTableProgrammer> tunnelTermTableProgrammer;
  Dovel::Ptr<NextHopTableProgrammer> nextHopTableProgrammer;
  Dovel::Ptr<HerNextHopTableProgrammer> herNextHopTableProgrammer;
  Dovel::Ptr<TesselVxlanEgrL3TunnelTablesProgrammer> egrL3TunnelTablesProgrammer;
  Dovel::Ptr<UnderlayEcmpProgrammer> underlayEcmpProgrammer;
  Dovel::Ptr<EpreEdevConfigCcbeSm> epreEdevConfigCcbeSm;  ///< Null on a chip without remap table.
  Vane::TunnelType tunnelType{};
  Dovel::Ptr<Vane::HwTunnelConfig const> hwTunnelConfig;
  Dovel::Ptr<Vane::HwTunnelStatus> hwTunnelStatus;
  Dovel::Ptr<TesselL3Common::TesselVxlanState> vxlanState;
  Dovel::Ptr<Anvil::IncrementalHBitmap> encapIdBitmap;
  Dovel::Ptr<TesselL3Common::TesselVxlanBumVtepConfigDir> bumVtepConfigDir;
  Dovel::Ptr<TesselL3Common::EncapIdToBumVtepIpConfigDir> encapIdToBumVtepIpConfigDir;
  Dovel::Ptr<TesselCommon::Qos::TrustStatus const> qosTrustStatus;
  Dovel::Ptr<Vxlan::VxlanConfigDir const> vxlanConfigDir;
  Dovel::Ptr<VxlanL3Oif1TableProgrammer> l3Oif1TableProgrammer;
  Dovel::Ptr<Evpn::EvpnStatus const> evpnStatus;
  Dovel::Ptr<TesselCentral::VxlanCapabilities const> vxlanCapabilities;
  bool vxlanUnderlayFloodingHw = false;
  Dovel::Ptr<TesselL3Common::FloodUnderlayVlanToVtepListDir> floodUnderlayVlanToVtepListDir;
};

/// Watches the record of one remote VTEP for one tunnel programmer, and holds what that programmer remembers about its
/// own tunnel at the VTEP.
///
/// A change of the tunnel id or of the next-hop id brings the tunnel's status up to date. Construction runs no handler.
/// The owner is not counted; it clears itself here before it is destroyed.
class NestedSm_TunnelIdMap final : public Kiln::NotifieeConst {
  KILN_BASE_TYPE(TesselVxlan::NestedSm_TunnelIdMap)

 public:
  using ConfigEntry = Dovel::Ptr<Vane::HwTunnelConfigEntry const>;
  using StatusEntry = Dovel::Ptr<Vane::HwTunnelStatusEntry>;

  NestedSm_TunnelIdMap(Dovel::Ptr<TesselCentral::VtepIpToTnlIdNhIdMap> const& map, HwTunnelProgrammerBase* owner);

  /// The VTEP, which is the key of the record that is watched.
  Meshal::IpGenAddr const& key() const { return map_->vtepIp(); }
  Dovel::Ptr<TesselCentral::VtepIpToTnlIdNhIdMap> const& map() const { return map_; }
  /// Watches another record of the same VTEP, at which no tunnel is in force yet, and runs both handlers for it.
  void mapIs(Dovel::Ptr<TesselCentral::VtepIpToTnlIdNhIdMap> const& map);
  void ownerClear() { owner_ = nullptr; }

  /// The configuration whose generation is in force; null if the VTEP has no tunnel of the owner's type, or this
  /// watcher was removed.
  ConfigEntry const& entry() const { return entry_; }
  /// Puts a configuration in force, not yet created and without a status; null ends the tunnel.
  void entryIs(ConfigEntry const& entry);
  /// The status of the configuration in force; null while it was neither written nor looked for.
  StatusEntry const& status() const { return status_; }
  void statusIs(StatusEntry const& status) { status_ = status; }
  /// Whether the configuration in force has its virtual port and the tables behind it. Not inferred from the status:
  /// another tunnel type's port can bring that about, and a failed write can keep it away.
  bool created() const { return created_; }
  void createdIs(bool created) { created_ = created; }

  /// The next-hop id under which the owner finds the VTEP; invalid if there is none.
  Vane::VaneNextHopId nhId() const { return nhId_; }
  void nhIdIs(Vane::VaneNextHopId nhId) { nhId_ = nhId; }

  void updateTunnelIdStatus();
  void updateCascadingNextHopIdInStatus();

 protected:
  void onAttribute(Dovel::Change const& change) override;

 private:
  Dovel::Ptr<TesselCentral::VtepIpToTnlIdNhIdMap> map_;
  HwTunnelProgrammerBase* owner_;
  ConfigEntry entry_;
  StatusEntry status_;
  Vane::VaneNextHopId nhId_;
  bool created_ = false;
};

/// Programs the tunnels of one type into table entries and publishes their status.
///
/// In: configuration entries, through the helper state machine's calls; the ids that table programmers publish in the
/// record of a VTEP; local VTEP, UDP ports, learning, DSCP and TOS settings. Out: outer header, virtual port, underlay
/// and overlay entries, through the table programmers; one status entry per tunnel.
///
///   no record ──create──▶ recorded ──virtual port──▶ tunnel id ──overlay──▶ programmed: status published
///
/// A status is written only from ids that have reached the VTEP's record, and a replaced generation's status is removed
/// only after the new one is written. The watcher of a VTEP keeps which configuration is in force there, its status and
/// whether it has been created; nothing else is kept about a tunnel but the reverse of its next-hop id.
/// Main thread only. Re-entrant at each write of shared state: a virtual port that is written at once publishes its id
/// inside the creation, and a subscriber of a status may delete the tunnel, replace its generation or change its next
/// hops on that stack. After such a write an operation continues only while its configuration is still the one in
/// force. Table programmers are shared; the overlay programmer is this object's own, on a table that all programmers
/// share.
class HwTunnelProgrammerBase : public Kiln::Sm {
 public:
  using ConfigEntry = Dovel::Ptr<Vane::HwTunnelConfigEntry const>;
  using Handle = Asic::SwTableBase::EntryHandle::PtrConst;
  using TunnelIdMaps = Kiln::NestedSms<Meshal::IpGenAddr, NestedSm_TunnelIdMap>;

 private:
  KILN_BASE_TYPE(TesselVxlan::HwTunnelProgrammerBase)

  void fcsdDispatch(Dovel::Change const& change);
  void vxlanToL2StateDispatch(Dovel::Change const& change);
  void qosTrustStatusDispatch(Dovel::Change const& change);
  void vxlanConfigDirDispatch(Dovel::Change const& change);
  void tnlNhUpdateConfigDispatch(Dovel::Change const& change);

  KILN_FIXED(0x102, Dovel::Ptr<Stateway::EntityManager>, statewayEm)
  KILN_WATCHED(0x103, TesselCentral::FeatureAgentCommonSmData const, fcsd, &KilnSelf::fcsdDispatch, nullptr)
  KILN_RESERVED(0x104, "TesselCentral::ChipInfo", chipInfo)
  KILN_FIXED(0x105, Dovel::Ptr<TesselChipAttributesVxlan const>, vxlanAttr)
  KILN_WATCHED(0x106, TesselCentral::VxlanToL2State, vxlanToL2State, &KilnSelf::vxlanToL2StateDispatch, nullptr)
  KILN_FIXED(0x107, Dovel::Ptr<VirtualPortProgrammer>, virtualPortTableProgrammer)
  KILN_FIXED(0x108, Dovel::Ptr<TesselVxlanTunnelTermTableProgrammer>, tunnelTermTableProgrammer)
  KILN_FIXED(0x109, Dovel::Ptr<NextHopTableProgrammer>, nextHopTableProgrammer)
  KILN_FIXED(0x10a, Dovel::Ptr<HerNextHopTableProgrammer>, herNextHopTableProgrammer)
  KILN_FIXED(0x10b, Dovel::Ptr<TesselVxlanEgrL3TunnelTablesProgrammer>, egrL3TunnelTablesProgrammer)
  KILN_FIXED(0x10c, Dovel::Ptr<UnderlayEcmpProgrammer>, underlayEcmpProgrammer)
  KILN_FIXED(0x10d, Dovel::Ptr<EpreEdevConfigCcbeSm>, epreEdevConfigCcbeSm)
  KILN_FIXED(0x10e, Vane::TunnelType, tunnelType)
  KILN_FIXED(0x10f, Dovel::Ptr<Vane::HwTunnelConfig const>, hwTunnelConfig)
  KILN_FIXED(0x110, Dovel::Ptr<Vane::HwTunnelStatus>, hwTunnelStatus)
  KILN_FIXED(0x111, Dovel::Ptr<TesselL3Common::TesselVxlanState>, vxlanState)
  KILN_FIXED(0x112, Dovel::Ptr<Anvil::IncrementalHBitmap>, encapIdBitmap)
  KILN_COLL(0x113, Meshal::IpGenAddr, bool, evpnHerTunnelList)
  KILN_FIXED(0x114, Dovel::Ptr<TesselCentral::VxlanCapabilities const>, vxlanCapabilities)
  KILN_FIXED(0x115, bool, vxlanUnderlayFloodingHw)
  KILN_FIXED(0x116, std::uint32_t, uniqueNhIdValue)
  KILN_RESERVED(0x117, "TesselVxlan::NestedSm_TunnelIdMap", tunnelIdMap)
  KILN_ID_COLL(0x118, Vane::VaneNextHopId, Meshal::IpGenAddr, nhIdToVtepIpMap)
  KILN_FIXED(0x119, Dovel::Ptr<TesselL3Common::TesselVxlanBumVtepConfigDir>, bumVtepConfigDir)
  KILN_FIXED(0x11a, Dovel::Ptr<TesselL3Common::EncapIdToBumVtepIpConfigDir>, encapIdToBumVtepIpConfigDir)
  KILN_WATCHED(0x11b, TesselCommon::Qos::TrustStatus const, qosTrustStatus, &KilnSelf::qosTrustStatusDispatch, nullptr)
  KILN_WATCHED(0x11c, Vxlan::VxlanConfigDir const, vxlanConfigDir, &KilnSelf::vxlanConfigDirDispatch, nullptr)
  KILN_FIXED(0x11d, Dovel::Ptr<TesselL3Common::FloodUnderlayVlanToVtepListDir>, floodUnderlayVlanToVtepListDir)
  KILN_FIXED(0x11e, Dovel::Ptr<VxlanL3Oif1TableProgrammer>, l3Oif1TableProgrammer)
  KILN_FIXED(0x11f, Dovel::Ptr<Evpn::EvpnStatus const>, evpnStatus)
  KILN_FIXED(0x120, Dovel::Ptr<OverlayTableProgrammer>, overlayTableProgrammer)
  KILN_WATCHED(0x121, TunnelNextHopUpdateConfig, tnlNhUpdateConfig, &KilnSelf::tnlNhUpdateConfigDispatch, nullptr)

 public:
  /// The chip of the logical FAP that was added last.
  TesselCentral::ChipInfo const& chipInfo() const { return chipInfo_; }

  // Operations of the helper state machine.

  /// Programs the tunnel as far as the state of the system allows; also switches to a newer generation of a known
  /// tunnel.
  void doTunnelCreate(ConfigEntry const& entry);
  /// Removes what belongs to this type and generation; what tunnel types share at a VTEP is removed with its last key.
  void doTunnelDelete(ConfigEntry const& entry);
  /// The next hops of `entry` changed.
  void doUpdateNextHop(ConfigEntry const& entry);
  /// Adds or removes the entry that assigns traffic from the VTEP behind `nhId` to its virtual port.
  void handleActiveNextHopId(Vane::VaneNextHopId nhId);
  /// Rewrites the outer headers of all tunnels, and the virtual ports that hold another header or, with
  /// `vxlanUdpPortChanged`, all; creates tunnels that waited for a local VTEP or a UDP port. Ids stay the same. Ends at
  /// the first created tunnel whose family has no local VTEP: those after it keep their headers until the next pass.
  void updateEgrL3TunnelTable(bool vxlanUdpPortChanged);
  /// Stores the flag and rewrites default and tunnel virtual ports with it.
  void updateVxlanDataPathLearning(bool dataPathLearning);

  // The per-VTEP records.

  /// The record of a VTEP, from the first tunnel of this object's type on until the record ends; else null.
  Dovel::Ptr<TesselCentral::VtepIpToTnlIdNhIdMap> const& vtepMap(Meshal::IpGenAddr const& vtep) const;
  bool tunnelIdMapHas(Meshal::IpGenAddr const& vtep) const { return bool(tunnelIdMap_.at(vtep)); }
  TunnelIdMaps::Map const& tunnelIdMap() const { return tunnelIdMap_.all(); }
  /// Watches `map` from now on. Throws the null-argument exception for null.
  void tunnelIdMapIs(Dovel::Ptr<TesselCentral::VtepIpToTnlIdNhIdMap> const& map);
  /// The record that was watched; null if there was none.
  Dovel::Ptr<TesselCentral::VtepIpToTnlIdNhIdMap> tunnelIdMapDel(Meshal::IpGenAddr const& vtep);
  void tunnelIdMapDelAll();
  /// Writes the tunnel's status if the ids that its type needs are in. REQUIRES: the VTEP has a record.
  void maybeUpdateHwTunnelStatus(Meshal::IpGenAddr const& dstIpAddr);
  /// The same for the VTEP of `watcher`. REQUIRES: the caller keeps the watcher.
  void maybeUpdateHwTunnelStatus(NestedSm_TunnelIdMap& watcher);

  /// Whether the VTEP has an EVPN flood tunnel as well; false for a VTEP without a record.
  bool isHerEvpnTunnel(Meshal::IpGenAddr const& vtep) const;
  void handleLogicalFapId();
  void handleLogicalFapId(LogicalFap::LogicalFapId fapId);

 protected:
  /// Subscribes, creates the doorbell and the overlay programmer of the chip, and watches the present records that have
  /// a tunnel of this type.
  explicit HwTunnelProgrammerBase(TunnelProgrammerInputs const& inputs);

  // What tunnel types change.

  /// False stops the creation.
  virtual bool doPreTunnelCreate(ConfigEntry const&) { return true; }
  virtual void doPostTunnelCreate(ConfigEntry const&) {}
  /// The local VTEP of the family; unspecified if there is none.
  virtual Meshal::IpGenAddr getVtepIp(Meshal::AddressFamily af) const;
  /// Writes underlay and overlay entries of the tunnel.
  virtual void programTunnelTables(ConfigEntry const& entry, Handle const& vpHandle);
  /// Writes both ids into the tunnel's status and removes the former generation's. REQUIRES: the VTEP has a record.
  virtual void maybeUpdateHwTunnelIdNhId(Meshal::IpGenAddr const& vtep);
  /// The same with the next-hop id that `nextHopId` names, given the status of the configuration in force.
  using NextHopIdOf = Kiln::FunctionRef<Vane::VaneNextHopId(TesselCentral::VtepIpToTnlIdNhIdMap& map,
                                                            Vane::HwTunnelStatusEntry const& status)>;
  void updateStatus(Meshal::IpGenAddr const& vtep, NextHopIdOf const& nextHopId);

  // What tunnel types share.

  /// The MLAG address where there is one, so that a pair sources its tunnels alike, else the local VTEP.
  Meshal::IpGenAddr getVtepIpHelper(Meshal::AddressFamily af) const;
  /// The overlay entry's handle; null if it must not be programmed for this tunnel.
  Handle programOverlayTableEntry(Vane::TunnelKey const& tunnelKey, bool ecmp, Handle const& vpHandle,
                                  Handle const& nextHop2Handle);
  /// The entry for traffic without a resolved next hop. Never null.
  Handle defaultNextHop() const;
  static unsigned resolvedNextHops(Vane::NextHopEntryList const& list);

  // Flooding: the record of a flood VTEP, with a remap entry for each port that its copies leave by.

  /// Brings record and remap entries of the tunnel's VTEP to these next hops. A VTEP gets an encapsulation id with its
  /// first one, and loses it with its last. Throws the range exception of `Bridging::VlanId` for a next hop behind a
  /// VLAN interface that is no VLAN. REQUIRES: at least one next hop, and an encapsulation id left in the pool.
  void programEpreTable(ConfigEntry const& entry, FinalNextHopSet const& finalNextHops);
  void deleteEpreTable(Vane::TunnelKey const& tunnelKey);
  /// The same and, on chips that have such tables, the VTEP's row for replicated packets.
  void deleteFloodTables(Vane::TunnelKey const& tunnelKey);
  void uniqueNhIdValueInc(std::uint32_t step) { uniqueNhIdValue_ += step; }

 private:
  using Watcher = Dovel::Ptr<NestedSm_TunnelIdMap>;

  void handleInitialized();
  void handleVtepMap(Meshal::IpGenAddr const& vtep);
  void handleHwTunnelNextHopUpdate(Meshal::IpGenAddr const& vtep);
  void handleDscpPropagation();
  void handleTosBasePtr();

  /// Whether the tables were reached with `entry` in force.
  bool doTunnelCreateCommon(ConfigEntry const& entry);
  /// The VTEP's watcher, with `entry` in force and its key in the record; null for a generation older than the one in
  /// force.
  Watcher recordTunnelKey(ConfigEntry const& entry);
  /// What brought a generation.
  enum class Event : std::uint8_t { creation, nextHop };
  /// Puts the generation of `entry` in force; false if it is not, or no longer.
  bool acceptGeneration(NestedSm_TunnelIdMap& watcher, ConfigEntry const& entry, Event event);
  /// The address that the port's header is sourced from: `localVtep`, but the unicast tunnel's at a VTEP that a member
  /// tunnel shares with one, so that they do not rewrite their port in turns.
  Meshal::IpGenAddr headerSource(Meshal::IpGenAddr const& vtep, Meshal::IpGenAddr const& localVtep) const;
  /// The outer header's handle; null while it can't be built.
  Handle programEgrL3TunnelTable(Meshal::IpGenAddr const& srcIpAddr, Meshal::IpGenAddr const& dstIpAddr);
  /// False while the status shows that the tunnel's overlay entry failed under its present tunnel id.
  bool isNexthopIdProgrammed(NestedSm_TunnelIdMap& watcher) const;
  void handleSipEntry(Meshal::IpGenAddr const& vtepIp, Handle const& vpHandle, bool add);

  TesselL3Common::EncapId getEncapId();
  void releaseEncapId(TesselL3Common::EncapId encapId);
  /// The port that copies to a next hop leave by.
  Meshal::IntfId getCorePort(Vane::NextHopEntry const& nextHop) const;
  Dovel::Ptr<TesselL3Common::TesselVxlanBumVtepConfig> bumVtepConfigOf(Meshal::IpGenAddr const& vtep);
  void programEpreEntry(TesselL3Common::TesselVxlanBumVtepConfig& config, Vane::NextHopEntry const& nextHop);
  void deleteEpreEntryByPort(Vane::TunnelKey const& tunnelKey, Meshal::IntfId port);
  /// Ends the record of a VTEP that has no next hop.
  void releaseIfUnused(Meshal::IpGenAddr const& vtep);

  void deleteTunnelUnderlayTables(TesselCentral::VtepIpToTnlIdNhIdMap& tnlIdMap, Vane::TunnelKey const& tunnelKey);
  void deleteOverlayTableEntry(TesselCentral::VtepIpToTnlIdNhIdMap& tnlIdMap, Vane::TunnelKey const& tunnelKey);
  /// Removes the status of `key`, unless a subscriber has put the key in force again. Traces `why`.
  void deleteTunnelStatus(Vane::TunnelKey const& key, char const* why);

  /// The status of the configuration in force, which is made if there is none. Null if a subscriber has changed what is
  /// in force.
  NestedSm_TunnelIdMap::StatusEntry statusIs(NestedSm_TunnelIdMap& watcher);
  /// The next-hop id of the tunnel's own type.
  Vane::VaneNextHopId nextHopIdOf(TesselCentral::VtepIpToTnlIdNhIdMap& map);
  void keepUniqueNhId(TesselCentral::VtepIpToTnlIdNhIdMap& map);
  /// REQUIRES: the record has a key that was replaced.
  void endOldGeneration(TesselCentral::VtepIpToTnlIdNhIdMap& map);
  /// Finds the VTEP by `nhId` from now on, no longer by a former id; by none for an id that is not one.
  void publishedNextHopIdIs(NestedSm_TunnelIdMap& watcher, Vane::VaneNextHopId nhId);
  /// Forgets the VTEP of `nhId` unless it is still active, when its end has an entry to remove.
  void forgetInactive(Vane::VaneNextHopId nhId, Meshal::IpGenAddr const& vtep);

  /// One pass of `updateEgrL3TunnelTable`.
  struct HeaderPass {
    bool vxlanUdpPortChanged;
    bool oneHeaderForAll;        ///< IPv4 headers are keyed by source alone.
    bool sharedWritten = false;  ///< The one IPv4 header of the pass has been written.
  };
  /// Whether the configuration, or a newer generation of it, is in force and created.
  bool isCreated(Vane::HwTunnelConfigEntry const& entry) const;
  /// False ends the pass.
  bool updateHeader(HeaderPass& pass, ConfigEntry const& entry);
  Handle headerOf(HeaderPass& pass, Meshal::IpGenAddr const& local, Meshal::IpGenAddr const& vtep);
  void handleVxlanDataPathLearning(Vane::TunnelKey const& key);
  void updateVpTableInPlace(Vane::TunnelKey const& tunnelKey, Handle const& egrL3Handle);

  TesselCentral::ChipInfo chipInfo_;
  TunnelIdMaps tunnelIdMap_{*this};
};

}  // namespace TesselVxlan
