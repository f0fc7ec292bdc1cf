// What a tunnel costs on its whole road, beside the floor: the same rows in flat maps.
//
//   tessel-bench-road                                         all phases on all sizes, as a table
//   tessel-bench-road --tunnels N --phase PHASE [--profile P] one phase alone, for bench/count-instructions

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <functional>
#include <map>
#include <optional>

#include "bench/road/Cost.h"
#include "bench/road/Floor.h"
#include "bench/road/RoadAgent.h"
#include "platform/document/Document.h"

namespace RoadBench {
namespace {

std::map<std::string, Kind> const kKinds{{"unicast", Kind::unicast}, {"member", Kind::member}, {"her", Kind::her},
                                         {"flood", Kind::flood},     {"mixed", Kind::mixed},   {"mcast", Kind::mcast}};
std::string const& nameOf(Kind kind) {
  return std::find_if(kKinds.begin(), kKinds.end(), [&](auto const& named) { return named.second == kind; })->first;
}

constexpr std::uint32_t kUpdates = 100'000;
constexpr std::uint32_t kSteadyRounds = 10'000;

struct Setting {
  std::string profile = "cascaded";
  Asic::Completion completion = Asic::Completion::direct;
};

/// One tunnel after the other is removed and added again.
template <class Subject>
void addAndRemove(Subject& subject, Road const& road) {
  auto const order = road.shuffled();
  for (std::uint32_t n = 0; n < kSteadyRounds; ++n) subject.replace(order[n % order.size()]);
}

struct Phase {
  std::string_view name;
  /// By what the cost is divided.
  std::uint32_t (*units)(Road const&);
};
std::uint32_t eachTunnel(Road const& road) { return road.tunnels; }
std::uint32_t eachUpdate(Road const&) { return kUpdates; }
std::uint32_t eachRound(Road const&) { return kSteadyRounds; }

// In the order in which one subject runs them.
constexpr Phase kPhases[] = {{"create", eachTunnel},
                             {"move", eachTunnel},
                             {"update", eachUpdate},
                             {"steady", eachRound},
                             {"remove", eachTunnel}};

template <class Subject>
std::function<void()> workOf(std::string_view phase, Subject& subject, Road const& road) {
  if (phase == "create") return [&] { subject.create(); };
  if (phase == "move") return [&] { subject.moveLocalVtep(); };
  if (phase == "update") return [&, updates = road.updates(kUpdates)] { subject.update(updates); };
  if (phase == "steady") return [&] { addAndRemove(subject, road); };
  return [&, order = road.shuffled()] { subject.remove(order); };
}

std::string writesText(std::map<std::string, std::uint64_t> const& writes) {
  std::string text;
  for (auto const& [table, count] : writes) text += fmt::format("{}{} {}", text.empty() ? "" : ", ", table, count);
  return text.empty() ? "none" : text;
}

void runOne(Road const& road, Setting const& setting, std::string_view phase) {
  if (phase == "start") {
    std::optional<RoadAgent> agent;
    measured([&] { agent.emplace(road, setting.profile, setting.completion); });
  } else if (phase == "restart") {
    RoadAgent agent(road, setting.profile, setting.completion);
    agent.create();
    measured([&] { agent.restart(); });
  } else if (phase == "flap") {
    RoadAgent agent(road, setting.profile, setting.completion);
    agent.create();
    measured([&] { agent.flap(); });
  } else if (phase == "read") {
    auto const text = road.document(true);
    measured([&] { Stateway::StateDocument::parse(text); });
  } else if (phase.starts_with("floor-")) {
    Floor floor(road, setting.profile == "flat");
    auto const name = phase.substr(6);
    if (name != "create") floor.create();
    measured(workOf(name, floor, road));
  } else {
    RoadAgent agent(road, setting.profile, setting.completion);
    if (phase != "create") agent.create();
    measured(workOf(phase, agent, road));
  }
}

void runAll(Road const& road, Setting const& setting) {
  fmt::print("\n{} {} tunnels over {} adjacencies of {} next hops, {}, {}\n", road.tunnels, nameOf(road.kind),
             kAdjacencies, kNextHops, setting.profile,
             setting.completion == Asic::Completion::direct ? "direct" : "deferred");
  fmt::print("{:<8} {:>10} {:>10} {:>6} {:>10} {:>10} {:>6} {:>8} {:>8}\n", "phase", "ns", "floor", "ratio", "bytes",
             "floor", "ratio", "calls", "floor");
  std::optional<RoadAgent> agent;
  auto const start = costOf([&] { agent.emplace(road, setting.profile, setting.completion); });
  Floor floor(road, setting.profile == "flat");
  auto const ratio = [](double a, double b) {
    return a < 0 || b <= 0 ? std::string("-") : fmt::format("{:.2f}", a / b);
  };
  std::string notes;
  Cost flap;
  for (auto const& [phase, units] : kPhases) {
    auto const ours = costOf(workOf(phase, *agent, road));
    notes += fmt::format("  {:<8} {}\n", phase, writesText(agent->writes()));
    auto const theirs = costOf(workOf(phase, floor, road));
    auto const by = static_cast<double>(units(road));
    auto const ourBytes = static_cast<double>(ours.bytes) / by;
    auto const theirBytes = static_cast<double>(theirs.bytes) / by;
    fmt::print("{:<8} {:>10.0f} {:>10.0f} {:>6} {:>10.1f} {:>10.1f} {:>6} {:>8.3f} {:>8.3f}\n", phase,
               ours.nanoseconds / by, theirs.nanoseconds / by, ratio(ours.nanoseconds, theirs.nanoseconds), ourBytes,
               theirBytes, ratio(ourBytes, theirBytes), static_cast<double>(ours.calls) / by,
               static_cast<double>(theirs.calls) / by);
    if (phase != "create") continue;
    if (!agent->allProgrammed()) fmt::print("NOT all are programmed\n");
    flap = costOf([&] { agent->flap(); });
    notes += fmt::format("  {:<8} {}\n", "flap", writesText(agent->writes()));
  }
  agent->create();
  agent->writes();
  auto const again = costOf([&] { agent->restart(); });
  notes += fmt::format("  {:<8} {}\n", "restart", writesText(agent->writes()));
  auto const text = road.document(true);
  auto const read = costOf([&] { Stateway::StateDocument::parse(text); });
  auto const tunnels = static_cast<double>(road.tunnels);
  fmt::print(
      "flap of an uplink {:.0f} us; start to ready {:.2f} ms, {:.0f} KiB; second start {:.0f} ns a tunnel; document of "
      "{:.1f} MiB read in "
      "{:.0f} ns a tunnel\n",
      flap.nanoseconds / 1e3, start.nanoseconds / 1e6, static_cast<double>(start.bytes) / 1024,
      again.nanoseconds / tunnels, static_cast<double>(text.size()) / (1 << 20), read.nanoseconds / tunnels);
  fmt::print("chip writes:\n{}", notes);
}

int run(int argc, char** argv) {
  CLI::App app{"What a tunnel costs on its whole road"};
  std::vector<std::uint32_t> sizes{1'000, 4'096, 24'576};
  std::vector<std::string> profiles{"cascaded", "flat"};
  std::vector<Kind> kinds{Kind::unicast, Kind::member, Kind::her, Kind::flood, Kind::mixed, Kind::mcast};
  std::string phase;
  bool deferred = false;
  app.add_option("--tunnels", sizes, "How many")->delimiter(',')->capture_default_str();
  app.add_option("--profile", profiles, "Chip profiles")->delimiter(',')->capture_default_str();
  app.add_option("--kind", kinds, "What is wanted at each VTEP")
      ->delimiter(',')
      ->transform(CLI::CheckedTransformer(kKinds));
  app.add_option("--phase", phase,
                 "One phase alone: create, move, update, steady, remove; the same after \"floor-\"; flap, start, "
                 "restart, read");
  app.add_flag("--deferred", deferred, "The chip answers later");
  CLI11_PARSE(app, argc, argv);
  for (auto const& profile : profiles) {
    Setting const setting{profile, deferred ? Asic::Completion::deferred : Asic::Completion::direct};
    for (auto const kind : kinds) {
      for (auto const tunnels : sizes) {
        Road const road(tunnels, kind);
        if (phase.empty()) {
          runAll(road, setting);
        } else {
          runOne(road, setting, phase);
        }
      }
      if (!phase.empty()) break;
    }
    if (!phase.empty()) break;
  }
  return 0;
}

}  // namespace
}  // namespace RoadBench

int main(int argc, char** argv) { return RoadBench::run(argc, argv); }
