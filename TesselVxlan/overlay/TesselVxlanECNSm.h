#pragma once

#include "platform/dovel/Factory.h"
#include "platform/kiln/Sm.h"
#include "platform/stateway/EntityManager.h"
#include "platform/tessel/central/CommonData.h"
#include "platform/tessel/features/EcnTunnelTableAttributes.h"
#include "platform/tessel/qos/TrustStatus.h"
#include "platform/tessel/tables/EcnTables.h"
#include "platform/vxlan/VxlanConfig.h"

namespace TesselVxlan {

/// Writes the tables that carry congestion marks (ECN) from a packet into a tunnel's outer header and back.
///
/// In: whether marks are propagated (`ecnConfig`) and the chip's first row of remarking maps (`qosTrustStatus`). Out:
/// `FlexQoSEgrEcn6Table`, where tunnels begin, and `FlexQosIngEcn`, where they end; of both this is the only writer.
/// The first logical chip gets them; the others share its tables. Rows under a former first row of the maps remain.
/// Main thread only.
class TesselVxlanECNSm final : public Kiln::Sm {
  void fcsdDispatch(Dovel::Change const& change);
  void ecnConfigDispatch(Dovel::Change const& change);
  void qosTrustStatusDispatch(Dovel::Change const& change);

  KILN_BASE_TYPE(TesselVxlan::TesselVxlanECNSm)
  KILN_FIXED(0x102, Dovel::Ptr<Stateway::EntityManager>, statewayEm)
  KILN_WATCHED(0x103, TesselCentral::FeatureAgentCommonSmData const, fcsd, &KilnSelf::fcsdDispatch, nullptr)
  KILN_WATCHED(0x104, Vxlan::EcnConfig const, ecnConfig, &KilnSelf::ecnConfigDispatch, nullptr)
  KILN_WATCHED(0x105, TesselCommon::Qos::TrustStatus const, qosTrustStatus, &KilnSelf::qosTrustStatusDispatch, nullptr)
  KILN_FIXED(0x106, Dovel::Ptr<FlexQoSEgrEcn6Table>, flexQoSEgrEcn6Table)
  KILN_FIXED(0x107, Dovel::Ptr<FlexQosIngEcn>, flexQosIngEcn)
  KILN_FIXED(0x108, Dovel::Ptr<EcnTunnelTableAttributes const>, ecnTunnelTableAttributes)
  KILN_FIXED(0x109, bool, initialized)  ///< The tables exist: from then on changes are written.

 public:
  /// Writes the tables if there is a logical chip.
  TesselVxlanECNSm(Dovel::Ptr<Stateway::EntityManager> statewayEm,
                   Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
                   Dovel::Ptr<Vxlan::EcnConfig const> ecnConfig,
                   Dovel::Ptr<TesselCommon::Qos::TrustStatus const> qosTrustStatus);

  void handleInitialized();
  void handleLogicalFapId();
  void handleLogicalFapId(LogicalFap::LogicalFapId fapId);
  /// Brings the rows that follow the configuration up to it.
  void handleEcnPropagationTables();

 private:
  void initTables(TesselCentral::ChipInfo const& chipInfo);
  /// Packets without a tunnel keep their mark.
  void programNonTunnelEcnEntries();
  /// The chip's default where tunnels end: the outer mark counts.
  void programDefaultEntriesForTunnelDecap();
  /// The chip's default where tunnels begin: the mark is copied.
  void programDefaultEntriesForTunnelEncap();
  void handleEncap(bool enabled, std::uint8_t remarkBasePtr);
  void handleDecap(bool enabled);
};

inline constexpr Dovel::Factory<TesselVxlanECNSm> tesselVxlanECNSmFactory;

}  // namespace TesselVxlan
