#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/agent/Agent.h"
#include "host/check/Risk.h"
#include "platform/meshal/IpGenAddr.h"

namespace Host {

/// What one host tells that others can be compared with, and its own risks. Outlives the agent that it was read from.
struct HostFacts {
  struct Vni {
    std::optional<unsigned> vlan;        ///< That the host itself has; nothing where the import chose one.
    std::optional<unsigned> mtu;         ///< Of its device.
    std::set<Meshal::IpGenAddr> floods;  ///< The VTEPs that its VLAN is flooded to.
  };
  std::string name;
  std::set<Meshal::IpGenAddr> localVteps;
  std::optional<Meshal::IpGenAddr> sharedVtep;  ///< Of a pair of switches that are one VTEP.
  unsigned udpPort = 0;                         ///< 0: none.
  std::map<unsigned, Vni> vnis;
  std::vector<Risk> risks;
};

/// How full tables are before an input is applied: what is full then is no risk.
class TableUse {
 public:
  explicit TableUse(Asic::Chip const& chip);
  /// The tables that are more than 80 % full and were not, those without a free row among them.
  void addRisks(Asic::Chip const& chip, HostFacts& facts) const;

 private:
  std::map<Asic::StoreBase const*, std::uint32_t> used_;
};

/// What the agent has after the input of the host `name`. REQUIRES: settled.
HostFacts factsOf(Agent const& agent, TableUse const& before, std::string name);

}  // namespace Host
