#include "TesselVxlan/overlay/TesselVxlanECNSm.h"

#include <array>

#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"
#include "platform/tessel/features/ChipAttributes.h"
#include "platform/tessel/features/EgrL3TunnelTableAttributes.h"
#include "platform/tessel/values/EcnIntCnValues.h"

KILN_TRACE_FILE("TesselVxlanECNSm");

namespace TesselVxlan {

using TesselCentral::FeatureAgentCommonSmData;
using TesselCentral::FlexQosIngEcnKey;
using TesselCommon::Qos::TrustStatus;

namespace {

// A mark's number in a row is that of the mark itself.
constexpr std::array allMarks{ecnIntCnNonEct, ecnIntCnEcnEct1, ecnIntCnEcnEct2, ecnIntCnEcnCe};
constexpr std::array capableMarks{ecnIntCnEcnEct1, ecnIntCnEcnEct2, ecnIntCnEcnCe};

// Codes of the chip's keys.
constexpr std::uint8_t noTunnel = 0;
constexpr std::array<std::uint8_t, 2> tunnelProfiles{1, 2};
constexpr std::array<std::uint8_t, 2> ecnFlags{0, 1};
constexpr std::uint8_t byRemarkMap = 1;
constexpr std::uint8_t byIntCn = 1;

FlexQosEcnEntry entryOf(EcnIntCnValues mark) {
  FlexQosEcnEntry entry;
  entry.ecn = U2(std::uint8_t{mark});
  return entry;
}

/// Two marks of a packet whose tunnel ends, and what becomes of them where marks are propagated. Where they are not,
/// the outer mark counts.
struct Propagated {
  EcnIntCnValues inner;
  EcnIntCnValues outer;
  EcnIntCnValues mark;
};
constexpr std::array propagated{Propagated{ecnIntCnEcnCe, ecnIntCnEcnEct1, ecnIntCnEcnCe},
                                Propagated{ecnIntCnEcnCe, ecnIntCnEcnEct2, ecnIntCnEcnCe},
                                Propagated{ecnIntCnEcnEct1, ecnIntCnEcnEct2, ecnIntCnEcnEct1}};

}  // namespace

TesselVxlanECNSm::TesselVxlanECNSm(Dovel::Ptr<Stateway::EntityManager> statewayEm,
                                   Dovel::Ptr<FeatureAgentCommonSmData const> fcsd,
                                   Dovel::Ptr<Vxlan::EcnConfig const> ecnConfig,
                                   Dovel::Ptr<TrustStatus const> qosTrustStatus)
    : statewayEm_(std::move(statewayEm)),
      fcsd_(*this, std::move(fcsd), Kiln::SubscribeOnly{}),
      ecnConfig_(*this, std::move(ecnConfig), Kiln::SubscribeOnly{}),
      qosTrustStatus_(*this, std::move(qosTrustStatus), Kiln::SubscribeOnly{}) {
  handleInitialized();
}

void TesselVxlanECNSm::fcsdDispatch(Dovel::Change const& change) {
  if (change.id == FeatureAgentCommonSmData::logicalFapId) {
    handleLogicalFapId(change.keyAs<LogicalFap::LogicalFapId>());
  }
}

void TesselVxlanECNSm::ecnConfigDispatch(Dovel::Change const&) { handleEcnPropagationTables(); }

void TesselVxlanECNSm::qosTrustStatusDispatch(Dovel::Change const& change) {
  if (change.id == TrustStatus::remarkBasePtrId) handleEcnPropagationTables();
}

void TesselVxlanECNSm::handleInitialized() { handleLogicalFapId(); }

void TesselVxlanECNSm::handleLogicalFapId() {
  for (auto const& fapId : Kiln::keysOf(fcsd()->logicalFapColl())) handleLogicalFapId(fapId);
}

void TesselVxlanECNSm::handleLogicalFapId(LogicalFap::LogicalFapId fapId) {
  TRACE(1, " fapId = {} initialized ={}", fapId, initialized());
  auto const logicalModInfo = fcsd()->logicalFap(fapId);
  if (!logicalModInfo || initialized()) return;
  INVARIANT(fcsd()->logicalModInfos());
  TesselCentral::ChipInfo const chipInfo(*logicalModInfo);
  initTables(chipInfo);
  initialized_ = true;
  TRACE(1, " Programming Default ING_ECN entries ");
  if (Tessel::isQosFeatureAgent(chipInfo)) programNonTunnelEcnEntries();
  auto const egrL3TunnelTableAttributes = TesselProfile::feature<EgrL3TunnelTableAttributes>(chipInfo);
  INVARIANT(egrL3TunnelTableAttributes);
  ecnTunnelTableAttributes_ = TesselProfile::feature<EcnTunnelTableAttributes>(chipInfo);
  INVARIANT(ecnTunnelTableAttributes());
  if (egrL3TunnelTableAttributes->tunnelEncapEcnDefaults()) programDefaultEntriesForTunnelEncap();
  if (ecnTunnelTableAttributes()->tunnelDecapEcnDefaults()) programDefaultEntriesForTunnelDecap();
  handleEcnPropagationTables();
}

void TesselVxlanECNSm::initTables(TesselCentral::ChipInfo const& chipInfo) {
  flexQoSEgrEcn6Table_ = flexQoSEgrEcn6TableFactory();
  flexQosIngEcn_ = flexQosIngEcnFactory();
  Asic::bringUp(*flexQoSEgrEcn6Table(), statewayEm(), chipInfo);
  INVARIANT(flexQoSEgrEcn6Table()->entrys() == 0);
  Asic::bringUp(*flexQosIngEcn(), statewayEm(), chipInfo);
  INVARIANT(flexQosIngEcn()->entrys() == 0);
}

void TesselVxlanECNSm::programNonTunnelEcnEntries() {
  for (auto const outer : allMarks) {
    for (auto const inner : allMarks) {
      for (auto const flag : ecnFlags) flexQosIngEcn()->entryCommit({noTunnel, inner, outer, flag}, entryOf(inner));
    }
  }
}

// A tunnel whose outer header carries no mark is left to the table's default.
void TesselVxlanECNSm::programDefaultEntriesForTunnelDecap() {
  for (auto const profile : tunnelProfiles) {
    for (auto const outer : capableMarks) {
      for (auto const inner : allMarks) {
        for (auto const flag : ecnFlags) flexQosIngEcn()->entryCommit({profile, inner, outer, flag}, entryOf(outer));
      }
    }
  }
}

void TesselVxlanECNSm::programDefaultEntriesForTunnelEncap() {
  for (auto const mark : capableMarks) flexQoSEgrEcn6Table()->entryCommit({.intCn = mark}, entryOf(mark));
}

void TesselVxlanECNSm::handleEcnPropagationTables() {
  if (!initialized()) return TRACE(1, " sm is not initialized ");
  bool const enabled = ecnConfig()->enabled();
  auto const remarkBasePtr = qosTrustStatus()->remarkBasePtr();
  TRACE(1, " ECN is enabled = {} remarkBasePtr = {}", enabled, remarkBasePtr);
  handleEncap(enabled, remarkBasePtr);
  handleDecap(enabled);
}

void TesselVxlanECNSm::handleEncap(bool enabled, std::uint8_t remarkBasePtr) {
  for (auto const mark : capableMarks) {
    for (auto const flag : ecnFlags) {
      FlexQosEgrEcn6Key const key{byRemarkMap, remarkBasePtr, byIntCn, mark, flag};
      if (enabled) {
        flexQoSEgrEcn6Table()->entryCommit(key, entryOf(mark));
      } else {
        flexQoSEgrEcn6Table()->entryRemove(key);
      }
    }
  }
}

void TesselVxlanECNSm::handleDecap(bool enabled) {
  for (auto const profile : tunnelProfiles) {
    for (auto const flag : ecnFlags) {
      for (auto const& row : propagated) {
        FlexQosIngEcnKey const key{profile, row.inner, row.outer, flag};
        if (enabled || ecnTunnelTableAttributes()->tunnelDecapEcnDefaults()) {
          flexQosIngEcn()->entryCommit(key, entryOf(enabled ? row.mark : row.outer));
        } else {
          flexQosIngEcn()->entryRemove(key);
        }
      }
    }
  }
}

}  // namespace TesselVxlan
