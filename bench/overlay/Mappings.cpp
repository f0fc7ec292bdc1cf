#include "bench/overlay/Mappings.h"

#include <fstream>

#include "platform/asic/ProfileLoader.h"

namespace OverlayBench {

using Vane::VXLAN::VtiVlanKey;
using Vane::VXLAN::VtiVniKey;
using VaneHelper::VaneHelperVniConfigEntry;
using VaneHelper::VaneHelperVniStatusEntry;
using Vxlan::VniExt;

namespace {

/// Mappings that are written between two turns of the agent's loop.
constexpr std::uint32_t kBurst = 64;
constexpr std::uint32_t kFirstLocal = 10'000, kFirstRemote = 1'000'000, kRemoteVlans = 4'000;

Meshal::IntfId const& vti() {
  static Meshal::IntfId const vti("Vxlan1");
  return vti;
}

std::uint16_t vlanOfLocal(std::uint32_t n) { return static_cast<std::uint16_t>(1 + n); }
std::uint16_t vlanOfRemote(std::uint32_t n) { return static_cast<std::uint16_t>(1 + n % kRemoteVlans); }
VtiVlanKey localKey(std::uint32_t n) { return {vti(), vlanOfLocal(n)}; }
VtiVniKey remoteKey(std::uint32_t n) { return {vti(), VniExt(kFirstRemote + n)}; }

/// Calls `each(n)`, and `turn` after each burst.
template <class Each, class Turn>
void inBursts(std::uint32_t count, Each const& each, Turn const& turn) {
  for (std::uint32_t n = 0; n < count; ++n) {
    each(n);
    if ((n + 1) % kBurst == 0 || n + 1 == count) turn();
  }
}

}  // namespace

std::unique_ptr<Host::Agent> makeAgent() {
  constexpr std::string_view table = "\"L2TunnelVnIdTable\": {\"rows\": ";
  std::ifstream in(TESSEL_SOURCE_DIR "/profiles/cascaded.json");
  std::string text{std::istreambuf_iterator<char>(in), {}};
  auto const at = text.find(table) + table.size();
  text.replace(at, text.find('}', at) - at, "131072");
  Host::Agent::Options options;
  options.chipProfile = Asic::parseProfile(text, "cascaded");
  options.virtualClock = true;
  return std::make_unique<Host::Agent>(options);
}

Mappings::Mappings()
    : agent_(makeAgent()), config_(agent_->state<VaneHelper::VaneHelperVniConfig>(Host::kVniConfigPath)) {}

void Mappings::addLocal(std::uint32_t count) {
  auto const add = [&](std::uint32_t n) {
    config_->vlanVniMapIs(localKey(n), VaneHelperVniConfigEntry{vlanOfLocal(n), VniExt(kFirstLocal + n), 0});
  };
  inBursts(count, add, [&] { agent_->settle(); });
}

void Mappings::addRemote(std::uint32_t count) {
  auto const add = [&](std::uint32_t n) {
    config_->remoteVniConfigIs(remoteKey(n), VaneHelperVniConfigEntry{vlanOfRemote(n), VniExt(kFirstRemote + n), 0});
  };
  inBursts(count, add, [&] { agent_->settle(); });
}

void Mappings::removeLocal(std::uint32_t count) {
  inBursts(
      count, [&](std::uint32_t n) { config_->vlanVniMapDel(localKey(n)); }, [&] { agent_->settle(); });
}

void Mappings::removeRemote(std::uint32_t count) {
  inBursts(
      count, [&](std::uint32_t n) { config_->remoteVniConfigDel(remoteKey(n)); }, [&] { agent_->settle(); });
}

void Mappings::secondChip() {
  using LogicalFap::LogicalFapId;
  auto const& fcsd = agent_->world().fcsd;
  fcsd->logicalFapIs(LogicalFapId(1), Dovel::make<TesselCentral::LogicalModInfo>(Asic::ChipInfo(agent_->world().chip)));
  agent_->settle();
}

void Floor::addLocal(std::uint32_t count) {
  for (std::uint32_t n = 0; n < count; ++n) {
    vfis_.add(kFirstLocal + n, vlanOfLocal(n));
    driver_.emplace(kFirstLocal + n, vlanOfLocal(n));
    vnis_.add(vlanOfLocal(n), kFirstLocal + n);
    local_.emplace(localKey(n), VaneHelperVniStatusEntry{vlanOfLocal(n), VniExt(kFirstLocal + n), 0});
  }
}

void Floor::addRemote(std::uint32_t count) {
  for (std::uint32_t n = 0; n < count; ++n) {
    vfis_.add(kFirstRemote + n, vlanOfRemote(n));
    driver_.emplace(kFirstRemote + n, vlanOfRemote(n));
    remote_.emplace(remoteKey(n), VaneHelperVniStatusEntry{vlanOfRemote(n), VniExt(kFirstRemote + n), 0});
  }
}

void Floor::removeLocal(std::uint32_t count) {
  for (std::uint32_t n = 0; n < count; ++n) {
    vfis_.del(kFirstLocal + n);
    driver_.erase(kFirstLocal + n);
    vnis_.del(vlanOfLocal(n));
    local_.erase(localKey(n));
  }
}

void Floor::removeRemote(std::uint32_t count) {
  for (std::uint32_t n = 0; n < count; ++n) {
    vfis_.del(kFirstRemote + n);
    driver_.erase(kFirstRemote + n);
    remote_.erase(remoteKey(n));
  }
}

}  // namespace OverlayBench
