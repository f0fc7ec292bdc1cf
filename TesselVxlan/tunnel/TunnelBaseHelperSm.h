#pragma once

#include "TesselVxlan/tunnel/HwTunnelProgrammerBase.h"
#include "platform/dovel/Factory.h"
#include "platform/vane/VaneHelperTunnelSm.h"
#include "platform/vane/VxlanInfo.h"

namespace TesselVxlan {

/// Passes the events of one tunnel type to its programmer.
///
/// In: the tunnels, counters and active next hops of the type's configuration, through the base; local VTEP, UDP ports
/// and data-path learning, which it watches itself. Out: calls of the programmer, and the status's counters, which echo
/// the configuration's so that its producer sees that they were handled. A next-hop change is passed on only for a
/// tunnel that the programmer has recorded: creation reads the next hops of its own time. Main thread only; the
/// programmer is shared with the wrapper.
class TunnelBaseHelperSm : public VaneHelper::VaneHelperTunnelSm {
  KILN_TYPE(TesselVxlan::TunnelBaseHelperSm, VaneHelper::VaneHelperTunnelSm)

  void vxlanStateDispatch(Dovel::Change const& change);
  void vaneVxlanInfoDispatch(Dovel::Change const& change);
  void globalVtiStatusDispatch(Dovel::Change const& change);
  void handleVaneVxlanInfo();

 public:
  void handleUdpSrcPortUpdate();
  void handleUdpPortUpdate();
  void handleLocalVtepUpdate();
  /// Reads the present flag and passes it to the programmer.
  void handleVxlanDataPathLearning();

  KILN_FIXED(0x202, Dovel::Ptr<HwTunnelProgrammerBase>, hwTunnelProgrammer)
  KILN_WATCHED(0x203, TesselL3Common::TesselVxlanState, vxlanState, &KilnSelf::vxlanStateDispatch,
               &KilnSelf::handleLocalVtepUpdate)
  KILN_WATCHED(0x204, Vane::VXLAN::VaneVxlanInfo, vaneVxlanInfo, &KilnSelf::vaneVxlanInfoDispatch,
               &KilnSelf::handleVaneVxlanInfo)
  KILN_METHOD(handleUdpSrcPortUpdate)
  KILN_METHOD(handleUdpPortUpdate)
  KILN_METHOD(handleLocalVtepUpdate)
  KILN_METHOD(handleVxlanDataPathLearning)

 public:
  TunnelBaseHelperSm(Dovel::Ptr<Vane::VaneCommonSmData const> const& vcsd, Vane::TunnelType tunnelType,
                     Dovel::Ptr<Vane::HwTunnelConfig const> const& hwTunnelConfig,
                     Dovel::Ptr<Vane::HwTunnelStatus> const& hwTunnelStatus,
                     Dovel::Ptr<HwTunnelProgrammerBase> const& hwTunnelProgrammer,
                     Dovel::Ptr<TesselL3Common::TesselVxlanState> const& vxlanState,
                     Dovel::Ptr<Vane::VXLAN::VaneVxlanInfo> const& vaneVxlanInfo);

  /// Watches the holder's global VTI status beside the holder; null ends that.
  void globalVtiStatusIs(Dovel::Ptr<Vane::VXLAN::VaneGlobalVtiStatus const> const& status) {
    globalVtiStatus_.notifierIs(status);
  }

  void handleInitialized() override;
  void hwInit() override;
  void hwCleanup() override;
  void doHandleTunnelCreate(Dovel::Ptr<Vane::HwTunnelConfigEntry const> const& entry) override;
  void doHandleTunnelDelete(Dovel::Ptr<Vane::HwTunnelConfigEntry const> const& entry) override;
  void doHandleTunnelTTL(Dovel::Ptr<Vane::HwTunnelConfigEntry const> const& entry) override;
  void doHandleTunnelNextHopId(Dovel::Ptr<Vane::HwTunnelConfigEntry const> const& entry) override;
  void handleActiveNextHopId(Vane::VaneNextHopId id) override;
  void verifyTunnelsAndNextHops() override;

 private:
  Kiln::Watch<Vane::VXLAN::VaneGlobalVtiStatus const, &KilnSelf::globalVtiStatusDispatch,
              &KilnSelf::handleVxlanDataPathLearning>
      globalVtiStatus_{*this};
};

inline constexpr Dovel::Factory<TunnelBaseHelperSm> tunnelBaseHelperSmFactory;

}  // namespace TesselVxlan
