#include "host/import/Neighbours.h"

namespace Host::Import {

namespace {

/// The states in which a kernel has no usable address.
std::string faultOf(JsonIn entry) {
  for (auto const& [flag, word] : {std::pair("FAILED", "failed"), std::pair("INCOMPLETE", "incomplete")}) {
    if (hasFlag(entry, "state", flag)) return std::string("neighbour ") + word;
  }
  return has(entry, "lladdr") ? "" : "neighbour without an Ethernet address";
}

}  // namespace

Neighbours::Neighbours(JsonDocument const* file) : missing_(file == nullptr) {
  if (!file) return;
  for (auto const at : objects(file->root())) {
    // Proxy entries answer for others.
    if (has(at, "proxy")) continue;
    entries_.insert_or_assign(Hop{ipAddr(at.member("dst")), std::string(at.member("dev").text())}, at);
  }
}

std::optional<EthAddr> Neighbours::ethAddrOf(Hop const& hop) const {
  auto const found = entries_.find(hop);
  if (found == entries_.end() || !faultOf(found->second).empty()) return std::nullopt;
  return unicastEthAddr(found->second.member("lladdr"), "MAC of a next hop");
}

std::string Neighbours::whyNot(Hop const& hop) const {
  if (missing_) return "ip-neigh.json is missing";
  auto const found = entries_.find(hop);
  return found == entries_.end() ? "no neighbour" : faultOf(found->second);
}

}  // namespace Host::Import
