#include "host/agent/World.h"

#include <fmt/format.h>

#include "platform/asic/ProfileLoader.h"
#include "platform/kilnsharedmem/EntityManager.h"
#include "platform/local/EntityManager.h"
#include "platform/stateway/EntityManager.h"
#include "platform/tessel/central/VxlanRecords.h"
#include "platform/tessel/features/ChipAttributes.h"
#include "platform/tessel/l3common/TesselVxlanState.h"
#include "platform/tessel/qos/TrustStatus.h"
#include "platform/vane/VaneHelperVni.h"

namespace Host {

std::string wantedTunnelsPath(Vane::TunnelType type) {
  for (auto const& [known, name] : kTunnelTypes) {
    if (known == type) return "hardware/tessel/tunnel/configDir/" + std::string(name);
  }
  return {};
}

std::string publishedTunnelsPath(Vane::TunnelType type) {
  for (auto const& [known, name] : kTunnelTypes) {
    if (known == type) return "hardware/tessel/tunnel/statusDir/" + std::string(name);
  }
  return {};
}

World::World(std::string const& profile, Asic::Completion completion) : World(Asic::loadProfile(profile), completion) {}

World::World(Dovel::Ptr<Asic::ChipProfile const> const& profile, Asic::Completion completion) {
  auto simulated = std::make_unique<Asic::SimulatedChip>(profile, completion);
  driver = simulated.get();
  chip = Dovel::make<Asic::Chip>(profile, std::move(simulated));
  stores.stateway = Dovel::make<Stateway::EntityManager>();
  // Found by its name in the whole process, which may have several agents.
  stores.shmem = Dovel::make<KilnSharedMem::EntityManager>(fmt::format("shmem of {}", fmt::ptr(this)));
  processIs();
  vcsd = Dovel::make<Vane::VaneCommonSmData>("vcsd");
  agentDir = Dovel::make<Kiln::Dir>("agent");
  fcsd = Dovel::make<TesselCentral::FeatureAgentCommonSmData>("featureCommon");
  fcsd->logicalFapIs(LogicalFap::LogicalFapId(0), Dovel::make<TesselCentral::LogicalModInfo>(Asic::ChipInfo(chip)));
  fcsd->portConfigDirIs(Dovel::cast<TesselCentral::PortConfigDir>(stores.stateway->entityIs(
      TesselCentral::PortConfigDir::mountPath, TesselCentral::PortConfigDir::kilnType().name())));
  fcsd->ioctlDrvFabIs(Dovel::cast<Anvil::IoctlDrvFab>(
      stores.stateway->entityIs(std::string(kPacketDriverPath), Anvil::IoctlDrvFab::kilnType().name())));
  fcsd->logicalModInfosIs(true);
  sharedEntities = Dovel::make<Kiln::Dir>("sharedEntities");
  sharedEntities->childIs("featureCommon", fcsd);
}

World::~World() = default;

void World::doMount(Stateway::MountGroup& group) const {
  group.doMount(
      {TesselCentral::PortConfigDir::mountPath, std::string(TesselCentral::PortConfigDir::kilnType().name())});
  group.doMount({std::string(kTrustPath), std::string(TesselCommon::Qos::TrustStatus::kilnType().name())});
  // The feature mounts the mappings only where it doesn't own them.
  group.doMount({std::string(kVniConfigPath), std::string(VaneHelper::VaneHelperVniConfig::kilnType().name())});
  for (auto const& [path, type] : {std::pair(kVniStatusPath, VaneHelper::VaneHelperVniStatus::kilnType().name()),
                                   {kPacketDriverPath, Anvil::IoctlDrvFab::kilnType().name()}}) {
    Stateway::Mount written{std::string(path), std::string(type)};
    written.handleFlags("w");
    group.doMount(written);
  }
}

void World::capabilitiesIs() const {
  auto const has = chip->profile()->feature<TesselCentral::VxlanCapabilityAttributes>();
  auto const capabilities =
      stores.stateway->getEntity<TesselCentral::VxlanCapabilities>("hardware/tessel/centralStatus/vxlanCapabilities");
  if (!has || !capabilities) return;
  capabilities->mcastTunnelSupportedIs(has->mcastTunnelSupported());
  capabilities->underlayMcastSupportedIs(has->underlayMcastSupported());
  capabilities->bumFloodSupportedIs(has->bumFloodSupported());
  capabilities->singleVnIdTableUserIs(has->singleVnIdTableUser());
  capabilities->capabilityFlagIs(has->capabilityFlag());
}

void World::trustIs() const {
  auto const dir = stores.stateway->getEntity<Kiln::Dir>(kTrustDirPath);
  if (dir) dir->childIs("1", stores.stateway->getEntity(kTrustPath));
}

void World::processIs() {
  stores.local = Dovel::make<Local::EntityManager>();
  stores.local->doMount<TesselL3Common::TesselVxlanBootStatus>(std::string(kBootStatusPath));
  stores.local->doMount<Vane::HwTunnelStatusDir>(std::string(kHwTunnelStatusPath));
  auto const configs = stores.local->doMount<Vane::HwTunnelConfigDir>(std::string(kHwTunnelConfigPath));
  for (auto const& [type, name] : kTunnelTypes) configs->hwTunnelConfigIs(type);
}

}  // namespace Host
