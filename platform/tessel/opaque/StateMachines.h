#pragma once

#include "platform/kiln/Sm.h"
#include "platform/tessel/opaque/Records.h"
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
