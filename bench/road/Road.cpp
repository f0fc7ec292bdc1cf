#include "bench/road/Road.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>
#include <random>

#include "platform/vane/McastTunnel.h"

namespace RoadBench {

namespace {

std::string commaSeparated(std::uint32_t count, auto&& member) {
  std::string text;
  for (std::uint32_t n = 0; n < count; ++n) text += (n == 0 ? "" : ",") + member(n);
  return text;
}

std::string ethAddr(std::uint32_t n) { return fmt::format("02:00:00:00:{:02x}:{:02x}", n >> 8, n & 255); }

std::string nextHopText(std::uint32_t n) {
  return fmt::format(R"({{"addr":"10.1.{}.{}","ethAddr":"{}","l2Intf":"Ethernet{}","l3Intf":"Vlan{}"}})", n >> 8,
                     n & 255, ethAddr(n), n % kPorts, 100 + n % kPorts);
}

}  // namespace

Road::Road(std::uint32_t itsTunnels, Kind itsKind) : tunnels(itsTunnels), kind(itsKind) {}

Meshal::IpGenAddr Road::vtep(std::uint32_t tunnel) const {
  return Meshal::IpAddr((kind == Kind::mcast ? 0xef000000 : 0x0a800000) + tunnel);
}

std::vector<Vane::TunnelType> Road::types() const {
  switch (kind) {
    case Kind::member:
      return {Vane::vxlanMemberTunnel_};
    case Kind::her:
    case Kind::flood:
      return {Vane::vxlanHerTunnel_};
    case Kind::mixed:
      return {Vane::vxlanTunnel_, Vane::vxlanHerTunnel_};
    case Kind::mcast:
      return {Vane::vxlanMcastTunnel_};
    default:
      return {Vane::vxlanTunnel_};
  }
}

bool Road::has(Vane::TunnelType type) const {
  auto const all = types();
  return std::find(all.begin(), all.end(), type) != all.end();
}

Vane::TunnelKey Road::key(std::uint32_t tunnel) const {
  static Meshal::IntfId const vxlan1("Vxlan1");
  if (kind == Kind::mcast) return Vane::floodTunnelKey(vtep(tunnel));
  return {{}, vtep(tunnel), 0, 1, vxlan1};
}

Vane::NextHopEntrySet Road::nextHops(std::uint32_t adjacency, Vane::TunnelType type) {
  Vane::NextHopEntrySet set;
  for (std::uint32_t n = adjacency * kNextHops; n < (adjacency + 1) * kNextHops; ++n) {
    Vane::NextHopEntry entry;
    if (type == Vane::vxlanMcastTunnel_) entry.typeIs(Vane::nextHopMcastTunnel());
    entry.addrIs(Meshal::IpAddr(0x0a010000 + n));
    entry.ethAddrIs(Meshal::EthAddr(0x020000000000 + n));
    entry.l2IntfIs(Meshal::IntfId(fmt::format("Ethernet{}", n % kPorts)));
    entry.l3IntfIs(Meshal::IntfId(fmt::format("Vlan{}", 100 + n % kPorts)));
    set.insert(entry);
  }
  return set;
}

std::string Road::document(bool withTunnels) const {
  auto const ports = commaSeparated(
      kPorts, [](auto n) { return fmt::format(R"("Ethernet{}":{{"kind":"port","number":{}}})", n, n + 1); });
  auto const intfs = commaSeparated(kPorts, [](auto n) { return fmt::format(R"("Vlan{}":{})", 100 + n, 100 + n); });
  auto text = fmt::format(R"({{"stateway":{{"hardware/tessel/port/config":{{"port":{{{}}}}},)"
                          R"("vane/l3IntfTable":{{"l3Intf":{{{}}}}},)"
                          R"("interface/status/eth/vxlan":{{"vtiStatus":{{"Vxlan1":)"
                          R"({{"srcAddr":"10.0.0.1","udpPort":{}}}}}}})",
                          ports, intfs, kUdpPort);
  if (withTunnels) {
    auto const adjacencies = commaSeparated(kAdjacencies, [](auto id) {
      return fmt::format(R"("{}":{{"nextHops":[{}]}})", id + 1,
                         commaSeparated(kNextHops, [&](auto n) { return nextHopText(id * kNextHops + n); }));
    });
    auto const wanted = commaSeparated(tunnels, [&](auto n) {
      return fmt::format(R"("{}":{{"adjId":{}}})", Kiln::toText(vtep(n)), adjacencyOf(n) + 1);
    });
    text += fmt::format(R"(,"hardware/tessel/tunnel/configDir/vxlanTunnel":{{"adjacency":{{{}}},"tunnel":{{{}}}}})",
                        adjacencies, wanted);
  }
  return text + "}}";
}

std::vector<Road::Update> Road::updates(std::uint32_t count) const {
  std::mt19937 random(7);
  std::vector<std::uint32_t> adjacency(tunnels);
  for (std::uint32_t n = 0; n < tunnels; ++n) adjacency[n] = adjacencyOf(n);
  std::vector<Update> all;
  all.reserve(count);
  for (std::uint32_t n = 0; n < count; ++n) {
    auto const tunnel = static_cast<std::uint32_t>(random() % tunnels);
    if (n % 10 == 0) adjacency[tunnel] = (adjacency[tunnel] + 1) % kAdjacencies;
    all.push_back({tunnel, adjacency[tunnel]});
  }
  return all;
}

std::vector<std::uint32_t> Road::shuffled() const {
  std::vector<std::uint32_t> order(tunnels);
  std::iota(order.begin(), order.end(), 0U);
  std::shuffle(order.begin(), order.end(), std::mt19937(11));
  return order;
}

}  // namespace RoadBench
