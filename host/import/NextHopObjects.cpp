#include "host/import/NextHopObjects.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace Host::Import {

namespace {

constexpr std::size_t maxNesting = 16;

}  // namespace

std::optional<RouteHop> routeHop(JsonAt at) {
  for (auto const flag : {"dead", "linkdown"}) {
    if (at.flag("flags", flag)) return std::nullopt;
  }
  if (at.has("blackhole")) return std::nullopt;
  RouteHop hop{std::nullopt, at.text("dev").value_or("")};
  // A gateway of the other family stands in an object of its own.
  if (auto const via = at.find("via")) hop.gateway = ipAddr(via->at("host"));
  if (auto const gateway = at.find("gateway")) hop.gateway = ipAddr(*gateway);
  if (!hop.gateway && hop.device.empty()) return std::nullopt;
  return hop;
}

NextHopObjects::NextHopObjects(JsonFile const* file, std::string const& missingFile)
    : file_(file ? file->name() : missingFile) {
  if (!file) return;
  for (auto const at : file->top().objects()) {
    Object object{at, {}};
    if (auto const group = at.find("group")) {
      for (auto const member : group->objects()) object.group.push_back(member.at("id"));
    }
    objects_.insert_or_assign(at.at("id").number(), std::move(object));
  }
}

NextHopObjects::Object const& NextHopObjects::object(JsonAt id) const {
  auto const found = objects_.find(id.number());
  if (found == objects_.end()) id.fail("the id of a next-hop object of " + file_);
  return found->second;
}

void NextHopObjects::unfold(JsonAt id, Walk& walk) const {
  auto const& here = object(id);
  auto& chain = walk.chain;
  bool const loop = std::find(chain.begin(), chain.end(), id.number()) != chain.end();
  if (!loop && !walk.seen.insert(id.number()).second) return;
  chain.push_back(id.number());
  if (loop) id.fail(fmt::format("a group that does not contain itself, not {}", fmt::join(chain, " -> ")));
  if (chain.size() > maxNesting) id.fail(fmt::format("groups that nest at most {} deep", maxNesting));
  if (here.group.empty()) walk.leaves.push_back(here.at);
  for (auto const member : here.group) unfold(member, walk);
  chain.pop_back();
}

std::vector<JsonAt> NextHopObjects::leaves(JsonAt id) const {
  Walk walk;
  unfold(id, walk);
  return std::move(walk.leaves);
}

std::vector<RouteHop> NextHopObjects::members(JsonAt nhid) const {
  std::vector<RouteHop> members;
  for (auto const leaf : leaves(nhid)) {
    if (auto const hop = routeHop(leaf)) members.push_back(*hop);
  }
  return members;
}

std::vector<IpAddr> NextHopObjects::vteps(JsonAt nhid) const {
  if (!object(nhid).at.has("fdb")) nhid.fail("the id of a next-hop object that is marked fdb");
  std::vector<IpAddr> vteps;
  for (auto const leaf : leaves(nhid)) {
    if (auto const hop = routeHop(leaf); hop && hop->gateway) vteps.push_back(*hop->gateway);
  }
  return vteps;
}

}  // namespace Host::Import
