#include "platform/vane/VaneHelperTunnelSm.h"

namespace VaneHelper {

VaneHelperTunnelSm::VaneHelperTunnelSm(Dovel::Ptr<Vane::VaneCommonSmData const> vcsd, Vane::TunnelType tunnelType,
                                       Dovel::Ptr<Vane::HwTunnelConfig const> hwTunnelConfig,
                                       Dovel::Ptr<Vane::HwTunnelStatus> hwTunnelStatus)
    : vcsd_(std::move(vcsd)),
      tunnelType_(tunnelType),
      hwTunnelConfig_(std::move(hwTunnelConfig)),
      hwTunnelStatus_(std::move(hwTunnelStatus)),
      watch_(*this, hwTunnelConfig_, Kiln::SubscribeOnly{}) {}

void VaneHelperTunnelSm::initializedIs(bool initialized) {
  if (!initialized || initialized_) return;
  Dovel::Ptr<Self> const self(this);
  handleInitialized();
  initialized_ = true;
  // A handler may have removed a tunnel, or added it and had it handled on the stack.
  Kiln::forEachKey(hwTunnelConfig()->hwTunnelConfigListColl(), [this](auto const&, EntryPtr const& entry) {
    if (!isZombie()) tunnelAdd(entry);
  });
}

void VaneHelperTunnelSm::handleVerify() { verifyTunnelsAndNextHops(); }

void VaneHelperTunnelSm::hwTunnelConfigDispatch(Dovel::Change const& change) {
  if (!initialized_) return;
  switch (change.id) {
    case Vane::HwTunnelConfig::hwInitId:
      return hwInit();
    case Vane::HwTunnelConfig::hwCleanupId:
      return hwCleanup();
    case Vane::HwTunnelConfig::hwTunnelConfigListId:
      return handleHwTunnelConfigList(change.keyAs<Vane::TunnelKey>());
    case Vane::HwTunnelConfig::activeNextHopIdListId:
      return handleActiveNextHopId(change.keyAs<Vane::VaneNextHopId>());
    default:
      return;
  }
}

void VaneHelperTunnelSm::handleHwTunnelConfigList(Vane::TunnelKey const& key) {
  EntryPtr const entry = hwTunnelConfig()->hwTunnelConfigList(key);
  if (entry && tunnelAdd(entry)) return;
  auto const& known = tunnels_.at(key);
  if (!known || &known->entry() == entry.get()) return;
  tunnelDel(key);
  // The entry may have been handled, or replaced again, on the stack of the deletion.
  if (entry && !isZombie() && hwTunnelConfig()->hwTunnelConfigList(key) == entry) tunnelAdd(entry);
}

bool VaneHelperTunnelSm::tunnelAdd(EntryPtr const& entry) {
  auto const added =
      tunnels_.findOrMake(entry->tunnelKey(), [&] { return Dovel::make<NestedSm_HwTunnelConfigEntry>(*this, entry); });
  // Added first: changes on the stack of the creation find the tunnel known.
  if (added.second) doHandleTunnelCreate(entry);
  return added.second;
}

void VaneHelperTunnelSm::tunnelDel(Vane::TunnelKey const& key) {
  auto const gone = tunnels_.del(key);
  doHandleTunnelDelete(EntryPtr(&gone->entry()));
}

VaneHelperTunnelSm::NestedSm_HwTunnelConfigEntry::NestedSm_HwTunnelConfigEntry(Self& owner, EntryPtr const& entry)
    : NotifieeConst(entry,
                    Dovel::attributes(Vane::HwTunnelConfigEntry::nextHopEntryListId, Vane::HwTunnelConfigEntry::ttlId)),
      owner_(&owner) {}

Vane::HwTunnelConfigEntry const& VaneHelperTunnelSm::NestedSm_HwTunnelConfigEntry::entry() const {
  return static_cast<Vane::HwTunnelConfigEntry const&>(*notifier());
}

void VaneHelperTunnelSm::NestedSm_HwTunnelConfigEntry::onAttribute(Dovel::Change const& change) {
  if (!owner_) return;
  Dovel::Ptr<Self> const owner(owner_);
  EntryPtr const changed(&entry());
  if (change.id == Vane::HwTunnelConfigEntry::nextHopEntryListId) owner->doHandleTunnelNextHopId(changed);
  if (change.id == Vane::HwTunnelConfigEntry::ttlId) owner->doHandleTunnelTTL(changed);
}

}  // namespace VaneHelper
