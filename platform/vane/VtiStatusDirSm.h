#pragma once

#include "platform/bridging/BridgingConfig.h"
#include "platform/kiln/Sm.h"
#include "platform/vxlan/VxlanConfig.h"

namespace Vane::VXLAN {

/// Base of state machines that program the VXLAN interfaces: turns the state of an interface and its changes into calls
/// of its virtual operations, all of which do nothing here.
///
/// Reads `vtiStatusDir`. `handleVti` sets an interface up: all operations once, in their order below, whatever the
/// values. From then on a changed field causes one call. For an interface that is removed or replaced by another object
/// there is a call for each of its groups; after a removal, `doCleanup`. Interfaces that are added before
/// `initializedIs(true)` wait for it, unless the subclass calls `handleVti` for them.
/// Main thread only. Operations may change interfaces, which is handled on the stack. All of it may run inside the
/// subclass's constructor.
class VtiStatusDirSm : public Kiln::Sm {
  KILN_BASE_TYPE(Vane::VXLAN::VtiStatusDirSm)
  KILN_FIXED(0x102, Dovel::String, name)
  KILN_FIXED(0x103, Dovel::Ptr<Vxlan::VtiStatusDir const>, vtiStatusDir)
  KILN_FIXED(0x104, Dovel::Ptr<Bridging::HwCapabilities const>, bridgingHwCapabilities)

 public:
  bool initialized() const { return initialized_; }
  /// True: sets up the interfaces that exist and are not set up yet, and from then on each that is added. Once.
  void initializedIs(bool initialized);

 protected:
  VtiStatusDirSm(Dovel::String name, Dovel::Ptr<Vxlan::VtiStatusDir const> vtiStatusDir,
                 Dovel::Ptr<Bridging::HwCapabilities const> bridgingHwCapabilities);

  /// Sets up an interface, also one that is set up already. Does nothing for one that does not exist.
  void handleVti(Meshal::IntfId intf);
  void handleDecapFilterNonDefaultVrf() { doSetupDecapFilterNonDefaultVrf(); }

  virtual void doSetupVxlanDestUdpPort(Meshal::IntfId, std::uint16_t) {}
  virtual void doSetupVxlanSrcUdpPortRange(Meshal::IntfId, std::uint16_t /*port*/, std::uint16_t /*length*/) {}
  virtual void doSetupVxlanDestSecUdpPort(Meshal::IntfId) {}
  virtual void doHandleVxlanVtepToSecProfile(Meshal::IntfId) {}
  virtual void doSetupVxlanSecSrcPortRange(Meshal::IntfId) {}
  virtual void doHandleVxlanVrfToSbdVlan(Meshal::IntfId) {}
  virtual void doSetupVtepToVtepBridging(Meshal::IntfId) {}
  virtual void doSetupRemoteVxlanDomain(Meshal::IntfId) {}
  virtual void doSetupVxlanSrcAddr(Meshal::IntfId, Meshal::IpAddr) {}
  virtual void doSetupVxlanSrcAddrV6(Meshal::IntfId, Meshal::Ip6Addr const&) {}
  virtual void doSetupMlagVtepAddr(Meshal::IntfId, Meshal::IpAddr) {}
  virtual void doSetupMlagVtepAddr6(Meshal::IntfId, Meshal::Ip6Addr const&) {}
  /// The group was added or removed, as the interface's collection shows.
  virtual void doSetupMcastGrpDecap(Meshal::IntfId, Meshal::IpAddr) {}
  virtual void doSetupMcastGrpDecap6(Meshal::IntfId, Meshal::Ip6Addr const&) {}
  virtual void doSetupVxlanVarpVtepAddr(Meshal::IntfId, Meshal::IpAddr) {}
  virtual void doSetupVxlanVarpVtepAddr6(Meshal::IntfId, Meshal::Ip6Addr const&) {}
  virtual void doSetupVxlanVtepAddrMask(Meshal::IntfId) {}
  virtual void doSetupVxlanSharedRouterMac(Meshal::IntfId) {}
  virtual void doUpdateOperStatus(Meshal::IntfId) {}
  virtual void doSetupVxlanNdMcastSnooping(Meshal::IntfId) {}
  virtual void doSetupVtepForSourcePruning(Meshal::IntfId) {}
  virtual void doSetupVtepSourcePruningAll(Meshal::IntfId) {}
  virtual void doSetupVxlanFloodTraffic(Meshal::IntfId) {}
  virtual void doSetupDecapFilterNonDefaultVrf() {}
  virtual void doCleanup(Meshal::IntfId) {}
  virtual void doInitialize() {}
  virtual void handleInitialized() {}

 private:
  using Self = VtiStatusDirSm;
  struct Step;

  /// Watches one interface.
  class NestedSm_VtiStatus final : public Kiln::NotifieeConst {
    KILN_BASE_TYPE(Vane::VXLAN::VtiStatusDirSm::NestedSm_VtiStatus)

   public:
    NestedSm_VtiStatus(Self& owner, Dovel::Ptr<Vxlan::VtiStatus const> const& vti);
    Meshal::IntfId const& key() const { return vti().intfId(); }
    Vxlan::VtiStatus const& vti() const;
    void ownerClear() { owner_ = nullptr; }

   protected:
    void onAttribute(Dovel::Change const& change) override;

   private:
    Self* owner_;
  };

  void vtiStatusDirDispatch(Dovel::Change const& change);
  void groupsLeft(Vxlan::VtiStatus const& gone);
  void handleVtiChange(Vxlan::VtiStatus const& vti, Dovel::Change const& change);
  void setup(Vxlan::VtiStatus const& vti);

  bool initialized_ = false;
  Kiln::Watch<Vxlan::VtiStatusDir const, &Self::vtiStatusDirDispatch> watch_;
  Kiln::NestedSms<Meshal::IntfId, NestedSm_VtiStatus> vtis_{*this};
};

}  // namespace Vane::VXLAN
