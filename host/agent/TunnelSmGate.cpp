#include "host/agent/TunnelSmGate.h"

#include <algorithm>

#include "host/agent/World.h"
#include "platform/kiln/AttributeDefinitions.h"

KILN_DESCRIBE(Host::TunnelSmGate)

namespace Host {

using TesselL3Common::TesselVxlanBootStatus;

TunnelSmGate::TunnelSmGate(Dovel::Ptr<TesselVxlanBootStatus> const& bootStatus,
                           Dovel::Ptr<Vane::HwTunnelStatusDir> statusDir, bool atOnce)
    : bootStatus_(*this, bootStatus, Kiln::SubscribeOnly{}), statusDir_(std::move(statusDir)), atOnce_(atOnce) {}

bool TunnelSmGate::review() {
  if (bootStatus_->vaneTunnelSmReady() || !open()) return false;
  bootStatus_->vaneTunnelSmReadyIs(true);
  return true;
}

bool TunnelSmGate::open() const {
  return bootStatus_->hwTunnelStatusInitialized() &&
         std::all_of(kTunnelTypes.begin(), kTunnelTypes.end(),
                     [&](auto const& type) { return statusDir_->hwTunnelStatusHas(type.first); });
}

void TunnelSmGate::bootStatusDispatch(Dovel::Change const& change) {
  if (atOnce_ && change.id == TesselVxlanBootStatus::hwTunnelStatusInitializedId) review();
}

}  // namespace Host
