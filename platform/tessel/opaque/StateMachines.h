#pragma once

#include "platform/bridging/BridgingConfig.h"
#include "platform/dovel/Factory.h"
#include "platform/kiln/Sm.h"
#include "platform/tessel/opaque/Records.h"
#include "platform/vane/HerVtep.h"
#include "platform/vane/VaneTunnel.h"
#include "platform/vxlan/VxlanConfig.h"

// State machines of neighbouring features that this one owns. They do nothing in this build.

namespace Vxlan {

class RemoteVniToSBDVlanMergeSm final : public Kiln::Sm {
  KILN_BASE_TYPE(Vxlan::RemoteVniToSBDVlanMergeSm)

 public:
  RemoteVniToSBDVlanMergeSm(Dovel::Ptr<RemoteVniToVlanStatus const> irb, Dovel::Ptr<RemoteVniToVlanStatus const> fixed,
                            Dovel::Ptr<RemoteVniToVlanStatus> merged)
      : irb_(std::move(irb)), static_(std::move(fixed)), merged_(std::move(merged)) {}

 private:
  Dovel::Ptr<RemoteVniToVlanStatus const> irb_;
  Dovel::Ptr<RemoteVniToVlanStatus const> static_;
  Dovel::Ptr<RemoteVniToVlanStatus> merged_;
};

}  // namespace Vxlan

namespace TesselVxlanCommon {

class L3McastEvpnStatusSmCommon final : public Kiln::Sm {
  KILN_BASE_TYPE(TesselVxlanCommon::L3McastEvpnStatusSmCommon)

 public:
  L3McastEvpnStatusSmCommon(Dovel::Ptr<Routing::Multicast::McastEvpnStatus const> v4,
                            Dovel::Ptr<Routing::Multicast::McastEvpnStatus const> v6)
      : v4_(std::move(v4)), v6_(std::move(v6)) {}

 private:
  Dovel::Ptr<Routing::Multicast::McastEvpnStatus const> v4_;
  Dovel::Ptr<Routing::Multicast::McastEvpnStatus const> v6_;
};

}  // namespace TesselVxlanCommon

namespace Vane::VXLAN {

class VaneVxlanHwHerSm final : public Kiln::Sm {
  KILN_BASE_TYPE(Vane::VXLAN::VaneVxlanHwHerSm)

 public:
  VaneVxlanHwHerSm(Dovel::Ptr<VaneCommonSmData const> vcsd, Dovel::Ptr<L2Rib::FloodSetOutput const> l2RibFloodSet,
                   Dovel::Ptr<VaneTunnelConfig> tunnelConfig, Dovel::Ptr<VaneTunnelStatus> tunnelStatus,
                   Dovel::Ptr<VaneVxlanHwHerVtepConfigDir> vtepConfigDir,
                   Dovel::Ptr<VaneVxlanHwHerVtepStatusDir> vtepStatusDir,
                   Dovel::Ptr<VxlanController::VtepStatusDirV2 const> vxlanVtepStatusDir,
                   Dovel::Ptr<Vxlan::VtiStatusDir const> vtiStatusDir,
                   Dovel::Ptr<Bridging::HwCapabilities const> bridgingHwCapabilities, bool)
      : vcsd_(std::move(vcsd)),
        l2RibFloodSet_(std::move(l2RibFloodSet)),
        tunnelConfig_(std::move(tunnelConfig)),
        tunnelStatus_(std::move(tunnelStatus)),
        vtepConfigDir_(std::move(vtepConfigDir)),
        vtepStatusDir_(std::move(vtepStatusDir)),
        vxlanVtepStatusDir_(std::move(vxlanVtepStatusDir)),
        vtiStatusDir_(std::move(vtiStatusDir)),
        bridgingHwCapabilities_(std::move(bridgingHwCapabilities)) {}

  bool initialized() const { return initialized_; }
  void initializedIs(bool initialized) { initialized_ = initialized; }

 private:
  Dovel::Ptr<VaneCommonSmData const> vcsd_;
  Dovel::Ptr<L2Rib::FloodSetOutput const> l2RibFloodSet_;
  Dovel::Ptr<VaneTunnelConfig> tunnelConfig_;
  Dovel::Ptr<VaneTunnelStatus> tunnelStatus_;
  Dovel::Ptr<VaneVxlanHwHerVtepConfigDir> vtepConfigDir_;
  Dovel::Ptr<VaneVxlanHwHerVtepStatusDir> vtepStatusDir_;
  Dovel::Ptr<VxlanController::VtepStatusDirV2 const> vxlanVtepStatusDir_;
  Dovel::Ptr<Vxlan::VtiStatusDir const> vtiStatusDir_;
  Dovel::Ptr<Bridging::HwCapabilities const> bridgingHwCapabilities_;
  bool initialized_ = false;
};

inline constexpr Dovel::Factory<VaneVxlanHwHerSm> vaneVxlanHwHerSmFactory;

}  // namespace Vane::VXLAN
