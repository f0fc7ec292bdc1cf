#pragma once

#include "platform/asic/EntryHandle.h"
#include "platform/bridging/VlanId.h"
#include "platform/local/EntityManager.h"
#include "platform/tessel/central/CommonData.h"
#include "platform/tessel/tables/EgrL3Oif2.h"

namespace TesselL3Tunnel {

/// Keeps the outgoing interfaces of the underlay: one entry of `EgrL3Oif2` for each VLAN that next hops refer to.
///
/// Writes `EgrL3Oif2` and nothing else. Main thread only. The next hops that store an entry's handle share it; it
/// exists while one does.
class L3TunnelEgrL3OifHelper final : public Dovel::Node {
  KILN_BASE_TYPE(TesselL3Tunnel::L3TunnelEgrL3OifHelper)
  KILN_FIXED(0x102, Dovel::Ptr<Local::EntityManager>, localEntityManager)
  KILN_FIXED(0x103, Dovel::Ptr<EgrL3Oif2>, egrL3Oif2)

 public:
  explicit L3TunnelEgrL3OifHelper(Dovel::Ptr<Local::EntityManager> localEntityManager);

  /// Makes and empties the table. A second call does nothing.
  void initTables(TesselCentral::ChipInfo const& chipInfo);
  bool initialized() const { return egrL3Oif2() != nullptr; }

  /// A reference to the entry of a VLAN, or of 0 for packets without one; sent again if the chip refused it before.
  /// Never null. REQUIRES: `initialized()`.
  Asic::EntryHandle::PtrConst getEgrL3OifHandle(Bridging::VlanIdOrNone vlanId) const;
};

}  // namespace TesselL3Tunnel
