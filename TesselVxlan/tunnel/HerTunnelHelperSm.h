#pragma once

#include "TesselVxlan/tunnel/TunnelBaseHelperSm.h"
#include "platform/dovel/Factory.h"
#include "platform/vane/HerVtep.h"

namespace TesselVxlan {

class HerTunnelHelperSm;

/// Keeps the status of one flood VTEP: the VLANs of its configuration.
class NestedSm_VaneVxlanHwHerVtepConfig final : public Kiln::NotifieeConst {
  KILN_BASE_TYPE(TesselVxlan::NestedSm_VaneVxlanHwHerVtepConfig)

 public:
  /// Takes up the present VLANs.
  NestedSm_VaneVxlanHwHerVtepConfig(Dovel::Ptr<Vane::VXLAN::VaneVxlanHwHerVtepConfig const> const& config,
                                    Dovel::Ptr<Vane::VXLAN::VaneVxlanHwHerVtepStatusDir> const& statusDir);
  Meshal::IpGenAddr const& key() const { return config_->vtepIp(); }
  /// Both objects are held: there is no pointer to the owner.
  void ownerClear() {}
  void handleInitialized();
  void handleVlan();
  void handleVlan(Bridging::VlanId vlanId);
  /// Removes the status.
  void cleanup();

 protected:
  void onAttribute(Dovel::Change const& change) override;

 private:
  Dovel::Ptr<Vane::VXLAN::VaneVxlanHwHerVtepConfig const> config_;
  Dovel::Ptr<Vane::VXLAN::VaneVxlanHwHerVtepStatusDir> statusDir_;
};

/// The helper of head-end replication tunnels, which also publishes on which VLANs each flood VTEP takes part.
///
/// In, beside the base's: the VLANs of the flood VTEPs. Out: one status per VTEP, from its first VLAN on until the VTEP
/// leaves. Main thread only.
class HerTunnelHelperSm final : public TunnelBaseHelperSm {
  KILN_TYPE(TesselVxlan::HerTunnelHelperSm, TesselVxlan::TunnelBaseHelperSm)

  void vaneVxlanHwHerVtepConfigDirDispatch(Dovel::Change const& change);

  KILN_WATCHED(0x302, Vane::VXLAN::VaneVxlanHwHerVtepConfigDir const, vaneVxlanHwHerVtepConfigDir,
               &KilnSelf::vaneVxlanHwHerVtepConfigDirDispatch, nullptr)
  KILN_FIXED(0x303, Dovel::Ptr<Vane::VXLAN::VaneVxlanHwHerVtepStatusDir>, vaneVxlanHwHerVtepStatusDir)

 public:
  /// Takes up the present VTEPs.
  HerTunnelHelperSm(Dovel::Ptr<Vane::VaneCommonSmData const> const& vcsd, Vane::TunnelType tunnelType,
                    Dovel::Ptr<Vane::HwTunnelConfig const> const& hwTunnelConfig,
                    Dovel::Ptr<Vane::HwTunnelStatus> const& hwTunnelStatus,
                    Dovel::Ptr<HwTunnelProgrammerBase> const& hwTunnelProgrammer,
                    Dovel::Ptr<TesselL3Common::TesselVxlanState> const& vxlanState,
                    Dovel::Ptr<Vane::VXLAN::VaneVxlanInfo> const& vaneVxlanInfo,
                    Dovel::Ptr<Vane::VXLAN::VaneVxlanHwHerVtepConfigDir const> const& vaneVxlanHwHerVtepConfigDir,
                    Dovel::Ptr<Vane::VXLAN::VaneVxlanHwHerVtepStatusDir> const& vaneVxlanHwHerVtepStatusDir);

 private:
  void handleVtep(Meshal::IpGenAddr const& vtepIp);

  Kiln::NestedSms<Meshal::IpGenAddr, NestedSm_VaneVxlanHwHerVtepConfig> vaneVxlanHwHerVtepConfig_{*this};
};

inline constexpr Dovel::Factory<HerTunnelHelperSm> herTunnelHelperSmFactory;

}  // namespace TesselVxlan
