#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/agent/Agent.h"
#include "platform/bridging/VlanId.h"

namespace Host {

/// The number of a published id; nothing if there is none yet or the write failed.
template <class Id>
std::optional<std::uint32_t> usable(Id const& id) {
  return id.valid() && id != Id::unprogrammed() ? std::optional(id.value()) : std::nullopt;
}

/// The state of one wanted tunnel, for show.
struct TunnelReport {
  Vane::TunnelType type{};
  Meshal::IpGenAddr vtep;
  std::uint64_t genId = 0;
  Meshal::IpGenAddr localVtep;            ///< Of the last programming; without a family if it was never programmed.
  Vane::AdjIdOrNone adjId;                ///< None of the multicast types, whose tunnels have next hops of their own.
  std::optional<std::uint32_t> tunnelId;  ///< As published; nothing if there is none or the write failed.
  std::optional<std::uint32_t> nextHopId;
  std::optional<std::uint32_t> encapId;  ///< Of the copies of flooded frames to the VTEP; of flood tunnels alone.
  std::vector<Bridging::VlanId> vlans;   ///< Those that are flooded to the VTEP, of a head-end replication tunnel.
  Vane::NextHopEntrySet nextHops;        ///< Of its adjacency, or its own.
  std::optional<std::string> reason;     ///< Why it is not programmed; nothing if it is.
  std::optional<std::string> remark;     ///< Of a programmed one: which next hops it lacks; nothing if it has all.

  bool programmed() const { return !reason; }
};

/// The wanted tunnels of all types, by type and then by VTEP. REQUIRES: settled.
std::vector<TunnelReport> tunnelReports(Agent const& agent);
/// Those to one VTEP.
std::vector<TunnelReport> tunnelReports(Agent const& agent, Meshal::IpGenAddr const& vtep);
/// "36" for a kernel's id, "own 1842043797" for one that an import assigned, "-" for none.
std::string adjacencyText(Vane::AdjIdOrNone const& adjId);
/// "vxlanTunnel", "vxlanHwHerTunnel", "vxlanBum" …
std::string_view tunnelTypeText(Vane::TunnelType type);

}  // namespace Host
