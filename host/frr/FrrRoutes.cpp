#include "host/frr/FrrRoutes.h"

namespace Host::Frr {

namespace {

using namespace Import;

bool flag(JsonIn at, std::string_view name) {
  auto const value = at.find(name);
  return value && value->boolean();
}

/// Those that packets take: a recursive one is followed by what it resolves to.
std::vector<NextHop> nextHopsOf(JsonIn route) {
  std::vector<NextHop> hops;
  auto const list = route.find("nexthops");
  if (!list) return hops;
  list->eachElement([&](JsonIn const& hop) {
    if (flag(hop, "recursive") || flag(hop, "duplicate") || !(flag(hop, "active") || flag(hop, "fib"))) return;
    auto const gateway = hop.find("ip");
    hops.push_back({gateway ? std::optional(ipAddr(*gateway)) : std::nullopt, text(hop, "interfaceName").value_or("")});
  });
  return hops;
}

}  // namespace

void Routes::add(JsonDocument const& file) {
  file.root().eachMember([&](std::string_view name, JsonIn const& value) {
    if (value.isArray()) {
      addRoutes(value);
    } else if (name == "default") {
      value.eachMember([&](std::string_view, JsonIn const& list) { addRoutes(list); });
    }
  });
}

void Routes::addRoutes(JsonIn list) {
  list.eachElement([&](JsonIn const& at) {
    if (!flag(at, "selected") || text(at, "vrfName").value_or("default") != "default") return;
    Route route{.prefix = prefix(at.member("prefix")),
                .text = std::string(at.member("prefix").text()),
                .protocol = text(at, "protocol").value_or(""),
                .nextHops = nextHopsOf(at)};
    routes_.insert_or_assign({route.prefix.network, route.prefix.length}, std::move(route));
  });
}

Route const* Routes::lookup(IpGenAddr const& address) const {
  for (auto length = bitsOf(address) + 1; length-- > 0;) {
    auto const found = routes_.find({network(address, length), length});
    if (found != routes_.end()) return &found->second;
  }
  return nullptr;
}

}  // namespace Host::Frr
