#pragma once

#include "TesselVxlan/nexthop/NextHopTableProgrammer.h"
#include "TesselVxlan/nexthop/VirtualPortTableProgrammer.h"
#include "platform/dovel/Factory.h"
#include "platform/kiln/Dir.h"
#include "platform/kiln/Sm.h"
#include "platform/tessel/l3common/TesselVxlanState.h"
#include "platform/tessel/tables/EpreTables.h"

namespace TesselVxlan {

/// Writes the remap entries of the replication engine, which give each copy of a flooded packet its virtual port and
/// its next hop, and sets up the engine.
///
/// In: the logical chips, and two flags of `vxlanState` that the default entry needs. Out:
/// `EpreEdevConfigCcbeRegister`, once; the remap table, of which this is the only writer. Which entries exist is the
/// tunnel programmers' business. Main thread only. Virtual port and next hop exist as long as an entry has their
/// handles.
class EpreEdevConfigCcbeSm final : public Kiln::Sm {
  KILN_BASE_TYPE(TesselVxlan::EpreEdevConfigCcbeSm)

  void fcsdDispatch(Dovel::Change const& change);
  void vxlanStateDispatch(Dovel::Change const& change);

  KILN_FIXED(0x102, Dovel::Ptr<Stateway::EntityManager>, statewayEm)
  KILN_WATCHED(0x103, TesselCentral::FeatureAgentCommonSmData const, fcsd, &KilnSelf::fcsdDispatch, nullptr)
  KILN_FIXED(0x104, Dovel::Ptr<Kiln::Dir>, tableDir)
  KILN_FIXED(0x105, Dovel::Ptr<TesselEpre::EpreCcbeNextHopRemapTable>, epreCcbeNextHopRemapTable)
  KILN_FIXED(0x106, Dovel::Ptr<VirtualPortProgrammer const>, virtualPortProgrammer)
  KILN_FIXED(0x107, Dovel::Ptr<NextHopTableProgrammer const>, nextHopTableProgrammer)
  KILN_WATCHED(0x108, TesselL3Common::TesselVxlanState const, vxlanState, &KilnSelf::vxlanStateDispatch, nullptr)
  KILN_FIXED(0x109, bool, vxlanUnderlayFloodingHw)
  KILN_FIXED(0x10a, Dovel::Ptr<EpreEdevConfigCcbeRegister>, epreEdevConfigCcbeRegister)  ///< Null without a chip.
  KILN_FIXED(0x10b, bool, initialized)

 public:
  using Handle = Asic::SwTableBase::EntryHandle::PtrConst;

  /// Sets up the engine of each present logical chip.
  EpreEdevConfigCcbeSm(Dovel::Ptr<Stateway::EntityManager> statewayEm,
                       Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd, Dovel::Ptr<Kiln::Dir> tableDir,
                       Dovel::Ptr<TesselEpre::EpreCcbeNextHopRemapTable> epreCcbeNextHopRemapTable,
                       Dovel::Ptr<VirtualPortProgrammer const> virtualPortProgrammer,
                       Dovel::Ptr<NextHopTableProgrammer const> nextHopTableProgrammer,
                       Dovel::Ptr<TesselL3Common::TesselVxlanState const> vxlanState, bool vxlanUnderlayFloodingHw);

  /// REQUIRES: the register exists.
  void writeEpreRegister();
  /// The entry of a port and a VTEP, with the present rows of the VTEP's virtual port and of the next hop; a missing
  /// one reads as none. Never null. The caller keeps the next hop's row until the call has returned.
  Handle writeRemapObjectEntry(TesselEpre::EpreRemapKey const& remapKey, Vane::NextHopEntry const& nextHopEntry);
  /// No effect for a key without entry.
  void delRemapObjectEntry(TesselEpre::EpreRemapKey const& remapKey);
  /// Writes the default entry at row 0 if both flags of `vxlanState` allow it.
  void programDefaultEpreEntry();

  void handleInitialized();
  void handleLogicalFapId();
  void handleLogicalFapId(LogicalFap::LogicalFapId fapId);

 private:
  TesselEpre::EpreCcbeNextHopRemapTable::Entry entryOf(Meshal::IpGenAddr const& vtep,
                                                       TesselL3Common::L3NextHop2Key const& nextHop) const;
};

inline constexpr Dovel::Factory<EpreEdevConfigCcbeSm> epreEdevConfigCcbeSmFactory;

}  // namespace TesselVxlan
