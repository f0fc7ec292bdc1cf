#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "bench/road/Road.h"
#include "host/agent/Agent.h"

namespace RoadBench {

/// The feature on the simulated chip, with configuration entries written as the forwarding abstraction writes them.
class RoadAgent {
 public:
  /// Started, with ports, interfaces and a local VTEP, without tunnels. Their configuration entries are made.
  RoadAgent(Road const& road, std::string const& profile, Asic::Completion completion);

  /// Hands over the configuration entries of all tunnels, makes their next hops active and settles.
  void create();
  /// Another source address for all.
  void moveLocalVtep();
  void update(std::vector<Road::Update> const& updates);
  void remove(std::vector<std::uint32_t> const& order);
  /// The tunnel is removed and added again.
  void replace(std::uint32_t tunnel);
  /// Ends the process and starts another one over the same configuration.
  void restart();

  /// Whether all tunnels of the road have both ids.
  bool allProgrammed() const;
  /// Rows written to the chip since the last call, by chip table; tables without any are left out.
  std::map<std::string, std::uint64_t> writes();

 private:
  void add(std::uint32_t tunnel);
  void activate(std::uint32_t tunnel);
  void remove(std::uint32_t tunnel);
  void bind();
  Dovel::Ptr<Vane::NextHopEntryList> listOf(std::uint32_t adjacency) const;

  Road const& road_;
  Host::Agent agent_;
  std::vector<Dovel::Ptr<Vane::NextHopEntryList>> lists_;
  std::vector<Dovel::Ptr<Vane::HwTunnelConfigEntry>> entries_;  ///< By tunnel.
  std::vector<Vane::VaneNextHopId> active_;                     ///< By tunnel.
  Dovel::Ptr<Vane::HwTunnelConfig> config_;
  Dovel::Ptr<Vane::HwTunnelStatus> status_;
  std::map<std::string, std::uint64_t> writesSeen_;
};

}  // namespace RoadBench
