#include "host/import/StateDocument.h"

#include <map>
#include <set>
#include <vector>

#include "host/agent/DocumentCheck.h"
#include "host/agent/World.h"
#include "host/import/AdjacencyIds.h"
#include "host/import/BridgeVlans.h"
#include "host/import/Fdb.h"
#include "host/import/L3Numbers.h"
#include "host/import/Links.h"
#include "host/import/Neighbours.h"
#include "host/import/NextHopObjects.h"
#include "host/import/OuterHeader.h"
#include "host/import/PortReason.h"
#include "host/import/Routers.h"
#include "host/import/Rules.h"
#include "host/import/Underlay.h"
#include "host/notes/Notes.h"
#include "platform/vane/VaneHelperVni.h"

namespace Host::Import {

namespace {

using rapidjson::Value;
using Allocator = rapidjson::Document::AllocatorType;

constexpr std::uint32_t highestPort = 0xffff;
/// Of a next hop; labels have 20 bits, so that those above are none either.
constexpr std::uint32_t noLabel = 0x100000;

void put(Value& into, std::string const& key, Value value, Allocator& allocator) {
  into.AddMember(Value(key.c_str(), allocator), value, allocator);
}

void put(Value& into, std::string const& key, std::string const& text, Allocator& allocator) {
  put(into, key, Value(text.c_str(), allocator), allocator);
}

Value object() { return Value(rapidjson::kObjectType); }

/// Converts the captures to the members of the document, one function for each path.
class Writer {
 public:
  Writer(Captures const& captures, Allocator& allocator)
      : allocator_(allocator),
        captures_(captures),
        warnings_(captures.problems),
        links_(captures.links, captures.vxlanLinks, captures.vxlanLinksAge,
               {captures.choices->vti, Fdb::remotes(captures.fdb)}, warnings_),
        nextHops_(captures.nextHops, captures.nextHopsName, warnings_),
        vlans_({captures.vlans, captures.vlanTunnels, captures.directory}, links_, captures.choices->vlans, warnings_),
        l3Numbers_(links_, vlans_),
        fdb_(captures.fdb, links_, vlans_, nextHops_, warnings_),
        rules_({captures.rules, captures.rules6}, links_, warnings_),
        underlay_({captures.routes, captures.settings}, rules_, nextHops_, links_, l3Numbers_, warnings_),
        neighbours_(captures.neighbours),
        header_(outerHeader(links_.vtiDevices(), warnings_)),
        host_(captures.host),
        fdbIsNewer_(captures.fdbIsNewer),
        flooded_(flooded()),
        paths_(paths()),
        ids_(values(paths_)) {}

  Value stateway() {
    auto paths = object();
    put(paths, "interface/status/eth/vxlan", vtiStatus(), allocator_);
    put(paths, std::string(kVniConfigPath), wrapped("vlanVniMap", vniMap()), allocator_);
    put(paths, wantedTunnelsPath(Vane::vxlanTunnel_), tunnels(fdb_.unicast()), allocator_);
    put(paths, wantedTunnelsPath(Vane::vxlanMemberTunnel_), tunnels(groupMembers()), allocator_);
    put(paths, std::string(kVtepGroupConfigPath), wrapped("vaneVtepGroupConfig", vtepGroups()), allocator_);
    put(paths, "hardware/tessel/tunnel/configDir/vxlanHwHerTunnel", wrapped("adjacency", adjacencies(flooded_)),
        allocator_);
    put(paths, "vxlan/version2/vtepStatusDir", wrapped("vtepAdjacency", floodRoutes()), allocator_);
    put(paths, "vane/l3IntfTable", l3Interfaces(), allocator_);
    put(paths, "hardware/tessel/port/config", ports(), allocator_);
    if (header_.dscpOfInner) put(paths, "vxlan/config", wrapped("dscpPropagation", Value(true)), allocator_);
    return paths;
  }

  /// Empty where the switch's own values are as wanted.
  Value local() {
    auto paths = object();
    if (header_.ttl) put(paths, std::string(kVxlanStatePath), wrapped("ttl", Value(*header_.ttl)), allocator_);
    return paths;
  }

  Value shmem() {
    auto paths = object();
    put(paths, "bridging/l2Rib/floodOutput", wrapped("floodSet", floodLists()), allocator_);
    return paths;
  }

