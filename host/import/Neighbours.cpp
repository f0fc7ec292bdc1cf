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

std::optional<EthAddr> Neighbours::ethAddrOf(Hop const& hop) const {
  auto const found = linkAddresses_.find(hop);
  if (found == linkAddresses_.end()) return std::nullopt;
  return unicastEthAddr(found->second, "MAC of a next hop");
}

}  // namespace Host::Import
