#include "host/import/AdjacencyIds.h"

#include <set>

#include "host/notes/OwnIds.h"

namespace Host::Import {

namespace {

constexpr std::uint32_t ownIds = 0x40000000;

/// FNV-1a: the same on every machine and in every build.
std::uint32_t contentHash(Hops const& hops) {
  std::string text;
  for (auto const& [hop, weight] : hops) {
    text += Kiln::toText(hop.address) + '%' + hop.device + ' ';
    if (weight != 1) text += '*' + Kiln::toText(weight) + ' ';
  }
  std::uint32_t hash = 0x811c9dc5;
  for (char const c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x01000193;
  return hash;
}

}  // namespace

AdjacencyIds::AdjacencyIds(std::vector<Path> const& paths) {
  // The kernel's ids first: own numbers keep clear of them.
  for (auto const& path : paths) {
    if (path.id) byId_.try_emplace(*path.id, path.hops);
  }
  std::set<Hops> withoutId;
  for (auto const& path : paths) {
    bool const hasId = path.id && byId_.at(*path.id) == path.hops;
    if (!hasId && !path.hops.empty()) withoutId.insert(path.hops);
  }
  for (auto const& hops : withoutId) allocate(hops);
}

void AdjacencyIds::allocate(Hops const& hops) {
  auto id = firstOwnId + contentHash(hops) % ownIds;
  while (!byId_.try_emplace(id, hops).second) id = firstOwnId + (id - firstOwnId + 1) % ownIds;
  byContent_.emplace(hops, id);
}

std::uint32_t AdjacencyIds::id(Path const& path) const {
  return path.id && byId_.at(*path.id) == path.hops ? *path.id : byContent_.at(path.hops);
}

}  // namespace Host::Import
