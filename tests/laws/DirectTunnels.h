#pragma once

#include <functional>

#include "tests/support/AgentWorld.h"
#include "tests/support/Watch.h"

namespace AgentTest {

/// The tunnels of one type, written into the feature's configuration by the test itself.
///
/// Unlike the forwarding abstraction it writes at once, on the caller's stack, and may be called from inside a
/// notification of the status; former generations stay in the configuration until they are removed. Multicast tunnels
/// have one generation. The wish is the caller's. REQUIRES: an agent without producers; gone before the agent is.
class DirectTunnels {
 public:
  using Notified = std::function<void(std::string const& vtep)>;

  /// `notified` is called on the stack of each notification of a status.
  DirectTunnels(Host::Agent& agent, Vane::TunnelType type, Wish const& wish, Notified notified);
  DirectTunnels(DirectTunnels const&) = delete;

  /// Makes all tunnels what the wish says.
  void sync();
  void sync(std::string const& vtep);
  /// The same key leaves the configuration and returns.
  void again(std::string const& vtep);
  /// Gives former generations these next hops.
  void formerHops(std::string const& vtep, std::uint32_t adjId);
  void formersGone(std::string const& vtep);
  void formersGone();
  /// Declares the next hops of all statuses active. False if nothing changed.
  bool activate();
  /// The agent has been restarted: its configuration is empty.
  void restarted();

 private:
  struct Present {
    Vane::TunnelKey key;
    std::uint64_t genId = 0;  ///< Of the wish.
    std::vector<Vane::TunnelKey> formers;
    Vane::VaneNextHopId active;
  };
  using ListPtr = Dovel::Ptr<Vane::NextHopEntryList>;

  Vane::HwTunnelConfig& config() const { return *tunnelConfig(agent_, type_); }
  void bind();
  void statusChanged(Vane::TunnelKey const& key);
  void syncFormers(std::string const& vtep);
  void add(Vane::TunnelKey const& key, ListPtr const& list);
  void remove(std::string const& vtep);
  void activeIs(Present& present, Vane::VaneNextHopId nhId);
  /// Null for an adjacency that doesn't exist. The same object for the same next hops.
  ListPtr listOf(std::optional<std::uint32_t> adjId);

  Host::Agent& agent_;
  Vane::TunnelType type_;
  Wish const& wish_;
  Notified notified_;
  std::map<std::string, Present> present_;
  std::map<std::string, Vane::TunnelKey> last_;
  std::uint64_t lastGenId_ = 0;
  std::map<std::uint32_t, std::pair<Hops, ListPtr>> lists_;
  std::optional<Support::Watch> statuses_;
  std::map<Vane::TunnelKey, Support::Watch> entries_;
};

}  // namespace AgentTest
