#pragma once

#include <gmock/gmock.h>

#include "platform/kiln/Trace.h"
#include "platform/tessel/central/VxlanToL2State.h"
#include "tests/support/AgentWorld.h"

namespace AgentTest {

/// An agent that has what tunnels need: a local VTEP, 10.255.0.1, and UDP port 4789.
class Tunnels : public OnChips {
 protected:
  void SetUp() override {
    agent.together([](AgentWorld& a) { a.localVtep(vtep(1)).udpPort(4789); });
    start = agent.chip();
    agent.writes();
  }

  // Past the forwarding abstraction: the test is the one that configures.
  static Vane::TunnelKey key(std::string const& vtep, std::uint64_t genId) {
    return {{}, Meshal::IpGenAddr(vtep), 0, genId, Meshal::IntfId("Vxlan1")};
  }
  void configure(Vane::TunnelType type, Vane::TunnelKey const& key) {
    agent.agent().hwTunnelConfig(type)->hwTunnelConfigListIs(Dovel::make<Vane::HwTunnelConfigEntry>(key));
    agent.settle();
  }
  void dismiss(Vane::TunnelType type, Vane::TunnelKey const& key) {
    agent.agent().hwTunnelConfig(type)->hwTunnelConfigListDel(key);
    agent.settle();
  }
  Dovel::Ptr<TesselCentral::VtepIpToTnlIdNhIdMap> map(std::string const& vtep) const {
    return agent.agent()
        .state<TesselCentral::VxlanToL2State>("hardware/tessel/tunnel/vxlan/vxlanToL2State")
        ->vtepIpToTnlIdNhIdMap(Meshal::IpGenAddr(vtep));
  }
  std::string overlay(std::string const& vtep) const { return agent.row(agent.overlayTable(), vtep); }
  std::string header(std::string const& vtep, std::string const& local = "10.255.0.1") const {
    return agent.row("EgrL3Ipv4TunnelTable", local + ' ' + vtep);
  }

  std::string start;  ///< The chip without tunnels.
};

}  // namespace AgentTest
