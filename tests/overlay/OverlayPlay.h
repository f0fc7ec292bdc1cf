#pragma once

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <map>
#include <memory>
#include <sstream>

#include "TesselVxlan/frame/TesselVxlanMounterSmWrapper.h"
#include "host/agent/World.h"
#include "platform/kiln/Fmt.h"
#include "platform/kilnsharedmem/EntityManager.h"
#include "platform/tessel/mroute/MrouteVxlanDecapTable.h"
#include "platform/tessel/qos/TrustStatus.h"
#include "tests/support/TunnelFixture.h"
#include "tests/support/Watch.h"

namespace AgentTest {

/// An agent to which lines of a file tell what happens to mappings, groups, multicast routes and congestion marks.
///
/// A line is a verb with its words; "-" before the verb removes. What a line shows and what the agent reports to the
/// operator is collected: "= " before a line of a table or status, "! " before a message.
class OverlayPlay {
 public:
  /// `chip`: a profile and the members that have other values: "cascaded L2TunnelVnIdTable=1".
  OverlayPlay(std::string const& chip, Asic::Completion completion) : world_(kindOf(chip, completion)) {
    world_.together([](AgentWorld& a) { a.localVtep(vtep(1)).udpPort(4789); });
    world_.writes();
  }
  void tell(std::string const& line) {
    std::istringstream words(line);
    auto verb = next<std::string>(words);
    bool const added = verb[0] != '-';
    if (!added) verb.erase(0, 1);
    ASSERT_TRUE(verbs().contains(verb)) << line;
    (this->*verbs().at(verb))(words, added);
    world_.settle();
    std::istringstream messages(world_.messages());
    for (std::string message; std::getline(messages, message);) text_ += "! " + message + '\n';
  }
  std::string take() { return std::exchange(text_, ""); }
  AgentWorld& world() { return world_; }

  /// The row of each VNI, the VNI of each VLAN, the statuses, and what the packet driver has.
  std::string vnis() const {
    auto const& status = *state<VaneHelper::VaneHelperVniStatus>(Host::kVniStatusPath);
    std::set<std::string> local, remote, driver;
    for (auto const& [key, entry] : status.statusEntryColl()) {
      local.insert(fmt::format(" local {}={}{}", key.vlanId(), entry.vni(), suffix(entry)));
    }
    for (auto const& [key, entry] : status.remoteVniStatusEntryColl()) {
      remote.insert(fmt::format(" remote {}={}{}", key.vni(), entry.vlanId(), suffix(entry)));
    }
    for (auto const& [vni, vlan] : fab().vniToVlanColl()) driver.insert(fmt::format(" driver {}={}", vni, vlan));
    return fmt::format("vfi{} vni{}{}{}{}", brief("L2TunnelVnIdTable"), brief("EgrVfiToVniMappingTable"),
                       fmt::join(local, ""), fmt::join(remote, ""), fmt::join(driver, ""));
  }
  /// VNI or VLAN 0 removes the mapping.
  void mapLocal(unsigned vlan, std::uint32_t vni, unsigned action = 0) {
    Vane::VXLAN::VtiVlanKey const key{vti_, static_cast<std::uint16_t>(vlan)};
    if (vni == 0) return void(vniConfig().vlanVniMapDel(key));
    vniConfig().vlanVniMapIs(key, entryOf(vlan, vni, action));
  }
  void mapRemote(std::uint32_t vni, unsigned vlan, unsigned action = 0) {
    Vane::VXLAN::VtiVniKey const key{vti_, Vxlan::VniExt(vni)};
    if (vlan == 0) return void(vniConfig().remoteVniConfigDel(key));
    vniConfig().remoteVniConfigIs(key, entryOf(vlan, vni, action));
  }

 private:
  using Words = std::istringstream;
  using Verb = void (OverlayPlay::*)(Words&, bool added);

  static ChipKind kindOf(std::string const& chip, Asic::Completion completion) {
    std::istringstream words(chip);
    ChipKind kind{"", completion, {}};
    words >> kind.profile;
    for (std::string word; words >> word;) {
      auto const at = word.find('=');
      kind.values.emplace_back(word.substr(0, at), word.substr(at + 1));
    }
    return kind;
  }
  template <class T>
  static T next(Words& words) {
    T value{};
    words >> value;
    return value;
  }
  static VaneHelper::VaneHelperVniConfigEntry entryOf(unsigned vlan, std::uint32_t vni, unsigned action) {
    return {static_cast<std::uint16_t>(vlan), Vxlan::VniExtOrNone(vni), static_cast<std::uint8_t>(action)};
  }
  static std::string suffix(VaneHelper::VaneHelperVniStatusEntry const& entry) {
    return entry.action() == 0 ? "" : entry.action() == 5 ? "(pending)" : "(?)";
  }

