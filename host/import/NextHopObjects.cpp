#include "host/import/NextHopObjects.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace Host::Import {

namespace {

constexpr std::size_t maxNesting = 16;

std::optional<JsonIn> gatewayOf(JsonIn at) {
  if (auto const gateway = at.find("gateway")) return gateway;
  // A gateway of the other family is in an object of its own.
  auto const via = at.find("via");
  return via ? std::optional(via->member("host")) : std::nullopt;
}

}  // namespace

std::optional<RouteHop> routeHop(JsonIn at) {
  for (auto const flag : {"dead", "linkdown"}) {
    if (hasFlag(at, "flags", flag)) return std::nullopt;
  }
  if (has(at, "blackhole")) return std::nullopt;
  auto const gateway = gatewayOf(at);
  RouteHop hop{gateway ? std::optional(ipAddr(*gateway)) : std::nullopt, text(at, "dev").value_or("")};
  if (!hop.gateway && hop.device.empty()) return std::nullopt;
  return hop;
}

NextHopObjects::NextHopObjects(JsonDocument const* file, std::string const& missingFile, Warnings& warnings)
    : complete_(file != nullptr), file_(file ? file->source() : missingFile), warnings_(warnings) {
  if (!file) return;
  for (auto const at : objects(file->root())) {
    Object object{at, {}};
    if (auto const group = at.find("group")) {
      for (auto const member : objects(*group)) object.group.push_back(member.member("id"));
    }
    objects_.insert_or_assign(number(at.member("id")), std::move(object));
  }
}

NextHopObjects::Object const* NextHopObjects::object(JsonIn id) const {
  auto const found = objects_.find(number(id));
  if (found != objects_.end()) return &found->second;
  if (!complete_) id.fail("expected the id of a next-hop object of the missing " + file_);
  // A kernel deletes what refers to an object together with it: the object was deleted between two captures.
  warnings_.add("no-object", id, "ignored: " + file_ + " has no next-hop object of this id");
  return nullptr;
}

void NextHopObjects::unfold(JsonIn id, Walk& walk) const {
  auto const* here = object(id);
  if (!here) return;
  auto& chain = walk.chain;
  bool const loop = std::find(chain.begin(), chain.end(), number(id)) != chain.end();
  if (!loop && !walk.seen.insert(number(id)).second) return;
  chain.push_back(number(id));
  if (loop) id.fail(fmt::format("expected a group that does not contain itself, not {}", fmt::join(chain, " -> ")));
  if (chain.size() > maxNesting) id.fail(fmt::format("expected groups that nest at most {} deep", maxNesting));
  if (here->group.empty()) walk.leaves.push_back(here->at);
  for (auto const member : here->group) unfold(member, walk);
  chain.pop_back();
}

std::vector<JsonIn> NextHopObjects::leaves(JsonIn id) const {
  Walk walk;
  unfold(id, walk);
  return std::move(walk.leaves);
}

std::vector<RouteHop> NextHopObjects::members(JsonIn nhid) const {
  std::vector<RouteHop> members;
  for (auto const leaf : leaves(nhid)) {
    if (auto const hop = routeHop(leaf)) members.push_back(*hop);
  }
  return members;
}

bool NextHopObjects::isGroup(JsonIn nhid) const {
  auto const found = objects_.find(number(nhid));
  return found != objects_.end() && !found->second.group.empty();
}

std::vector<JsonIn> NextHopObjects::vteps(JsonIn nhid) const {
  auto const* here = object(nhid);
  if (!here) return {};
  if (!has(here->at, "fdb")) nhid.fail("expected the id of a next-hop object that is marked fdb");
  std::vector<JsonIn> vteps;
  for (auto const leaf : leaves(nhid)) {
    if (auto const hop = routeHop(leaf); hop && hop->gateway) vteps.push_back(*gatewayOf(leaf));
  }
  return vteps;
}

}  // namespace Host::Import
