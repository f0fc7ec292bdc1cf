#pragma once

#include "TesselVxlan/nexthop/NextHopTableProgrammerBase.h"
#include "TesselVxlan/nexthop/VxlanL3Oif1TableProgrammer.h"
#include "platform/dovel/Factory.h"
#include "platform/kiln/Dir.h"
#include "platform/tessel/features/TesselChipAttributesVxlan.h"
#include "platform/tessel/l3/EgrL3OifHelper.h"
#include "platform/tessel/l3/L3Intf.h"
#include "platform/tessel/tables/HerNextHopTables.h"
#include "platform/vane/NextHopEntry.h"
#include "platform/vane/TunnelKey.h"

namespace TesselVxlan {

/// Writes the next hops of replicated packets on chips that have tables of their own for them: a row of
/// `HerNextHop1Table` for each VTEP, and one of `HerNextHop2Table` for each pair of MAC address and interface.
///
/// Reads the interface table and the egress interfaces. Only writer of both tables. Main thread only. A row of the
/// second table belongs to the rows of the first that hold its handle. Publishes nothing and reports nothing: the state
/// of a row is in its handle alone.
class HerNextHopTableProgrammer final : public NextHopTableProgrammerBase {
  KILN_TYPE(TesselVxlan::HerNextHopTableProgrammer, TesselVxlan::NextHopTableProgrammerBase)
  KILN_FIXED(0x104, Dovel::Ptr<VaneL3Intf::Table const>, vaneL3IntfTable)
  KILN_FIXED(0x105, Dovel::Ptr<VxlanL3Oif1TableProgrammer>, l3Oif1TableProgrammer)
  KILN_FIXED(0x106, Dovel::Ptr<TesselL3Tunnel::L3TunnelEgrL3OifHelper const>, l3Oif2TableHelper)
  KILN_FIXED(0x107, Dovel::Ptr<TesselChipAttributesVxlan const>, vxlanAttributes)  ///< Null before `initTables`.
  KILN_ATTR(0x108, Dovel::Ptr<Kiln::Dir>, mountPath)                 ///< Where the first table is created.
  KILN_FIXED(0x109, Dovel::Ptr<HerNextHop1Table>, herNextHop1Table)  ///< Null if the chip has none, as the second.
  KILN_FIXED(0x10a, Dovel::Ptr<HerNextHop2Table>, herNextHop2Table)

 public:
  HerNextHopTableProgrammer(Dovel::Ptr<Stateway::EntityManager> statewayEm,
                            Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
                            Dovel::Ptr<VaneL3Intf::Table const> vaneL3IntfTable,
                            Dovel::Ptr<VxlanL3Oif1TableProgrammer> l3Oif1TableProgrammer,
                            Dovel::Ptr<TesselL3Tunnel::L3TunnelEgrL3OifHelper const> l3Oif2TableHelper);

  /// REQUIRES: `mountPath` is set.
  void initTables(TesselCentral::ChipInfo const& chipInfo) override;

  // REQUIRES of both: the chip has the tables.
  /// The VTEP's row, written anew over this next hop. Never null.
  Handle insertEntry(Vane::TunnelKey const& tunnelKey, Vane::NextHopEntry const& nextHopEntry, Handle const& vpHandle);
  /// No effect for a VTEP without row.
  void deleteEntry(Meshal::IpGenAddr const& vtepIp);
};

inline constexpr Dovel::Factory<HerNextHopTableProgrammer> herNextHopTableProgrammerFactory;

}  // namespace TesselVxlan
