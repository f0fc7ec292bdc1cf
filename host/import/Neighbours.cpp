#include "host/import/Neighbours.h"

namespace Host::Import {

Neighbours::Neighbours(JsonDocument const* file) {
  if (!file) return;
  for (auto const at : objects(file->root())) {
    auto const link = at.find("lladdr");
    if (!link || hasFlag(at, "state", "FAILED") || hasFlag(at, "state", "INCOMPLETE")) continue;
    linkAddresses_.insert_or_assign(Hop{ipAddr(at.member("dst")), std::string(at.member("dev").text())}, *link);
  }
}

std::optional<std::string> Neighbours::ethAddrOf(Hop const& hop) const {
  auto const found = linkAddresses_.find(hop);
  return found == linkAddresses_.end() ? std::nullopt : std::optional(ethAddr(found->second));
}

}  // namespace Host::Import
