#include "platform/vane/VaneVxlanMcastSm.h"

namespace Vane::VXLAN {

using Multicast::Vxlan::TunnelConfig;
using Multicast::Vxlan::TunnelConfigDir;
using Multicast::Vxlan::TunnelStatusDir;

void NestedSm_McastTunnelConfig::onAttribute(Dovel::Change const&) {
  if (owner_) owner_->handleTunnel(addr_);
}

void NestedSm_McastTunnelStatus::onAttribute(Dovel::Change const&) {
  if (owner_) owner_->handleStatus(tunnelKey_);
}

McastTunnels::McastTunnels(Dovel::Ptr<TunnelConfigDir const> const& wanted,
                           Dovel::Ptr<TunnelStatusDir> const& published, HwTunnelPair const& pair)
    : published_(published),
      config_(pair.config),
      wanted_(*this, wanted, Kiln::SubscribeOnly{}),
      status_(*this, pair.status, Kiln::SubscribeOnly{}) {
  published_->tunnelDelAll();
  config_->hwInitIs(1);
  for (auto const& key : Kiln::keysOf(status_->tunnelStatusColl())) watchStatus(key);
  for (auto const& addr : Kiln::keysOf(wanted->tunnelColl())) watchTunnel(addr);
}

void McastTunnels::wantedDispatch(Dovel::Change const& change) {
  if (change.id == TunnelConfigDir::tunnelId) watchTunnel(change.keyAs<Meshal::IpGenAddr>());
}

void McastTunnels::statusDispatch(Dovel::Change const& change) {
  if (change.id == HwTunnelStatus::tunnelStatusId) watchStatus(change.keyAs<TunnelKey>());
}

void McastTunnels::watchTunnel(Meshal::IpGenAddr const& addr) {
  tunnels_.del(addr);
  Dovel::Ptr<TunnelConfig const> const tunnel = wanted_->tunnel(addr);
  if (tunnel) tunnels_.add(Dovel::make<NestedSm_McastTunnelConfig>(*this, tunnel));
  handleTunnel(addr);
}

void McastTunnels::watchStatus(TunnelKey const& key) {
  statuses_.del(key);
  Dovel::Ptr<HwTunnelStatusEntry const> const entry = status_->tunnelStatus(key);
  if (entry) statuses_.add(Dovel::make<NestedSm_McastTunnelStatus>(*this, entry));
  handleStatus(key);
}

void McastTunnels::handleTunnel(Meshal::IpGenAddr const& addr) {
  auto const key = floodTunnelKey(addr);
  auto const wanted = wanted_->tunnel(addr);
  if (!wanted) {
    config_->hwTunnelConfigListDel(key);
    return;
  }
  auto const list = listOf(*wanted);
  if (auto const entry = config_->hwTunnelConfigList(key)) {
    auto const& present = entry->nextHopEntryList();
    bool const same = present && list ? present->nextHopEntry() == list->nextHopEntry() : present == list;
    if (same) return;
    // Only tunnels to groups have a programmer, which follows the list. The others are published anew.
    if (config_->tunnelType() == vxlanMcastTunnel_) return entry->nextHopEntryListIs(list);
  }
  auto const entry = Dovel::make<HwTunnelConfigEntry>(key);
  entry->nextHopEntryListIs(list);
  config_->hwTunnelConfigListIs(entry);
}

Dovel::Ptr<NextHopEntryList> McastTunnels::listOf(TunnelConfig const& wanted) const {
  if (config_->tunnelType() != vxlanMcastTunnel_) {
    return wanted.nextHops().empty() ? nullptr : Dovel::make<NextHopEntryList>(0, wanted.nextHops());
  }
  NextHopEntrySet nextHops;
  for (auto nextHop : wanted.nextHops()) {
    if (nextHop.type() != nextHopResolved && nextHop.type() != nextHopMcastTunnel()) continue;
    nextHop.typeIs(nextHopMcastTunnel());
    nextHops.insert(nextHop);
  }
  return nextHops.empty() ? nullptr : Dovel::make<NextHopEntryList>(0, nextHops);
}

void McastTunnels::handleStatus(TunnelKey const& key) {
  auto const entry = status_->tunnelStatus(key);
  if (!entry) {
    published_->tunnelDel(key.dst());
    return;
  }
  auto const shown = published_->tunnelIs(key.dst());
  shown->hwTunnelIdIs(entry->hwTunnelId());
  shown->hwNextHopIdIs(entry->hwNextHopStatusEntry().hwNextHopId());
}

VaneVxlanMcastSm::VaneVxlanMcastSm(Dovel::Ptr<VaneCommonSmData const> vcsd,
                                   Dovel::Ptr<Multicast::Tunnel::ConfigDirColl> configColl,
                                   Dovel::Ptr<Multicast::Tunnel::StatusDirColl> statusColl, HwTunnelPair mcast,
                                   HwTunnelPair mcastHer, HwTunnelPair bum,
                                   Dovel::Ptr<Dovel::Node const> vxlanBootStatus,
                                   Dovel::Ptr<Dovel::Node const> vaneL3IntfTable)
    : vcsd_(std::move(vcsd)),
      configColl_(std::move(configColl)),
      statusColl_(std::move(statusColl)),
      pairs_{std::move(mcast), std::move(mcastHer), std::move(bum)},
      vxlanBootStatus_(std::move(vxlanBootStatus)),
      vaneL3IntfTable_(std::move(vaneL3IntfTable)) {}

void VaneVxlanMcastSm::initializedIs(bool initialized) {
  if (!initialized || initialized_) return;
  initialized_ = true;
  for (auto const& pair : pairs_) {
    if (!pair.config || !pair.status) continue;
    auto const type = pair.config->tunnelType();
    auto const& wanted = configColl_->tunnelConfigDir(type);
    auto const& published = statusColl_->tunnelStatusDir(type);
    if (wanted && published) kinds_.push_back(Dovel::make<McastTunnels>(wanted, published, pair));
  }
}

void VaneVxlanMcastSm::hasNotificationActiveIs(bool active) {
  if (active == hasNotificationActive()) return;
  Kiln::Sm::hasNotificationActiveIs(active);
  for (auto const& kind : kinds_) kind->hasNotificationActiveIs(active);
}

void VaneVxlanMcastSm::kilnDoZombieReactors(bool zombie) {
  if (zombie == isZombie()) return;
  for (auto const& kind : kinds_) kind->kilnDoZombieReactors(zombie);
  Kiln::Sm::kilnDoZombieReactors(zombie);
}

}  // namespace Vane::VXLAN
