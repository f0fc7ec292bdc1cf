#pragma once

#include <bitset>
#include <memory>
#include <random>
#include <vector>

#include "tests/laws/DirectTunnels.h"
#include "tests/laws/Event.h"

namespace AgentTest {

using EventKinds = std::bitset<Event::kinds>;

/// A list of events, and by whom the tunnels are written.
struct Story {
  Drive drive = Drive::documents;
  std::vector<Event> events;

  /// One event a line.
  std::string text() const;
};

/// The story of a seed: some of the groups of event kinds that `allowed` leaves, in random order. One seed is one story
/// on all chips of one profile.
Story storyOf(std::uint64_t seed, std::string const& profile, EventKinds allowed, unsigned length);

/// A local VTEP of each family, UDP port 4789 and adjacencies 1 to 4.
Wish usualWish();

/// Makes a story happen to an agent.
///
/// The agent's messages are dropped where the story or the chip's size calls for some.
class Player {
 public:
  Player(AgentWorld& agent, ChipKind const& kind, Drive drive, Wish wish = usualWish());
  ~Player();

  void play(Story const& story);
  void play(Event const& event);
  /// Ends faults and holds, restores what tunnels need, and lets happen what the feature by its own rules waits for:
  /// see ExceptionsTest.cpp.
  void close();
  /// Ends faults and holds, and takes everything away.
  void end();
  /// What the agent should be like: for a fresh start.
  Wish const& wish() const { return wish_; }
  AgentWorld& wish(Wish const& wish);
  void restart();

 private:
  struct Armed {
    Event event;
    std::uint32_t left;  ///< Notifications until it acts.
  };

  bool direct() const { return drive_ == Drive::test; }
  DirectTunnels& tunnels(Vane::TunnelType type) { return *tunnels_.at(type); }
  void change(Event const& event);
  void changeOverlay(Event const& event);
  void changeTunnel(Event const& event);
  void act(Event const& event);
  void holdAll();
  void release();
  void deliver(unsigned count);
  void refuse(Event const& event);
  void notified(Vane::TunnelType type, std::string const& address);
  void react(Event const& event);
  void apply();
  void settle();
  Wish closed() const;
  void refresh(Wish const& last);
  void calm();

  AgentWorld& agent_;
  Drive drive_;
  Wish wish_;
  bool small_;  ///< The chip has a handful of rows.
  std::uint64_t lastGenId_ = 1000;
  std::set<std::string> hadOther_;  ///< VTEPs that had a tunnel which its member tunnel shares entries with.
  std::vector<Armed> armed_;
  bool refused_ = false;
  bool heldAll_ = false;
  bool headersAreOld_ = false;  ///< The MLAG address or the source ports have changed.
  bool floodsAreOld_ = false;   ///< What decides over the rows of flood tunnels at their creation has changed.
  std::map<Vane::TunnelType, std::unique_ptr<DirectTunnels>> tunnels_;  ///< Of the types that the test itself writes.
};

}  // namespace AgentTest
