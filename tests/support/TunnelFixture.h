#pragma once

#include <gmock/gmock.h>

#include "TesselVxlan/frame/TesselVxlanMounter.h"
#include "TesselVxlan/frame/TesselVxlanMounterSmWrapper.h"
#include "platform/kiln/Trace.h"
#include "platform/tessel/central/VxlanToL2State.h"
#include "tests/support/AgentWorld.h"

namespace AgentTest {

/// The feature of an agent from within.
class OnWrapper : public OnChips {
 protected:
  TesselVxlan::TesselVxlanMounterSmWrapper& wrapper() const {
    return *Dovel::cast<TesselVxlan::TesselVxlanMounter>(agent.agent().mounter())->vxlanMounterSmWrapper();
  }
};

/// An agent that has what tunnels need: a local VTEP, 10.255.0.1, and UDP port 4789.
class Tunnels : public OnWrapper {
 protected:
  void SetUp() override {
    agent.together([](AgentWorld& a) { a.localVtep(vtep(1)).udpPort(4789); });
    start = agent.chip();
    agent.writes();
  }

  // Past the forwarding abstraction: the test itself configures.
  static Vane::TunnelKey key(std::string const& vtep, std::uint64_t genId) {
    return {{}, Meshal::IpGenAddr(vtep), 0, genId, Meshal::IntfId("Vxlan1")};
  }
  static Vane::NextHopEntry hop(unsigned n) { return *entriesOf({uplink(n)}).begin(); }
  static Dovel::Ptr<Vane::NextHopEntryList> list(std::uint32_t adjId, Hops const& hops) {
    return Dovel::make<Vane::NextHopEntryList>(adjId, entriesOf(hops));
  }
  Vane::HwTunnelConfig& config(Vane::TunnelType type) { return *agent.agent().hwTunnelConfig(type); }
  void configure(Vane::TunnelType type, Vane::TunnelKey const& key,
                 Dovel::Ptr<Vane::NextHopEntryList> const& nextHops = nullptr) {
    auto const entry = Dovel::make<Vane::HwTunnelConfigEntry>(key);
    entry->nextHopEntryListIs(nextHops);
    config(type).hwTunnelConfigListIs(entry);
    agent.settle();
  }
  void dismiss(Vane::TunnelType type, Vane::TunnelKey const& key) {
    config(type).hwTunnelConfigListDel(key);
    agent.settle();
  }
  TesselVxlan::HwTunnelProgrammerBase& programmer(Vane::TunnelType type) const {
    return *wrapper().hwTunnelProgrammer(type);
  }
  Dovel::Ptr<TesselCentral::VtepIpToTnlIdNhIdMap> map(std::string const& vtep) const {
    return agent.agent()
        .state<TesselCentral::VxlanToL2State>("hardware/tessel/tunnel/vxlan/vxlanToL2State")
        ->vtepIpToTnlIdNhIdMap(Meshal::IpGenAddr(vtep));
  }
  std::string overlay(std::string const& vtep) const { return agent.row(agent.overlayTable(), vtep); }
  std::string header(std::string const& vtep, std::string const& local = "10.255.0.1") const {
    return agent.row("EgrL3Ipv4TunnelTable", local + " > " + vtep);
  }

  std::string start;  ///< The chip without tunnels.
};

}  // namespace AgentTest
