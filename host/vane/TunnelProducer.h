#pragma once

#include <boost/unordered/unordered_flat_map.hpp>
#include <boost/unordered/unordered_flat_set.hpp>
#include <vector>

#include "platform/kiln/Sm.h"
#include "platform/vane/HwTunnel.h"
#include "platform/vane/VaneTunnel.h"

namespace Host {

/// Keys that were touched since the last review, each once, in the order of the first touch.
template <class Key>
class Touched {
 public:
  void add(Key const& key) {
    if (seen_.insert(key).second) order_.push_back(key);
  }
  bool empty() const { return order_.empty(); }
  std::vector<Key> take() {
    seen_.clear();
    return std::exchange(order_, {});
  }

 private:
  boost::unordered_flat_set<Key, Kiln::Hash<Key>> seen_;
  std::vector<Key> order_;
};

/// Notes the key of a wanted entity whenever one of its attributes changes.
template <class Key, class Entity, auto KeyOf>
class NestedSm_Wanted final : public Kiln::NotifieeConst {
  KILN_BASE_TYPE(NestedSm_Wanted)

 public:
  NestedSm_Wanted(Dovel::Ptr<Entity> const& entity, Touched<Key>* touched)
      : key_((entity.get()->*KeyOf)()), touched_(touched) {
    notifierIs(entity);
    isRegisteredNotifieeIs(true);
  }
  Key const& key() const { return key_; }
  void ownerClear() { touched_ = nullptr; }

 protected:
  void onAttribute(Dovel::Change const&) override {
    if (touched_) touched_->add(key_);
  }

 private:
  Key key_;
  Touched<Key>* touched_;
};

/// The part of the forwarding abstraction that drives the feature, for the tunnels of one type.
///
/// In: the wanted tunnels with their adjacencies, and the feature's status. Out: one configuration entry per tunnel
/// with a generation id that grows with each new configuration of a VTEP, the shared next-hop list of each adjacency,
/// the next-hop ids of all statuses as active ones, and the published ids by VTEP. Changes are only noted where they
/// happen; `review`, called by the host's loop, acts on them. A next hop is made inactive before its tunnel is removed:
/// the feature finds a tunnel by its next-hop id only while both exist. Main thread only.
/// Configuration and status are shared with the feature.
class TunnelProducer final : public Kiln::Sm {
 public:
  void wantedDispatch(Dovel::Change const& change);
  void statusDispatch(Dovel::Change const& change);
  void statusCatchUp();

  KILN_BASE_TYPE(Host::TunnelProducer)
  KILN_WATCHED(0x102, Vane::VaneTunnelConfig const, wanted, &KilnSelf::wantedDispatch, nullptr)
  KILN_FIXED(0x103, Dovel::Ptr<Vane::VaneTunnelStatus>, published)
  KILN_FIXED(0x104, Dovel::Ptr<Vane::HwTunnelConfig>, config)
  KILN_WATCHED(0x105, Vane::HwTunnelStatus const, status, &KilnSelf::statusDispatch, &KilnSelf::statusCatchUp)

 public:
  /// Starts the handshake: sets `hwInit` of `config`.
  TunnelProducer(Dovel::Ptr<Vane::VaneTunnelConfig> const& wanted, Dovel::Ptr<Vane::VaneTunnelStatus> const& published,
                 Dovel::Ptr<Vane::HwTunnelConfig> const& config);

  /// Acts on the changes since the last call. False if there were none.
  bool review();

 private:
  /// A tunnel that is in the configuration.
  struct Placed {
    Vane::TunnelKey key;
    Vane::VaneNextHopId active;
  };
  using NestedTunnel =
      NestedSm_Wanted<Meshal::IpGenAddr, Vane::VaneTunnelConfigEntry const, &Vane::VaneTunnelConfigEntry::vtep>;
  using NestedAdjacency = NestedSm_Wanted<std::uint32_t, Vane::VaneAdjacency const, &Vane::VaneAdjacency::adjId>;
  using NestedStatus =
      NestedSm_Wanted<Vane::TunnelKey, Vane::HwTunnelStatusEntry const, &Vane::HwTunnelStatusEntry::tunnelKey>;

  void watchTunnel(Meshal::IpGenAddr const& vtep);
  void watchAdjacency(std::uint32_t adjId);
  void watchStatus(Vane::TunnelKey const& key);

  void reviewAdjacency(std::uint32_t adjId);
  void touchUsers(std::vector<std::uint32_t> const& adjIds);
  void removeTunnel(Meshal::IpGenAddr const& vtep);
  void placeTunnel(Vane::VaneTunnelConfigEntry const& wanted);
  void reviewStatus(Vane::TunnelKey const& key);
  void activeIs(Placed& placed, Vane::VaneNextHopId nhId);
  /// The key of `wanted` with a generation id newer than all before it at the VTEP.
  Vane::TunnelKey newKey(Vane::VaneTunnelConfigEntry const& wanted);
  Dovel::Ptr<Vane::NextHopEntryList> listOf(Vane::VaneTunnelConfigEntry const& wanted) const;

  Touched<Meshal::IpGenAddr> touchedTunnels_;
  Touched<std::uint32_t> touchedAdjacencies_;
  Touched<Vane::TunnelKey> touchedStatus_;
  boost::unordered_flat_map<Meshal::IpGenAddr, Placed, Kiln::Hash<Meshal::IpGenAddr>> placed_;
  boost::unordered_flat_map<Meshal::IpGenAddr, std::uint64_t, Kiln::Hash<Meshal::IpGenAddr>> lastGenId_;
  boost::unordered_flat_map<std::uint32_t, Dovel::Ptr<Vane::NextHopEntryList>, Kiln::Hash<std::uint32_t>> lists_;
  Kiln::NestedSms<Meshal::IpGenAddr, NestedTunnel> tunnels_{*this};
  Kiln::NestedSms<std::uint32_t, NestedAdjacency> adjacencies_{*this};
  Kiln::NestedSms<Vane::TunnelKey, NestedStatus> statuses_{*this};
};

}  // namespace Host
