#pragma once

#include <string>

#include "host/agent/Agent.h"

namespace AgentTest {

/// The status of the tunnels of both types, a line each: "unicast 10.255.0.2 tnl=[10.255.0.2] nh=[10.255.0.2] adj=7".
///
/// Ids are named by the keys of the entries that own the rows, and generations are left out, so that the texts of two
/// agents compare.
std::string statusText(Host::Agent const& agent);

/// What an agent publishes beside its rows: status, the records of the VTEPs, published ids, the maps from rows to
/// VTEPs, and the state and slice configuration of the switch. Ids as in `statusText`.
///
/// Where a record doesn't say what the handles of its entries say, both are shown, in capitals. REQUIRES: no completion
/// is pending.
std::string stateText(Host::Agent const& agent);

}  // namespace AgentTest
