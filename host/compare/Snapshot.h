#pragma once

#include "host/agent/Agent.h"
#include "host/compare/ItemList.h"

namespace Host {

/// What an agent has made of its state, as plain data that outlives the agent.
struct Snapshot {
  ItemList tunnels;   ///< With next hops; published ids are their numbers.
  ItemList mappings;  ///< Of VNIs.
  ItemList groups;
  ItemList
      rows;  ///< By table and key; references by the key of their target. Their numbers, and what follows from these.
  ItemList chip;  ///< Used rows by chip table.
  bool asWanted = false;

  /// REQUIRES: settled.
  static Snapshot of(Agent const& agent);
};

}  // namespace Host
