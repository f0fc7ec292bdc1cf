#include "host/show/Report.h"

#include <algorithm>

namespace Host {

bool Report::isAsWanted() const {
  auto const isProgrammed = [](auto const& report) { return report.programmed(); };
  return std::all_of(tunnels.begin(), tunnels.end(), isProgrammed) &&
         std::all_of(mappings.begin(), mappings.end(), [](auto const& mapping) { return mapping.isAsWanted(); }) &&
         std::all_of(groups.begin(), groups.end(), isProgrammed);
}

Report reportOf(Agent const& agent) {
  Report report{.tunnels = tunnelReports(agent), .mappings = mappingReports(agent), .groups = {}};
  report.groups = groupReports(agent, report.tunnels);
  return report;
}

}  // namespace Host