  template <class T>
  Dovel::Ptr<T> state(std::string_view path) const {
    return world_.agent().state<T>(path);
  }
  VaneHelper::VaneHelperVniConfig& vniConfig() const {
    return *state<VaneHelper::VaneHelperVniConfig>(Host::kVniConfigPath);
  }
  Anvil::IoctlDrvFab& fab() const { return *state<Anvil::IoctlDrvFab>(Host::kPacketDriverPath); }
  TesselVxlan::TesselVxlanMounterSmWrapper& wrapper() const {
    return *Dovel::cast<TesselVxlan::TesselVxlanMounter>(world_.agent().mounter())->vxlanMounterSmWrapper();
  }
  /// The lines of a table with one field: " 10=10010 11=10011".
  std::string brief(std::string_view table) const {
    std::istringstream lines(world_.table(table));
    std::string text;
    for (std::string line; std::getline(lines, line);) {
      auto const at = line.find('=');
      text += ' ' + line.substr(0, line.find(':')) + (at == line.npos ? "=?" : line.substr(at));
    }
    return text;
  }
  void add(std::string const& line) { text_ += "= " + line + '\n'; }
  void addLines(std::string const& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) add(line);
  }

  void local(Words& words, bool) {
    auto const vlan = next<unsigned>(words), vni = next<unsigned>(words);
    mapLocal(vlan, vni, next<unsigned>(words));
  }
  void remote(Words& words, bool) {
    auto const vni = next<unsigned>(words), vlan = next<unsigned>(words);
    mapRemote(vni, vlan, next<unsigned>(words));
  }
  void shared(Words&, bool added) {
    state<TesselCentral::VxlanCapabilities>("hardware/tessel/centralStatus/vxlanCapabilities")
        ->singleVnIdTableUserIs(added);
  }
  /// Both flags of the numbering.
  void numbered(Words& words, bool) {
    auto const status = state<TesselCentral::VfiCapabilityStatus>(Host::kVfiCapabilitiesPath);
    status->vfiEnabledIs(next<bool>(words));
    status->vfiMappingEnabledIs(next<bool>(words));
    status->vlan4095VfiIs(4090);
    status->vlan0VfiIs(4089);
  }
  void vfi(Words& words, bool) {
    auto const vlan = next<std::uint16_t>(words), number = next<std::uint16_t>(words);
    auto const dir = state<TesselCentral::VlanVfiDir>(Host::kVlanVfiPath);
    dir->vlanToVfiIs(vlan, number);
    dir->vfiToVlanIs(number, vlan);
  }
  void chipTwo(Words&, bool added) {
    LogicalFap::LogicalFapId const first(0), second(1);
    auto const& fcsd = world_.agent().world().fcsd;
    if (!added) return void(fcsd->logicalFapDel(second));
    fcsd->logicalFapIs(second, fcsd->logicalFap(first));
  }
  /// A VTEP's tunnel through an uplink; through none it has no adjacency.
  void tunnel(Words& words, bool added) {
    auto const remote = vtep(next<unsigned>(words));
    auto const up = next<unsigned>(words);
    if (added && up != 0) {
      world_.tunnel(unicast, remote).via(uplink(up));
    } else if (added) {
      world_.tunnel(flood, remote).withoutRoute();
    } else {
      for (auto const type : {unicast, flood}) world_.tunnel(type, remote).gone();
    }
  }
  /// Adds or removes members; without any the group itself.
  void group(Words& words, bool added) {
    auto wish = world_.wish();
    auto const number = next<unsigned>(words);
    auto& members = wish.groups[number];
    if (words.eof() && !added) wish.groups.erase(number);
    for (unsigned n; words >> n;) added ? void(members.insert(n)) : void(members.erase(n));
    world_.want(wish);
  }
  Dovel::Ptr<MrouteLib::MrouteVxlanDecapTable> routes() const {
    return world_.agent().stores().shmem->getEntity<MrouteLib::MrouteVxlanDecapTable>(std::string(Host::kMroutesPath));
  }
  void route(Words& words, bool added) {
    Meshal::IpGenAddr const source(next<std::string>(words)), group(next<std::string>(words));
    if (!added) return void(routes()->mrouteDel({source, group}));
    routes()->mrouteIs({source, group}, Bridging::VlanId(next<std::uint16_t>(words)));
  }
  void corrupt(Words& words, bool) { routes()->corruptionIs(next<std::string>(words)); }
  void space(Words& words, bool added) { world_.agent().chip().hasSpaceIs(next<std::string>(words), added); }
  void ecn(Words&, bool added) { state<Vxlan::EcnConfig>("vxlan/ecnConfig")->enabledIs(added); }
  void remark(Words& words, bool) {
    auto const status = state<Kiln::Dir>("qos/hardware/tessel/trust/status/slice");
    auto const base = static_cast<std::uint8_t>(next<unsigned>(words));
    status->child<TesselCommon::Qos::TrustStatus>("1")->remarkBasePtrIs(base);
  }
  /// The state with which the chip refuses writes to a table.
  void refuse(Words& words, bool added) {
    auto const table = next<std::string>(words);
    auto const state = next<std::string>(words) == "full" ? Asic::EntryState::full : Asic::EntryState::failed;
    added ? world_.hardware().refuseTable(table, state) : world_.hardware().refuseNone();
  }
  /// The feature ends with its process, or starts.
  void process(Words&, bool added) { added ? world_.agent().startFeature() : world_.agent().stopFeature(); }

