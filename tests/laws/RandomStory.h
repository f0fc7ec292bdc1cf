#pragma once

#include <random>
#include <string>
#include <vector>

#include "tests/support/AgentWorld.h"

namespace AgentTest {

/// The seeds that the laws go by: one from the environment (TESSEL_SEED), else the first `count` numbers.
std::vector<std::uint64_t> seeds(unsigned count);

/// Happens to an agent at random: tunnels of both types come, move and go, adjacencies change in place, the local VTEP
/// and other settings change, interfaces and whole features go and come back, answers of the chip are late.
///
/// The agent's wish follows. `close` ends what the feature by its own rules leaves behind for the next event to take
/// up: see the exceptions in the law's test. One seed is one story.
class RandomStory {
 public:
  struct Setting {
    unsigned vteps = 5;        ///< Of IPv4, beside one of IPv6 where `ipv6`.
    unsigned adjacencies = 4;  ///< Ids from 1 on.
    unsigned uplinks = 5;
    bool ipv6 = true;
    bool bothTypes = true;
    bool late = true;  ///< Tables are held now and then.
    bool restarts = true;
  };

  RandomStory(AgentWorld& agent, std::uint64_t seed, Setting const& setting);
  RandomStory(AgentWorld& agent, std::uint64_t seed) : RandomStory(agent, seed, Setting()) {}
  void run(unsigned steps);
  /// Everything is there that tunnels need, all answers are in, and what waited for an event has had one.
  void close();
  /// What happened, one event a line, the last 60.
  std::string told() const;

 private:
  std::uint32_t below(std::uint32_t n) { return static_cast<std::uint32_t>(random_() % n); }
  bool oneIn(std::uint32_t n) { return below(n) == 0; }

  void step();
  void change(Wish& wish);
  void changeTunnel(Wish& wish);
  void changeAdjacency(Wish& wish);
  void changeLocalVtep(Wish& wish);
  void changeSetting(Wish& wish);
  void changeChip();
  Hops someHops();
  std::string someVtep();
  void tell(std::string text) { told_.push_back(std::move(text)); }

  AgentWorld& agent_;
  Setting setting_;
  std::mt19937_64 random_;
  std::uint64_t lastGenId_ = 1000;
  std::set<std::string> hadUnicast_;  ///< VTEPs whose overlay row a unicast tunnel wrote.
  std::vector<std::string> told_;
};

}  // namespace AgentTest
