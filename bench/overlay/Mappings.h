#pragma once

#include <boost/unordered/unordered_flat_map.hpp>
#include <memory>
#include <vector>

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
  /// A second logical chip comes up.
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
  template <class Key, class Value>
  using Map = boost::unordered_flat_map<Key, Value, Kiln::Hash<Key>>;
  /// Rows by number, found by key. The number that was given back last is the next.
  template <class Row>
  struct Rows {
    Map<std::uint32_t, std::uint32_t> numbers;
    std::vector<Row> rows;
    std::vector<std::uint32_t> free;

    void add(std::uint32_t key, Row const& row);
    void del(std::uint32_t key);
  };

  Rows<std::uint16_t> vfis_;
  Rows<std::uint32_t> vnis_;
  Map<std::uint32_t, std::uint16_t> driver_;
  Map<Vane::VXLAN::VtiVlanKey, VaneHelper::VaneHelperVniStatusEntry> local_;
  Map<Vane::VXLAN::VtiVniKey, VaneHelper::VaneHelperVniStatusEntry> remote_;
};

}  // namespace OverlayBench
