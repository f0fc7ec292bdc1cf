#include "TesselVxlan/overlay/EpreEdevConfigCcbeSm.h"

#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("EpreEdevConfigCcbeSm");

namespace TesselVxlan {

using TesselCentral::FeatureAgentCommonSmData;
using TesselEpre::EpreCcbeNextHopRemapTable;
using TesselL3Common::TesselVxlanState;

namespace {

/// The set-up of the engine, one pattern of bits for all chips.
constexpr std::uint32_t deviceConfig = 0x40007FFF;

// Codes of the chip's row formats.
constexpr std::uint8_t remapToNextHop = 12;
constexpr std::uint8_t remapToUnderlayFlood = 14;

}  // namespace

EpreEdevConfigCcbeSm::EpreEdevConfigCcbeSm(Dovel::Ptr<Stateway::EntityManager> statewayEm,
                                           Dovel::Ptr<FeatureAgentCommonSmData const> fcsd,
                                           Dovel::Ptr<Kiln::Dir> tableDir,
                                           Dovel::Ptr<EpreCcbeNextHopRemapTable> epreCcbeNextHopRemapTable,
                                           Dovel::Ptr<VirtualPortProgrammer const> virtualPortProgrammer,
                                           Dovel::Ptr<NextHopTableProgrammer const> nextHopTableProgrammer,
                                           Dovel::Ptr<TesselVxlanState const> vxlanState, bool vxlanUnderlayFloodingHw)
    : statewayEm_(std::move(statewayEm)),
      fcsd_(*this, std::move(fcsd), Kiln::SubscribeOnly{}),
      tableDir_(std::move(tableDir)),
      epreCcbeNextHopRemapTable_(std::move(epreCcbeNextHopRemapTable)),
      virtualPortProgrammer_(std::move(virtualPortProgrammer)),
      nextHopTableProgrammer_(std::move(nextHopTableProgrammer)),
      vxlanState_(*this, std::move(vxlanState), Kiln::SubscribeOnly{}),
      vxlanUnderlayFloodingHw_(vxlanUnderlayFloodingHw) {
  handleInitialized();
  handleLogicalFapId();
}

void EpreEdevConfigCcbeSm::handleInitialized() { initialized_ = true; }

void EpreEdevConfigCcbeSm::writeEpreRegister() {
  EpreEdevConfigCcbeRegister::Entry entry;
  entry.value = deviceConfig;
  epreEdevConfigCcbeRegister()->entryCommit(Asic::Index(0), entry);
}

EpreCcbeNextHopRemapTable::Entry EpreEdevConfigCcbeSm::entryOf(Meshal::IpGenAddr const& vtep,
                                                               TesselL3Common::L3NextHop2Key const& nextHop) const {
  EpreCcbeNextHopRemapTable::Entry entry;
  entry.virtualPortHandle = virtualPortProgrammer()->virtualPortTable()->entryWeakRef(vtep);
  entry.l3NextHop2Handle = nextHopTableProgrammer()->l3NextHop2Table()->entryWeakRef(nextHop);
  entry.remapType = vxlanUnderlayFloodingHw() ? remapToUnderlayFlood : remapToNextHop;
  return entry;
}

EpreEdevConfigCcbeSm::Handle EpreEdevConfigCcbeSm::writeRemapObjectEntry(TesselEpre::EpreRemapKey const& remapKey,
                                                                         Vane::NextHopEntry const& nextHopEntry) {
  TRACE(1, ", Programming key: {}, nextHopEntry: {}", remapKey, nextHopEntry);
  auto const entry = entryOf(remapKey.vtep, {nextHopEntry.ethAddr(), nextHopEntry.l3Intf()});
  TRACE(1, "vxlanUnderlayFloodingHw {}, adding: {}", vxlanUnderlayFloodingHw(), entry);
  return epreCcbeNextHopRemapTable()->entryCommit(remapKey, entry);
}

void EpreEdevConfigCcbeSm::delRemapObjectEntry(TesselEpre::EpreRemapKey const& remapKey) {
  TRACE(1, ", removing key: {}", remapKey);
  epreCcbeNextHopRemapTable()->entryRemove(remapKey);
}

void EpreEdevConfigCcbeSm::programDefaultEpreEntry() {
  TRACE(1, "programDefaultEpreEntry");
  if (!vxlanState()->vxlanDefaultEpreEnabled() || !vxlanState()->vxlanDefaultEpreReady()) return;
  auto const entry = entryOf({}, {});
  TRACE(1, ", adding: {}", entry);
  epreCcbeNextHopRemapTable()->entryWriteAtIndex(Asic::Index(0), {}, entry);
}

void EpreEdevConfigCcbeSm::fcsdDispatch(Dovel::Change const& change) {
  if (change.id != FeatureAgentCommonSmData::logicalFapId) return;
  // The table of a logical chip that has left stays as it is.
  auto const fapId = change.keyAs<LogicalFap::LogicalFapId>();
  if (fcsd()->logicalFapHas(fapId)) handleLogicalFapId(fapId);
}

void EpreEdevConfigCcbeSm::vxlanStateDispatch(Dovel::Change const& change) {
  if (change.id == TesselVxlanState::vxlanDefaultEpreEnabledId ||
      change.id == TesselVxlanState::vxlanDefaultEpreReadyId) {
    programDefaultEpreEntry();
  }
}

void EpreEdevConfigCcbeSm::handleLogicalFapId() {
  for (auto const& fapId : Kiln::keysOf(fcsd()->logicalFapColl())) {
    TRACE(1, " default function, logicalFapId: {}", fapId);
    handleLogicalFapId(fapId);
  }
}

void EpreEdevConfigCcbeSm::handleLogicalFapId(LogicalFap::LogicalFapId fapId) {
  auto const logicalModInfo = fcsd()->logicalFap(fapId);
  INVARIANT(logicalModInfo);
  TRACE(1, " logicalFapId: {}", fapId);
  if (!epreEdevConfigCcbeRegister()) {
    epreEdevConfigCcbeRegister_ = epreEdevConfigCcbeRegisterFactory();
    Asic::bringUp(*epreEdevConfigCcbeRegister(), statewayEm(), TesselCentral::ChipInfo(*logicalModInfo));
    writeEpreRegister();
  } else {
    TRACE(1, " Tables already Initialized");
  }
  programDefaultEpreEntry();
}

}  // namespace TesselVxlan
