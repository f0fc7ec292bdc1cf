#include <fmt/format.h>

#include <algorithm>

#include "TesselVxlan/frame/TesselVxlanMounter.h"
#include "TesselVxlan/frame/TesselVxlanMounterSmWrapper.h"
#include "TesselVxlan/tunnel/HwTunnelProgrammerBase.h"
#include "platform/asic/Store.h"
#include "platform/kiln/Fmt.h"
#include "platform/tessel/central/VxlanRecords.h"
#include "platform/tessel/central/VxlanToL2State.h"
#include "platform/tessel/l3common/TesselVxlanState.h"
#include "platform/tessel/l3common/VxlanDirs.h"
#include "platform/vane/VaneHelperVni.h"
#include "platform/vane/VtepGroup.h"
#include "tests/support/AgentText.h"
#include "tests/support/AgentWish.h"

namespace AgentTest {

std::string_view overlayTableOf(Asic::Chip const& chip) {
  return chip.store("IngL3EcmpMember0Table") ? "IngL3EcmpMember0Table" : "L3NextHop1Table";
}

char const* nameOf(Vane::TunnelType type) {
  static constexpr char const* names[] = {"unicast", "member", "flood", "mcast", "mcastHer", "bum"};
  return names[std::find(std::begin(tunnelTypes), std::end(tunnelTypes), type) - std::begin(tunnelTypes)];
}

namespace {

using Asic::EntryState;
using TesselCentral::EntryWriteStatus;
using TesselCentral::VtepIpToTnlIdNhIdMap;

constexpr auto unprogrammedId = 0xFFFFFFFE;
constexpr auto noId = 0xFFFFFFFF;

/// Which entry of a table has which row.
class Owners {
 public:
  Owners(Asic::Chip const& chip, std::string_view table) {
    auto const& store = *chip.store(table);
    // The id of an overlay next hop is the row of its first part.
    auto const base = table == "L3NextHop1Table" ? store.base(0) : 0;
    store.forEachEntry([&](Asic::EntryView const& entry) {
      auto const row = entry.row() ? entry.row()->value() + base : noId;
      if (entry.row()) keys_[row] = entry.key();
      entries_[entry.key()] = {row, entry.state()};
    });
  }
  std::string name(std::uint32_t id) const {
    if (id == unprogrammedId) return "unprogrammed";
    if (id == noId) return "none";
    auto const found = keys_.find(id);
    return found == keys_.end() ? fmt::format("ROW {}", id) : found->second;
  }
  /// The id that a record should have, and the status: those of the entry's handle.
  std::pair<std::uint32_t, EntryWriteStatus> expected(std::string const& key) const {
    auto const found = entries_.find(key);
    if (found == entries_.end()) return {noId, EntryWriteStatus::entryWriteNone};
    if (found->second.second != EntryState::written) return {unprogrammedId, EntryWriteStatus::entryWriteFailed};
    return {found->second.first, EntryWriteStatus::entryWriteDone};
  }

 private:
  std::map<std::uint32_t, std::string> keys_;
  std::map<std::string, std::pair<std::uint32_t, EntryState>, std::less<>> entries_;
};

Dovel::Ptr<TesselVxlan::TesselVxlanMounterSmWrapper> wrapperOf(Host::Agent const& agent) {
  return Dovel::cast<TesselVxlan::TesselVxlanMounter>(agent.mounter())->vxlanMounterSmWrapper();
}

/// Publishes the tunnels of a type with versions; null if the chip has none.
Dovel::Ptr<TesselVxlan::BumVtepSm> publisherOf(TesselVxlan::TesselVxlanMounterSmWrapper const& wrapper,
                                               Vane::TunnelType type) {
  if (type == mcast) return wrapper.mcastVtepSm();
  return type == mcastHer ? wrapper.mcastHerVtepSm() : wrapper.bumVtepSm();
}

template <class Map, class Less>
auto sortedBy(Map const& map, Less const& less) {
  std::vector<std::remove_cvref_t<decltype(*map.begin())>> all(map.begin(), map.end());
  std::sort(all.begin(), all.end(), less);
  return all;
}

template <class Map>
auto ordered(Map const& map) {
  return std::map(map.begin(), map.end());
}

class StateText {
 public:
  explicit StateText(Host::Agent const& agent)
      : agent_(agent),
        ports_(agent.chip(), "VirtualPortTableMerged"),
        overlay_(agent.chip(), overlayTableOf(agent.chip())),
        wrapper_(wrapperOf(agent)) {}

