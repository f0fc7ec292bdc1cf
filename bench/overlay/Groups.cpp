#include "bench/overlay/Groups.h"

#include <fmt/format.h>

#include "bench/overlay/Mappings.h"
#include "bench/road/Road.h"

namespace OverlayBench {

using RoadBench::kAdjacencies;
using RoadBench::Road;
using Vane::VXLAN::VaneVtepGroupKey;

Groups::Groups()
    : agent_(makeAgent()),
      groups_(agent_->state<Vane::VXLAN::VaneVtepGroupConfigDir>(Host::kVtepGroupConfigPath)),
      vteps_(agent_->state<TesselCentral::VxlanToL2State>(Host::kVxlanToL2StatePath)) {
  agent_->apply(Road(kGroups).document(false), "switch");
  auto const& wanted = agent_->wantedTunnels(Vane::vxlanMemberTunnel_);
  for (std::uint32_t n = 0; n < kAdjacencies; ++n) wanted->adjacencyIs(n + 1)->nextHopsIs(Road::nextHops(n));
  for (std::uint32_t n = 0; n < kGroups; ++n) {
    wanted->tunnelIs(vtep(n))->adjIdIs(Vane::AdjIdOrNone(Road::adjacencyOf(n) + 1));
  }
  settle();
}

void Groups::create() {
  for (std::uint32_t n = 0; n < kGroups; ++n) {
    auto const group = groups_->vaneVtepGroupConfigIs(VaneVtepGroupKey(n + 1));
    for (std::uint32_t at = 0; at < kMembers; ++at) group->vtepListIs(vtep(n + at), true);
  }
  settle();
}

void Groups::remove() {
  groups_->vaneVtepGroupConfigDelAll();
  settle();
}

void Groups::move(std::uint32_t n, std::uint32_t times) {
  auto const record = vteps_->vtepIpToTnlIdNhIdMap(vtep(n));
  auto const first = record->adjId();
  auto const second = first % kAdjacencies + 1;
  for (std::uint32_t time = 0; time < times; ++time) record->adjIdIs(record->adjId() == first ? second : first);
  settle();
}

void Groups::newVersions(std::uint32_t count) {
  for (std::uint32_t n = 0; n < count; ++n) {
    auto const& group = groups_->vaneVtepGroupConfig(VaneVtepGroupKey(n % kGroups + 1));
    group->versionIs(group->version() + 1);
  }
  settle();
}

// The agent's loop, which counts.
void Groups::settle() {
  for (;;) {
    auto const ran = Kiln::activityManager()->runDue();
    reviews_ += ran;
    if (ran == 0 && !agent_->turn()) return;
  }
}

Groups::Writes Groups::writes() const {
  Writes writes;
  for (auto const& report : agent_->chip().tables()) writes[report.name] = report.writes;
  return writes;
}

std::string Groups::writesSince(Writes const& before) const {
  std::string text;
  for (auto const& [table, count] : writes()) {
    if (auto const made = count - before.at(table))
      text += fmt::format("{}{} {}", text.empty() ? "" : ", ", table, made);
  }
  return text.empty() ? "none" : text;
}

}  // namespace OverlayBench
