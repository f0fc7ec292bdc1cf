#include "host/agent/DocumentCheck.h"

#include <map>

#include "host/Unicast.h"
#include "host/agent/World.h"
#include "platform/bridging/VlanId.h"
#include "platform/kiln/Json.h"
#include "platform/tessel/central/PortConfigDir.h"
#include "platform/vane/NextHopEntry.h"

namespace Host {

namespace {

using Kiln::JsonIn;
using Meshal::IpGenAddr;

/// The switch's own addresses, each with the place where it is configured.
using OwnAddresses = std::map<IpGenAddr, std::string>;

template <class T>
T valueOf(JsonIn const& in) {
  T value{};
  Kiln::readJson(value, in);
  return value;
}

template <class Visit>
void eachMemberOf(JsonIn const& in, std::string_view name, Visit visit) {
  if (auto const members = in.find(name)) members->eachMember(visit);
}

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

void checkTunnel(std::string_view vtepText, JsonIn const& tunnel, OwnAddresses const& own) {
  IpGenAddr vtep;
  Kiln::readText(vtepText, vtep);
  if (auto const why = whyNotUnicast(vtep); !why.empty()) {
    tunnel.fail(std::string("expected a VTEP with a unicast address, this one is ").append(why));
  }
  if (auto const found = own.find(vtep); found != own.end()) {
    tunnel.fail("expected a remote VTEP, not this switch's own address (" + found->second + ")");
  }
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

void checkNextHop(JsonIn const& in) {
  auto const nextHop = valueOf<Vane::NextHopEntry>(in);
  if (nextHop.type() != Vane::nextHopResolved) return;
  auto const why = whyNotUnicast(nextHop.ethAddr());
  if (why.empty()) return;
  in.find("ethAddr").value_or(in).fail(
      std::string("expected a resolved next hop with a unicast MAC, not with a ").append(why).append(" one"));
}

void checkTunnels(JsonIn const& config, OwnAddresses const& own) {
  eachMemberOf(config, "adjacency", [](std::string_view adjId, JsonIn const& adjacency) {
    checkAdjId(adjacency, Kiln::fromText<std::uint32_t>(adjId).value_or(0));
    if (auto const nextHops = adjacency.find("nextHops")) nextHops->eachElement(checkNextHop);
  });
  eachMemberOf(config, "tunnel", [&](std::string_view vtep, JsonIn const& tunnel) { checkTunnel(vtep, tunnel, own); });
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

}  // namespace

void checkSemantics(Stateway::StateDocument const& document) {
  auto const stateway = document.root().find("stateway");
  if (!stateway) return;
  auto const vti = stateway->find(kVtiStatusPath);
  auto const own = vti ? ownAddresses(*vti) : OwnAddresses();
  for (auto const& [type, name] : kTunnelTypes) {
    if (auto const config = stateway->find(wantedTunnelsPath(type))) checkTunnels(*config, own);
  }
  if (auto const ports = stateway->find(TesselCentral::PortConfigDir::mountPath)) checkPorts(*ports);
  if (auto const table = stateway->find("vane/l3IntfTable")) checkL3Interfaces(*table);
}

}  // namespace Host
