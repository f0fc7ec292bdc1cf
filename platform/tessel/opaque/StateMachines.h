#pragma once

#include "platform/kiln/Sm.h"
#include "platform/tessel/opaque/Records.h"

// A state machine of a neighbouring feature that this one owns. It does nothing in this build.

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
