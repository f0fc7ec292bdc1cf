#include "host/import/NextHopObjects.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace Host::Import {

namespace {

constexpr std::size_t maxNesting = 16;
constexpr std::uint32_t maxWeight = 0x10000;

std::optional<JsonIn> gatewayOf(JsonIn at) {
  if (auto const gateway = at.find("gateway")) return gateway;
  // A gateway of the other family is in an object of its own.
  auto const via = at.find("via");
  return via ? std::optional(via->member("host")) : std::nullopt;
}

}  // namespace

RouteHop routeHop(JsonIn at) {
  auto const gateway = gatewayOf(at);
  auto const weight = at.find("weight");
  return {.at = at,
          .gateway = gateway ? std::optional(ipAddr(*gateway)) : std::nullopt,
          .device = text(at, "dev").value_or(""),
          .weight = weight ? numberIn(*weight, 1, maxWeight) : 1,
          .dead = hasFlag(at, "flags", "dead"),
          .linkdown = hasFlag(at, "flags", "linkdown"),
          .blackhole = has(at, "blackhole"),
          .encap = has(at, "encap")};
}

NextHopObjects::NextHopObjects(JsonDocument const* file, std::string const& missingFile, Warnings& warnings)
    : complete_(file != nullptr), file_(file ? file->source() : missingFile), warnings_(warnings) {
  if (!file) return;
  for (auto const at : objects(file->root())) {
    Object object{at, {}};
    if (auto const group = at.find("group")) {
      for (auto const member : objects(*group)) {
        auto const weight = member.find("weight");
        object.group.emplace_back(member.member("id"), weight ? numberIn(*weight, 1, maxWeight) : 1);
      }
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
  if (here->group.empty()) walk.leaves.emplace_back(here->at, walk.weight);
  auto const outer = walk.weight;
  for (auto const& [member, weight] : here->group) {
    walk.weight = std::min(outer * weight, maxWeight);
    unfold(member, walk);
  }
  walk.weight = outer;
  chain.pop_back();
}

std::vector<std::pair<JsonIn, std::uint32_t>> NextHopObjects::leaves(JsonIn id) const {
  Walk walk;
  unfold(id, walk);
  return std::move(walk.leaves);
}

std::vector<RouteHop> NextHopObjects::members(JsonIn nhid) const {
  std::vector<RouteHop> members;
  for (auto const& [leaf, weight] : leaves(nhid)) {
    members.push_back(routeHop(leaf));
    members.back().weight = weight;
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
  for (auto const& [leaf, weight] : leaves(nhid)) {
    auto const hop = routeHop(leaf);
    bool const inService = !hop.dead && !hop.linkdown && !hop.blackhole;
    if (inService && hop.gateway) vteps.push_back(*gatewayOf(leaf));
  }
  return vteps;
}

}  // namespace Host::Import
