#include "host/vane/MappingOrder.h"

#include <algorithm>
#include <array>

#include "host/agent/World.h"
#include "platform/kiln/Json.h"
#include "platform/stateway/EntityManager.h"
#include "platform/vane/VaneHelperVni.h"

namespace Host {

namespace {

using Kiln::JsonIn;
using Stateway::StateDocument;
using Vane::VXLAN::VtiVlanKey;
using VaneHelper::VaneHelperVniConfig;
using VaneHelper::VaneHelperVniConfigEntry;

std::optional<JsonIn> at(StateDocument const& document, std::string_view path) {
  auto const stateway = document.root().find("stateway");
  return stateway ? stateway->find(path) : std::nullopt;
}

bool isSame(StateDocument const& a, StateDocument const& b, std::string_view path) {
  auto const inA = at(a, path);
  auto const inB = at(b, path);
  return inA && inB ? inA->value() == inB->value() : !inA && !inB;
}

bool hasSameVfis(StateDocument const& a, StateDocument const& b) {
  std::array const paths{kVfiCapabilitiesPath, kVlanVfiPath};
  return std::all_of(paths.begin(), paths.end(), [&](auto path) { return isSame(a, b, path); });
}

Kiln::HashMap<VtiVlanKey, VaneHelperVniConfigEntry> localMappings(StateDocument const& document) {
  Kiln::HashMap<VtiVlanKey, VaneHelperVniConfigEntry> mappings;
  auto const config = at(document, kVniConfigPath);
  auto const local = config ? config->find("vlanVniMap") : std::nullopt;
  if (!local) return mappings;
  local->eachMember([&](std::string_view text, JsonIn const& in) {
    VtiVlanKey key;
    VaneHelperVniConfigEntry entry;
    Kiln::readText(text, key);
    Kiln::readJson(entry, in);
    mappings.try_emplace(key, entry);
  });
  return mappings;
}

}  // namespace

void endChangedMappings(StateDocument const& previous, StateDocument const& next, Stateway::AgentStores const& stores) {
  auto const config = stores.stateway->getEntity<VaneHelperVniConfig>(kVniConfigPath);
  if (!config) return;
  if (!hasSameVfis(previous, next)) {
    config->vlanVniMapDelAll();
    config->remoteVniConfigDelAll();
  }
  if (config->vlanVniMapColl().empty()) return;
  auto const wanted = localMappings(next);
  for (auto const& key : Kiln::keysOf(config->vlanVniMapColl())) {
    auto const found = wanted.find(key);
    if (found == wanted.end() || found->second.vni() != config->vlanVniMap(key).vni()) config->vlanVniMapDel(key);
  }
}

}  // namespace Host
