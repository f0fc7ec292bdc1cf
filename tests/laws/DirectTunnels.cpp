#include "tests/laws/DirectTunnels.h"

#include "platform/vane/McastTunnel.h"

namespace AgentTest {

using Vane::TunnelKey;

DirectTunnels::DirectTunnels(Host::Agent& agent, Vane::TunnelType type, Wish const& wish, Notified notified)
    : agent_(agent), type_(type), wish_(wish), notified_(std::move(notified)) {
  bind();
}

void DirectTunnels::bind() {
  config().hwInitIs(1);
  auto const status = tunnelStatus(agent_, type_);
  if (!status) return;
  statuses_.emplace(*status, [this](Dovel::Change const& change) {
    if (change.id == Vane::HwTunnelStatus::tunnelStatusId) statusChanged(change.keyAs<TunnelKey>());
  });
}

void DirectTunnels::statusChanged(TunnelKey const& key) {
  auto const vtep = Kiln::toText(key.dst());
  entries_.erase(key);
  if (auto const entry = tunnelStatus(agent_, type_)->tunnelStatus(key))
    entries_.try_emplace(key, *entry, [this, vtep](Dovel::Change const&) { notified_(vtep); });
  notified_(vtep);
}

void DirectTunnels::sync() {
  std::set<std::string> vteps;
  for (auto const& [key, tunnel] : wish_.tunnels) {
    if (key.first == type_) vteps.insert(key.second);
  }
  for (auto const& [vtep, present] : present_) vteps.insert(vtep);
  for (auto const& vtep : vteps) sync(vtep);
}

// What is known is changed before each write, which may lead back here.
void DirectTunnels::sync(std::string const& vtep) {
  auto const wanted = wish_.tunnels.find({type_, vtep});
  if (wanted == wish_.tunnels.end()) return remove(vtep);
  auto const list = listOf(wanted->second.adjId);
  syncFormers(vtep);
  auto const found = present_.find(vtep);
  if (found != present_.end() && found->second.genId == wanted->second.genId) {
    if (auto const entry = config().hwTunnelConfigList(found->second.key)) entry->nextHopEntryListIs(list);
    return;
  }
  auto& present = present_[vtep];
  if (found != present_.end()) present.formers.push_back(present.key);
  present.key = hasVersion(type_) ? Vane::floodTunnelKey(Meshal::IpGenAddr(vtep))
                                  : TunnelKey{{}, Meshal::IpGenAddr(vtep), 0, ++lastGenId_, Vane::defaultTunnelIntf()};
  present.genId = wanted->second.genId;
  last_[vtep] = present.key;
  add(TunnelKey(present.key), list);
}

// An adjacency has the same next hops in all configurations.
void DirectTunnels::syncFormers(std::string const& vtep) {
  auto const found = present_.find(vtep);
  if (found == present_.end()) return;
  for (auto const& key : std::vector(found->second.formers)) {
    auto const entry = config().hwTunnelConfigList(key);
    if (!entry || !entry->nextHopEntryList()) continue;
    if (auto const list = listOf(entry->nextHopEntryList()->adjId())) entry->nextHopEntryListIs(list);
  }
}

void DirectTunnels::add(TunnelKey const& key, ListPtr const& list) {
  auto const entry = Dovel::make<Vane::HwTunnelConfigEntry>(key);
  entry->nextHopEntryListIs(list);
  config().hwTunnelConfigListIs(entry);
}

void DirectTunnels::remove(std::string const& vtep) {
  auto const found = present_.find(vtep);
  if (found == present_.end()) return;
  auto const former = std::move(found->second);
  present_.erase(found);
  if (former.active.valid()) config().activeNextHopIdListDel(former.active);
  config().hwTunnelConfigListDel(former.key);
  for (auto const& key : former.formers) config().hwTunnelConfigListDel(key);
}

void DirectTunnels::again(std::string const& vtep) {
  auto const wanted = wish_.tunnels.find({type_, vtep});
  if (wanted == wish_.tunnels.end() || !last_.contains(vtep)) return;
  auto const key = last_[vtep];
  auto const found = present_.find(vtep);
  if (found != present_.end()) {
    activeIs(found->second, {});
    config().hwTunnelConfigListDel(key);
  } else {
    present_[vtep] = {.key = key, .genId = wanted->second.genId, .formers = {}, .active = {}};
  }
  if (present_.contains(vtep) && !config().hwTunnelConfigListHas(key)) add(key, listOf(wanted->second.adjId));
}

void DirectTunnels::formerHops(std::string const& vtep, std::uint32_t adjId) {
  auto const found = present_.find(vtep);
  if (found == present_.end()) return;
  for (auto const& key : std::vector(found->second.formers)) {
    if (auto const entry = config().hwTunnelConfigList(key)) entry->nextHopEntryListIs(listOf(adjId));
  }
}

void DirectTunnels::formersGone(std::string const& vtep) {
  auto const found = present_.find(vtep);
  if (found == present_.end()) return;
  for (auto const& key : std::exchange(found->second.formers, {})) config().hwTunnelConfigListDel(key);
}

void DirectTunnels::formersGone() {
  for (auto const& [vtep, present] : std::map(present_)) formersGone(vtep);
}

bool DirectTunnels::activate() {
  bool changed = false;
  if (hasVersion(type_)) return false;
  for (auto& [vtep, present] : present_) {
    auto const& status = agent_.hwTunnelStatus(type_)->tunnelStatus(present.key);
    auto const nhId = status ? status->hwNextHopStatusEntry().hwNextHopId() : Vane::VaneNextHopId();
    auto const active = nhId == Vane::VaneNextHopId::unprogrammed() ? Vane::VaneNextHopId() : nhId;
    changed = changed || active != present.active;
    activeIs(present, active);
  }
  return changed;
}

void DirectTunnels::activeIs(Present& present, Vane::VaneNextHopId nhId) {
  if (present.active == nhId) return;
  auto const former = std::exchange(present.active, nhId);
  if (former.valid()) config().activeNextHopIdListDel(former);
  if (nhId.valid()) config().activeNextHopIdListIs(nhId, true);
}

void DirectTunnels::restarted() {
  entries_.clear();
  present_.clear();
  bind();
  sync();
}

DirectTunnels::ListPtr DirectTunnels::listOf(std::optional<std::uint32_t> adjId) {
  auto const found = adjId ? wish_.adjacencies.find(*adjId) : wish_.adjacencies.end();
  if (found == wish_.adjacencies.end()) return nullptr;
  auto& [hops, list] = lists_[*adjId];
  if (!list || hops != found->second) {
    hops = found->second;
    list = Dovel::make<Vane::NextHopEntryList>(*adjId, entriesOf(hops, type_));
  }
  return list;
}

}  // namespace AgentTest
