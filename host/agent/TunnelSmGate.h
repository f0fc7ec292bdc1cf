#pragma once

#include "platform/kiln/Sm.h"
#include "platform/tessel/l3common/TesselVxlanState.h"
#include "platform/vane/HwTunnel.h"

namespace Host {

/// Tells the feature that the forwarding abstraction is ready, once it has seen the status objects of all tunnel types.
///
/// Reads `hwTunnelStatusInitialized`; writes `vaneTunnelSmReady`, once. Either from the review that the loop asks for,
/// or at once, inside the write that completes what it waits for. Main thread only.
class TunnelSmGate final : public Kiln::Sm {
  KILN_BASE_TYPE(Host::TunnelSmGate)

 public:
  TunnelSmGate(Dovel::Ptr<TesselL3Common::TesselVxlanBootStatus> const& bootStatus,
               Dovel::Ptr<Vane::HwTunnelStatusDir> statusDir, bool atOnce);
  /// False if nothing was to do.
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
