#pragma once

#include <map>
#include <memory>
#include <string>

#include "host/agent/Agent.h"
#include "platform/tessel/central/VxlanToL2State.h"
#include "platform/vane/VtepGroup.h"

namespace OverlayBench {

/// VTEP groups with their member tunnels on the simulated chip. Each VTEP is a member of as many groups as a group has
/// members.
class Groups {
 public:
  static constexpr std::uint32_t kGroups = 1'024, kMembers = 8;
  using Writes = std::map<std::string, std::uint64_t>;

  /// With a tunnel to each VTEP, without groups.
  Groups();

  void create();
  void remove();
  /// The tunnel of a VTEP changes between two adjacencies that often, without a turn of the loop; an odd number leaves
  /// it over the other one.
  void move(std::uint32_t vtep, std::uint32_t times);
  /// So many new versions, of all groups in turn, without a turn of the loop.
  void newVersions(std::uint32_t count);

  /// How many pieces of scheduled work the loop has run.
  std::uint64_t reviews() const { return reviews_; }
  Writes writes() const;
  /// "VpLagEcmpMember0Table 64".
  std::string writesSince(Writes const& before) const;

 private:
  void settle();
  Meshal::IpGenAddr vtep(std::uint32_t n) const { return Meshal::IpAddr(0x0a800000 + n % kGroups); }

  std::unique_ptr<Host::Agent> agent_;
  Dovel::Ptr<Vane::VXLAN::VaneVtepGroupConfigDir> groups_;
  Dovel::Ptr<TesselCentral::VxlanToL2State> vteps_;
  std::uint64_t reviews_ = 0;
};

}  // namespace OverlayBench
