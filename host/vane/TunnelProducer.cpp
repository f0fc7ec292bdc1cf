#include "host/vane/TunnelProducer.h"

#include "platform/kiln/AttributeDefinitions.h"

namespace Host {

using Vane::HwTunnelStatus;
using Vane::VaneTunnelConfig;

TunnelProducer::TunnelProducer(Dovel::Ptr<VaneTunnelConfig> const& wanted,
                               Dovel::Ptr<Vane::VaneTunnelStatus> const& published,
                               Dovel::Ptr<Vane::HwTunnelConfig> const& config)
    : wanted_(*this, wanted, Kiln::SubscribeOnly{}), published_(published), config_(config) {
  for (auto const& adjacency : wanted->adjacencyColl()) watchAdjacency(adjacency->adjId());
  for (auto const& tunnel : wanted->tunnelColl()) watchTunnel(tunnel->vtep());
  // A former process may have left ids of tunnels that are no longer wanted.
  for (auto const& vtep : Kiln::keysOf(published->tunnelStatusEntryColl())) {
    if (!wanted->tunnelHas(vtep)) published->tunnelStatusEntryDel(vtep);
  }
  config_->hwInitIs(1);
}

void TunnelProducer::wantedDispatch(Dovel::Change const& change) {
  if (change.id == VaneTunnelConfig::tunnelId) watchTunnel(change.keyAs<Meshal::IpGenAddr>());
  if (change.id == VaneTunnelConfig::adjacencyId) watchAdjacency(change.keyAs<std::uint32_t>());
}

void TunnelProducer::statusDispatch(Dovel::Change const& change) {
  if (change.id == HwTunnelStatus::tunnelStatusId) watchStatus(change.keyAs<Vane::TunnelKey>());
}

void TunnelProducer::statusCatchUp() {
  for (auto const& entry : status()->tunnelStatusColl()) watchStatus(entry->tunnelKey());
}

void TunnelProducer::watchTunnel(Meshal::IpGenAddr const& vtep) {
  touchedTunnels_.add(vtep);
  tunnels_.del(vtep);
  Dovel::Ptr<Vane::VaneTunnelConfigEntry const> const tunnel = wanted()->tunnel(vtep);
  if (tunnel) tunnels_.add(Dovel::make<NestedTunnel>(tunnel, &touchedTunnels_));
}

void TunnelProducer::watchAdjacency(std::uint32_t adjId) {
  touchedAdjacencies_.add(adjId);
  adjacencies_.del(adjId);
  Dovel::Ptr<Vane::VaneAdjacency const> const adjacency = wanted()->adjacency(adjId);
  if (adjacency) adjacencies_.add(Dovel::make<NestedAdjacency>(adjacency, &touchedAdjacencies_));
}

void TunnelProducer::watchStatus(Vane::TunnelKey const& key) {
  touchedStatus_.add(key);
  statuses_.del(key);
  Dovel::Ptr<Vane::HwTunnelStatusEntry const> const entry = status()->tunnelStatus(key);
  if (entry) statuses_.add(Dovel::make<NestedStatus>(entry, &touchedStatus_));
}

bool TunnelProducer::review() {
  if (touchedAdjacencies_.empty() && touchedTunnels_.empty() && touchedStatus_.empty()) return false;
  auto const adjIds = touchedAdjacencies_.take();
  for (auto const adjId : adjIds) reviewAdjacency(adjId);
  if (!adjIds.empty()) touchUsers(adjIds);
  auto const vteps = touchedTunnels_.take();
  // Removals first: they free rows for what is added.
  for (auto const& vtep : vteps) {
    if (!wanted()->tunnelHas(vtep)) removeTunnel(vtep);
  }
  for (auto const& vtep : vteps) {
    if (auto const& tunnel = wanted()->tunnel(vtep)) placeTunnel(*tunnel);
  }
  for (auto const& key : touchedStatus_.take()) reviewStatus(key);
  return true;
}

void TunnelProducer::reviewAdjacency(std::uint32_t adjId) {
  auto const& adjacency = wanted()->adjacency(adjId);
  auto& list = lists_[adjId];
  if (!adjacency) {
    lists_.erase(adjId);
  } else if (!list || list->nextHopEntry() != adjacency->nextHops()) {
    list = Dovel::make<Vane::NextHopEntryList>(adjId, adjacency->nextHops());
  }
}

void TunnelProducer::touchUsers(std::vector<std::uint32_t> const& adjIds) {
  boost::unordered_flat_set<std::uint32_t> const touched(adjIds.begin(), adjIds.end());
  for (auto const& tunnel : wanted()->tunnelColl()) {
    if (tunnel->adjId() && touched.contains(tunnel->adjId().value())) touchedTunnels_.add(tunnel->vtep());
  }
}

void TunnelProducer::removeTunnel(Meshal::IpGenAddr const& vtep) {
  auto const found = placed_.find(vtep);
  if (found == placed_.end()) return;
  activeIs(found->second, Vane::VaneNextHopId());
  auto const key = found->second.key;
  placed_.erase(found);
  config()->hwTunnelConfigListDel(key);
  published()->tunnelStatusEntryDel(vtep);
}

void TunnelProducer::placeTunnel(Vane::VaneTunnelConfigEntry const& wanted) {
  auto const found = placed_.find(wanted.vtep());
  bool const same = found != placed_.end() && found->second.key.src() == wanted.src() &&
                    found->second.key.vrf() == wanted.vrf() && found->second.key.intfId() == wanted.intfId() &&
                    (wanted.genId() == 0 || wanted.genId() == found->second.key.genId());
  if (same) return config()->hwTunnelConfigList(found->second.key)->nextHopEntryListIs(listOf(wanted));
  auto const key = newKey(wanted);
  // The feature ignores another key of no newer generation as a late event: it can only follow the end of the former.
  if (found != placed_.end() && key.genId() <= found->second.key.genId()) removeTunnel(wanted.vtep());
  auto const entry = Dovel::make<Vane::HwTunnelConfigEntry>(key);
  entry->nextHopEntryListIs(listOf(wanted));
  // The new generation before the end of the former one: the tunnel is never without a status.
  auto& placed = placed_[wanted.vtep()];
  auto const former = std::exchange(placed.key, key);
  config()->hwTunnelConfigListIs(entry);
  if (former == Vane::TunnelKey{}) return;
  // The new generation is not in force yet: the end of the former removes the tunnel, and its next-hop id with it.
  if (status() && status()->tunnelStatusHas(former)) activeIs(placed, Vane::VaneNextHopId());
  config()->hwTunnelConfigListDel(former);
}

Vane::TunnelKey TunnelProducer::newKey(Vane::VaneTunnelConfigEntry const& wanted) {
  auto& last = lastGenId_[wanted.vtep()];
  last = wanted.genId() != 0 ? wanted.genId() : last + 1;
  return {wanted.src(), wanted.vtep(), wanted.vrf(), last, wanted.intfId()};
}

Dovel::Ptr<Vane::NextHopEntryList> TunnelProducer::listOf(Vane::VaneTunnelConfigEntry const& wanted) const {
  auto const found = wanted.adjId() ? lists_.find(wanted.adjId().value()) : lists_.end();
  return found == lists_.end() ? nullptr : found->second;
}

void TunnelProducer::reviewStatus(Vane::TunnelKey const& key) {
  auto const found = placed_.find(key.dst());
  if (found == placed_.end() || found->second.key != key) return;
  auto const& entry = status()->tunnelStatus(key);
  auto const nhId = entry ? entry->hwNextHopStatusEntry().hwNextHopId() : Vane::VaneNextHopId();
  activeIs(found->second, nhId == Vane::VaneNextHopId::unprogrammed() ? Vane::VaneNextHopId() : nhId);
  if (!entry) {
    published()->tunnelStatusEntryDel(key.dst());
    return;
  }
  auto const shown = published()->tunnelStatusEntryIs(key.dst());
  shown->hwTunnelIdIs(entry->hwTunnelId());
  shown->hwNextHopIdIs(nhId);
}

// The former id is removed first: both belong to one VTEP, and a later removal would undo what the new one sets up.
void TunnelProducer::activeIs(Placed& placed, Vane::VaneNextHopId nhId) {
  if (placed.active == nhId) return;
  auto const former = std::exchange(placed.active, nhId);
  if (former.valid()) config()->activeNextHopIdListDel(former);
  if (nhId.valid()) config()->activeNextHopIdListIs(nhId, true);
}

}  // namespace Host