  void addStatus() {
    for (auto const type : tunnelTypes) {
      for (auto const& entry : statuses(agent_, type)) {
        auto const& nextHop = entry->hwNextHopStatusEntry();
        line("{} {} tnl=[{}] nh=[{}]{}", nameOf(type), entry->tunnelKey().dst(),
             ports_.name(entry->hwTunnelId().value()), nextHopName(type, nextHop.hwNextHopId()),
             nextHopsText(type, nextHop.nextHopEntryList()));
      }
    }
  }
  void addRest() {
    auto const byVtep = [](auto const& a, auto const& b) { return a->vtepIp() < b->vtepIp(); };
    auto const state = agent_.state<TesselCentral::VxlanToL2State>(Host::kVxlanToL2StatePath);
    for (auto const& map : sortedBy(state->vtepIpToTnlIdNhIdMapColl(), byVtep)) addRecord(*map);
    line("learning={}", state->dataPathLearning());
    for (auto const type : {unicast, member, flood}) addPublished(type);
    addPublished("vxlan/multicast/tunnel/status");
    addPublished("vxlan/multicast/herTunnel/status");
    addPublished("vxlan/multicast/bumTunnel/status");
    for (auto const& [type, programmer] : ordered(wrapper_->hwTunnelProgrammerColl())) addKept(*state, *programmer);
    addFlooding();
    addPortMap();
    addMappings();
    addGroups();
    addVxlanState(*agent_.local<TesselL3Common::TesselVxlanState>(Host::kVxlanStatePath));
    auto const slice = agent_.state<TesselCentral::VxlanSliceConfig>("hardware/tessel/tunnel/vxlan/sliceConfig");
    line("slice: local={} udpPort={} enabled={}", slice->localVtepAddr(), slice->vxlanUdpPort(), slice->vxlanEnabled());
  }
  std::string take() { return std::move(text_); }

 private:
  template <class... Args>
  void line(fmt::format_string<Args...> format, Args&&... args) {
    fmt::format_to(std::back_inserter(text_), format, std::forward<Args>(args)...);
    text_ += '\n';
  }
  std::string nextHopName(Vane::TunnelType type, Vane::VaneNextHopId id) const {
    if (hasVersion(type)) return id.valid() && id.value() != 0 ? "version" : "NO VERSION";
    return (type == unicast ? overlay_ : ports_).name(id.value());
  }
  static std::string nextHopsText(Vane::TunnelType type, Dovel::Ptr<Vane::NextHopEntryList> const& list) {
    if (!list) return "";
    if (!hasVersion(type)) return fmt::format(" adj={}", list->adjId());
    std::string text;
    for (auto const& hop : list->nextHopEntry()) text += fmt::format(" {}", hop.l3Intf());
    return text;
  }

  void addRecord(VtepIpToTnlIdNhIdMap const& map) {
    auto const vtep = Kiln::toText(map.vtepIp());
    std::string types;
    for (auto const& [type, key] : map.tnlKeysColl()) types += fmt::format(" {}", nameOf(type));
    for (auto const& [type, key] : map.oldTnlKeyColl()) types += fmt::format(" OLD {} {}", nameOf(type), key.genId());
    line("record {}{} tnl=[{}] nh=[{}]{}{}", vtep, types,
         idText(ports_, vtep, map.tnlId().value(), map.tnlIdEntryStatus()),
         idText(overlay_, vtep, map.nhId().value(), map.nhIdEntryStatus()), localText(map), memberText(map));
  }
  static std::string idText(Owners const& owners, std::string const& vtep, std::uint32_t id, EntryWriteStatus status) {
    std::pair const has(id, status);
    auto const expected = owners.expected(vtep);
    if (has == expected) return owners.name(id);
    return fmt::format("{} {}, HANDLE SAYS {} {}", owners.name(id), Kiln::toText(status), owners.name(expected.first),
                       Kiln::toText(expected.second));
  }
  /// An MLAG address of either family replaces both: which one a record has depends on what it had.
  std::string localText(VtepIpToTnlIdNhIdMap const& map) const {
    auto const state = agent_.local<TesselL3Common::TesselVxlanState>(Host::kVxlanStatePath);
    if (!state->mlagVtepAddr().isUnspecified()) return "";
    return fmt::format(" local={}", map.getLocalVtep(map.vtepIp().af()));
  }
  /// The next-hop ids of member tunnels grow over a run: that they follow the adjacency is what compares. Of two
  /// tunnels the one that came last has written the adjacency.
  static std::string memberText(VtepIpToTnlIdNhIdMap const& map) {
    if (!map.tnlKeysHas(member) || map.tnlIdEntryStatus() == EntryWriteStatus::entryWriteNone) return "";
    if (map.tnlKeysColl().size() > 1) return "";
    auto const& unique = map.mbrTnlUniqueNhId();
    if (unique.uniqueNhId() == 0) return " NO UNIQUE ID";
    return unique.adjId() == map.adjId() ? "" : fmt::format(" UNIQUE ID OF {} FOR {}", unique.adjId(), map.adjId());
  }

