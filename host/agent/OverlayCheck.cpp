#include "host/agent/OverlayCheck.h"

#include <map>
#include <set>

#include "host/Unicast.h"
#include "host/agent/DocumentValues.h"
#include "host/agent/World.h"
#include "platform/bridging/VlanId.h"
#include "platform/tessel/mroute/IpGenRouteKey.h"
#include "platform/vane/VaneHelperVni.h"

namespace Host {

namespace {

using Kiln::JsonIn;
using Meshal::IpGenAddr;
using Routing::Multicast::Fib::IpGenRouteKey;
using Stateway::StateDocument;
using Vane::VXLAN::VtiVlanKey;
using Vane::VXLAN::VtiVniKey;
using VaneHelper::VaneHelperVniConfigEntry;

bool isVlan(std::uint64_t number) { return number >= Bridging::VlanId::min && number <= Bridging::VlanId::max; }

/// Throws for a member of `in`, or for `in` where it is left out.
[[noreturn]] void failAt(JsonIn const& in, std::string_view member, std::string const& problem) {
  in.find(member).value_or(in).fail(problem);
}

void checkAction(JsonIn const& in, VaneHelperVniConfigEntry const& entry) {
  if (entry.action() == VaneHelperVniConfigEntry::add || entry.action() == VaneHelperVniConfigEntry::remove) return;
  failAt(in, "action", "expected 0, to add the mapping, or 1, to remove it");
}

/// The members with their keys, so that a second one is refused.
template <class Key>
class Distinct {
 public:
  explicit Distinct(std::string what) : what_(std::move(what)) {}
  void add(JsonIn const& in, Key const& key, std::string_view owner) {
    auto const [first, isNew] = owners_.emplace(key, owner);
    if (!isNew) in.fail("expected a " + what_ + " of its own: " + std::string(first->second) + " has it, too");
  }

