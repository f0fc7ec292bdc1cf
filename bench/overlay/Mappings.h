#pragma once

#include <memory>

#include "bench/road/FlatRows.h"
#include "host/agent/Agent.h"
#include "platform/vane/VaneHelperVni.h"

namespace OverlayBench {

/// An agent on profile cascaded with a VNI table for all remote mappings.
std::unique_ptr<Host::Agent> makeAgent();

/// The feature on the simulated chip, with mappings written as the layer-2 agent writes them. Mapping `n` of each kind
/// has a VNI of its own; the loop turns after each burst.
class Mappings {
 public:
  Mappings();

  void addLocal(std::uint32_t count);
  void addRemote(std::uint32_t count);
  void removeLocal(std::uint32_t count);
  void removeRemote(std::uint32_t count);
  /// Adds a second logical chip.
  void secondChip();
  std::uint64_t writes() const { return agent_->chip().writes(); }

 private:
  std::unique_ptr<Host::Agent> agent_;
  Dovel::Ptr<VaneHelper::VaneHelperVniConfig> config_;
};

/// The same rows and statuses in flat hash maps and vectors: a row of the VNI, found by it, a row of the VLAN for a
/// local mapping, the packet driver's VLAN, and the status.
class Floor {
 public:
  void addLocal(std::uint32_t count);
  void addRemote(std::uint32_t count);
  void removeLocal(std::uint32_t count);
  void removeRemote(std::uint32_t count);

 private:
  RoadBench::FlatRows<std::uint32_t, std::uint16_t> vfis_;
  RoadBench::FlatRows<std::uint32_t, std::uint32_t> vnis_;
  RoadBench::FlatMap<std::uint32_t, std::uint16_t> driver_;
  RoadBench::FlatMap<Vane::VXLAN::VtiVlanKey, VaneHelper::VaneHelperVniStatusEntry> local_;
  RoadBench::FlatMap<Vane::VXLAN::VtiVniKey, VaneHelper::VaneHelperVniStatusEntry> remote_;
};

}  // namespace OverlayBench