  Value notes() {
    Notes notes;
    notes.host = host_;
    notes.warnings = warnings_.all();
    for (auto const& [vni, entry] : vlans_.vnis()) {
      if (isPresent(entry.device)) notes.vnis.emplace(vni, vniNote(entry));
    }
    auto const* const routes = captures_.neighbours ? captures_.routes : nullptr;
    for (auto& [vni, routers] : missingRouters(routes, captures_.fdb, neighbours_, links_, vlans_)) {
      if (auto const note = notes.vnis.find(vni); note != notes.vnis.end())
        note->second.missingRouters = std::move(routers);
    }
    notes.unresolved = unresolved_;
    for (auto const& [vtep, path] : paths_) {
      if (path.hops.empty()) notes.unreachable.emplace(vtep, path.why);
    }
    return notesValue(notes, allocator_);
  }

 private:
  std::map<IpGenAddr, Path> paths() {
    std::map<IpGenAddr, Path> paths;
    for (auto const& vtep : fdb_.unicast()) paths.emplace(vtep, pathTo(vtep));
    for (auto const& [vtep, flooded] : fdb_.flooded()) {
      if (!paths.contains(vtep)) paths.emplace(vtep, pathTo(vtep));
    }
    return paths;
  }

  Notes::Vni vniNote(BridgeVlans::Vni const& entry) const {
    auto const device = links_.device(entry.device);
    return {entry.device, device ? number(device->at, "mtu") : std::nullopt,
            entry.assigned ? std::nullopt : std::optional(entry.vlan)};
  }

  /// By the device that names the VTEP first, where several would lead there by different paths.
  Path pathTo(IpGenAddr const& vtep) {
    Query query{vtep, vtep.isIpv6() ? links_.vti().srcAddrV6 : links_.vti().srcAddr, nullptr};
    auto const bindings = fdb_.bindings().find(vtep);
    if (bindings == fdb_.bindings().end()) return underlay_.path(query);
    std::optional<Path> first;
    for (auto const& name : bindings->second) {
      query.device = links_.device(name);
      auto path = underlay_.path(query);
      if (!first) {
        first = std::move(path);
      } else if (path.hops != first->hops) {
        warnings_.add({"bound-device", links_.source(), "",
                       "VXLAN devices that are bound to different devices reach " + Kiln::toText(vtep) +
                           " by different next hops",
                       "those of the first are used: " + boundText(bindings->second.front())});
      }
    }
    return std::move(*first);
  }

  static std::string boundText(std::string const& device) { return device.empty() ? "bound to none" : device; }

  /// Those that the chip has encapsulation ids for.
  std::set<IpGenAddr> flooded() {
    std::set<IpGenAddr> vteps;
    for (auto const& [vtep, flooded] : fdb_.flooded()) {
      if (vteps.size() < maxFloodTunnels) {
        vteps.insert(vtep);
      } else {
        warnings_.add("too-many", flooded.at,
                      "ignored: a switch floods to at most " + Kiln::toText(maxFloodTunnels) + " VTEPs",
                      "no frames are flooded there");
      }
    }
    return vteps;
  }

  static std::vector<Path> values(std::map<IpGenAddr, Path> const& paths) {
    std::vector<Path> values;
    for (auto const& [vtep, path] : paths) values.push_back(path);
    return values;
  }

  Value wrapped(std::string const& key, Value value) {
    auto outer = object();
    put(outer, key, std::move(value), allocator_);
    return outer;
  }

  Value vtiStatus() {
    auto const& vti = links_.vti();
    auto status = object();
    if (vti.srcAddr) put(status, "srcAddr", Kiln::toText(*vti.srcAddr), allocator_);
    if (vti.srcAddrV6) put(status, "srcAddrV6", Kiln::toText(*vti.srcAddrV6), allocator_);
    if (vti.udpPort) put(status, "udpPort", Value(*vti.udpPort), allocator_);
    if (header_.sourcePorts) {
      put(status, "udpSrcPort", Value(header_.sourcePorts->first), allocator_);
      put(status, "udpSrcPortLength", Value(header_.sourcePorts->second), allocator_);
    }
    return wrapped("vtiStatus", wrapped("Vxlan1", std::move(status)));
  }

  /// A device that has been removed since the links were captured leaves no entry. One that is down keeps its VLAN.
  bool isPresent(std::string const& name) const {
    auto const device = links_.device(name);
    return (!device || device->isProgrammed()) && (!fdbIsNewer_ || fdb_.knows(name));
  }

