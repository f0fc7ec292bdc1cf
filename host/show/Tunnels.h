#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/agent/Agent.h"

namespace Host {

/// The state of one wanted tunnel, for show.
struct TunnelReport {
  Vane::TunnelType type{};
  Meshal::IpGenAddr vtep;
  std::uint64_t genId = 0;
  Meshal::IpGenAddr localVtep;  ///< Of the last programming; without a family if it was never programmed.
  Vane::AdjIdOrNone adjId;
  std::optional<std::uint32_t> tunnelId;  ///< As published; nothing if there is none or the write failed.
  std::optional<std::uint32_t> nextHopId;
  Vane::NextHopEntrySet nextHops;     ///< Of its adjacency.
  std::optional<std::string> reason;  ///< Why it is not programmed; nothing if it is.

  bool programmed() const { return !reason; }
};

/// The wanted unicast and member tunnels, by type and then by VTEP. REQUIRES: settled.
std::vector<TunnelReport> tunnelReports(Agent const& agent);
/// Those to one VTEP.
std::vector<TunnelReport> tunnelReports(Agent const& agent, Meshal::IpGenAddr const& vtep);
/// "vxlanTunnel", "vxlanMemberTunnel".
std::string_view tunnelTypeText(Vane::TunnelType type);

}  // namespace Host
