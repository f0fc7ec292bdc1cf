#include "host/vane/MappingOrder.h"

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

/// What a document says about the numbering of VFIs.
StateDocument numberingOf(StateDocument const& document) {
  rapidjson::Document numbering(rapidjson::kObjectType);
  auto& allocator = numbering.GetAllocator();
  rapidjson::Value stateway(rapidjson::kObjectType);
  for (auto const path : {kVfiCapabilitiesPath, kVlanVfiPath}) {
    auto const found = at(document, path);
    if (!found) continue;
    stateway.AddMember(rapidjson::Value(path.data(), static_cast<rapidjson::SizeType>(path.size()), allocator),
                       rapidjson::Value(found->value(), allocator), allocator);
  }
  numbering.AddMember("stateway", stateway, allocator);
  return StateDocument(Kiln::JsonDocument(std::move(numbering), document.source()));
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

void prepareMappings(StateDocument const& previous, StateDocument const& next, Stateway::AgentStores const& stores) {
  auto const config = stores.stateway->getEntity<VaneHelperVniConfig>(kVniConfigPath);
  if (!config) return;
  auto const former = numberingOf(previous);
  auto const numbering = numberingOf(next);
  if (former.root().value() != numbering.root().value()) {
    config->vlanVniMapDelAll();
    config->remoteVniConfigDelAll();
    Stateway::apply(former, numbering, stores);
  }
  if (config->vlanVniMapColl().empty()) return;
  auto const wanted = localMappings(next);
  for (auto const& key : Kiln::keysOf(config->vlanVniMapColl())) {
    auto const found = wanted.find(key);
    if (found == wanted.end() || found->second.vni() != config->vlanVniMap(key).vni()) config->vlanVniMapDel(key);
  }
}

}  // namespace Host