  void addPublished(Vane::TunnelType type) {
    auto const byVtep = [](auto const& a, auto const& b) { return a->vtep() < b->vtep(); };
    for (auto const& entry : sortedBy(agent_.publishedTunnels(type)->tunnelStatusEntryColl(), byVtep)) {
      line("published {} {} tnl=[{}] nh=[{}]", nameOf(type), entry->vtep(), ports_.name(entry->hwTunnelId().value()),
           nextHopName(type, entry->hwNextHopId()));
    }
  }
  void addPublished(char const* path) {
    auto const byAddr = [](auto const& a, auto const& b) { return a->addr() < b->addr(); };
    auto const dir = Dovel::cast<Multicast::Vxlan::TunnelStatusDir>(agent_.stores().stateway->getEntity(path));
    for (auto const& entry : sortedBy(dir->tunnelColl(), byAddr)) {
      line("{} {} tnl=[{}] {}", path, entry->addr(), ports_.name(entry->hwTunnelId().value()),
           nextHopName(bum, entry->hwNextHopId()));
    }
  }
  /// What the programmer of a type keeps by itself. Counters of rewrites tell of the past: only strays are shown.
  void addKept(TesselCentral::VxlanToL2State const& state, TesselVxlan::HwTunnelProgrammerBase const& programmer) {
    auto const type = programmer.tunnelType();
    for (auto const& [vtep, held] : ordered(programmer.evpnHerTunnelListColl()))
      line("{} {} the row that admits {}", nameOf(type), held ? "holds" : "HAS LOST", vtep);
    for (auto const& [id, vtep] : ordered(programmer.nhIdToVtepIpMapColl())) {
      auto const& map = state.vtepIpToTnlIdNhIdMap(vtep);
      if (id.value() != unprogrammedId && map && map->tnlKeysHas(type) && map->nhId() == id) continue;
      line("NEXT HOP {} LEADS TO {}", id, vtep);
    }
    for (auto const& [vtep, count] : ordered(programmer.tnlNhUpdateConfig()->tunnelNhUpdateColl())) {
      if (!state.vtepIpToTnlIdNhIdMapHas(vtep)) line("COUNTER OF {} REMAINS", vtep);
    }
  }
  void addFlooding() {
    auto const byVtep = [](auto const& a, auto const& b) { return a->vtepIp() < b->vtepIp(); };
    for (auto const& vtep : sortedBy(wrapper_->vaneVxlanHwHerVtepStatusDir()->vaneVxlanHwHerVtepStatusColl(), byVtep)) {
      std::string vlans;
      for (auto const& [vlan, floods] : ordered(vtep->vlanListColl()))
        vlans += fmt::format(" {}{}", floods ? "" : "NOT ", vlan);
      line("flood VLANs of {}:{}", vtep->vtepIp(), vlans);
    }
    auto const& records = wrapper_->bumVtepConfigDir()->bumVtepConfigColl();
    auto const& ids = wrapper_->encapIdToBumVtepIpConfigDir()->vxlanReverseConfigColl();
    for (auto const& record : sortedBy(records, byVtep)) addFloodVtep(*record);
    auto const& programmer = wrapper_->hwTunnelProgrammer(flood);
    auto const used = programmer ? programmer->encapIdBitmap()->count() : 0;
    if (used != records.size() || ids.size() != used)
      line("{} FLOOD VTEPS HAVE {} IDS OF {}", records.size(), ids.size(), used);
    for (auto const& [vlan, list] :
         ordered(wrapper_->floodUnderlayVlanToVtepListDir()->floodUnderlayVlanToVtepListColl())) {
      line("flood VTEPs behind VLAN {}: {}", vlan, list);
    }
  }
  void addFloodVtep(TesselL3Common::TesselVxlanBumVtepConfig const& record) {
    auto const byPort = [](auto const& a, auto const& b) { return a->port().name() < b->port().name(); };
    std::string ports;
    for (auto const& hop : sortedBy(record.nextHopsColl(), byPort))
      ports += fmt::format(" {} > {} {} {}", hop->port(), hop->addr(), hop->ethAddr(), hop->l3Intf());
    auto const owner = wrapper_->encapIdToBumVtepIpConfigDir()->vxlanReverseConfig(record.encapId());
    line("flood VTEP {}:{}{}{}", record.vtepIp(), ports, owner && owner->vtepIp() == record.vtepIp() ? "" : " NO ID",
         record.version() == 0 ? " NO VERSION" : "");
  }
  /// A port of a range that isn't valid is that of an earlier one.
  void addVxlanState(TesselL3Common::TesselVxlanState const& state) {
    line("local={} local6={} mlag={} udpPort={} udpSrcPort={} ttl={}", state.localVtep(), state.localVtep6(),
         state.mlagVtepAddr(), state.udpPort(), state.udpSrcPortValid() ? state.udpSrcPort() : 0, state.ttl());
  }
  void addPortMap() {
    auto const ports = agent_.local<TesselL3Common::VxlanDvpToVtepMap>("l3/dvpToVtepMap");
    std::map<std::string, std::string> byOwner;
    for (auto const& [row, vtep] : ports->dvpToVtepMapColl()) byOwner[ports_.name(row)] = Kiln::toText(vtep);
    for (auto const& [owner, vtep] : byOwner) line("port of [{}] is {}", owner, vtep);
  }