 private:
  std::string what_;
  std::map<Key, std::string_view> owners_;
};

// The rows of the chip are found by the VLAN or the VNI alone, whatever the interface.
void checkLocalMappings(JsonIn const& config) {
  Distinct<std::uint16_t> vlans("VLAN");
  Distinct<Vxlan::VniExtOrNone> vnis("VNI");
  eachMemberOf(config, "vlanVniMap", [&](std::string_view text, JsonIn const& in) {
    auto const key = keyOf<VtiVlanKey>(text);
    auto const entry = valueOf<VaneHelperVniConfigEntry>(in);
    if (!isVlan(key.vlanId())) in.fail("expected the mapping of a VLAN from 1 to 4094");
    if (entry.vlanId() != key.vlanId()) failAt(in, "vlanId", "expected the key's VLAN " + Kiln::toText(key.vlanId()));
    checkAction(in, entry);
    vlans.add(in, key.vlanId(), text);
    if (!entry.vni().isNone()) {
      vnis.add(in.member("vni"), entry.vni(), text);
    } else if (entry.action() == VaneHelperVniConfigEntry::add) {
      failAt(in, "vni", "expected a VNI from 1 to 16777215");
    }
  });
}

void checkRemoteMappings(JsonIn const& config) {
  static Meshal::IntfId const vti("Vxlan1");
  eachMemberOf(config, "remoteVniConfig", [](std::string_view text, JsonIn const& in) {
    auto const key = keyOf<VtiVniKey>(text);
    auto const entry = valueOf<VaneHelperVniConfigEntry>(in);
    if (key.intfId() != vti) in.fail("expected a remote mapping of the interface Vxlan1");
    if (!isVlan(entry.vlanId())) failAt(in, "vlanId", "expected a VLAN from 1 to 4094");
    if (entry.vni() != key.vni()) failAt(in, "vni", "expected the key's VNI " + Kiln::toText(key.vni()));
    checkAction(in, entry);
  });
}

// Else a row of the chip would have a VFI that leads back to no VLAN.
void checkVfis(StateDocument const& document) {
  auto const dir = attributesAt(document, "stateway", kVlanVfiPath);
  if (!dir) return;
  auto const capabilities = attributesAt(document, "stateway", kVfiCapabilitiesPath);
  auto const vlan4095Vfi = capabilities ? capabilities->find("vlan4095Vfi") : std::nullopt;
  auto const ofVlan4095 = vlan4095Vfi ? valueOf<std::uint16_t>(*vlan4095Vfi) : 0;
  auto const checkVfi = [&](JsonIn const& in, std::uint16_t vfi) {
    if (!isVlan(vfi) && (vfi == 0 || vfi != ofVlan4095)) in.fail("expected a VFI from 1 to 4094, or vlan4095Vfi");
  };
  eachMemberOf(*dir, "vlanToVfi", [&](std::string_view text, JsonIn const& in) {
    if (!isVlan(keyOf<std::uint16_t>(text))) in.fail("expected the VFI of a VLAN from 1 to 4094");
    checkVfi(in, valueOf<std::uint16_t>(in));
  });
  eachMemberOf(*dir, "vfiToVlan", [&](std::string_view text, JsonIn const& in) {
    checkVfi(in, keyOf<std::uint16_t>(text));
    if (!isVlan(valueOf<std::uint16_t>(in))) in.fail("expected a VLAN from 1 to 4094");
  });
}

std::set<IpGenAddr> memberTunnels(StateDocument const& document) {
  std::set<IpGenAddr> vteps;
  auto const path = wantedTunnelsPath(Vane::vxlanMemberTunnel_);
  if (auto const config = attributesAt(document, "stateway", path)) {
    eachMemberOf(*config, "tunnel",
                 [&](std::string_view text, JsonIn const&) { vteps.insert(keyOf<IpGenAddr>(text)); });
  }
  return vteps;
}

void checkMember(std::string_view text, JsonIn const& in, std::set<IpGenAddr> const& tunnels) {
  auto const vtep = keyOf<IpGenAddr>(text);
  if (auto const why = whyNotUnicast(vtep); !why.empty()) {
    in.fail(std::string("expected a member with a unicast address, this one is ").append(why));
  }
  if (tunnels.contains(vtep)) return;
  in.fail("expected a member with a tunnel in stateway " + wantedTunnelsPath(Vane::vxlanMemberTunnel_));
}

void checkGroups(StateDocument const& document) {
  auto const dir = attributesAt(document, "stateway", kVtepGroupConfigPath);
  if (!dir) return;
  auto const tunnels = memberTunnels(document);
  eachMemberOf(*dir, "vaneVtepGroupConfig", [&](std::string_view, JsonIn const& group) {
    auto const members = group.find("vtepList");
    if (!members || members->size() == 0) group.fail("expected a group with members in its vtepList");
    members->eachMember([&](std::string_view text, JsonIn const& in) { checkMember(text, in, tunnels); });
  });
}

void checkTrust(JsonIn const& settings) {
  // 7 bits of a header's row.
  if (auto const base = settings.find("tosBasePtr")) base->unsignedNumber(0, 127);
}

void checkRoute(std::string_view text, JsonIn const& in) {
  auto const route = keyOf<IpGenRouteKey>(text);
  if (!route.source().isIpv4() || !route.group().isIpv4()) in.fail("expected a multicast route with IPv4 addresses");
  if (auto const why = whyNotUnicast(route.source()); !why.empty()) {
    in.fail(std::string("expected a route from a unicast address, this source is ").append(why));
  }
  if (auto const why = whyNotGroup(route.group()); !why.empty()) {
    in.fail(std::string("expected a route to a multicast group that routers forward, this one is ").append(why));
  }
}

}  // namespace

void checkOverlay(StateDocument const& document) {
  if (auto const config = attributesAt(document, "stateway", kVniConfigPath)) {
    checkLocalMappings(*config);
    checkRemoteMappings(*config);
  }
  checkVfis(document);
  checkGroups(document);
  if (auto const settings = attributesAt(document, "stateway", kTrustPath)) checkTrust(*settings);
  if (auto const routes = attributesAt(document, "shmem", kMroutesPath)) {
    if (auto const record = routes->find("corruptionDetected")) {
      record->fail("written by the agent itself, not by documents");
    }
    eachMemberOf(*routes, "mroute", checkRoute);
  }
}

}  // namespace Host