  Value vniMap() {
    std::map<std::uint32_t, std::uint32_t> vniOf;
    for (auto const& [vni, entry] : vlans_.vnis()) {
      if (isPresent(entry.device)) vniOf.emplace(entry.vlan, vni);
    }
    auto map = object();
    for (auto const& [vlan, vni] : vniOf) {
      auto entry = object();
      put(entry, "vlanId", Value(vlan), allocator_);
      put(entry, "vni", Value(vni), allocator_);
      put(entry, "action", Value(VaneHelper::VaneHelperVniConfigEntry::add), allocator_);
      put(map, "Vxlan1, vlanId:" + std::to_string(vlan), std::move(entry), allocator_);
    }
    return map;
  }

  std::set<IpGenAddr> groupMembers() const {
    std::set<IpGenAddr> members;
    for (auto const& [id, vteps] : fdb_.groups()) members.insert(vteps.begin(), vteps.end());
    return members;
  }

  Value vtepGroups() {
    auto groups = object();
    for (auto const& [id, vteps] : fdb_.groups()) {
      auto list = object();
      for (auto const& vtep : vteps) put(list, Kiln::toText(vtep), Value(true), allocator_);
      auto group = object();
      put(group, "version", Value(1), allocator_);
      put(group, "vtepList", std::move(list), allocator_);
      put(groups, std::to_string(id), std::move(group), allocator_);
    }
    return groups;
  }

  Value tunnels(std::set<IpGenAddr> const& vteps) {
    auto tunnel = object();
    // An object that grows takes room for many members, a copy as much as it needs.
    rapidjson::Document scratch;
    for (auto const& vtep : vteps) {
      auto entry = object();
      if (auto const id = adjId(vtep)) put(entry, "adjId", Value(*id), scratch.GetAllocator());
      put(tunnel, Kiln::toText(vtep), Value(entry, allocator_), allocator_);
      scratch.GetAllocator().Clear();
    }
    auto config = wrapped("adjacency", adjacencies(vteps));
    put(config, "tunnel", std::move(tunnel), allocator_);
    return config;
  }

  /// Nothing: no route.
  std::optional<std::uint32_t> adjId(IpGenAddr const& vtep) const {
    auto const& path = paths_.at(vtep);
    return path.hops.empty() ? std::nullopt : std::optional(ids_.id(path));
  }

  Value adjacencies(std::set<IpGenAddr> const& vteps) {
    std::map<std::uint32_t, Hops const*> used;
    for (auto const& vtep : vteps) {
      if (auto const id = adjId(vtep)) used.emplace(*id, &paths_.at(vtep).hops);
    }
    auto adjacency = object();
    for (auto const& [id, hops] : used) put(adjacency, std::to_string(id), nextHops(*hops), allocator_);
    return adjacency;
  }

  Value floodRoutes() {
    auto routes = object();
    for (auto const& vtep : flooded_) {
      if (auto const id = adjId(vtep)) {
        put(routes, Kiln::toText(vtep), Value(*id), allocator_);
      } else {
        warnings_.add("no-route", fdb_.flooded().at(vtep).at, "no next hop leads to this VTEP: " + paths_.at(vtep).why);
      }
    }
    return routes;
  }

  Value floodLists() {
    std::map<std::uint32_t, Value> vlans;
    for (auto const& vtep : flooded_) {
      for (auto const vlan : fdb_.flooded().at(vtep).vlans) {
        auto& list = vlans.try_emplace(vlan, rapidjson::kObjectType).first->second;
        put(list, Kiln::toText(vtep), Value(true), allocator_);
      }
    }
    auto sets = object();
    for (auto& [vlan, list] : vlans) put(sets, std::to_string(vlan), wrapped("vtep", std::move(list)), allocator_);
    return sets;
  }

  Value nextHops(Hops const& hops) {
    Value list(rapidjson::kArrayType);
    for (auto const& [hop, weight] : hops) {
      auto const value = nextHop(hop);
      for (std::uint32_t copy = 0; copy < weight; ++copy) {
        Value entry(value, allocator_);
        // A set of next hops has no equal ones.
        if (copy != 0) put(entry, "labelValue", Value(noLabel + copy), allocator_);
        list.PushBack(entry, allocator_);
      }
    }
    return wrapped("nextHops", std::move(list));
  }

