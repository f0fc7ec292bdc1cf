#include "platform/vane/VtiStatusDirSm.h"

namespace Vane::VXLAN {

VtiStatusDirSm::VtiStatusDirSm(Dovel::String name, Dovel::Ptr<Vxlan::VtiStatusDir const> vtiStatusDir,
                               Dovel::Ptr<Bridging::HwCapabilities const> bridgingHwCapabilities)
    : name_(std::move(name)),
      vtiStatusDir_(std::move(vtiStatusDir)),
      bridgingHwCapabilities_(std::move(bridgingHwCapabilities)),
      watch_(*this, vtiStatusDir_, Kiln::SubscribeOnly{}) {}

void VtiStatusDirSm::initializedIs(bool initialized) {
  if (!initialized || initialized_) return;
  initialized_ = true;
  Kiln::forEachKey(vtiStatusDir()->vtiStatusColl(), [this](Meshal::IntfId intf, auto const&) {
    if (!isZombie() && !vtis_.at(intf)) handleVti(intf);
  });
}

void VtiStatusDirSm::handleVti(Meshal::IntfId intf) {
  Dovel::Ptr<Vxlan::VtiStatus const> const vti = vtiStatusDir()->vtiStatus(intf);
  if (!vti) return;
  auto const& known = vtis_.at(intf);
  if (known && &known->vti() != vti.get()) vtis_.del(intf);
  // Before the operations, so that changes that they cause are not missed.
  if (!vtis_.at(intf)) vtis_.add(Dovel::make<NestedSm_VtiStatus>(*this, vti));
  setup(*vti);
}

void VtiStatusDirSm::vtiStatusDirDispatch(Dovel::Change const& change) {
  if (change.id != Vxlan::VtiStatusDir::vtiStatusId) return;
  Meshal::IntfId const intf = change.keyAs<Meshal::IntfId>();
  bool const known = vtis_.at(intf) != nullptr;
  if (!known && !initialized_) return;
  if (vtiStatusDir()->vtiStatusHas(intf)) return handleVti(intf);
  if (!known) return;
  vtis_.del(intf);
  doCleanup(intf);
}

void VtiStatusDirSm::setup(Vxlan::VtiStatus const& vti) {
  Meshal::IntfId const intf = vti.intfId();
  doSetupVxlanDestUdpPort(intf, vti.udpPort());
  doSetupVxlanSrcUdpPortRange(intf, vti.udpSrcPort(), vti.udpSrcPortLength());
  doSetupVxlanDestSecUdpPort(intf);
  doHandleVxlanVtepToSecProfile(intf);
  doSetupVxlanSecSrcPortRange(intf);
  doHandleVxlanVrfToSbdVlan(intf);
  doSetupVtepToVtepBridging(intf);
  doSetupRemoteVxlanDomain(intf);
  doSetupVxlanSrcAddr(intf, vti.srcAddr());
  doSetupVxlanSrcAddrV6(intf, vti.srcAddrV6());
  doSetupMlagVtepAddr(intf, vti.mlagVtepAddr());
  doSetupMlagVtepAddr6(intf, vti.mlagVtepAddr6());
  for (auto const& group : Kiln::keysOf(vti.mcastGrpDecapColl())) doSetupMcastGrpDecap(intf, group);
  for (auto const& group : Kiln::keysOf(vti.mcastGrpDecap6Coll())) doSetupMcastGrpDecap6(intf, group);
  doSetupVxlanVarpVtepAddr(intf, vti.varpVtepAddr());
  doSetupVxlanVarpVtepAddr6(intf, vti.varpVtepAddr6());
  doSetupVxlanVtepAddrMask(intf);
  doSetupVxlanSharedRouterMac(intf);
  doUpdateOperStatus(intf);
  doSetupVxlanNdMcastSnooping(intf);
  doSetupVtepForSourcePruning(intf);
  doSetupVtepSourcePruningAll(intf);
  doSetupVxlanFloodTraffic(intf);
}

void VtiStatusDirSm::handleVtiChange(Vxlan::VtiStatus const& vti, Dovel::Change const& change) {
  using Vti = Vxlan::VtiStatus;
  Meshal::IntfId const intf = vti.intfId();
  switch (change.id) {
    case Vti::udpPortId:
      return doSetupVxlanDestUdpPort(intf, vti.udpPort());
    case Vti::udpSrcPortId:
    case Vti::udpSrcPortLengthId:
      return doSetupVxlanSrcUdpPortRange(intf, vti.udpSrcPort(), vti.udpSrcPortLength());
    case Vti::srcAddrId:
      return doSetupVxlanSrcAddr(intf, vti.srcAddr());
    case Vti::srcAddrV6Id:
      return doSetupVxlanSrcAddrV6(intf, vti.srcAddrV6());
    case Vti::mlagVtepAddrId:
      return doSetupMlagVtepAddr(intf, vti.mlagVtepAddr());
    case Vti::mlagVtepAddr6Id:
      return doSetupMlagVtepAddr6(intf, vti.mlagVtepAddr6());
    case Vti::mcastGrpDecapId:
      return doSetupMcastGrpDecap(intf, change.keyAs<Meshal::IpAddr>());
    case Vti::mcastGrpDecap6Id:
      return doSetupMcastGrpDecap6(intf, change.keyAs<Meshal::Ip6Addr>());
    case Vti::varpVtepAddrId:
      return doSetupVxlanVarpVtepAddr(intf, vti.varpVtepAddr());
    case Vti::varpVtepAddr6Id:
      return doSetupVxlanVarpVtepAddr6(intf, vti.varpVtepAddr6());
    default:
      return;
  }
}

VtiStatusDirSm::NestedSm_VtiStatus::NestedSm_VtiStatus(Self& owner, Dovel::Ptr<Vxlan::VtiStatus const> const& vti)
    : owner_(&owner) {
  if (!owner.hasNotificationActive()) hasNotificationActiveIs(false);
  notifierIs(vti);
  isRegisteredNotifieeIs(true);
}

Vxlan::VtiStatus const& VtiStatusDirSm::NestedSm_VtiStatus::vti() const {
  return static_cast<Vxlan::VtiStatus const&>(*notifier());
}

void VtiStatusDirSm::NestedSm_VtiStatus::onAttribute(Dovel::Change const& change) {
  if (owner_) owner_->handleVtiChange(vti(), change);
}

}  // namespace Vane::VXLAN
