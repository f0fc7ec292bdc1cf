#pragma once

#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "platform/asic/SimulatedChip.h"
#include "platform/document/Document.h"
#include "platform/kiln/Dir.h"
#include "platform/stateway/MountGroup.h"
#include "platform/tessel/central/CommonData.h"
#include "platform/vane/HwTunnel.h"
#include "platform/vane/VaneTunnel.h"

namespace Host {

/// The tunnel types of which the agent keeps wanted tunnels, with the names that their paths end in.
inline constexpr std::array<std::pair<Vane::TunnelType, std::string_view>, 3> kTunnelTypes{{
    {Vane::vxlanTunnel_, "vxlanTunnel"},
    {Vane::vxlanMemberTunnel_, "vxlanMemberTunnel"},
    {Vane::vxlanHerTunnel_, "vxlanHwHerTunnel"},
}};
/// The tunnel types of multicast features, with their names and the beginning of their paths in the state database.
struct McastKind {
  Vane::TunnelType type;
  std::string_view name;
  std::string_view path;

  std::string configPath() const { return std::string(path) + "config"; }
  std::string statusPath() const { return std::string(path) + "status"; }
};
inline constexpr std::array<McastKind, 3> kMcastKinds{{
    {Vane::vxlanMcastTunnel_, "vxlanMcastTunnel", "vxlan/multicast/tunnel/"},
    {Vane::vxlanMcastHer_, "vxlanMcastHer", "vxlan/multicast/herTunnel/"},
    {Vane::vxlanBum_, "vxlanBum", "vxlan/multicast/bumTunnel/"},
}};

/// The path of the wanted tunnels of a type in the state database. REQUIRES: one of `kTunnelTypes`.
std::string wantedTunnelsPath(Vane::TunnelType type);

/// The same for the ids that were assigned to them.
std::string publishedTunnelsPath(Vane::TunnelType type);

inline constexpr std::string_view kHwTunnelConfigPath = "l3/hwTunnelConfigDir";
inline constexpr std::string_view kHwTunnelStatusPath = "l3/hwTunnelStatusDir";
inline constexpr std::string_view kBootStatusPath = "vxlanBootStatus";
inline constexpr std::string_view kVlanStatusPath = "l3/vlanStatusDir";
inline constexpr std::string_view kVxlanStatePath = "tesselVxlan/vxlanState";
inline constexpr std::string_view kVxlanToL2StatePath = "hardware/tessel/tunnel/vxlan/vxlanToL2State";
inline constexpr std::string_view kVtiStatusPath = "interface/status/eth/vxlan";
inline constexpr std::string_view kFloodListsPath = "bridging/l2Rib/floodOutput";  ///< In shared memory.
inline constexpr std::string_view kVtepStatusPath = "vxlan/version2/vtepStatusDir";
inline constexpr std::string_view kHerVtepStatusPath = "hardware/tessel/tunnel/vxlan/herVtepStatus";
inline constexpr std::string_view kVniConfigPath = "hardware/tessel/tunnel/vxlan/helperVniConfig";
inline constexpr std::string_view kVniStatusPath = "hardware/tessel/tunnel/vxlan/helperVniStatus";
inline constexpr std::string_view kVfiCapabilitiesPath = "hardware/tessel/centralStatus/vfiCapabilityStatus";
inline constexpr std::string_view kVlanVfiPath = "hardware/tessel/vfi/l2Status/vlanVfiMap";
inline constexpr std::string_view kVtepGroupConfigPath = "hardware/tessel/tunnel/vxlan/vaneVtepGroupConfigDir";
inline constexpr std::string_view kVtepGroupStatusPath = "hardware/tessel/tunnel/vxlan/vaneVtepGroupStatusDir";
inline constexpr std::string_view kTrustDirPath = "qos/hardware/tessel/trust/status/slice";
inline constexpr std::string_view kTrustPath = "qos/hardware/tessel/trust/status/slice/1";
inline constexpr std::string_view kPacketDriverPath = "hardware/tessel/packetDriver";
inline constexpr std::string_view kMroutesPath = "routing/multicast/vxlanDecap";  ///< In shared memory.
inline constexpr std::string_view kFloodRecordsPath = "vxlan/bumVtepConfigDir";

/// What an agent has before its feature starts: the chip, empty stores, and the entities that the agent itself owns.
///
/// Shares all of it with the feature, which is destroyed first.
struct World {
  /// A chip of the profile with one logical chip on it.
  World(Dovel::Ptr<Asic::ChipProfile const> const& profile, Asic::Completion completion);
  /// The same by the profile's name or file. Throws `InputError`.
  World(std::string const& profile, Asic::Completion completion);
  ~World();
  World(World const&) = delete;
  World& operator=(World const&) = delete;

  /// Adds to a feature's mounts what the agent itself reads from documents, mappings of VNIs and the packet driver.
  void doMount(Stateway::MountGroup& group) const;
  /// Publishes the capabilities of the chip and its software in the state database.
  void capabilitiesIs() const;
  /// Puts the trust settings, of which documents decide, into the directory that the feature reads.
  void trustIs() const;
  /// Replaces the state that ends with the agent's process: the local store, with an empty configuration per tunnel
  /// type.
  void processIs();

  Asic::SimulatedChip* driver = nullptr;  ///< Of `chip`.
  Dovel::Ptr<Asic::Chip> chip;
  Stateway::AgentStores stores;
  Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData> fcsd;
  Dovel::Ptr<Vane::VaneCommonSmData> vcsd;
  Dovel::Ptr<Kiln::Dir> sharedEntities;  ///< Holds `fcsd` as "featureCommon".
  Dovel::Ptr<Kiln::Dir> agentDir;
};

}  // namespace Host
