#pragma once

#include "TesselVxlan/nexthop/NextHopTableProgrammer.h"
#include "platform/dovel/Factory.h"
#include "platform/kiln/Dir.h"
#include "platform/tessel/tables/EcmpGroup1Table.h"
#include "platform/tessel/tables/EcmpMember1Table.h"
#include "platform/vane/HwTunnel.h"

namespace TesselVxlan {

/// Keeps the underlay ECMP groups: one group per adjacency, shared by all tunnels over it.
///
/// Reads the next hops of a tunnel's configuration. Writes their rows through `nextHopTableProgrammer`, then a block of
/// `EcmpMember1Table`, then the group in `EcmpGroup1Table`. A full chip shows in the tables above, not here.
/// Main thread only.
/// An overlay row holds its group, the group its block, the block its next hops: all are removed with their last
/// holder. On a chip without ECMP members the tables stay null.
class UnderlayEcmpProgrammer final : public NextHopTableProgrammerBase {
  KILN_TYPE(TesselVxlan::UnderlayEcmpProgrammer, TesselVxlan::NextHopTableProgrammerBase)
  KILN_FIXED(0x104, Dovel::Ptr<TesselVxlan::NextHopTableProgrammer>, nextHopTableProgrammer)
  KILN_ATTR(0x105, Dovel::Ptr<Kiln::Dir>, mountPath)  ///< Where the group table is created.
  KILN_ATTR(0x106, Dovel::Ptr<TesselL3Tunnel::EcmpGroup1Table>, ecmpGroup1Table)
  KILN_ATTR(0x107, Dovel::Ptr<TesselVxlan::EcmpMember1Table>, ecmpMember1Table)

 public:
  UnderlayEcmpProgrammer(Dovel::Ptr<Stateway::EntityManager> statewayEm,
                         Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
                         Dovel::Ptr<NextHopTableProgrammer> nextHopTableProgrammer);

  /// REQUIRES: `mountPath` is set, and the chip has ECMP members.
  void initTables(TesselCentral::ChipInfo const& chipInfo) override;

  /// The group of a tunnel's next hops, under the adjacency of their list: a group that changes keeps its row. Weak if
  /// the group is present as wanted, else a reference: keep it until it is stored in an entry. Null, and no group
  /// written, if one of the next hops can't be programmed or the chip has no ECMP members. REQUIRES: the list has a
  /// resolved next hop; entries of other types are passed over. All lists of one adjacency have the same next hops,
  /// those of former generations too: the group has those of the last call.
  Handle insertEntry(Dovel::Ptr<Vane::HwTunnelConfigEntry const> const& tunnelConfigEntry);

 private:
  /// What a group was built from when it was last found or written.
  struct Cached {
    Vane::NextHopEntrySet nextHops;
    std::uint64_t serial = 0;  ///< Of the list they were read from, which is compared first.
    std::uint64_t revision = 0;
  };

  /// A weak handle of the group, if it was built from exactly these next hops and none of their rows has changed since,
  /// else null.
  Handle cachedGroup(TesselL3Common::L3AdjIdKey const& groupKey, Vane::NextHopEntryList const& list) const;
  void cache(TesselL3Common::L3AdjIdKey const& groupKey, Cached&& cached);
  /// The block of the resolved next hops; null if one can't be programmed. Counts them in `members`.
  Handle memberBlock(Vane::HwTunnelConfigEntry const& tunnelConfigEntry, std::uint16_t& members);

  Kiln::HashMap<TesselL3Common::L3AdjIdKey, Cached> cached_;
};

inline constexpr Dovel::Factory<UnderlayEcmpProgrammer> underlayEcmpProgrammerFactory;

}  // namespace TesselVxlan
