#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <utility>

#include "TesselVxlan/frame/TesselVxlanMounter.h"
#include "host/agent/World.h"
#include "platform/asic/Store.h"
#include "platform/kiln/Log.h"
#include "platform/kilnsharedmem/EntityManager.h"
#include "platform/stateway/EntityManager.h"
#include "tests/support/AgentShow.h"

/// The start of the feature, step by step.
namespace FrameTest {

/// The feature's mounter on a chip and stores of its own, with nobody above it: the test takes every step.
///
///   made → mountsAsked → mountsComplete → start; `tunnelSmIsReady` from `mountsComplete` on.
///
/// An operator message fails the test, and so does an object that is alive at the end, whichever step came last.
class FrameWorld {
 public:
  explicit FrameWorld(std::string const& profile = "cascaded")
      : world_(std::make_unique<Host::World>(profile, Asic::Completion::direct)) {}
  ~FrameWorld() {
    EXPECT_TRUE(logs_.records().empty()) << logs_.records().front().name;
    chip().stop();
    mounter_ = nullptr;
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
    mounter_->doBootStageMount(*stores().stateway->getMountGroup(*mounter_));
    mounter_->doInit();
    return *this;
  }
  FrameWorld& mountsComplete() {
    if (!mounter_) mountsAsked();
    stores().stateway->completeMounts();
    world_->capabilitiesIs();
    return equipped();
  }
  /// A wrapper takes the place of the one that stands.
  FrameWorld& wrapperAgain() {
    mounter_->vxlanMounterSmWrapperIs(world_->fcsd, stores().stateway, mounter_->agentSmId(), stores().local,
                                      stores().shmem, world_->agentDir);
    return equipped();
  }
  FrameWorld& start() {
    wrapper().doStart();
    return settle();
  }
  /// The word of the forwarding abstraction.
  FrameWorld& tunnelSmIsReady() {
    local<TesselL3Common::TesselVxlanBootStatus>(Host::kBootStatusPath)->vaneTunnelSmReadyIs(true);
    return settle();
  }
  /// Local VTEP 10.255.0.1 and a unicast tunnel to 10.255.0.2.
  FrameWorld& tunnelWanted() {
    auto const vti = state<Vxlan::VtiStatusDir>(Host::kVtiStatusPath)->vtiStatusIs(Meshal::IntfId("Vxlan1"));
    vti->srcAddrIs(Meshal::IpGenAddr("10.255.0.1").v4Addr());
    vti->udpPortIs(4789);
    Vane::TunnelKey const key{{}, Meshal::IpGenAddr("10.255.0.2"), 0, 1, Meshal::IntfId("Vxlan1")};
    auto const config = local<Vane::HwTunnelConfigDir>(Host::kHwTunnelConfigPath)->hwTunnelConfig(Vane::vxlanTunnel_);
    config->hwTunnelConfigListIs(Dovel::make<Vane::HwTunnelConfigEntry>(key));
    return settle();
  }

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

  /// What of the feature runs: "vti unicast member multicast " when all does.
  std::string running() const {
    auto const& w = wrapper();
    return std::string(w.vxlanVtiStatusSm() ? "vti " : "") + (w.vxlanTunnelHelperSm() ? "unicast " : "") +
           (w.vxlanMemberTunnelHelperSm() ? "member " : "") + (w.l3McastEvpnStatusSm() ? "multicast " : "");
  }
  /// The tables in service, in the order in which they came up, each with its count of entries.
  std::string tables() const {
    std::string text;
    for (auto const* store : chip().stores()) {
      text += std::string(store->name()) + ' ' + std::to_string(store->entrys());
      text += store->published() ? ", " : " unpublished, ";
    }
    return text;
  }
  std::string rows() const { return AgentTest::chipText(chip(), *world_->driver); }
  /// "path type mode", a line each.
  std::string mounts() const {
    std::string text;
    for (auto const& mount : stores().stateway->mounts()) {
      text += mount.path() + ' ' + mount.typeName() + ' ' + mount.mode() + '\n';
    }
    return text;
  }

 private:
  /// What the host gives a wrapper before it starts it.
  FrameWorld& equipped() {
    wrapper().localEntityManagerIs(stores().local);
    wrapper().vcsdIs(world_->vcsd);
    wrapper().chipInfoIs(TesselCentral::ChipInfo(*world_->fcsd->logicalFap(LogicalFap::LogicalFapId(0))));
    wrapper().profileSupportsVxlanIs(true);
    return *this;
  }
  FrameWorld& settle() {
    while (chip().deliver() != 0) {
    }
    return *this;
  }

  std::size_t aliveBefore_ = Dovel::Node::aliveCount();
  Kiln::LogCapture logs_;
  std::unique_ptr<Host::World> world_;
  Dovel::Ptr<TesselVxlan::TesselVxlanMounter> mounter_;
};

}  // namespace FrameTest