  void addMappings() {
    auto const state = agent_.state<VaneHelper::VaneHelperVniStatus>(Host::kVniStatusPath);
    for (auto const& [key, entry] : ordered(state->statusEntryColl())) line("local {}: {}", key, entry);
    for (auto const& [key, entry] : ordered(state->remoteVniStatusEntryColl())) line("remote {}: {}", key, entry);
    auto const driver = agent_.state<Anvil::IoctlDrvFab>(Host::kPacketDriverPath);
    for (auto const& [vni, vlan] : ordered(driver->vniToVlanColl())) line("packets of VNI {}: VLAN {}", vni, vlan);
  }
  void addGroups() {
    constexpr std::uint32_t groupBit = 0x8000;
    if (!agent_.chip().store("VpLagGroupTable")) return;
    Owners const owners(agent_.chip(), "VpLagGroupTable");
    auto const byKey = [](auto const& a, auto const& b) { return a->vaneVtepGroupKey() < b->vaneVtepGroupKey(); };
    auto const dir = agent_.state<Vane::VXLAN::VaneVtepGroupStatusDir>(Host::kVtepGroupStatusPath);
    for (auto const& group : sortedBy(dir->vaneVtepGroupStatusColl(), byKey)) {
      std::string members;
      for (auto const& addr : Kiln::keysOf(group->activeVtepListColl())) members += fmt::format(" {}", addr);
      auto const id = group->hwTunnelId().value();
      bool const isRow = id != noId && id != unprogrammedId;
      line("group {}: id=[{}]{}{}", group->vaneVtepGroupKey(), owners.name(isRow ? id & ~groupBit : id), members,
           group->hwNextHopId().value() == id ? "" : " OTHER NEXT HOP");
    }
  }

  Host::Agent const& agent_;
  Owners ports_;
  Owners overlay_;
  Dovel::Ptr<TesselVxlan::TesselVxlanMounterSmWrapper> wrapper_;
  std::string text_;
};

}  // namespace

Dovel::Ptr<Vane::HwTunnelConfig> tunnelConfig(Host::Agent const& agent, Vane::TunnelType type) {
  return type == mcast ? wrapperOf(agent)->hwMcastTunnelConfig() : agent.hwTunnelConfig(type);
}

Dovel::Ptr<Vane::HwTunnelStatus> tunnelStatus(Host::Agent const& agent, Vane::TunnelType type) {
  if (!hasVersion(type)) return agent.hwTunnelStatus(type);
  auto const publisher = publisherOf(*wrapperOf(agent), type);
  return publisher ? publisher->hwTunnelStatus() : nullptr;
}

std::vector<Dovel::Ptr<Vane::HwTunnelStatusEntry>> statuses(Host::Agent const& agent, Vane::TunnelType type) {
  auto const status = tunnelStatus(agent, type);
  if (!status) return {};
  return sortedBy(status->tunnelStatusColl(), [](auto const& a, auto const& b) {
    return std::pair(a->tunnelKey().dst(), a->tunnelKey()) < std::pair(b->tunnelKey().dst(), b->tunnelKey());
  });
}

std::string statusText(Host::Agent const& agent) {
  StateText text(agent);
  text.addStatus();
  return text.take();
}

std::string stateText(Host::Agent const& agent) {
  StateText text(agent);
  text.addStatus();
  text.addRest();
  return text.take();
}

}  // namespace AgentTest
