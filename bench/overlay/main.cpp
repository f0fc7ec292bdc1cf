// What the mappings of VNIs cost beside the floor, the same rows, statuses and VLANs of the packet driver in flat maps,
// and what a burst of changes costs VTEP groups.
//
//   tessel-bench-overlay                              all phases, as a table
//   tessel-bench-overlay --tunnels N --phase PHASE    one phase alone with N mappings, for bench/count-instructions

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <functional>

#include "bench/overlay/Groups.h"
#include "bench/overlay/Mappings.h"
#include "bench/road/Cost.h"

namespace OverlayBench {
namespace {

using RoadBench::Cost;
using RoadBench::costOf;
using RoadBench::measured;

constexpr std::uint32_t kLocal = 4'094;
constexpr std::uint32_t kRemote = 100'000;

void print(std::string_view what, std::uint32_t count, Cost const& ours, Cost const& floor) {
  fmt::print("{:<8} {:>8} {:>8.0f} {:>8.0f} {:>8.1f} {:>8.1f}\n", what, count, ours.nanoseconds / count,
             floor.nanoseconds / count, static_cast<double>(ours.bytes) / count,
             static_cast<double>(floor.bytes) / count);
}

void runMappings() {
  fmt::print("\nVNI mappings, of each\n{:<8} {:>8} {:>8} {:>8} {:>8} {:>8}\n", "phase", "count", "ns", "floor", "bytes",
             "floor");
  Mappings mappings;
  Floor floor;
  auto const both = [&](std::string_view what, std::uint32_t count, auto const& work) {
    auto const ours = costOf([&] { work(mappings); });
    print(what, count, ours, costOf([&] { work(floor); }));
  };
  both("local", kLocal, [](auto& subject) { subject.addLocal(kLocal); });
  for (auto const count : {1'000U, 10'000U, kRemote}) {
    both("remote", count, [&](auto& subject) { subject.addRemote(count); });
    if (count != kRemote) both("remove", count, [&](auto& subject) { subject.removeRemote(count); });
  }
  auto const before = mappings.writes();
  auto const second = costOf([&] { mappings.secondChip(); });
  fmt::print("a second logical chip with {} mappings: {:.1f} ms, {} chip writes\n", kLocal + kRemote,
             second.nanoseconds / 1e6, mappings.writes() - before);
  both("remove", kRemote, [](auto& subject) { subject.removeRemote(kRemote); });
  both("unmap", kLocal, [](auto& subject) { subject.removeLocal(kLocal); });
}

void runGroups() {
  constexpr std::uint32_t changes = 10'000;
  Groups groups;
  auto const print = [&](std::string_view what, std::function<void()> const& work) {
    auto const reviewed = groups.reviews();
    auto const before = groups.writes();
    auto const cost = costOf(work);
    fmt::print("{:<44} {:>10.0f} us {:>8} reviews  chip writes: {}\n", what, cost.nanoseconds / 1e3,
               groups.reviews() - reviewed, groups.writesSince(before));
  };
  fmt::print("\n{} VTEP groups of {} members\n", Groups::kGroups, Groups::kMembers);
  print("creation", [&] { groups.create(); });
  print("one member moves", [&] { groups.move(0, 1); });
  print(fmt::format("a burst of {} moves of one member", changes), [&] { groups.move(0, changes); });
  print(fmt::format("a burst of {} versions", changes), [&] { groups.newVersions(changes); });
  print("removal", [&] { groups.remove(); });
}

/// `phase`: local, remote, unmap, remove, the same behind "floor-", or second.
void runOne(std::string phase, std::uint32_t count) {
  auto const play = [&](auto& subject) {
    bool const isLocal = phase == "local" || phase == "unmap";
    auto const add = [&] { isLocal ? subject.addLocal(count) : subject.addRemote(count); };
    if (phase == "local" || phase == "remote") return measured(add);
    add();
    measured([&] { isLocal ? subject.removeLocal(count) : subject.removeRemote(count); });
  };
  if (phase.starts_with("floor-")) {
    phase.erase(0, 6);
    Floor floor;
    return play(floor);
  }
  Mappings mappings;
  if (phase != "second") return play(mappings);
  mappings.addRemote(count);
  measured([&] { mappings.secondChip(); });
}

int run(int argc, char** argv) {
  CLI::App app{"What mappings of VNIs and VTEP groups cost"};
  std::uint32_t count = kLocal;
  std::string phase;
  app.add_option("--tunnels", count, "How many mappings")->capture_default_str();
  app.add_option("--phase", phase, "One phase alone: local, remote, unmap, remove; the same after \"floor-\"; second");
  CLI11_PARSE(app, argc, argv);
  if (!phase.empty()) {
    runOne(phase, count);
  } else {
    runMappings();
    runGroups();
  }
  return 0;
}

}  // namespace
}  // namespace OverlayBench

int main(int argc, char** argv) { return OverlayBench::run(argc, argv); }
