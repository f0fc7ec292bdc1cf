#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "host/agent/Agent.h"
#include "tests/support/AgentText.h"
#include "tests/support/AgentWish.h"

namespace AgentTest {

/// On what a test runs: the parameter of most suites.
struct ChipKind {
  /// One that is built in, or made from one: "oneHeader" (one IPv4 header for all VTEPs, IPv6 beside it),
  /// "flatFlooding", "fewMembers" (of groups), "tinyFlat".
  std::string profile = "cascaded";
  Asic::Completion completion = Asic::Completion::direct;
  /// Members of the profile that have other values, and tables that have another number of rows.
  using Values = std::vector<std::pair<std::string, std::string>>;
  Values values = {};
};
/// "cascadedDeferred".
std::string kindText(ChipKind const& kind);
inline void PrintTo(ChipKind const& kind, std::ostream* out) { *out << kindText(kind); }
std::string kindName(testing::TestParamInfo<ChipKind> const& info);
/// Each profile with both ways of completion.
std::vector<ChipKind> chipKinds(std::vector<std::string> const& profiles);

/// Who writes the tunnels' configuration entries: the forwarding abstraction from documents, or the test itself.
enum class Drive { documents, test };

class TunnelStory;

/// An agent with the feature on a chip of its own.
///
/// Whatever is told to it takes effect at once: it is written into the state and the agent's loop runs until nothing is
/// left to do. `together` puts several changes into one. A message to the operator that the test doesn't take away by
/// `messages` fails it, and so does an object that is alive when the agent has stopped. Of several worlds the last made
/// is the first to go.
class AgentWorld {
 public:
  explicit AgentWorld(ChipKind const& kind = {}, Drive drive = Drive::documents);
  ~AgentWorld();
  AgentWorld(AgentWorld const&) = delete;
  AgentWorld& operator=(AgentWorld const&) = delete;

  // The story.
  /// By its family; empty: none of either family any more.
  AgentWorld& localVtep(std::string const& addr);
  AgentWorld& udpPort(std::uint16_t port) { return changed(wish_.udpPort = port); }
  AgentWorld& learning(bool on) { return changed(wish_.learning = on); }
  AgentWorld& evpn(bool on) { return changed(wish_.evpn = on); }
  AgentWorld& dscp(bool propagated) { return changed(wish_.dscp = propagated); }
  AgentWorld& tos(std::uint8_t base) { return changed(wish_.tos = base); }
  AgentWorld& vti(bool there) { return changed(wish_.vti = there); }
  AgentWorld& vlanPorts(unsigned vlan, std::set<unsigned> const& ports) {
    return changed(wish_.vlanPorts[vlan] = ports);
  }
  AgentWorld& adjacency(std::uint32_t id, Hops const& hops) { return changed(wish_.adjacencies[id] = hops); }
  TunnelStory tunnel(Vane::TunnelType type, std::string const& vtep);
  /// All at once.
  AgentWorld& want(Wish const& wish) { return changed(wish_ = wish); }
  Wish const& wish() const { return wish_; }
  /// What `change` tells is one change. It is given this world.
  template <class Change>
  AgentWorld& together(Change&& change) {
    ++depth_;
    change(*this);
    --depth_;
    return changed();
  }
  /// The id of the adjacency of just these next hops.
  std::uint32_t adjacencyOf(Hops const& hops);

  // Chip and process.
  AgentWorld& hold(std::string_view table) {
    agent_->chip().hold(table);
    return *this;
  }
  AgentWorld& release();
  /// The feature stops and starts again over the same state and chip, as in a restart.
  AgentWorld& restart();
  Host::Agent& agent() const { return *agent_; }
  Asic::SimulatedChip& hardware() const { return agent_->driver(); }
  AgentWorld& settle();

  // Observers.
  /// A line a tunnel: "10.255.0.2 gen=1 tnl=#1 nh=#2 adj=7". Ids are numbered in the order in which they are first
  /// shown; versions are shown as they are: "239.1.1.1 gen=0 tnl=#1 version=2".
  std::string status(Vane::TunnelType type);
  /// The same of all types with generations left out and ids named by the keys of the entries that own them.
  std::string statusByKey() const;
  /// Rows and all that is published, as `chipText` and `stateText`: equal for agents that are in the same state.
  std::string whole() const;
  /// All tables, as `chipText`.
  std::string chip() const;
  std::string table(std::string_view table) const;
  /// What follows the key in the line of one entry; "absent" if there is none.
  std::string row(std::string_view table, std::string_view key) const;
  /// The table that overlay entries stand in on this chip.
  std::string_view overlayTable() const { return overlayTableOf(agent_->chip()); }
  /// Rows written since the last call, by chip table: "VirtualPort1Table 1, …".
  std::string writes();
  /// Operator messages since the last call, a line each: "NAME text".
  std::string messages();

 private:
  friend class TunnelStory;
  AgentWorld& changed();
  void writeGroups();
  /// After an assignment.
  template <class Value>
  AgentWorld& changed(Value const&) {
    return changed();
  }
  std::string idText(char kind, std::uint32_t id);

  std::unique_ptr<Host::Agent> agent_;
  Wish wish_;
  unsigned depth_ = 0;
  std::map<Hops, std::uint32_t> adjacencies_;
  std::map<std::pair<char, std::uint32_t>, unsigned> ids_;
  std::map<std::string, std::uint64_t> writesSeen_;
};

/// One tunnel of an agent.
class TunnelStory {
 public:
  TunnelStory(AgentWorld& world, Vane::TunnelType type, std::string const& vtep) : world_(world), key_(type, vtep) {}

  /// The tunnel is wanted over the adjacency of these next hops, or of none that is known.
  template <class... H>
  TunnelStory& via(H const&... hops) {
    return over(world_.adjacencyOf({hops...}));
  }
  TunnelStory& over(std::uint32_t adjId) { return changed(wish().adjId = adjId); }
  TunnelStory& withoutRoute() { return changed(wish().adjId = std::nullopt); }
  TunnelStory& generation(std::uint64_t genId) { return changed(wish().genId = genId); }
  void gone() { changed(world_.wish_.tunnels.erase(key_)); }

 private:
  TunnelWish& wish() { return world_.wish_.tunnels[key_]; }
  template <class Value>
  TunnelStory& changed(Value const&) {
    world_.changed();
    return *this;
  }

  AgentWorld& world_;
  std::pair<Vane::TunnelType, std::string> key_;
};

/// A fixture whose parameter is the kind of chip.
class OnChips : public testing::TestWithParam<ChipKind> {
 protected:
  bool cascaded() const { return GetParam().profile != "flat"; }
  AgentWorld agent{GetParam()};
};

}  // namespace AgentTest
