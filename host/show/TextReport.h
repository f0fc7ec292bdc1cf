#pragma once

#include <iosfwd>
#include <string_view>

#include "host/agent/Agent.h"
#include "host/show/Report.h"

namespace Host {

/// The sections of a report, by the names of the command line.
inline constexpr std::array<std::string_view, 9> kSections{"summary", "tunnels", "vni",  "groups", "resource",
                                                           "tables",  "chip",    "logs", "state"};

/// Prints one section. REQUIRES: `section` is one of `kSections`.
void printSection(std::ostream& out, std::string_view section, Agent const& agent, Report const& report);

}  // namespace Host
