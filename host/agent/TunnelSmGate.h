#pragma once

#include "platform/kiln/Sm.h"
#include "platform/tessel/l3common/TesselVxlanState.h"
#include "platform/vane/HwTunnel.h"

namespace Host {

/// Reports to the feature that the forwarding abstraction is ready, once the status objects of all tunnel types exist.
///
/// Reads `hwTunnelStatusInitialized`; writes `vaneTunnelSmReady`, once: from the loop's review, or at once, inside the
/// write that completes the condition. Main thread only.
class TunnelSmGate final : public Kiln::Sm {
  KILN_BASE_TYPE(Host::TunnelSmGate)

 public:
  TunnelSmGate(Dovel::Ptr<TesselL3Common::TesselVxlanBootStatus> const& bootStatus,
               Dovel::Ptr<Vane::HwTunnelStatusDir> statusDir, bool atOnce);
  /// False if there was nothing to do.
  bool review();
  bool open() const;

 private:
  using Self = TunnelSmGate;
  void bootStatusDispatch(Dovel::Change const& change);

  Kiln::Watch<TesselL3Common::TesselVxlanBootStatus, &Self::bootStatusDispatch> bootStatus_;
  Dovel::Ptr<Vane::HwTunnelStatusDir> statusDir_;
  bool atOnce_;
};

}  // namespace Host
