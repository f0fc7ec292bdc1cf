#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <utility>

#include "TesselVxlan/frame/TesselVxlanMounter.h"
#include "host/agent/World.h"
#include "platform/asic/Store.h"
#include "platform/kiln/Json.h"
#include "platform/kiln/Log.h"
#include "platform/kilnsharedmem/EntityManager.h"
#include "platform/stateway/EntityManager.h"
#include "tests/support/AgentText.h"
#include "tests/support/AgentWish.h"

/// The start of the feature, step by step.
namespace FrameTest {

/// The feature's mounter on a chip and stores of its own, without an agent: the test takes every step.
///
///   created → mountsAsked → mountsComplete → start; `tunnelSmIsReady` from `mountsComplete` on.
///
/// An operator message fails the test, and so does an object that is alive at the end, whichever step was the last.
class FrameWorld {
 public:
  explicit FrameWorld(std::string const& profile = "cascaded")
      : world_(std::make_unique<Host::World>(profile, Asic::Completion::direct)) {}
  ~FrameWorld() {
    EXPECT_TRUE(logs_.records().empty()) << logs_.records().front().name;
    chip().stop();
    mounter_ = nullptr;
    mountGroup_ = nullptr;
    world_.reset();
    EXPECT_EQ(Dovel::Node::aliveCount(), aliveBefore_) << "objects alive after the stop";
  }
  FrameWorld(FrameWorld const&) = delete;
  FrameWorld& operator=(FrameWorld const&) = delete;

  FrameWorld& mountsAsked() {
    mounter_ = Dovel::make<TesselVxlan::TesselVxlanMounter>("TesselVxlan");
    mounter_->agentSmIdIs(TesselL3Unicast::AgentSmId::vxlan);
    mounter_->sharedEntityDirIs(world_->sharedEntities);
    mounter_->localEntityStoreIs(stores().local);
    mounter_->shmemEmIs(stores().shmem);
    mounter_->statewayEmIs(stores().stateway);
    mounter_->agentDirIs(world_->agentDir);
    mountGroup_ = stores().stateway->getMountGroup(*mounter_);
    mounter_->doBootStageMount(*mountGroup_);
    mounter_->doInit();
    return *this;
  }
  FrameWorld& mountsComplete() {
    if (!mounter_) mountsAsked();
    stores().stateway->completeMounts();
    world_->capabilitiesIs();
    return equipped();
  }
  FrameWorld& capabilitiesAre(bool mcastTunnels, bool underlayMcast) {
    auto const has = state<TesselCentral::VxlanCapabilities>("hardware/tessel/centralStatus/vxlanCapabilities");
    has->mcastTunnelSupportedIs(mcastTunnels);
    has->underlayMcastSupportedIs(underlayMcast);
    return *this;
  }
  FrameWorld& wrapperGone() {
    mounter_->vxlanMounterSmWrapperDel();
    return *this;
  }
  FrameWorld& mounterGone() {
    mounter_ = nullptr;
    return *this;
  }
  /// A second wrapper replaces the first in the same process.
  FrameWorld& wrapperAgain() {
    mounter_->vxlanMounterSmWrapperIs(world_->fcsd, stores().stateway, mounter_->agentSmId(), stores().local,
                                      stores().shmem, world_->agentDir);
    return equipped();
  }
  /// A new process on the same chip and state database.
  FrameWorld& processAgain() {
    chip().stop();
    mounter_ = nullptr;
    world_->processIs();
    return mountsComplete();
  }
  FrameWorld& start() {
    wrapper().doStart();
    return settle();
  }
  /// The forwarding abstraction has seen the status objects.
  FrameWorld& tunnelSmIsReady() {
    local<TesselL3Common::TesselVxlanBootStatus>(Host::kBootStatusPath)->vaneTunnelSmReadyIs(true);
    return settle();
  }
  /// Local VTEP 10.255.0.1, an address in each other role, and a unicast tunnel to 10.255.0.2.
  FrameWorld& tunnelWanted() {
    auto const vti = state<Vxlan::VtiStatusDir>(Host::kVtiStatusPath)->vtiStatusIs(Meshal::IntfId("Vxlan1"));
    vti->srcAddrIs(Meshal::IpGenAddr("10.255.0.1").v4Addr());
    vti->srcAddrV6Is(Meshal::IpGenAddr("fd00::1").v6Addr());
    vti->varpVtepAddrIs(Meshal::IpGenAddr("10.255.0.8").v4Addr());
    vti->varpVtepAddr6Is(Meshal::IpGenAddr("fd00::8").v6Addr());
    vti->udpSrcPortIs(5000);
    vti->udpSrcPortLengthIs(16);
    vti->udpPortIs(4789);
    Vane::TunnelKey const key{{}, Meshal::IpGenAddr("10.255.0.2"), 0, 1, Meshal::IntfId("Vxlan1")};
    auto const config = local<Vane::HwTunnelConfigDir>(Host::kHwTunnelConfigPath)->hwTunnelConfig(Vane::vxlanTunnel_);
    config->hwTunnelConfigListIs(Dovel::make<Vane::HwTunnelConfigEntry>(key));
    return settle();
  }

