#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "host/agent/Agent.h"
#include "host/show/Tunnels.h"

namespace Host {

/// The sections of a report, by the names of the command line.
inline constexpr std::array<std::string_view, 6> kSections{"summary", "tunnels", "tables", "chip", "logs", "state"};

/// Prints one section. REQUIRES: `section` is one of `kSections`.
void printSection(std::ostream& out, std::string_view section, Agent const& agent,
                  std::vector<TunnelReport> const& tunnels);

}  // namespace Host
