#pragma once

#include <optional>
#include <vector>

#include "host/agent/Agent.h"
#include "host/show/NeededRow.h"
#include "platform/asic/Entry.h"
#include "platform/evpn/EvpnStatus.h"
#include "platform/tessel/central/VxlanRecords.h"
#include "platform/tessel/central/VxlanToL2State.h"
#include "platform/tessel/l3common/VxlanDirs.h"

namespace Host {

/// The copy of a flooded frame that leaves by one port.
struct FloodCopy {
  Meshal::IntfId port;
  Meshal::IpGenAddr nextHop;
  NeededRow row;  ///< Of the replication engine, or the head-end next hop on chips that have those.
};

/// Whether the tunnels of a type carry known traffic, through an overlay entry; the others carry flooded frames.
inline bool hasOverlay(Vane::TunnelType type) { return type == Vane::vxlanTunnel_ || type == Vane::vxlanMemberTunnel_; }

/// The rows at the top of all that carries the traffic to and from one remote VTEP.
struct VtepRows {
  NeededRow virtualPort;
  NeededRow overlay;
  NeededRow source;       ///< Lets packets from the VTEP in, with its virtual port.
  NeededRow destination;  ///< Lets packets to the local VTEP in.
  std::optional<std::uint32_t> encapId;
  std::vector<FloodCopy> copies;  ///< By port.
};

/// Finds them. Handles are weak or the tables' own, so that showing keeps nothing alive. Main thread only.
class RowFinder {
 public:
  explicit RowFinder(Agent const& agent);

  VtepRows of(Meshal::IpGenAddr const& vtep) const;
  /// Those that the tunnels of a type need, in either direction: for unicast and member tunnels the overlay entry, for
  /// flood tunnels a row for each copy, at least one; for all virtual port and local address; the row that lets the
  /// VTEP's packets in for unicast tunnels, and for flood tunnels while EVPN is on and learning from packets is off.
  std::vector<NeededRow> needed(Vane::TunnelType type, Meshal::IpGenAddr const& vtep) const;
  /// The local VTEP with which the tunnels to a VTEP were last programmed; without a family if there is none.
  Meshal::IpGenAddr localVtep(Meshal::IpGenAddr const& vtep) const;
  /// The encapsulation id of a flood VTEP or group.
  std::optional<std::uint32_t> encapId(Meshal::IpGenAddr const& vtep) const;
  std::vector<FloodCopy> copies(Meshal::IpGenAddr const& vtep) const;

 private:
  NeededRow copyRow(Meshal::IntfId port, Meshal::IpGenAddr const& vtep) const;
  NeededRow destination(Meshal::IpGenAddr const& vtep) const;

  Asic::Chip const& chip_;
  bool herTables_;  ///< Whether the chip has next hops of their own for flood copies.
  Dovel::Ptr<TesselCentral::VxlanToL2State> maps_;
  Dovel::Ptr<TesselL3Common::TesselVxlanBumVtepConfigDir> floodRecords_;
  Dovel::Ptr<Evpn::EvpnStatus> evpn_;
};

}  // namespace Host
