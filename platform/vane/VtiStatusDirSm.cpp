#include "platform/vane/VtiStatusDirSm.h"

#include <span>

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
  auto const known = vtis_.at(intf);
  bool const replaced = known && &known->vti() != vti.get();
  if (replaced) vtis_.del(intf);
  // Before the operations, so that no change that they cause is missed.
  if (!vtis_.at(intf)) vtis_.add(Dovel::make<NestedSm_VtiStatus>(*this, vti));
  setup(*vti);
  if (replaced) groupsLeft(known->vti());
}

void VtiStatusDirSm::groupsLeft(Vxlan::VtiStatus const& gone) {
  for (auto const& group : Kiln::keysOf(gone.mcastGrpDecapColl())) doSetupMcastGrpDecap(gone.intfId(), group);
  for (auto const& group : Kiln::keysOf(gone.mcastGrpDecap6Coll())) doSetupMcastGrpDecap6(gone.intfId(), group);
}

void VtiStatusDirSm::vtiStatusDirDispatch(Dovel::Change const& change) {
  if (change.id != Vxlan::VtiStatusDir::vtiStatusId) return;
  Meshal::IntfId const intf = change.keyAs<Meshal::IntfId>();
  bool const known = vtis_.at(intf) != nullptr;
  if (!known && !initialized_) return;
  if (vtiStatusDir()->vtiStatusHas(intf)) return handleVti(intf);
  if (!known) return;
  auto const gone = vtis_.del(intf);
  groupsLeft(gone->vti());
  doCleanup(intf);
}

/// The operations in their order, each with the fields that it takes; one without fields runs only when an interface is
/// set up.
struct VtiStatusDirSm::Step {
  using Vti = Vxlan::VtiStatus;

  void (*run)(Self&, Vti const&);
  Kiln::AttributeId field = 0;
  Kiln::AttributeId otherField = 0;

  static std::span<Step const> all();
};

std::span<VtiStatusDirSm::Step const> VtiStatusDirSm::Step::all() {
  static constexpr Step steps[] = {
      {[](Self& sm, Vti const& v) { sm.doSetupVxlanDestUdpPort(v.intfId(), v.udpPort()); }, Vti::udpPortId},
      {[](Self& sm, Vti const& v) { sm.doSetupVxlanSrcUdpPortRange(v.intfId(), v.udpSrcPort(), v.udpSrcPortLength()); },
       Vti::udpSrcPortId, Vti::udpSrcPortLengthId},
      {[](Self& sm, Vti const& v) { sm.doSetupVxlanDestSecUdpPort(v.intfId()); }},
      {[](Self& sm, Vti const& v) { sm.doHandleVxlanVtepToSecProfile(v.intfId()); }},
      {[](Self& sm, Vti const& v) { sm.doSetupVxlanSecSrcPortRange(v.intfId()); }},
      {[](Self& sm, Vti const& v) { sm.doHandleVxlanVrfToSbdVlan(v.intfId()); }},
      {[](Self& sm, Vti const& v) { sm.doSetupVtepToVtepBridging(v.intfId()); }},
      {[](Self& sm, Vti const& v) { sm.doSetupRemoteVxlanDomain(v.intfId()); }},
      {[](Self& sm, Vti const& v) { sm.doSetupVxlanSrcAddr(v.intfId(), v.srcAddr()); }, Vti::srcAddrId},
      {[](Self& sm, Vti const& v) { sm.doSetupVxlanSrcAddrV6(v.intfId(), v.srcAddrV6()); }, Vti::srcAddrV6Id},
      {[](Self& sm, Vti const& v) { sm.doSetupMlagVtepAddr(v.intfId(), v.mlagVtepAddr()); }, Vti::mlagVtepAddrId},
      {[](Self& sm, Vti const& v) { sm.doSetupMlagVtepAddr6(v.intfId(), v.mlagVtepAddr6()); }, Vti::mlagVtepAddr6Id},
      {[](Self& sm, Vti const& v) {
        for (auto const& group : Kiln::keysOf(v.mcastGrpDecapColl())) sm.doSetupMcastGrpDecap(v.intfId(), group);
      }},
      {[](Self& sm, Vti const& v) {
        for (auto const& group : Kiln::keysOf(v.mcastGrpDecap6Coll())) sm.doSetupMcastGrpDecap6(v.intfId(), group);
      }},
      {[](Self& sm, Vti const& v) { sm.doSetupVxlanVarpVtepAddr(v.intfId(), v.varpVtepAddr()); }, Vti::varpVtepAddrId},
      {[](Self& sm, Vti const& v) { sm.doSetupVxlanVarpVtepAddr6(v.intfId(), v.varpVtepAddr6()); },
       Vti::varpVtepAddr6Id},
      {[](Self& sm, Vti const& v) { sm.doSetupVxlanVtepAddrMask(v.intfId()); }},
      {[](Self& sm, Vti const& v) { sm.doSetupVxlanSharedRouterMac(v.intfId()); }},
      {[](Self& sm, Vti const& v) { sm.doUpdateOperStatus(v.intfId()); }},
      {[](Self& sm, Vti const& v) { sm.doSetupVxlanNdMcastSnooping(v.intfId()); }},
      {[](Self& sm, Vti const& v) { sm.doSetupVtepForSourcePruning(v.intfId()); }},
      {[](Self& sm, Vti const& v) { sm.doSetupVtepSourcePruningAll(v.intfId()); }},
      {[](Self& sm, Vti const& v) { sm.doSetupVxlanFloodTraffic(v.intfId()); }},
  };
  return steps;
}

void VtiStatusDirSm::setup(Vxlan::VtiStatus const& vti) {
  for (auto const& step : Step::all()) {
    // An operation may cause the interface's removal: the rest would restore what the cleanup has cleared.
    auto const& known = vtis_.at(vti.intfId());
    if (!known || &known->vti() != &vti) return;
    step.run(*this, vti);
  }
}

void VtiStatusDirSm::handleVtiChange(Vxlan::VtiStatus const& vti, Dovel::Change const& change) {
  using Vti = Vxlan::VtiStatus;
  if (change.id == Vti::mcastGrpDecapId) {
    return doSetupMcastGrpDecap(vti.intfId(), change.keyAs<Meshal::IpAddr>());
  }
  if (change.id == Vti::mcastGrpDecap6Id) {
    return doSetupMcastGrpDecap6(vti.intfId(), change.keyAs<Meshal::Ip6Addr>());
  }
  for (auto const& step : Step::all()) {
    if (change.id == step.field || change.id == step.otherField) return step.run(*this, vti);
  }
}

VtiStatusDirSm::NestedSm_VtiStatus::NestedSm_VtiStatus(Self& owner, Dovel::Ptr<Vxlan::VtiStatus const> const& vti)
    : NotifieeConst(vti), owner_(&owner) {}

Vxlan::VtiStatus const& VtiStatusDirSm::NestedSm_VtiStatus::vti() const {
  return static_cast<Vxlan::VtiStatus const&>(*notifier());
}

void VtiStatusDirSm::NestedSm_VtiStatus::onAttribute(Dovel::Change const& change) {
  if (!owner_) return;
  Dovel::Ptr<Self> const owner(owner_);
  owner->handleVtiChange(vti(), change);
}

}  // namespace Vane::VXLAN
