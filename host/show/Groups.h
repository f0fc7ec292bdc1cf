#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/agent/Agent.h"
#include "host/show/NeededRow.h"
#include "host/show/Tunnels.h"
#include "platform/vane/VtepGroup.h"

namespace Host {

/// The state of one member of a VTEP group.
struct GroupMemberReport {
  Meshal::IpGenAddr vtep;
  std::optional<std::string> reason;  ///< Why no packets of the group go to it; nothing if they do.

  bool forwards() const { return !reason; }
};

/// The state of one stated VTEP group, for show.
struct GroupReport {
  Vane::VXLAN::VaneVtepGroupKey key;
  std::uint64_t version = 0;
  std::optional<std::uint32_t> tunnelId{};  ///< As published; nothing if there is none or the write failed.
  std::optional<std::uint32_t> nextHopId{};
  std::vector<GroupMemberReport> members{};  ///< By address.
  NeededRow row{};                           ///< In the table of groups.
  NeededRow block{};                         ///< Of the members that the chip has.
  std::optional<std::string> reason{};       ///< Why it is not programmed; nothing if it is.

  /// Whether its id is published and the chip sends its packets to exactly its members.
  bool programmed() const { return !reason; }
};

/// The stated groups by id. `tunnels` are the reports of all tunnels. REQUIRES: settled.
std::vector<GroupReport> groupReports(Agent const& agent, std::vector<TunnelReport> const& tunnels);

}  // namespace Host
