#pragma once

#include <vector>

#include "platform/dovel/Factory.h"
#include "platform/kiln/Sm.h"
#include "platform/vane/HwTunnel.h"
#include "platform/vane/McastTunnel.h"
#include "platform/vane/VaneTunnel.h"

namespace Vane::VXLAN {

/// Configuration and status of the hardware tunnels of one type.
struct HwTunnelPair {
  Dovel::Ptr<HwTunnelConfig> config;
  Dovel::Ptr<HwTunnelStatus> status;
};

class McastTunnels;

/// Watches one wanted tunnel.
class NestedSm_McastTunnelConfig final : public Kiln::NotifieeConst {
  KILN_BASE_TYPE(Vane::VXLAN::NestedSm_McastTunnelConfig)

 public:
  NestedSm_McastTunnelConfig(McastTunnels& owner, Dovel::Ptr<Multicast::Vxlan::TunnelConfig const> const& tunnel)
      : NotifieeConst(tunnel), owner_(&owner), addr_(tunnel->addr()) {}
  Meshal::IpGenAddr const& key() const { return addr_; }
  void ownerClear() { owner_ = nullptr; }

 protected:
  void onAttribute(Dovel::Change const& change) override;

 private:
  McastTunnels* owner_;
  Meshal::IpGenAddr addr_;
};

/// Watches the status of one hardware tunnel.
class NestedSm_McastTunnelStatus final : public Kiln::NotifieeConst {
  KILN_BASE_TYPE(Vane::VXLAN::NestedSm_McastTunnelStatus)

 public:
  NestedSm_McastTunnelStatus(McastTunnels& owner, Dovel::Ptr<HwTunnelStatusEntry const> const& status)
      : NotifieeConst(status), owner_(&owner), tunnelKey_(status->tunnelKey()) {}
  TunnelKey const& key() const { return tunnelKey_; }
  void ownerClear() { owner_ = nullptr; }

 protected:
  void onAttribute(Dovel::Change const& change) override;

 private:
  McastTunnels* owner_;
  TunnelKey tunnelKey_;
};

/// Keeps the hardware tunnels of one multicast type: a configuration for each wanted tunnel, with one generation each,
/// and the published ids.
///
/// The next hops of a tunnel to a group are of the type that such tunnels have, and resolved ones alone; they change in
/// place. Other next hops of a tunnel of another type are a new entry under its key. Main thread only.
class McastTunnels final : public Kiln::Sm {
  KILN_BASE_TYPE(Vane::VXLAN::McastTunnels)

 public:
  /// Starts the handshake and takes up what is present. What a former process has published is removed.
  McastTunnels(Dovel::Ptr<Multicast::Vxlan::TunnelConfigDir const> const& wanted,
               Dovel::Ptr<Multicast::Vxlan::TunnelStatusDir> const& published, HwTunnelPair const& pair);

  void handleTunnel(Meshal::IpGenAddr const& addr);
  void handleStatus(TunnelKey const& key);

 private:
  using Self = McastTunnels;
  void wantedDispatch(Dovel::Change const& change);
  void statusDispatch(Dovel::Change const& change);
  void watchTunnel(Meshal::IpGenAddr const& addr);
  void watchStatus(TunnelKey const& key);
  Dovel::Ptr<NextHopEntryList> listOf(Multicast::Vxlan::TunnelConfig const& wanted) const;

  Dovel::Ptr<Multicast::Vxlan::TunnelStatusDir> published_;
  Dovel::Ptr<HwTunnelConfig> config_;
  Kiln::Watch<Multicast::Vxlan::TunnelConfigDir const, &Self::wantedDispatch> wanted_;
  Kiln::Watch<HwTunnelStatus const, &Self::statusDispatch> status_;
  Kiln::NestedSms<Meshal::IpGenAddr, NestedSm_McastTunnelConfig> tunnels_{*this};
  Kiln::NestedSms<TunnelKey, NestedSm_McastTunnelStatus> statuses_{*this};
};

/// The tunnels that multicast features want, of all three kinds.
///
/// In: `configColl`, and the status of the hardware tunnels. Out: the configuration of the hardware tunnels, and their
/// ids in `statusColl`. A kind without a pair is not served. Nothing happens before `initializedIs(true)`. Main thread
/// only.
class VaneVxlanMcastSm final : public Kiln::Sm {
  KILN_BASE_TYPE(Vane::VXLAN::VaneVxlanMcastSm)

 public:
  /// `mcast` is empty on an agent without multicast tunnels. The last two are kept, not read.
  VaneVxlanMcastSm(Dovel::Ptr<VaneCommonSmData const> vcsd, Dovel::Ptr<Multicast::Tunnel::ConfigDirColl> configColl,
                   Dovel::Ptr<Multicast::Tunnel::StatusDirColl> statusColl, HwTunnelPair mcast, HwTunnelPair mcastHer,
                   HwTunnelPair bum, Dovel::Ptr<Dovel::Node const> vxlanBootStatus,
                   Dovel::Ptr<Dovel::Node const> vaneL3IntfTable);

  bool initialized() const { return initialized_; }
  /// True takes up the present tunnels and follows them from then on. False, and a second true, do nothing.
  void initializedIs(bool initialized);
  void hasNotificationActiveIs(bool active) override;
  void kilnDoZombieReactors(bool zombie) override;

 private:
  Dovel::Ptr<VaneCommonSmData const> vcsd_;
  Dovel::Ptr<Multicast::Tunnel::ConfigDirColl> configColl_;
  Dovel::Ptr<Multicast::Tunnel::StatusDirColl> statusColl_;
  std::vector<HwTunnelPair> pairs_;
  Dovel::Ptr<Dovel::Node const> vxlanBootStatus_;
  Dovel::Ptr<Dovel::Node const> vaneL3IntfTable_;
  bool initialized_ = false;
  std::vector<Dovel::Ptr<McastTunnels>> kinds_;
};

inline constexpr Dovel::Factory<VaneVxlanMcastSm> vaneVxlanMcastSmFactory;

}  // namespace Vane::VXLAN