  /// EVPN; flood tunnels to 10.255.0.2, beside the unicast one, and to 10.255.0.3; one to group 239.1.1.1, and BUM
  /// tunnels to the two.
  FrameWorld& floodWanted() {
    state<Evpn::EvpnStatus>("evpn/status")->evpnEnabledIs(true);
    world_->fcsd->portConfigDir()->portIs(Meshal::IntfId("Ethernet1"), {});
    auto const list = stores().shmem->getEntity<L2Rib::FloodSetOutput>(Host::kFloodListsPath)->floodSetIs(floodVlan);
    auto const config =
        local<Vane::HwTunnelConfigDir>(Host::kHwTunnelConfigPath)->hwTunnelConfig(Vane::vxlanHerTunnel_);
    for (unsigned n = 2; n <= 3; ++n) {
      Meshal::IpGenAddr const vtep(AgentTest::vtep(n));
      list->vtepIs(vtep, true);
      auto const entry = Dovel::make<Vane::HwTunnelConfigEntry>(Vane::TunnelKey{{}, vtep, 0, 1, {}});
      entry->nextHopEntryListIs(Dovel::make<Vane::NextHopEntryList>(7, hops()));
      config->hwTunnelConfigListIs(entry);
      mcastDir("bumTunnel")->tunnelIs(vtep)->nextHopsIs(hops());
    }
    mcastDir("tunnel")->tunnelIs(Meshal::IpGenAddr(AgentTest::group(1)))->nextHopsIs(hops());
    return settle();
  }

  FrameWorld& tunnelsGone() {
    state<Vxlan::VtiStatusDir>(Host::kVtiStatusPath)->vtiStatusDelAll();
    state<Evpn::EvpnStatus>("evpn/status")->evpnEnabledIs(false);
    for (auto const& config : local<Vane::HwTunnelConfigDir>(Host::kHwTunnelConfigPath)->hwTunnelConfigColl()) {
      config->hwTunnelConfigListDelAll();
    }
    stores().shmem->getEntity<L2Rib::FloodSetOutput>(Host::kFloodListsPath)->floodSetDelAll();
    for (auto const* kind : {"bumTunnel", "tunnel"}) mcastDir(kind)->tunnelDelAll();
    return settle();
  }

  TesselVxlan::TesselVxlanMounter& mounter() const { return *mounter_; }
  Stateway::MountGroup const& mountGroup() const { return *mountGroup_; }
  TesselVxlan::TesselVxlanMounterSmWrapper& wrapper() const { return *mounter_->vxlanMounterSmWrapper(); }
  Asic::Chip& chip() const { return *world_->chip; }
  Stateway::AgentStores const& stores() const { return world_->stores; }
  template <class T>
  Dovel::Ptr<T> state(std::string_view path) const {
    return stores().stateway->getEntity<T>(path);
  }
  template <class T>
  Dovel::Ptr<T> local(std::string_view path) const {
    return stores().local->getEntity<T>(path);
  }

  /// The state machines that run: "vti unicast member multicast " are all.
  std::string running() const {
    auto const& w = wrapper();
    return std::string(w.vxlanVtiStatusSm() ? "vti " : "") + (w.vxlanTunnelHelperSm() ? "unicast " : "") +
           (w.vxlanMemberTunnelHelperSm() ? "member " : "") + (w.l3McastEvpnStatusSm() ? "multicast " : "");
  }
  /// The tables in service, in the order in which they came up, a line each with its count of entries.
  std::string tables() const {
    std::string text;
    for (auto const* store : chip().stores()) {
      text += std::string(store->name()) + ' ' + std::to_string(store->entrys());
      text += store->published() ? "\n" : " unpublished\n";
    }
    return text;
  }
  std::string rows() const { return AgentTest::chipText(chip(), *world_->driver); }
  /// The entities of the local store and the slice configuration, as JSON.
  std::string published() const {
    std::string text;
    auto const add = [&](Kiln::Entity const* entity) {
      if (entity) text += Kiln::jsonText([&](Kiln::JsonOut out) { Kiln::entityToJson(*entity, out); }) + '\n';
    };
    for (auto const& path : stores().local->paths())
      add(Dovel::cast<Kiln::Entity>(stores().local->getEntity(path)).get());
    add(state<TesselCentral::VxlanSliceConfig>("hardware/tessel/tunnel/vxlan/sliceConfig").get());
    return text;
  }

 private:
  /// Sets what the host sets before it starts a wrapper.
  FrameWorld& equipped() {
    wrapper().localEntityManagerIs(stores().local);
    wrapper().vcsdIs(world_->vcsd);
    wrapper().chipInfoIs(TesselCentral::ChipInfo(*world_->fcsd->logicalFap(LogicalFap::LogicalFapId(0))));
    wrapper().profileSupportsVxlanIs(true);
    return *this;
  }
  Dovel::Ptr<Multicast::Vxlan::TunnelConfigDir> mcastDir(std::string const& kind) const {
    return Dovel::cast<Multicast::Vxlan::TunnelConfigDir>(
        stores().stateway->getEntity("vxlan/multicast/" + kind + "/config"));
  }
  /// Two, one of which has no port.
  static Vane::NextHopEntrySet hops() { return AgentTest::entriesOf({1, 2}); }
  static inline Bridging::VlanId const floodVlan{10};
  FrameWorld& settle() {
    while (chip().deliver() != 0) {
    }
    return *this;
  }

  std::size_t aliveBefore_ = Dovel::Node::aliveCount();
  Kiln::LogCapture logs_;
  std::unique_ptr<Host::World> world_;
  Dovel::Ptr<TesselVxlan::TesselVxlanMounter> mounter_;
  Dovel::Ptr<Stateway::MountGroup> mountGroup_;
};

}  // namespace FrameTest
