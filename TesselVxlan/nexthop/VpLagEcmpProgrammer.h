#pragma once

#include "TesselVxlan/frame/TesselVxlanTypes.h"
#include "platform/asic/SwTable.h"
#include "platform/kiln/Attribute.h"
#include "platform/stateway/EntityManager.h"
#include "platform/tessel/central/CommonData.h"
#include "platform/tessel/central/VxlanToL2State.h"
#include "platform/vane/VtepGroup.h"

namespace TesselVxlan {

/// Writes the groups of VTEPs into a chip's tables: what the chips differ in.
///
/// In: the hardware tunnels of the member VTEPs, by `vxlanToL2State`. Out: the id of each group that has a map in
/// `vtepGrpTnlIdMapDir`. Main thread only.
class VpLagEcmpProgrammer : public Dovel::Node {
  KILN_BASE_TYPE(TesselVxlan::VpLagEcmpProgrammer)
  KILN_FIXED(0x102, Dovel::Ptr<Stateway::EntityManager>, statewayEm)
  KILN_FIXED(0x103, Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const>, fcsd)
  KILN_FIXED(0x104, Dovel::Ptr<TesselCentral::VxlanToL2State const>, vxlanToL2State)
  KILN_FIXED(0x105, Dovel::Ptr<VxlanVtepGroupTunnelIdMapDir>, vtepGrpTnlIdMapDir)

 public:
  using EntryState = Asic::SwTableBase::EntryState;
  using Handle = Asic::SwTableBase::EntryHandle::PtrConst;

  /// Makes the tables and leaves them empty; tables that it shares with other programmers only if they don't exist yet.
  /// REQUIRES: before every other operation.
  virtual void initTables(TesselCentral::ChipInfo const& chipInfo) = 0;
  /// Writes or rewrites a group with those of its members that have an adjacency. A weak handle; null if nothing was
  /// written: a member has no tunnel yet (the former group stays), or no member has an adjacency (the group is
  /// removed).
  virtual Handle insertEntry(Dovel::Ptr<Vane::VXLAN::VaneVtepGroupConfig const> const& vaneVtepGroupConfig,
                             Vane::VXLAN::VaneVtepGroupKey const& key) = 0;
  /// No effect for a group that is not written.
  virtual void deleteEntry(Vane::VXLAN::VaneVtepGroupKey const& key) = 0;

 protected:
  VpLagEcmpProgrammer(Dovel::Ptr<Stateway::EntityManager> statewayEm,
                      Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
                      Dovel::Ptr<TesselCentral::VxlanToL2State const> vxlanToL2State,
                      Dovel::Ptr<VxlanVtepGroupTunnelIdMapDir> vtepGrpTnlIdMapDir)
      : statewayEm_(std::move(statewayEm)),
        fcsd_(std::move(fcsd)),
        vxlanToL2State_(std::move(vxlanToL2State)),
        vtepGrpTnlIdMapDir_(std::move(vtepGrpTnlIdMapDir)) {}
};

}  // namespace TesselVxlan
