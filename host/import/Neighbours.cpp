#include "host/import/Neighbours.h"

namespace Host::Import {

Neighbours::Neighbours(JsonFile const* file) {
  if (!file) return;
  for (auto const at : file->top().objects()) {
    auto const link = at.find("lladdr");
    if (!link || at.flag("state", "FAILED") || at.flag("state", "INCOMPLETE")) continue;
    linkAddresses_.insert_or_assign(Hop{ipAddr(at.at("dst")), at.at("dev").text()}, *link);
  }
}

std::optional<std::string> Neighbours::ethAddrOf(Hop const& hop) const {
  auto const found = linkAddresses_.find(hop);
  return found == linkAddresses_.end() ? std::nullopt : std::optional(ethAddr(found->second));
}

}  // namespace Host::Import
