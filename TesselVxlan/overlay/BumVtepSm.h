#pragma once

#include "platform/bridging/VlanStatusDir.h"
#include "platform/dovel/Factory.h"
#include "platform/kiln/Sm.h"
#include "platform/tessel/l3common/VxlanDirs.h"
#include "platform/vane/HwTunnel.h"
#include "platform/vane/McastTunnel.h"

namespace TesselVxlan {

class BumVtepSm;

/// The key of the tunnel to a flood VTEP.
inline Vane::TunnelKey makeTunnelKey(Meshal::IpGenAddr const& vtepIp) { return Vane::floodTunnelKey(vtepIp); }

/// Watches what is programmed for one flood VTEP.
class NestedSm_TesselVxlanBumVtepConfig final : public Kiln::NotifieeConst {
  KILN_BASE_TYPE(TesselVxlan::NestedSm_TesselVxlanBumVtepConfig)

 public:
  NestedSm_TesselVxlanBumVtepConfig(BumVtepSm& owner,
                                    Dovel::Ptr<TesselL3Common::TesselVxlanBumVtepConfig const> const& config);
  Meshal::IpGenAddr const& key() const { return config_->vtepIp(); }
  void ownerClear() { owner_ = nullptr; }
  void handleInitialized();
  void handleVersionUpdate();
  void handleDel();

 protected:
  void onAttribute(Dovel::Change const& change) override;

 private:
  BumVtepSm* owner_;
  Dovel::Ptr<TesselL3Common::TesselVxlanBumVtepConfig const> config_;
};

/// Stands for one configured tunnel.
class NestedSm_TesselVxlanVtepHwTunnelConfig final : public Kiln::NotifieeConst {
  KILN_BASE_TYPE(TesselVxlan::NestedSm_TesselVxlanVtepHwTunnelConfig)

 public:
  NestedSm_TesselVxlanVtepHwTunnelConfig(BumVtepSm& owner, Dovel::Ptr<Vane::HwTunnelConfigEntry const> const& entry);
  Vane::TunnelKey const& key() const { return key_; }
  void ownerClear() { owner_ = nullptr; }
  void handleInitialized() { handleHwTunnelConfig(key_); }
  void handleDel() { handleHwTunnelConfig(key_); }
  /// Brings the tunnel's status up to its configuration.
  void handleHwTunnelConfig(Vane::TunnelKey const& tunnelKey);

 protected:
  void onAttribute(Dovel::Change const&) override {}

 private:
  BumVtepSm* owner_;
  Vane::TunnelKey key_;
};

/// Watches the ports of one underlay VLAN.
class NestedSm_VlanStatus final : public Kiln::NotifieeConst {
  KILN_BASE_TYPE(TesselVxlan::NestedSm_VlanStatus)

 public:
  NestedSm_VlanStatus(BumVtepSm& owner, Dovel::Ptr<Bridging::VlanStatus const> const& vlanStatus);
  Bridging::VlanId const& key() const { return vlanId_; }
  void ownerClear() { owner_ = nullptr; }
  void handleVlanPort();

 protected:
  void onAttribute(Dovel::Change const& change) override;

 private:
  BumVtepSm* owner_;
  Bridging::VlanId vlanId_;
};

/// Publishes the tunnels that flood traffic uses, and tells its consumers when something about one has changed.
///
/// In: the configuration of the tunnels, the records of flood VTEPs, and the ports of the underlay VLANs that carry
/// flood traffic. Out: a status for each configured tunnel; its next-hop id is a version, from 1, which is raised with
/// each change. Both counters of the configuration are echoed. A tunnel of multicast type has a second writer of its
/// status, the tunnel programmer, which leaves the version alone. Main thread only. A write of a status may run
/// subscribers that change the configuration.
class BumVtepSm final : public Kiln::Sm {
  KILN_BASE_TYPE(TesselVxlan::BumVtepSm)

  void hwTunnelConfigDispatch(Dovel::Change const& change);
  void bumVtepConfigDirDispatch(Dovel::Change const& change);
  void vlanStatusDirDispatch(Dovel::Change const& change);

  KILN_WATCHED(0x102, Vane::HwTunnelConfig const, hwTunnelConfig, &KilnSelf::hwTunnelConfigDispatch, nullptr)
  KILN_WATCHED(0x103, TesselL3Common::TesselVxlanBumVtepConfigDir const, bumVtepConfigDir,
               &KilnSelf::bumVtepConfigDirDispatch, nullptr)
  KILN_FIXED(0x104, Dovel::Ptr<Vane::HwTunnelStatus>, hwTunnelStatus)
  KILN_WATCHED(0x105, Bridging::VlanStatusDir const, vlanStatusDir, &KilnSelf::vlanStatusDirDispatch, nullptr)
  KILN_FIXED(0x106, Dovel::Ptr<TesselL3Common::FloodUnderlayVlanToVtepListDir const>, floodUnderlayVlanToVtepListDir)
  KILN_FIXED(0x107, bool, vxlanUnderlayFloodingHw)
  KILN_FIXED(0x108, bool, initialized)
  KILN_COLL(0x109, Vane::TunnelKey, std::uint64_t, version)

 public:
  /// Takes up the present tunnels and flood VTEPs.
  BumVtepSm(Dovel::Ptr<Vane::HwTunnelConfig const> hwTunnelConfig, Dovel::Ptr<Vane::HwTunnelStatus> hwTunnelStatus,
            Dovel::Ptr<TesselL3Common::TesselVxlanBumVtepConfigDir const> bumVtepConfigDir,
            Dovel::Ptr<TesselL3Common::FloodUnderlayVlanToVtepListDir const> floodUnderlayVlanToVtepListDir,
            Dovel::Ptr<Bridging::VlanStatusDir const> vlanStatusDir, bool vxlanUnderlayFloodingHw);

  /// Raises the version of a configured tunnel; nothing for one that is not, or not taken up yet. `setStatus` makes the
  /// status where there is none. REQUIRES: without it, the tunnel has a status.
  void maybeUpdateHwTunnelStatus(Vane::TunnelKey const& tunnelKey, bool setStatus);

  void handleInitialized();
  void handleHwInit();
  void handleHwCleanup();

 private:
  void handleTunnel(Vane::TunnelKey const& tunnelKey);
  void handleVtep(Meshal::IpGenAddr const& vtepIp);
  /// Watches the record of a flood VTEP that has a tunnel here; null if there is nothing to watch.
  Dovel::Ptr<NestedSm_TesselVxlanBumVtepConfig> watchVtep(Meshal::IpGenAddr const& vtepIp);
  void handleVlan(Bridging::VlanId vlanId);

  Kiln::NestedSms<Meshal::IpGenAddr, NestedSm_TesselVxlanBumVtepConfig> tesselVxlanBumVtepConfig_{*this};
  Kiln::NestedSms<Vane::TunnelKey, NestedSm_TesselVxlanVtepHwTunnelConfig> tesselVxlanVtepHwTunnelConfig_{*this};
  Kiln::NestedSms<Bridging::VlanId, NestedSm_VlanStatus> vlanStatus_{*this};
};

inline constexpr Dovel::Factory<BumVtepSm> bumVtepSmFactory;

}  // namespace TesselVxlan
