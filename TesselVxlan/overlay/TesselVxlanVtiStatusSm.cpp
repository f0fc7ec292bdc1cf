#include "TesselVxlan/overlay/TesselVxlanVtiStatusSm.h"

#include <algorithm>
#include <array>
#include <span>

#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("TesselVxlanVtiStatusSm");

namespace TesselVxlan {

using Meshal::IntfId;
using Meshal::Ip6Addr;
using Meshal::IpAddr;
using Meshal::IpGenAddr;
using TesselL3Common::TesselVxlanState;

namespace {

/// The longest range of UDP source ports.
constexpr std::uint16_t longestRange = 0x3fff;

/// An attribute of the state that holds an address at which tunnels end.
using Role = IpGenAddr const& (TesselVxlanState::*)() const;
constexpr std::array<Role, 5> roles{&TesselVxlanState::localVtep, &TesselVxlanState::localVtep6,
                                    &TesselVxlanState::vArpVtepAddr, &TesselVxlanState::vArpVtepAddr6,
                                    &TesselVxlanState::mlagVtepAddr};
/// The roles whose rows follow the PHB setting: all but the last.
constexpr std::size_t refreshedRoles = 4;

bool isReservedMulticast(IpAddr const& addr) { return addr.isReservedMulticast(); }
/// Scopes that are never forwarded: reserved, interface-local, link-local.
bool isReservedMulticast(Ip6Addr const& addr) { return (addr.bytes()[1] & 0xf) <= 2; }

}  // namespace

TesselVxlanVtiStatusSm::TesselVxlanVtiStatusSm(
    Dovel::String name, Dovel::Ptr<Vxlan::VtiStatusDir const> vtiStatusDir,
    Dovel::Ptr<Bridging::HwCapabilities const> bridgingHwCapabilities, Dovel::Ptr<Stateway::EntityManager> statewayEm,
    Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
    Dovel::Ptr<TesselCentral::VxlanCapabilities const> vxlanCapabilities,
    Dovel::Ptr<TesselL3Common::TesselVxlanConfig> vxlanConfig,
    Dovel::Ptr<TesselVxlanTunnelTermTableProgrammer> tunnelTermTableProgrammer,
    Dovel::Ptr<TesselVxlanEgrL3TunnelTablesProgrammer> egrL3TunnelTablesProgrammer,
    Dovel::Ptr<TesselCentral::VxlanState const> tesselCentralVxlanState, Dovel::Ptr<TesselVxlanState> vxlanState,
    Dovel::Ptr<TesselCentral::VxlanSliceConfig> vxlanSliceConfig,
    Dovel::Ptr<Vxlan::VxlanConfigDir const> vxlanConfigDir, bool profileSupportsVxlan)
    : VtiStatusDirSm(std::move(name), std::move(vtiStatusDir), std::move(bridgingHwCapabilities)),
      statewayEm_(std::move(statewayEm)),
      fcsd_(*this, std::move(fcsd), Kiln::SubscribeOnly{}),
      vxlanCapabilities_(std::move(vxlanCapabilities)),
      vxlanConfig_(std::move(vxlanConfig)),
      tunnelTermTableProgrammer_(std::move(tunnelTermTableProgrammer)),
      egrL3TunnelTablesProgrammer_(std::move(egrL3TunnelTablesProgrammer)),
      tesselCentralVxlanState_(*this, std::move(tesselCentralVxlanState), Kiln::SubscribeOnly{}),
      vxlanState_(std::move(vxlanState)),
      vxlanSliceConfig_(std::move(vxlanSliceConfig)),
      vxlanConfigDir_(*this, std::move(vxlanConfigDir), Kiln::SubscribeOnly{}),
      profileSupportsVxlan_(profileSupportsVxlan) {
  // The state may outlive a former start, whose rows were removed since: an unchanged address is not set up again.
  for (auto const role : roles) {
    auto const& addr = (*vxlanState_.*role)();
    if (!addr.isUnspecified()) tunnelTermTableProgrammer_->insertOrUpdateDipEntry(addr);
  }
  handleCentralFlags();
  handleInitialized();
  handleLogicalFapId();
  // An interface that was removed while no agent ran has no operation that would clear what it left.
  vxlanSliceConfig_->localVtepAddrIs(vxlanState_->localVtep().v4Addr());
  vxlanSliceConfig_->vArpVtepAddrIs(vxlanState_->vArpVtepAddr().v4Addr());
  vxlanSliceConfig_->vArpVtepAddr6Is(vxlanState_->vArpVtepAddr6().v6Addr());
  vxlanSliceConfig_->vxlanUdpPortIs(vxlanState_->udpPort());
}

void TesselVxlanVtiStatusSm::kilnDoZombieReactors(bool zombie) {
  if (zombie == isZombie()) return;
  if (vxlanUnsupportedLogger()) vxlanUnsupportedLogger()->kilnDoZombieReactors(zombie);
  VtiStatusDirSm::kilnDoZombieReactors(zombie);
}

void TesselVxlanVtiStatusSm::fcsdDispatch(Dovel::Change const& change) {
  if (change.id != TesselCentral::FeatureAgentCommonSmData::logicalFapId) return;
  handleLogicalFapId(change.keyAs<LogicalFap::LogicalFapId>());
}

void TesselVxlanVtiStatusSm::tesselCentralVxlanStateDispatch(Dovel::Change const& change) {
  switch (change.id) {
    case TesselCentral::VxlanState::controllerClientL3ModeId:
      return handleControllerClientL3Mode();
    case TesselCentral::VxlanState::vxlanEnabledId:
      return handleVxlanEnabled();
    case TesselCentral::VxlanState::vxlanNdSnoopingId:
      return handleVxlanNdSnooping();
    default:
      return;
  }
}

void TesselVxlanVtiStatusSm::vxlanConfigDirDispatch(Dovel::Change const& change) {
  if (change.id == Vxlan::VxlanConfigDir::outerHeaderPhbId) updateVxlanDipTable();
}

void TesselVxlanVtiStatusSm::handleInitialized() {
  TRACE(0, "handleInitialized");
  handleLogicalFapId();
  handleDecapFilterNonDefaultVrf();
  Kiln::forEachKey(vtiStatusDir()->vtiStatusColl(), [this](IntfId intf, auto const&) { handleVti(intf); });
  vxlanUnsupportedLoggerIs(profileSupportsVxlan(), vtiStatusDir());
  initializedIs(true);
}

void TesselVxlanVtiStatusSm::handleLogicalFapId() {
  for (auto const fapId : Kiln::keysOf(fcsd()->logicalFapColl())) handleLogicalFapId(fapId);
}

// No table of these addresses belongs to a logical chip of its own.
void TesselVxlanVtiStatusSm::handleLogicalFapId([[maybe_unused]] LogicalFap::LogicalFapId fapId) {
  TRACE(1, " fapId = {}", fapId);
}

void TesselVxlanVtiStatusSm::handleCentralFlags() {
  handleControllerClientL3Mode();
  handleVxlanEnabled();
  handleVxlanNdSnooping();
}

void TesselVxlanVtiStatusSm::handleVxlanEnabled() {
  vxlanSliceConfig()->vxlanEnabledIs(tesselCentralVxlanState()->vxlanEnabled());
}

void TesselVxlanVtiStatusSm::handleVxlanNdSnooping() {
  vxlanSliceConfig()->vxlanNdSnoopingIs(tesselCentralVxlanState()->vxlanNdSnooping());
}

void TesselVxlanVtiStatusSm::handleControllerClientL3Mode() {
  vxlanSliceConfig()->controllerClientL3ModeIs(tesselCentralVxlanState()->controllerClientL3Mode());
}

void TesselVxlanVtiStatusSm::doSetupVxlanDestUdpPort([[maybe_unused]] IntfId intf, std::uint16_t port) {
  TRACE(1, ": vtiIntfId: {} udpPort: {}", intf, port);
  vxlanState()->udpPortIs(port);
  vxlanSliceConfig()->vxlanUdpPortIs(port);
  TRACE(1, " updating udpport: {}", port);
}

void TesselVxlanVtiStatusSm::doSetupVxlanSrcUdpPortRange([[maybe_unused]] IntfId intf, std::uint16_t port,
                                                         std::uint16_t length) {
  TRACE(1, ": vtiIntfId: {} udpSrcPort: {} length: {}", intf, port, length);
  if (length == 0 || length > longestRange) return vxlanState()->udpSrcPortValidIs(false);
  vxlanState()->udpSrcPortIs(port);
  vxlanState()->udpSrcPortValidIs(true);
}

void TesselVxlanVtiStatusSm::doSetupVxlanSrcAddr(IntfId intf, IpAddr address) {
  IpGenAddr const newAddr(address);
  doSetupVxlanVtepAddr(intf, newAddr, vxlanState()->localVtep(), false);
  vxlanState()->localVtepIs(newAddr);
  vxlanSliceConfig()->localVtepAddrIs(address);
  TRACE(1, ": newLocalVtepIp : {}", newAddr);
}

void TesselVxlanVtiStatusSm::doSetupVxlanSrcAddrV6(IntfId intf, Ip6Addr const& address) {
  IpGenAddr const newAddr(address);
  doSetupVxlanVtepAddr(intf, newAddr, vxlanState()->localVtep6(), false);
  vxlanState()->localVtep6Is(newAddr);
  TRACE(1, ": newLocalVtepIp : {}", newAddr);
}

void TesselVxlanVtiStatusSm::doSetupMlagVtepAddr(IntfId intf, IpAddr address) {
  IpGenAddr const newAddr(address);
  doSetupVxlanVtepAddr(intf, newAddr, vxlanState()->mlagVtepAddr(), false);
  vxlanState()->mlagVtepAddrIs(newAddr);
  TRACE(1, ": new mlag vtep ip : {}", newAddr);
}

void TesselVxlanVtiStatusSm::doSetupVxlanVarpVtepAddr(IntfId intf, IpAddr address) {
  IpGenAddr const newAddr(address);
  doSetupVxlanVtepAddr(intf, newAddr, vxlanState()->vArpVtepAddr(), false);
  vxlanState()->vArpVtepAddrIs(newAddr);
  vxlanSliceConfig()->vArpVtepAddrIs(address);
}

void TesselVxlanVtiStatusSm::doSetupVxlanVarpVtepAddr6(IntfId intf, Ip6Addr const& address) {
  IpGenAddr const newAddr(address);
  doSetupVxlanVtepAddr(intf, newAddr, vxlanState()->vArpVtepAddr6(), false);
  vxlanState()->vArpVtepAddr6Is(newAddr);
  vxlanSliceConfig()->vArpVtepAddr6Is(newAddr.v6Addr());
}

void TesselVxlanVtiStatusSm::doSetupVxlanVtepAddr([[maybe_unused]] IntfId intf, IpGenAddr const& newAddr,
                                                  IpGenAddr const& oldAddr, bool skipOldAddrCleanup) {
  if (newAddr == oldAddr) return TRACE(1, " newVtepIp: {} oldVtepIp: {} are the same", newAddr, oldAddr);
  TRACE(1, " vti: {} newVtepIp: {} oldVtepIp: {} skipOldAddrCleanup: {}", intf, newAddr, oldAddr, skipOldAddrCleanup);
  if (!skipOldAddrCleanup && !oldAddr.isUnspecified()) deleteDipUnlessHeld(oldAddr, 1);
  if (newAddr.isUnspecified()) return;
  TRACE(1, " Inserting Address: {}", newAddr);
  tunnelTermTableProgrammer()->insertOrUpdateDipEntry(newAddr);
}

void TesselVxlanVtiStatusSm::updateVxlanDipTable() {
  for (auto const role : std::span(roles).first<refreshedRoles>()) {
    auto const& addr = (*vxlanState().*role)();
    if (!addr.isUnspecified()) tunnelTermTableProgrammer()->insertOrUpdateDipEntry(addr);
  }
}

void TesselVxlanVtiStatusSm::doSetupMcastGrpDecap(IntfId intf, IpAddr mcastGrp) {
  if (!followsGroup(intf, mcastGrp)) return;
  auto const& vti = vtiStatusDir()->vtiStatus(intf);
  setupGroup(mcastGrp, vti && vti->mcastGrpDecapHas(mcastGrp));
}

void TesselVxlanVtiStatusSm::doSetupMcastGrpDecap6(IntfId intf, Ip6Addr const& mcastGrp) {
  if (!followsGroup(intf, mcastGrp)) return;
  auto const& vti = vtiStatusDir()->vtiStatus(intf);
  setupGroup(mcastGrp, vti && vti->mcastGrpDecap6Has(mcastGrp));
}

template <class Group>
bool TesselVxlanVtiStatusSm::followsGroup([[maybe_unused]] IntfId intf, Group const& mcastGrp) const {
  if (!vxlanCapabilities()->underlayMcastSupported()) {
    TRACE(1, " vxlanUnderlayMcastSupported = false, returning");
    return false;
  }
  TRACE(1, " Vti: {} mcastGrp: {}", intf, mcastGrp);
  // An interface's groups are input: only multicast that is forwarded may be terminated here.
  bool const isGroup = mcastGrp.isMulticast() && !isReservedMulticast(mcastGrp);
  if (!isGroup) TRACE(0, " mcastGrp: {} is no group that is forwarded, ignored", mcastGrp);
  return isGroup;
}

template <class Group>
void TesselVxlanVtiStatusSm::setupGroup(Group const& mcastGrp, bool present) {
  INVARIANT(mcastGrp.isMulticast() && !isReservedMulticast(mcastGrp));
  if (present) return tunnelTermTableProgrammer()->insertOrUpdateDipEntry(mcastGrp);
  deleteDipUnlessHeld(mcastGrp, 0);
}

void TesselVxlanVtiStatusSm::deleteDipUnlessHeld(IpGenAddr const& addr, unsigned ownRoles) {
  auto const holders =
      std::count_if(roles.begin(), roles.end(), [&](Role role) { return (*vxlanState().*role)() == addr; });
  if (holders > ownRoles || groupHas(addr)) return TRACE(1, " Address: {} is held by others", addr);
  // A change that was undone before its notification arrived has left no row.
  if (!tunnelTermTableProgrammer()->dipEntryHas(addr)) return TRACE(1, " Address: {} has no entry", addr);
  TRACE(1, " Deleting Address: {}", addr);
  tunnelTermTableProgrammer()->deleteDipEntry(addr);
}

bool TesselVxlanVtiStatusSm::groupHas(IpGenAddr const& addr) const {
  if (!vxlanCapabilities()->underlayMcastSupported()) return false;
  auto const& vtis = vtiStatusDir()->vtiStatusColl();
  return std::any_of(vtis.begin(), vtis.end(), [&](auto const& vti) {
    return addr.isIpv4() ? vti->mcastGrpDecapHas(addr.v4Addr()) : vti->mcastGrpDecap6Has(addr.v6Addr());
  });
}

// The virtual VARP addresses keep their values until an interface sets others.
void TesselVxlanVtiStatusSm::doCleanup(IntfId intf) {
  doSetupVxlanSrcAddr(intf, IpAddr());
  doSetupVxlanSrcAddrV6(intf, Ip6Addr());
  doSetupMlagVtepAddr(intf, IpAddr());
}

}  // namespace TesselVxlan
