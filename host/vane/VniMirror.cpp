#include "host/vane/VniMirror.h"

#include "platform/kiln/AttributeDefinitions.h"

KILN_DESCRIBE(Host::VniMirror)

namespace Host {

using Vane::VXLAN::VtiVlanKey;
using Vane::VXLAN::VtiVniKey;
using VaneHelper::VaneHelperVni;
using VaneHelper::VaneHelperVniConfig;
using VaneHelper::VaneHelperVniStatus;

namespace {

void copyLocal(VaneHelperVniConfig const& from, VaneHelperVniConfig& to, VtiVlanKey const& key) {
  if (from.vlanVniMapHas(key)) {
    to.vlanVniMapIs(key, from.vlanVniMap(key));
  } else {
    to.vlanVniMapDel(key);
  }
}
void copyRemote(VaneHelperVniConfig const& from, VaneHelperVniConfig& to, VtiVniKey const& key) {
  if (from.remoteVniConfigHas(key)) {
    to.remoteVniConfigIs(key, from.remoteVniConfig(key));
  } else {
    to.remoteVniConfigDel(key);
  }
}
void copyLocal(VaneHelperVniStatus const& from, VaneHelperVniStatus& to, VtiVlanKey const& key) {
  if (from.statusEntryHas(key)) {
    to.statusEntryIs(key, from.statusEntry(key));
  } else {
    to.statusEntryDel(key);
  }
}
void copyRemote(VaneHelperVniStatus const& from, VaneHelperVniStatus& to, VtiVniKey const& key) {
  if (from.remoteVniStatusEntryHas(key)) {
    to.remoteVniStatusEntryIs(key, from.remoteVniStatusEntry(key));
  } else {
    to.remoteVniStatusEntryDel(key);
  }
}

}  // namespace

VniMirror::VniMirror(Dovel::Ptr<VaneHelperVniConfig const> wanted, Dovel::Ptr<VaneHelperVniStatus> published,
                     Dovel::Ptr<VaneHelperVni> own)
    : wanted_(*this, std::move(wanted), Kiln::SubscribeOnly{}),
      status_(*this, own->helperVniStatus(), Kiln::SubscribeOnly{}),
      published_(std::move(published)),
      config_(own->helperVniConfig()) {
  published_->statusEntryDelAll();
  published_->remoteVniStatusEntryDelAll();
  for (auto const& key : Kiln::keysOf(wanted_->vlanVniMapColl())) copyLocal(*wanted_.get(), *config_, key);
  for (auto const& key : Kiln::keysOf(wanted_->remoteVniConfigColl())) copyRemote(*wanted_.get(), *config_, key);
}

void VniMirror::wantedDispatch(Dovel::Change const& change) {
  if (change.id == VaneHelperVniConfig::vlanVniMapId) {
    copyLocal(*wanted_.get(), *config_, change.keyAs<VtiVlanKey>());
  } else if (change.id == VaneHelperVniConfig::remoteVniConfigId) {
    copyRemote(*wanted_.get(), *config_, change.keyAs<VtiVniKey>());
  }
}

void VniMirror::statusDispatch(Dovel::Change const& change) {
  if (change.id == VaneHelperVniStatus::statusEntryId) {
    copyLocal(*status_.get(), *published_, change.keyAs<VtiVlanKey>());
  } else if (change.id == VaneHelperVniStatus::remoteVniStatusEntryId) {
    copyRemote(*status_.get(), *published_, change.keyAs<VtiVniKey>());
  }
}

}  // namespace Host