  /// From here on shows each request to the packet driver and each change of a remote status, with the row of its VNI.
  void watch(Words&, bool) {
    auto const rowOf = [table = wrapper().l2TunnelVnIdTable()](std::uint32_t vni) {
      TesselVxlan::L2TunnelVnIdTable::Key const key{U24(vni)};
      return table->entryHas(key) ? fmt::format("row {}", table->entry(key).vfi) : "no row";
    };
    watches_.push_back(std::make_unique<Support::Watch>(fab(), [this, rowOf](Dovel::Change const& change) {
      if (change.id != Anvil::IoctlDrvFab::requestId) return;
      auto const request = fab().request(change.keyAs<std::uint32_t>());
      add(fmt::format("vni {} vlan {}, {}", request.vni, request.vlan, rowOf(request.vni)));
    }));
    auto const status = state<VaneHelper::VaneHelperVniStatus>(Host::kVniStatusPath);
    watches_.push_back(std::make_unique<Support::Watch>(*status, [this, rowOf, status](Dovel::Change const& change) {
      if (change.id != VaneHelper::VaneHelperVniStatus::remoteVniStatusEntryId) return;
      auto const key = change.keyAs<Vane::VXLAN::VtiVniKey>();
      auto const entry = status->remoteVniStatusEntry(key);
      add(fmt::format("remote {}={}{}, {}", key.vni(), entry.vlanId(), suffix(entry), rowOf(key.vni().value())));
    }));
  }
  void trace(Words& words, bool) { trace_ = std::make_unique<Kiln::TraceCapture>(next<std::string>(words)); }
  void show(Words& words, bool) {
    for (std::string what; words >> what;) {
      if (what == "vnis") {
        add(vnis());
      } else if (what == "groups") {
        showGroups();
      } else if (what == "marks") {
        showMarks();
      } else if (what == "writes") {
        add(world_.writes());
      } else if (what == "corruption") {
        add(routes()->corruptionDetected());
      } else if (what == "trace") {
        for (auto const& line : trace_->lines()) add(line);
      } else {
        addLines(world_.table(what));
      }
    }
  }
  void showGroups() {
    std::set<std::string> lines;
    for (auto const& status :
         state<Vane::VXLAN::VaneVtepGroupStatusDir>(Host::kVtepGroupStatusPath)->vaneVtepGroupStatusColl()) {
      auto const id = status->hwTunnelId().value();
      EXPECT_EQ(id, status->hwNextHopId().value());
      lines.insert(fmt::format("{}: id={:#x} active={}", status->vaneVtepGroupKey(), id,
                               fmt::join(Kiln::keysOf(status->activeVtepListColl()), ",")));
    }
    for (auto const& line : lines) add(line);
  }
  /// "1/0: ---- 1111": of a tunnel profile and flag, for each outer mark, what becomes of the four inner ones.
  void showMarks() {
    auto const& table = *wrapper().tesselVxlanECNSm()->flexQosIngEcn();
    for (std::uint8_t profile = 0; profile < 4; ++profile) {
      for (std::uint8_t flag = 0; flag < 3; ++flag) {
        std::string marks;
        for (std::uint8_t mark = 0; mark < 16; ++mark) {
          TesselCentral::FlexQosIngEcnKey const key{profile, static_cast<std::uint8_t>(mark % 4),
                                                    static_cast<std::uint8_t>(mark / 4), flag};
          if (mark % 4 == 0) marks += ' ';
          marks += table.entryHas(key) ? Kiln::toText(table.entry(key).ecn) : "-";
        }
        if (marks.find_first_not_of(" -") != marks.npos) add(fmt::format("{}/{}:{}", profile, flag, marks));
      }
    }
    add(fmt::format("{} in all", table.entrys()));
  }

  static std::map<std::string, Verb> const& verbs() {
    using Self = OverlayPlay;
    static std::map<std::string, Verb> const verbs{
        {"local", &Self::local},       {"remote", &Self::remote}, {"shared", &Self::shared},
        {"numbered", &Self::numbered}, {"vfi", &Self::vfi},       {"chip2", &Self::chipTwo},
        {"tunnel", &Self::tunnel},     {"group", &Self::group},   {"route", &Self::route},
        {"corrupt", &Self::corrupt},   {"space", &Self::space},   {"ecn", &Self::ecn},
        {"remark", &Self::remark},     {"refuse", &Self::refuse}, {"process", &Self::process},
        {"watch", &Self::watch},       {"trace", &Self::trace},   {"show", &Self::show}};
    return verbs;
  }

  Meshal::IntfId const vti_{"Vxlan1"};
  AgentWorld world_;
  std::vector<std::unique_ptr<Support::Watch>> watches_;
  std::unique_ptr<Kiln::TraceCapture> trace_;
  std::string text_;
};

}  // namespace AgentTest
