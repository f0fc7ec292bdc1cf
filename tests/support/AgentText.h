#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/agent/Agent.h"

namespace AgentTest {

/// The tables of a chip as a person reads them: a heading per table that has entries, by name, and a line per entry, by
/// key: "10.255.0.2: vpHandle=VirtualPortTableMerged[10.255.0.2] ecmp=1".
///
/// Targets of handles are named by table and key, so that texts of two agents compare whatever rows they use; fields
/// that are 0 and the counts of updates are left out. An entry whose key was removed while others use it stands in
/// parentheses; one that isn't written tells its state. Each number is compared with what the chip itself has in the
/// row: where it differs, both are told, and rows that no entry accounts for are told as well. The outgoing interfaces
/// of the underlay, which stay once they are made, are left out.
std::string chipText(Asic::Chip const& chip, Asic::SimulatedChip const& hardware);

/// The lines that only one of two such texts has: those of the first behind "- ", those of the second behind "+ ".
std::string difference(std::string const& first, std::string const& second);

/// The lines of one table of such a text, without its heading; empty if it has no entries.
std::string tableOf(std::string const& chipText, std::string_view table);

/// The table that overlay entries are in.
std::string_view overlayTableOf(Asic::Chip const& chip);

/// "unicast", "member", "flood", "mcast", "mcastHer", "bum".
char const* nameOf(Vane::TunnelType type);

/// Configuration and status of the tunnels of one type, those of the types with versions too. Those may be null: the
/// chip's capabilities decide.
Dovel::Ptr<Vane::HwTunnelConfig> tunnelConfig(Host::Agent const& agent, Vane::TunnelType type);
Dovel::Ptr<Vane::HwTunnelStatus> tunnelStatus(Host::Agent const& agent, Vane::TunnelType type);

/// The statuses of one type in the order of their VTEPs.
std::vector<Dovel::Ptr<Vane::HwTunnelStatusEntry>> statuses(Host::Agent const& agent, Vane::TunnelType type);

/// The status of the tunnels of all types, a line each: "unicast 10.255.0.2 tnl=[10.255.0.2] nh=[10.255.0.2] adj=7".
///
/// Ids are named by the keys of the entries that own the rows, and generations and versions are left out, so that the
/// texts of two agents compare. A status with a version has the ports of its next hops in place of an adjacency.
std::string statusText(Host::Agent const& agent);

/// What an agent publishes beside its rows: status, the records of the VTEPs, published ids, the flood VTEPs with what
/// is programmed for them, the maps from rows to VTEPs, and the state and slice configuration of the switch. Ids as in
/// `statusText`.
///
/// Where a record doesn't say what the handles of its entries say, both are shown, in capitals. REQUIRES: no completion
/// is pending.
std::string stateText(Host::Agent const& agent);

}  // namespace AgentTest
