#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "host/import/Underlay.h"

namespace Host::Import {

/// Gives each distinct set of next hops of a document its number.
///
/// The kernel's id, where it has one below 0x40000000. Otherwise a number from there up that follows from the set's
/// contents alone, but for the rare case that two sets of one document clash; so a set keeps its number from document
/// to document.
class AdjacencyIds {
 public:
  /// The sets that want numbers. Those without hops want none.
  explicit AdjacencyIds(std::vector<Path> const& paths);

  /// REQUIRES: `path` was among the paths, and has hops.
  std::uint32_t id(Path const& path) const;

 private:
  void allocate(Hops const& hops);

  std::map<std::uint32_t, Hops> byId_;
  std::map<Hops, std::uint32_t> byContent_;
};

}  // namespace Host::Import
