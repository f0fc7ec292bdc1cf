#include "host/agent/DocumentCheck.h"

#include <map>
#include <set>

#include "host/Unicast.h"
#include "host/agent/DocumentValues.h"
#include "host/agent/OverlayCheck.h"
#include "host/agent/World.h"
#include "platform/bridging/VlanId.h"
#include "platform/tessel/central/PortConfigDir.h"
#include "platform/vane/NextHopEntry.h"

namespace Host {

namespace {

using Kiln::JsonIn;
using Meshal::IpGenAddr;

/// The switch's own addresses, each with the place where it is configured.
using OwnAddresses = std::map<IpGenAddr, std::string>;

OwnAddresses ownAddresses(JsonIn const& vtiStatusDir) {
  OwnAddresses own;
  eachMemberOf(vtiStatusDir, "vtiStatus", [&](std::string_view, JsonIn const& vti) {
    for (auto const* name :
         {"srcAddr", "srcAddrV6", "mlagVtepAddr", "mlagVtepAddr6", "varpVtepAddr", "varpVtepAddr6"}) {
      auto const at = vti.find(name);
      if (!at) continue;
      auto const address = valueOf<IpGenAddr>(*at);
      if (address.isUnspecified()) continue;
      if (auto const why = whyNotUnicast(address); !why.empty()) {
        at->fail(std::string("expected a unicast address, not a ").append(why).append(" one"));
      }
      own.emplace(address, at->path());
    }
  });
  return own;
}

void checkAdjId(JsonIn const& in, std::uint64_t adjId) {
  if (adjId > maxAdjId) in.fail("expected an adjacency id from 0 to " + Kiln::toText(maxAdjId));
}

/// `in` is what a document says about the VTEP.
void checkVtep(std::string_view text, JsonIn const& in, OwnAddresses const& own) {
  auto const vtep = keyOf<IpGenAddr>(text);
  if (auto const why = whyNotUnicast(vtep); !why.empty()) {
    in.fail(std::string("expected a VTEP with a unicast address, this one is ").append(why));
  }
  if (auto const found = own.find(vtep); found != own.end()) {
    in.fail("expected a remote VTEP, not this switch's own address (" + found->second + ")");
  }
}

void checkTunnel(std::string_view vtep, JsonIn const& tunnel, OwnAddresses const& own) {
  checkVtep(vtep, tunnel, own);
  if (auto const adjId = tunnel.find("adjId"); adjId && adjId->value().IsUint64()) {
    checkAdjId(*adjId, adjId->value().GetUint64());
  }
  if (auto const src = tunnel.find("src")) {
    auto const why = whyNotUnicast(valueOf<IpGenAddr>(*src));
    if (!why.empty() && why != "unspecified") {
      src->fail(std::string("expected a unicast address, not a ").append(why).append(" one"));
    }
  }
}

/// "Vlan4095" would be the interface of a VLAN that no switch has.
void checkVlanIntf(JsonIn const& in, std::string_view member, Meshal::IntfId intf) {
  auto const name = intf.name();
  if (Meshal::VlanIntfId::isVlanIntfId(intf) || !name.starts_with("Vlan")) return;
  auto const number = Kiln::fromText<std::uint64_t>(std::string_view(name).substr(4));
  if (number && (*number < Bridging::VlanId::min || *number > Bridging::VlanId::max)) {
    in.member(member).fail("expected the interface of a VLAN from 1 to 4094");
  }
}

/// What the packets of a tunnel are sent to.
enum class Destination { host, group };

void checkNextHop(JsonIn const& in, Destination destination) {
  auto const nextHop = valueOf<Vane::NextHopEntry>(in);
  checkVlanIntf(in, "l2Intf", nextHop.l2Intf());
  checkVlanIntf(in, "l3Intf", nextHop.l3Intf());
  bool const group = destination == Destination::group;
  if (nextHop.type() != Vane::nextHopResolved && !(group && nextHop.type() == Vane::nextHopMcastTunnel())) return;
  auto const why = whyNotUnicast(nextHop.ethAddr());
  if (why.empty() || (group && why == "multicast")) return;
  in.find("ethAddr").value_or(in).fail(
      std::string("expected a resolved next hop with a unicast MAC, not with a ").append(why).append(" one"));
}

void checkNextHops(JsonIn const& owner, Destination destination) {
  if (auto const nextHops = owner.find("nextHops")) {
    nextHops->eachElement([&](JsonIn const& in) { checkNextHop(in, destination); });
  }
}

void checkTunnels(JsonIn const& config, OwnAddresses const& own) {
  eachMemberOf(config, "adjacency", [](std::string_view adjId, JsonIn const& adjacency) {
    checkAdjId(adjacency, Kiln::fromText<std::uint32_t>(adjId).value_or(0));
    checkNextHops(adjacency, Destination::host);
  });
  eachMemberOf(config, "tunnel", [&](std::string_view vtep, JsonIn const& tunnel) { checkTunnel(vtep, tunnel, own); });
}

void checkHerTunnels(JsonIn const& stateway) {
  auto const config = stateway.find(wantedTunnelsPath(Vane::vxlanHerTunnel_));
  auto const tunnel = config ? config->find("tunnel") : std::nullopt;
  if (!tunnel) return;
  tunnel->fail("expected no flood tunnels here, they follow from the flood lists: shmem " +
               std::string(kFloodListsPath) + ", and their adjacencies: stateway " + std::string(kVtepStatusPath));
}

void checkFloodRoutes(JsonIn const& status) {
  eachMemberOf(status, "vtepAdjacency", [](std::string_view, JsonIn const& adjId) {
    if (adjId.value().IsUint64()) checkAdjId(adjId, adjId.value().GetUint64());
  });
}

void checkGroup(std::string_view text, JsonIn const& tunnel) {
  if (auto const why = whyNotGroup(keyOf<IpGenAddr>(text)); !why.empty()) {
    tunnel.fail(std::string("expected a tunnel to a multicast group that routers forward, this one is ").append(why));
  }
}

void checkMcastTunnels(McastKind const& kind, JsonIn const& config, OwnAddresses const& own) {
  bool const toGroups = kind.type == Vane::vxlanMcastTunnel_;
  eachMemberOf(config, "tunnel", [&](std::string_view addr, JsonIn const& tunnel) {
    toGroups ? checkGroup(addr, tunnel) : checkVtep(addr, tunnel, own);
    checkNextHops(tunnel, toGroups ? Destination::group : Destination::host);
  });
}

/// Calls `visit(text, in)` for each VTEP of each flood list.
template <class Visit>
void eachFloodVtep(Stateway::StateDocument const& document, Visit visit) {
  auto const output = attributesAt(document, "shmem", kFloodListsPath);
  if (!output) return;
  eachMemberOf(*output, "floodSet", [&](std::string_view, JsonIn const& list) { eachMemberOf(list, "vtep", visit); });
}

/// The tunnels to multicast groups.
std::optional<JsonIn> groupsOf(Stateway::StateDocument const& document) {
  auto const config = attributesAt(document, "stateway", kMcastKinds.front().configPath());
  return config ? config->find("tunnel") : std::nullopt;
}

void checkFloodLists(Stateway::StateDocument const& document, OwnAddresses const& own) {
  auto const groups = groupsOf(document);
  std::size_t used = groups ? groups->size() : 0;
  auto const limit = [&](JsonIn const& in) {
    if (used <= maxFloodTunnels) return;
    in.fail("expected at most " + Kiln::toText(maxFloodTunnels) + " flood VTEPs and multicast tunnels together");
  };
  if (groups) limit(*groups);
  std::set<IpGenAddr> vteps;
  eachFloodVtep(document, [&](std::string_view text, JsonIn const& in) {
    checkVtep(text, in, own);
    if (vteps.insert(keyOf<IpGenAddr>(text)).second) ++used;
    limit(in);
  });
}

void checkPorts(JsonIn const& config) {
  std::map<std::pair<TesselCentral::PortKind, std::uint16_t>, std::string_view> names;
  eachMemberOf(config, "port", [&](std::string_view name, JsonIn const& in) {
    auto const port = valueOf<TesselCentral::PortInfo>(in);
    auto const [first, isNew] = names.emplace(std::pair(port.kind(), port.number()), name);
    if (!isNew) in.fail("expected a number of its own: " + std::string(first->second) + " has it, too");
  });
}

void checkL3Interfaces(JsonIn const& table) {
  eachMemberOf(table, "l3Intf", [](std::string_view, JsonIn const& vlan) {
    if (valueOf<Bridging::VlanIdOrNone>(vlan).value() == 0) vlan.fail("expected a VLAN from 1 to 4094");
  });
}

void checkStateway(JsonIn const& stateway, OwnAddresses const& own) {
  for (auto const& [type, name] : kTunnelTypes) {
    if (auto const config = stateway.find(wantedTunnelsPath(type))) checkTunnels(*config, own);
  }
  if (auto const ports = stateway.find(TesselCentral::PortConfigDir::mountPath)) checkPorts(*ports);
  if (auto const table = stateway.find("vane/l3IntfTable")) checkL3Interfaces(*table);
  checkHerTunnels(stateway);
  if (auto const status = stateway.find(kVtepStatusPath)) checkFloodRoutes(*status);
  for (auto const& kind : kMcastKinds) {
    if (auto const config = stateway.find(kind.configPath())) checkMcastTunnels(kind, *config, own);
  }
}

}  // namespace

FloodTunnels floodTunnels(Stateway::StateDocument const& document) {
  std::set<IpGenAddr> vteps;
  eachFloodVtep(document, [&](std::string_view text, JsonIn const&) { vteps.insert(keyOf<IpGenAddr>(text)); });
  auto const groups = groupsOf(document);
  return {vteps.size(), groups ? groups->size() : 0};
}

void checkSemantics(Stateway::StateDocument const& document) {
  auto const stateway = document.root().find("stateway");
  auto const vti = stateway ? stateway->find(kVtiStatusPath) : std::nullopt;
  auto const own = vti ? ownAddresses(*vti) : OwnAddresses();
  if (stateway) checkStateway(*stateway, own);
  checkFloodLists(document, own);
  checkOverlay(document);
}

}  // namespace Host