  Value nextHop(Hop const& hop) {
    auto const& device = *links_.device(hop.device);
    auto const noPort = whyNoPort(device, links_);
    auto const mac = noPort.empty() ? neighbours_.ethAddrOf(hop) : std::nullopt;
    if (!noPort.empty()) {
      warnings_.add("no-port", device.at.member("ifname"), "ignored: next hops " + noPort,
                    "the switch sends no packets to them");
    }
    if (!mac) {
      unresolved_[{hop.address, links_.l3Name(device)}] = noPort.empty() ? neighbours_.whyNot(hop) : noPort;
    }
    auto value = object();
    put(value, "type", mac ? "nextHopResolved" : "nextHopUnresolved", allocator_);
    put(value, "addr", Kiln::toText(hop.address), allocator_);
    put(value, "ethAddr", Kiln::toText(mac.value_or(EthAddr())), allocator_);
    put(value, "l2Intf", portToward(device, mac), allocator_);
    put(value, "l3Intf", links_.l3Name(device), allocator_);
    return value;
  }

  /// Behind a bridge, the port is the one behind which the neighbour's address was learned.
  std::string portToward(Device const& device, std::optional<EthAddr> const& mac) {
    auto out = &device;
    if (auto const bridge = links_.bridgeUnder(device)) {
      out = mac ? links_.device(fdb_.portBehind(bridge->name, device.vlanId, *mac)) : nullptr;
    }
    auto const port = out ? links_.port(*out) : nullptr;
    return port ? port->name : "";
  }

  Value l3Interfaces() {
    auto table = object();
    std::set<std::string> names;
    for (auto const device : links_.devices()) {
      auto const number = l3Numbers_.of(*device);
      auto const name = links_.l3Name(*device);
      // Two bridges can have an interface for the same VLAN; the switch has one.
      if (!number || *number == L3Numbers::none) continue;
      if (names.insert(name).second) put(table, name, Value(*number), allocator_);
    }
    return wrapped("l3Intf", std::move(table));
  }

  Value ports() {
    std::vector<Device const*> all;
    std::set<std::uint32_t> taken;
    for (auto const device : links_.devices()) {
      if (!links_.isPort(*device)) continue;
      all.push_back(device);
      if (device->ifindex <= highestPort) taken.insert(device->ifindex);
    }
    auto table = object();
    std::set<std::uint32_t> used;
    auto next = highestPort;
    for (auto const device : all) {
      auto number = device->ifindex;
      // A kernel counts further than a chip, and from one again in each namespace.
      if (number > highestPort || !used.insert(number).second) {
        while (taken.contains(next)) --next;
        number = next--;
      }
      auto port = object();
      put(port, "kind", device->kind == DeviceKind::lag ? "lag" : "port", allocator_);
      put(port, "number", Value(number), allocator_);
      put(table, device->name, std::move(port), allocator_);
    }
    return wrapped("port", std::move(table));
  }

  Allocator& allocator_;
  Captures const& captures_;
  Warnings warnings_;
  Links links_;
  NextHopObjects nextHops_;
  BridgeVlans vlans_;
  L3Numbers l3Numbers_;
  Fdb fdb_;
  Rules rules_;
  Underlay underlay_;
  Neighbours neighbours_;
  OuterHeader header_;
  std::string host_;
  bool fdbIsNewer_;
  std::set<IpGenAddr> flooded_;
  std::map<IpGenAddr, Path> paths_;
  AdjacencyIds ids_;
  std::map<std::pair<IpGenAddr, std::string>, std::string> unresolved_;
};

}  // namespace

rapidjson::Document stateDocument(Captures const& captures) {
  rapidjson::Document document(rapidjson::kObjectType);
  auto& allocator = document.GetAllocator();
  Writer writer(captures, allocator);
  put(document, "format", std::string(Stateway::StateDocument::format), allocator);
  put(document, "stateway", writer.stateway(), allocator);
  put(document, "shmem", writer.shmem(), allocator);
  auto local = writer.local();
  if (local.MemberCount() != 0) put(document, "local", std::move(local), allocator);
  // After all that warns.
  auto notes = writer.notes();
  if (notes.MemberCount() != 0) put(document, "notes", std::move(notes), allocator);
  return document;
}

}  // namespace Host::Import
