#pragma once

#include "TesselVxlan/nexthop/VpLagEcmpProgrammer.h"
#include "platform/dovel/Factory.h"
#include "platform/kiln/Dir.h"
#include "platform/local/EntityManager.h"
#include "platform/tessel/tables/EcmpGroup1Table.h"
#include "platform/tessel/tables/VirtualPortTableMerged.h"
#include "platform/tessel/tables/VpLagTables.h"

namespace TesselVxlan {

/// The programmer of chips whose overlay next hops are an ECMP level of their own: a group is a row of
/// `VpLagGroupTable` over a block of `VpLagEcmpMember0Table`, whose rows refer to the virtual port and to the underlay
/// group of each member.
///
/// A group holds its block, the block what its rows refer to. Both tables are null on a chip without them; nothing is
/// written then.
class VpLagEcmpCascadeProgrammer final : public VpLagEcmpProgrammer {
  KILN_TYPE(TesselVxlan::VpLagEcmpCascadeProgrammer, TesselVxlan::VpLagEcmpProgrammer)
  KILN_FIXED(0x106, Dovel::Ptr<Kiln::Dir>, mountPath)  ///< Where the group table is created.
  KILN_FIXED(0x107, Dovel::Ptr<TesselL3Tunnel::EcmpGroup1Table>, ecmpGroup1Table)
  KILN_FIXED(0x108, Dovel::Ptr<VpLagEcmpMember0Table>, vpLagEcmpMember0Table)
  KILN_FIXED(0x109, Dovel::Ptr<VpLagGroupTable>, vpLagGroupTable)
  KILN_FIXED(0x10a, Dovel::Ptr<Kiln::Dir>, ecmpNhTableDir)
  KILN_FIXED(0x10b, Dovel::Ptr<Local::EntityStore const>, localEntityStore)
  KILN_FIXED(0x10c, Dovel::Ptr<TesselL3Common::VirtualPortTableMerged>, virtualPortTable)

 public:
  VpLagEcmpCascadeProgrammer(Dovel::Ptr<Stateway::EntityManager> statewayEm,
                             Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
                             Dovel::Ptr<TesselCentral::VxlanToL2State const> vxlanToL2State,
                             Dovel::Ptr<Local::EntityStore const> localEntityStore,
                             Dovel::Ptr<VxlanVtepGroupTunnelIdMapDir> vtepGrpTnlIdMapDir);

  /// REQUIRES: the local entities have the directories of virtual ports and of ECMP groups.
  void initTables(TesselCentral::ChipInfo const& chipInfo) override;
  Handle insertEntry(Dovel::Ptr<Vane::VXLAN::VaneVtepGroupConfig const> const& vaneVtepGroupConfig,
                     Vane::VXLAN::VaneVtepGroupKey const& key) override;
  void deleteEntry(Vane::VXLAN::VaneVtepGroupKey const& key) override;

  TesselCentral::ChipInfo const& chipInfo() const { return chipInfo_; }

 private:
  struct Response;

  /// Takes the tables that other programmers write too, or makes them.
  void initSharedTables(TesselCentral::ChipInfo const& chipInfo);
  void initVpLagMember0Table(TesselCentral::ChipInfo const& chipInfo);
  VpLagEcmpMember0Table::Entry memberOf(Meshal::IpGenAddr const& vtepIp, std::uint32_t adjId) const;
  void handleWrite(Vane::VXLAN::VaneVtepGroupKey const& key, EntryState state) const;

  TesselCentral::ChipInfo chipInfo_;  ///< Of the stage at which the group's own tables are brought up.
};

inline constexpr Dovel::Factory<VpLagEcmpCascadeProgrammer> vpLagEcmpCascadeProgrammerFactory;

}  // namespace TesselVxlan
