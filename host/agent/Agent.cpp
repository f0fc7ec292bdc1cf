#include "host/agent/Agent.h"

#include <algorithm>

#include "host/agent/DocumentCheck.h"
#include "host/agent/TunnelSmGate.h"
#include "host/vane/MappingOrder.h"
#include "host/vane/TunnelProducer.h"
#include "host/vane/VniMirror.h"
#include "platform/asic/ProfileLoader.h"
#include "platform/kiln/Json.h"
#include "platform/kilnsharedmem/EntityManager.h"
#include "platform/local/EntityManager.h"
#include "platform/plugin/L3MounterSmWrapper.h"
#include "platform/stateway/EntityManager.h"
#include "platform/tessel/l3common/TesselVxlanState.h"
#include "platform/tessel/values/VxlanTunnelKey.h"
#include "platform/vane/FloodLists.h"

namespace Host {

std::filesystem::path defaultPlugin() {
  std::error_code error;
  auto const program = std::filesystem::read_symlink("/proc/self/exe", error);
  return (program.parent_path() / TESSEL_PLUGIN_FILE).lexically_normal();
}

namespace {

constexpr char const* ownState = "written by the agent itself, not by documents";

/// What documents decide about although the feature's mount of it is for writing.
bool isWanted(std::string_view path) {
  return path == kVlanVfiPath ||
         std::any_of(kTunnelTypes.begin(), kTunnelTypes.end(),
                     [&](auto const& type) { return wantedTunnelsPath(type.first) == path; }) ||
         std::any_of(kMcastKinds.begin(), kMcastKinds.end(),
                     [&](McastKind const& kind) { return kind.configPath() == path; });
}

/// Refuses paths that the agent itself writes. The status of groups is among them, though it is mounted for reading.
void checkPublished(Kiln::JsonIn const& paths, std::vector<Stateway::Mount> const& mounts) {
  paths.eachMember([&](std::string_view path, Kiln::JsonIn const& attributes) {
    bool const published = std::any_of(mounts.begin(), mounts.end(), [&](auto const& mount) {
      return mount.path() == path && (mount.flags().val() & Stateway::AllMountFlags::write) != 0;
    });
    if ((published && !isWanted(path)) || path == kVtepGroupStatusPath) attributes.fail(ownState);
  });
}

/// Of the local store, documents may write the VLANs and the TTL of the outer headers.
void checkLocal(Kiln::JsonIn const& paths) {
  paths.eachMember([](std::string_view path, Kiln::JsonIn const& attributes) {
    if (path == kVlanStatusPath) return;
    if (path != kVxlanStatePath) attributes.fail(ownState);
    attributes.eachMember([](std::string_view name, Kiln::JsonIn const& value) {
      if (name != "ttl") value.fail(ownState);
      value.unsignedNumber(1, TesselL3Common::VxlanTunnelKey::maxTtl);
    });
  });
}

}  // namespace

Agent::Agent(Options options) : aliveBefore_(Dovel::Node::aliveCount()), options_(std::move(options)) {
  if (options_.virtualClock) {
    clock_ = std::make_unique<Kiln::VirtualClock>();
    clockScope_.emplace(*clock_);
  }
  // Before the chip: a profile may name features that the plug-in registers.
  loader_.load(options_.plugin);
  if (!options_.chipProfile) options_.chipProfile = Asic::loadProfile(options_.profile);
  world_ = std::make_unique<World>(options_.chipProfile, options_.completion);
  startFeature();
}

Agent::~Agent() {
  if (world_) stop();
}

void Agent::startFeature() {
  makeMounter();
  auto const& stores = world_->stores;
  auto const bootStatus = local<TesselL3Common::TesselVxlanBootStatus>(kBootStatusPath);
  gate_ = Dovel::make<TunnelSmGate>(bootStatus, local<Vane::HwTunnelStatusDir>(kHwTunnelStatusPath),
                                    options_.ready == Ready::atOnce);
  stores.stateway->completeMounts();
  world_->capabilitiesIs();
  world_->trustIs();
  if (options_.producers) makeProducers();
  auto const wrapper = mounter_->mounterSmWrapper();
  wrapper->localEntityManagerIs(stores.local);
  wrapper->vcsdIs(world_->vcsd);
  wrapper->chipInfoIs(TesselCentral::ChipInfo(*world_->fcsd->logicalFap(LogicalFap::LogicalFapId(0))));
  wrapper->profileSupportsVxlanIs(profile().profileSupportsVxlan());
  restoreUpgrade();
  wrapper->doStart();
  bindStatus();
  settle();
}

void Agent::makeMounter() {
  auto const made = loader_.makeMounter(options_.mounterType, "TesselVxlan");
  mounter_ = Dovel::cast<TesselL3Unicast::L3MounterBase>(made);
  if (!mounter_) throw Plugin::LoadError("type " + options_.mounterType + " is not a mounter of a layer-3 feature");
  auto const& stores = world_->stores;
  mounter_->agentSmIdIs(TesselL3Unicast::AgentSmId::vxlan);
  mounter_->sharedEntityDirIs(world_->sharedEntities);
  mounter_->localEntityStoreIs(stores.local);
  mounter_->shmemEmIs(stores.shmem);
  mounter_->statewayEmIs(stores.stateway);
  mounter_->agentDirIs(world_->agentDir);
  mounter_->handleParent();
  auto const group = stores.stateway->getMountGroup(*mounter_);
  world_->doMount(*group);
  mounter_->doBootStageMount(*group);
  mounter_->doInit();
}

void Agent::restoreUpgrade() {
  auto const upgrade = std::exchange(options_.upgrade, nullptr);
  auto const helper = mounter_->vaulterPStoreHelper();
  if (upgrade && helper) helper->doRestore(upgrade->json());
}

void Agent::makeProducers() {
  for (auto const& [type, name] : kTunnelTypes) {
    producers_.push_back(
        Dovel::make<TunnelProducer>(wantedTunnels(type), publishedTunnels(type), hwTunnelConfig(type)));
  }
}

void Agent::bindStatus() {
  for (auto const& producer : producers_) producer->statusIs(hwTunnelStatus(producer->config()->tunnelType()));
}

void Agent::stopFeature() {
  // Pending write responses keep their programmers alive.
  chip().stop();
  producers_.clear();
  gate_ = nullptr;
  vniMirror_ = nullptr;
  mounter_ = nullptr;
  world_->processIs();
}

bool Agent::restart() {
  stopFeature();
  startFeature();
  Stateway::apply(document_, document_, stores());
  return settle();
}

std::size_t Agent::stop() {
  stopFeature();
  world_.reset();
  options_.chipProfile = nullptr;
  return Dovel::Node::aliveCount() - aliveBefore_;
}

void Agent::check(Stateway::StateDocument const& document) const {
  Stateway::check(document, stores());
  if (auto const paths = document.root().find("stateway")) checkPublished(*paths, stores().stateway->mounts());
  if (auto const paths = document.root().find("local")) checkLocal(*paths);
  checkSemantics(document);
  notesOf(document);
}

bool Agent::apply(Stateway::StateDocument document) {
  check(document);
  // Flood tunnels end when the loop turns, multicast tunnels begin at once: they would take ids that are not free yet.
  if (floodTunnels(document_).vteps + floodTunnels(document).groups > maxFloodTunnels) {
    stores().shmem->getEntity<L2Rib::FloodSetOutput>(std::string(kFloodListsPath))->floodSetDelAll();
    settle();
  }
  prepareMappings(document_, document, stores());
  Stateway::apply(document_, document, stores());
  notes_ = notesOf(document);
  document_ = std::move(document);
  return settle();
}

bool Agent::apply(std::string_view json, std::string const& source) {
  return apply(Stateway::StateDocument::parse(json, source));
}

bool Agent::settle() {
  settled_ = false;
  for (std::size_t turns = 0; turns < turnLimit; ++turns) {
    if (!turn()) return settled_ = chip().pending() == 0;
  }
  return false;
}

bool Agent::turn() { return review() || chip().deliver() > 0 || Kiln::activityManager()->runDue() > 0; }

void Agent::mirrorVnis() {
  if (vniMirror_ || !mounter_) return;
  auto const own = mounter_->mounterSmWrapper()->ownHelperVni();
  if (!own) return;
  vniMirror_ = Dovel::make<VniMirror>(state<VaneHelper::VaneHelperVniConfig>(kVniConfigPath),
                                      state<VaneHelper::VaneHelperVniStatus>(kVniStatusPath), own);
}

bool Agent::review() {
  mirrorVnis();
  bool busy = false;
  for (auto const& producer : producers_) busy = producer->review() || busy;
  return (gate_ && gate_->review()) || busy;
}

Dovel::Ptr<Vane::VaneTunnelConfig> Agent::wantedTunnels(Vane::TunnelType type) const {
  return state<Vane::VaneTunnelConfig>(wantedTunnelsPath(type));
}

Dovel::Ptr<Vane::VaneTunnelStatus> Agent::publishedTunnels(Vane::TunnelType type) const {
  return state<Vane::VaneTunnelStatus>(publishedTunnelsPath(type));
}

Dovel::Ptr<Vane::HwTunnelConfig> Agent::hwTunnelConfig(Vane::TunnelType type) const {
  return local<Vane::HwTunnelConfigDir>(kHwTunnelConfigPath)->hwTunnelConfig(type);
}

Dovel::Ptr<Vane::HwTunnelStatus> Agent::hwTunnelStatus(Vane::TunnelType type) const {
  return local<Vane::HwTunnelStatusDir>(kHwTunnelStatusPath)->hwTunnelStatus(type);
}

}  // namespace Host
