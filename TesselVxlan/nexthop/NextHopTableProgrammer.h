#pragma once

#include "TesselVxlan/nexthop/NextHopTableProgrammerBase.h"
#include "platform/dovel/Factory.h"
#include "platform/kiln/Dir.h"
#include "platform/tessel/l3/EgrL3OifHelper.h"
#include "platform/tessel/l3/L3Intf.h"
#include "platform/tessel/tables/IpmcTable.h"
#include "platform/tessel/tables/L3NextHop2Table.h"
#include "platform/vane/NextHopEntry.h"
#include "platform/vane/TunnelKey.h"

namespace TesselVxlan {

/// Keeps the underlay next hops: one row of `L3NextHop2Table` for each pair of MAC address and layer 3 interface.
///
/// Reads the interface table, the egress interfaces and, for next hops that flood, the multicast table. Writes
/// `L3NextHop2Table` with its two fixed rows; a full table shows as an operator message alone.
/// Main thread only. The table is the only memory, but for a count of changes that validates what is derived from rows.
/// The rows belong to the entries that store their handles; the fixed rows stay. The table holds a reference to this
/// object until it has written.
class NextHopTableProgrammer final : public NextHopTableProgrammerBase {
  KILN_TYPE(TesselVxlan::NextHopTableProgrammer, TesselVxlan::NextHopTableProgrammerBase)
  KILN_FIXED(0x104, Dovel::Ptr<VaneL3Intf::Table const>, vaneL3IntfTable)
  KILN_FIXED(0x105, Dovel::Ptr<TesselL3Tunnel::L3TunnelEgrL3OifHelper const>, l3Oif2TableHelper)
  KILN_ATTR(0x106, bool, l2IfSupported)             ///< What the chip says, read in `initTables`.
  KILN_FIXED(0x107, bool, vxlanUnderlayFloodingHw)  ///< A next hop without an egress interface floods its VLAN.
  KILN_ATTR(0x108, Dovel::Ptr<TesselL3Common::L3NextHop2Table>, l3NextHop2Table)
  KILN_FIXED(0x109, Dovel::Ptr<TesselL3::RoutingStatus const>, routingStatus)
  KILN_FIXED(0x10a, Dovel::Ptr<TesselMcast::IpmcTable const>, ipmcTable)
  KILN_ATTR(0x10b, Dovel::Ptr<Kiln::Dir>, mountPath)  ///< Where the table is created.

 public:
  NextHopTableProgrammer(Dovel::Ptr<Stateway::EntityManager> statewayEm,
                         Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
                         Dovel::Ptr<TesselL3::RoutingStatus const> routingStatus,
                         Dovel::Ptr<VaneL3Intf::Table const> vaneL3IntfTable,
                         Dovel::Ptr<TesselL3Tunnel::L3TunnelEgrL3OifHelper const> l3Oif2TableHelper,
                         Dovel::Ptr<TesselMcast::IpmcTable const> ipmcTable, bool vxlanUnderlayFloodingHw);

  /// REQUIRES: `mountPath` is set.
  void initTables(TesselCentral::ChipInfo const& chipInfo) override;

  /// The row of a next hop, written only where it differs from the present one or was refused: compared first, so that
  /// a repeated insert is free. Null if its port is not known; the caller tries again when the next hop changes. Weak
  /// if the row is present as wanted, else a reference: keep it until it is stored in an entry. Throws the range
  /// exception of `Bridging::VlanIdOrNone` for an interface with a VLAN beyond it.
  Handle insertEntry(Vane::TunnelKey const& tunnelKey, Vane::NextHopEntry const& nextHopEntry);

  /// Stays the same as long as a repeated insert of the same next hop would write nothing. A flood group's row may
  /// change at any time: the number is of no use on a chip that floods the underlay.
  std::uint64_t revision();

  /// Writes row 0, which a chip without a reserved row of its own keeps free. Called by `initTables`.
  void programReservedNextHopEntry();
  /// Writes the row that drops. Called by `initTables`.
  void programDropNextHopEntry();

 private:
  /// The VLAN of an interface, 0 if it has none.
  Bridging::VlanIdOrNone vlanOf(Meshal::IntfId l3Intf) const;
  struct Response;

  void respond(Meshal::EthAddr macAddr, EntryState state);
  /// Fills the destination fields; false if the destination is not known.
  bool fillDestination(TesselL3Common::L3NextHop2Key const& key, Vane::NextHopEntry const& nextHopEntry,
                       TesselL3Common::L3NextHop2Table::Entry& entry) const;
  void fillFlood(TesselL3Common::L3NextHop2Key const& key, TesselL3Common::L3NextHop2Table::Entry& entry) const;

  std::uint64_t changes_ = 0;                       ///< Writes, refusals and other port configurations.
  Dovel::Ptr<TesselCentral::PortConfigDir> ports_;  ///< Which `revision` counted last.
};

inline constexpr Dovel::Factory<NextHopTableProgrammer> nextHopTableProgrammerFactory;

}  // namespace TesselVxlan
