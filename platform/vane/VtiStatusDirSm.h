#pragma once

#include "platform/bridging/BridgingConfig.h"
#include "platform/kiln/Sm.h"
#include "platform/vxlan/VxlanConfig.h"

namespace Vane::VXLAN {

/// Base of state machines that put the VXLAN interfaces into hardware: turns the state of an interface and its changes
/// into calls of its virtual operations, all of which do nothing here.
///
/// Reads `vtiStatusDir`. An interface is set up by `handleVti`: all operations once, in their order below, whatever the
/// values. From then on a changed field gives one call; an interface that goes, or that another object
/// replaces, gives a call for each of its groups; one that goes then gives `doCleanup`. Before `initializedIs(true)`
/// arrivals wait: the subclass calls `handleVti` for those that it wants set up earlier.
/// Main thread only. Operations may change interfaces: that is handled on the stack. They may not end this object; all
/// of it may run inside the subclass's constructor.
class VtiStatusDirSm : public Kiln::Sm {
  KILN_BASE_TYPE(Vane::VXLAN::VtiStatusDirSm)
  KILN_FIXED(0x102, Dovel::String, name)
  KILN_FIXED(0x103, Dovel::Ptr<Vxlan::VtiStatusDir const>, vtiStatusDir)
  KILN_FIXED(0x104, Dovel::Ptr<Bridging::HwCapabilities const>, bridgingHwCapabilities)

 public:
  bool initialized() const { return initialized_; }
  /// True: sets up the interfaces that are there and not set up yet, and from then on those that come. Once.
  void initializedIs(bool initialized);

 protected:
  VtiStatusDirSm(Dovel::String name, Dovel::Ptr<Vxlan::VtiStatusDir const> vtiStatusDir,
                 Dovel::Ptr<Bridging::HwCapabilities const> bridgingHwCapabilities);

  /// Sets up an interface, again if it is already. Nothing for one that is not there.
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
  /// The group came or went; the interface's collection says which.
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
