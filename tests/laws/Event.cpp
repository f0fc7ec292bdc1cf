#include "tests/laws/Event.h"

#include <fmt/args.h>
#include <fmt/format.h>

#include "tests/support/AgentText.h"

namespace AgentTest {

namespace {

constexpr std::string_view words[Event::kinds] = {
    "{tunnel} over adjacency {n}",
    "{tunnel} has generation {n}",
    "{tunnel} in VLANs {n}",
    "{tunnel} is removed",
    "adjacency {n}:{hops}",
    "adjacency {n} is removed",
    "local VTEP {n}",
    "local VTEP of IPv6 {n}",
    "MLAG addresses {n} and {m}",
    "UDP source ports from {n} on",
    "UDP port {n}",
    "learning {n}",
    "EVPN {n}",
    "VLAN {n} has ports {m}",
    "DSCP propagation {n}",
    "TOS {n}",
    "VLAN {n} has VNI {m}",
    "VNI {n} from elsewhere has VLAN {m}",
    "VFIs of their own {n}",
    "VTEP group {n} has members {m}",
    "the route of multicast group {n} has VLAN {m}",
    "ECN {n}",
    "VXLAN interface {n}",
    "former generations of {tunnel} get adjacency {n}",
    "former generations of {tunnel} are removed",
    "at notification {m} of its status, {tunnel} {reaction}",
    "completions of {held} are held back",
    "completions are held back",
    "{n} completions",
    "all completions",
    "{refusing} refuses with state {m}",
    "write {n} from here on is refused with state {m}",
    "nothing is refused any more",
    "restart",
};
constexpr std::string_view reactionWords[] = {"is removed", "is removed and returns", "has a new generation",
                                              "gets other next hops"};

template <class Names>
std::string_view at(Names const& names, std::uint32_t n) {
  return n < std::size(names) ? std::string_view(names[n]) : "";
}

}  // namespace

std::string text(Event const& event) {
  std::string hops;
  for (auto const& hop : event.hops) hops += fmt::format(" {}{}", hop.uplink, hop.resolved ? "" : "?");
  auto const tunnel = fmt::format("{} {}", nameOf(event.type), addressOf(event));
  auto const line =
      fmt::format(fmt::runtime(words[event.kind]), fmt::arg("tunnel", tunnel), fmt::arg("n", event.n),
                  fmt::arg("m", event.m), fmt::arg("hops", hops), fmt::arg("reaction", at(reactionWords, event.n)),
                  fmt::arg("held", at(kHeldTables, event.n)), fmt::arg("refusing", at(kRefusingTables, event.n)));
  return event.more ? line + ", and at once" : line;
}

}  // namespace AgentTest
