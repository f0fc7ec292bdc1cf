#pragma once

#include "TesselVxlan/frame/TesselVxlanTypes.h"
#include "TesselVxlan/nexthop/NextHopTableProgrammerBase.h"
#include "platform/asic/SwTable.h"
#include "platform/tessel/central/VxlanToL2State.h"
#include "platform/vane/TunnelKey.h"
#include "platform/vane/TunnelType.h"

namespace TesselVxlan {

/// Names of an overlay table in traces. Constants of the program.
struct OverlayTableWords {
  char const* missing;     ///< The VTEP's map was removed; an entry state follows.
  char const* inProgress;  ///< A VTEP follows, and after the next.
  char const* failed;
  char const* written;
  char const* hwIndex;  ///< A next-hop id follows.
  char const* table;
};

/// Keeps one overlay next hop per remote VTEP: the row that ties the VTEP's underlay path to its virtual port.
///
/// Reads its arguments and the VTEP's map. Writes the overlay table of the chip, one subclass for each kind of chip,
/// and, when the chip answers, `nhIdEntryStatus` then `nhId` of the VTEP's map: the order is the contract, watchers run
/// inside the second write. Where a rewrite leaves the id as it is, the VTEP's count in `tnlNhUpdateConfig` is
/// incremented instead, so that readers of the id learn that its row has changed. `nhIdEntryStatus` becomes done at
/// each write that succeeds, failed at each that does not. Nothing is retried here; a later success publishes the id
/// as usual. Main thread only. The write response runs after `insertEntry` has returned, maybe after its tunnel was
/// removed: it looks the VTEP's map up again by address. The rows remain until `deleteEntry`. The table holds a
/// reference to this object until it has written.
class OverlayTableProgrammer : public NextHopTableProgrammerBase {
  KILN_TYPE(TesselVxlan::OverlayTableProgrammer, TesselVxlan::NextHopTableProgrammerBase)
  KILN_FIXED(0x104, Dovel::Ptr<TesselCentral::VxlanToL2State>, vxlanToL2State)
  KILN_FIXED(0x105, Dovel::Ptr<TesselVxlan::TunnelNextHopUpdateConfig>, tnlNhUpdateConfig)

 public:
  /// The row of the tunnel's VTEP, written only where it differs from the present one or has not reached the chip: a
  /// repeated insert is free and returns a weak handle. `ulEntryHandle` is an ECMP group if `ecmp`, else a single next
  /// hop. Null, and nothing written, where a member tunnel would change the row of a VTEP that has a unicast tunnel.
  virtual Handle insertEntry(Vane::TunnelKey const& tunnelKey, Vane::TunnelType tunnelType, bool ecmp,
                             Handle const& vpHandle, Handle const& ulEntryHandle) = 0;
  /// Removes the VTEP's row, which drops its references to other rows, then the VTEP's count.
  void deleteEntry(Vane::TunnelKey const& tunnelKey);

 protected:
  OverlayTableProgrammer(Dovel::Ptr<Stateway::EntityManager> statewayEm,
                         Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
                         Dovel::Ptr<TesselCentral::VxlanToL2State> vxlanToL2State,
                         Dovel::Ptr<TunnelNextHopUpdateConfig> tnlNhUpdateConfig, OverlayTableWords const& words);

  /// Whether the row in this state is in the chip, or on its way there.
  static bool isWritten(EntryState state) { return state != EntryState::failed && state != EntryState::full; }
  /// Whether a tunnel of this type may change the row of its VTEP.
  bool mayWrite(Meshal::IpGenAddr const& vtep, Vane::TunnelType tunnelType) const;
  /// What publishes the outcome of writing the row of the tunnel's VTEP.
  Asic::WriteResponseFn writeResponse(Vane::TunnelKey const& tunnelKey);

 private:
  struct Response;

  void respond(Vane::TunnelKey const& tunnelKey, EntryState state);
  void written(TesselCentral::VtepIpToTnlIdNhIdMap& map);
  void failed(TesselCentral::VtepIpToTnlIdNhIdMap& map, EntryState state);

  virtual void rowDel(Meshal::IpGenAddr const& vtep) = 0;
  /// The next-hop id of a VTEP whose row is written.
  virtual Vane::VaneNextHopId nextHopId(Meshal::IpGenAddr const& vtep) const = 0;
  /// The chip's table has no row for this VTEP.
  virtual void tableFull(Meshal::IpGenAddr const& vtep) const = 0;
  virtual void unexpectedState() const = 0;

  OverlayTableWords const& words_;
};

}  // namespace TesselVxlan
