#pragma once

#include "platform/kiln/Sm.h"
#include "platform/vane/HwTunnel.h"
#include "platform/vane/VaneTunnel.h"

namespace VaneHelper {

/// Base of the state machines that put the tunnels of one type into hardware: turns changes of a `HwTunnelConfig` into
/// calls of its virtual operations.
///
/// Reads `hwTunnelConfig`; writes nothing, `hwTunnelStatus` is kept for subclasses. Nothing is called before
/// `initializedIs(true)`. From then on every tunnel gets one `doHandleTunnelCreate` when it is present or added, and
/// one `doHandleTunnelDelete` when it is removed; in between the changes of its entry. An entry that is replaced by
/// another with the same key is deleted and created. Main thread only. The operations may add and delete tunnels, this
/// one too: each such change is handled on the stack, and the initial walk skips tunnels that were removed or handled
/// meanwhile. Holds each entry until its delete is handled. One small reactor per tunnel.
class VaneHelperTunnelSm : public Kiln::Sm {
  KILN_BASE_TYPE(VaneHelper::VaneHelperTunnelSm)
  KILN_FIXED(0x102, Dovel::Ptr<Vane::VaneCommonSmData const>, vcsd)
  KILN_FIXED(0x103, Vane::TunnelType, tunnelType)
  KILN_FIXED(0x104, Dovel::Ptr<Vane::HwTunnelConfig const>, hwTunnelConfig)
  KILN_FIXED(0x105, Dovel::Ptr<Vane::HwTunnelStatus>, hwTunnelStatus)

 public:
  using EntryPtr = Dovel::Ptr<Vane::HwTunnelConfigEntry const>;

  bool initialized() const { return initialized_; }
  /// True: 1. `handleInitialized()`, 2. `doHandleTunnelCreate` for each present tunnel, 3. changes are handled. False,
  /// and a second true, do nothing.
  void initializedIs(bool initialized);
  /// Handles a request to verify the hardware.
  virtual void handleVerify();

 protected:
  VaneHelperTunnelSm(Dovel::Ptr<Vane::VaneCommonSmData const> vcsd, Vane::TunnelType tunnelType,
                     Dovel::Ptr<Vane::HwTunnelConfig const> hwTunnelConfig,
                     Dovel::Ptr<Vane::HwTunnelStatus> hwTunnelStatus);

  virtual void hwInit() = 0;
  virtual void hwCleanup() = 0;
  virtual void doHandleTunnelCreate(EntryPtr const& entry) = 0;
  virtual void doHandleTunnelDelete(EntryPtr const& entry) = 0;
  virtual void doHandleTunnelTTL(EntryPtr const& entry) = 0;
  virtual void doHandleTunnelNextHopId(EntryPtr const& entry) = 0;
  /// `id` became active or ceased to be.
  virtual void handleActiveNextHopId(Vane::VaneNextHopId id) = 0;
  virtual void verifyTunnelsAndNextHops() = 0;
  virtual void handleInitialized() = 0;

 private:
  using Self = VaneHelperTunnelSm;

  /// Watches the entry of one tunnel, and keeps it.
  class NestedSm_HwTunnelConfigEntry final : public Kiln::NotifieeConst {
    KILN_BASE_TYPE(VaneHelper::VaneHelperTunnelSm::NestedSm_HwTunnelConfigEntry)

   public:
    NestedSm_HwTunnelConfigEntry(Self& owner, EntryPtr const& entry);
    Vane::TunnelKey const& key() const { return entry().tunnelKey(); }
    Vane::HwTunnelConfigEntry const& entry() const;
    void ownerClear() { owner_ = nullptr; }

   protected:
    void onAttribute(Dovel::Change const& change) override;

   private:
    Self* owner_;
  };

  void hwTunnelConfigDispatch(Dovel::Change const& change);
  void handleHwTunnelConfigList(Vane::TunnelKey const& key);
  /// False if the tunnel was known already.
  bool tunnelAdd(EntryPtr const& entry);
  void tunnelDel(Vane::TunnelKey const& key);

  bool initialized_ = false;
  Kiln::Watch<Vane::HwTunnelConfig const, &Self::hwTunnelConfigDispatch> watch_;
  Kiln::NestedSms<Vane::TunnelKey, NestedSm_HwTunnelConfigEntry> tunnels_{*this};
};

}  // namespace VaneHelper
