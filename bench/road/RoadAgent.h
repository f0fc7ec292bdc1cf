#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "bench/road/Road.h"
#include "host/agent/Agent.h"
#include "platform/vane/FloodLists.h"

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
  /// One uplink is lost, and returns: the adjacencies that use it get other lists, as do the tunnels over them.
  void flap();
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
  /// The tunnels of one type.
  struct Tunnels {
    Vane::TunnelType type;
    std::vector<Dovel::Ptr<Vane::NextHopEntryList>> lists;
    std::vector<Dovel::Ptr<Vane::HwTunnelConfigEntry>> entries;  ///< By tunnel.
    Dovel::Ptr<Vane::HwTunnelConfig> config;
    Dovel::Ptr<Vane::HwTunnelStatus> status;
  };

  void add(std::uint32_t tunnel);
  void activate(std::uint32_t tunnel);
  void remove(std::uint32_t tunnel);
  void bind();
  /// The tunnels over the adjacencies that `uplink` is in get the lists that `listOf(former list)` returns.
  template <class ListOf>
  void changeListsOver(Meshal::IntfId uplink, ListOf&& listOf);

  /// The flood list of the one VLAN, for tunnels that come from it; their adjacencies are made on the first call.
  L2Rib::FloodSet& floodSet();

  Road const& road_;
  Host::Agent agent_;
  std::vector<Tunnels> all_;
  std::vector<Vane::VaneNextHopId> active_;  ///< Of the unicast tunnels.
  std::map<std::string, std::uint64_t> writesSeen_;
};

}  // namespace RoadBench
