#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <vector>

#include "host/import/Underlay.h"

namespace Host::Import {

/// Gives each distinct set of next hops of a document its number.
///
/// The kernel's id, where it has one. Otherwise a number from 0x40000000 up that follows from the set's contents
/// alone, but for the rare case that two sets of one document clash; so a set keeps its number from document to
/// document.
class AdjacencyIds {
 public:
  /// The sets that want numbers. Those without hops want none.
  explicit AdjacencyIds(std::vector<Path> const& paths);

  /// REQUIRES: `path` was among the paths, and has hops.
  std::uint32_t id(Path const& path) const;

 private:
  void allocate(std::set<Hop> const& hops);

  std::map<std::uint32_t, std::set<Hop>> byId_;
  std::map<std::set<Hop>, std::uint32_t> byContent_;
};

}  // namespace Host::Import
