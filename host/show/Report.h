#pragma once

#include <vector>

#include "host/show/Groups.h"
#include "host/show/Mappings.h"
#include "host/show/Tunnels.h"

namespace Host {

/// What became of everything that the state asks for.
struct Report {
  std::vector<TunnelReport> tunnels;
  std::vector<MappingReport> mappings;
  std::vector<GroupReport> groups;

  /// Whether every tunnel and every group is programmed and every mapping is as wanted.
  bool isAsWanted() const;
};

/// REQUIRES: settled.
Report reportOf(Agent const& agent);

}  // namespace Host
