#include "tests/support/AgentWorld.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>

#include "platform/asic/ProfileLoader.h"
#include "platform/asic/Store.h"
#include "platform/vane/VtepGroup.h"

namespace AgentTest {

namespace {

constexpr std::uint32_t firstAdjacency = 101;

/// Profiles that are made from one that is built in.
std::map<std::string, ChipKind> const derivedProfiles{
    {"oneHeader", {.profile = "cascaded", .values = {{"ipv4DipInKey", "false"}}}},
    {"flatFlooding", {.profile = "flat", .values = {{"vxlanUnderlayFloodingHw", "true"}}}},
    {"fewMembers", {.profile = "cascaded", .values = {{"EcmpMember1Table", "5"}, {"EcmpGroup1Table", "3"}}}},
    {"tinyFlat",
     {.profile = "flat",
      .values = {{"IngL3NextHop1", "4"},
                 {"EgrL3NextHop1", "4"},
                 {"VirtualPort1Table", "7"},
                 {"VirtualPort2Table", "7"},
                 {"EgrL3Ipv4TunnelTable", "8"}}}},
};

/// The place of a member's value in the text of a profile; of a table's, that of its rows.
std::size_t valueAt(std::string const& text, std::string const& member) {
  auto const name = fmt::format("\"{}\": ", member);
  auto const at = text.find(name);
  if (at == text.npos) throw std::logic_error("no such member of the profile: " + member);
  std::string_view constexpr rows = R"({"rows": )";
  auto const value = at + name.size();
  return text.compare(value, rows.size(), rows) == 0 ? value + rows.size() : value;
}

Dovel::Ptr<Asic::ChipProfile const> readProfile(ChipKind const& kind) {
  auto const derived = derivedProfiles.find(kind.profile);
  if (kind.values.empty() && derived == derivedProfiles.end()) return Asic::loadProfile(kind.profile);
  auto values = kind.values;
  auto base = kind.profile;
  if (derived != derivedProfiles.end()) {
    base = derived->second.profile;
    values.insert(values.begin(), derived->second.values.begin(), derived->second.values.end());
  }
  std::ifstream in(fmt::format(TESSEL_SOURCE_DIR "/profiles/{}.json", base));
  std::string text{std::istreambuf_iterator<char>(in), {}};
  for (auto const& [member, value] : values) {
    auto const at = valueAt(text, member);
    text.replace(at, text.find_first_of(",}\n", at) - at, value);
  }
  return Asic::parseProfile(text, kind.profile);
}

/// Each profile is read once.
Dovel::Ptr<Asic::ChipProfile const> const& profileOf(ChipKind const& kind) {
  static std::map<std::pair<std::string, ChipKind::Values>, Dovel::Ptr<Asic::ChipProfile const>> known;
  auto& profile = known[{kind.profile, kind.values}];
  if (!profile) profile = readProfile(kind);
  return profile;
}

std::unique_ptr<Host::Agent> makeAgent(ChipKind const& kind, Drive drive) {
  Host::Agent::Options options;
  options.chipProfile = profileOf(kind);
  options.completion = kind.completion;
  options.producers = drive == Drive::documents;
  return std::make_unique<Host::Agent>(options);
}

}  // namespace

std::string kindText(ChipKind const& kind) {
  return kind.profile + (kind.completion == Asic::Completion::direct ? "Direct" : "Deferred");
}

std::string kindName(testing::TestParamInfo<ChipKind> const& info) { return kindText(info.param); }

std::vector<ChipKind> chipKinds(std::vector<std::string> const& profiles) {
  std::vector<ChipKind> kinds;
  for (auto const& profile : profiles) {
    kinds.push_back({profile, Asic::Completion::direct});
    kinds.push_back({profile, Asic::Completion::deferred});
  }
  return kinds;
}

AgentWorld::AgentWorld(ChipKind const& kind, Drive drive) : agent_(makeAgent(kind, drive)) {
  changed();
  writes();
}

AgentWorld::~AgentWorld() {
  auto const unexpected = messages();
  EXPECT_EQ(unexpected, "") << "operator messages that the test did not expect";
  EXPECT_EQ(agent_->stop(), 0) << "objects alive after the stop";
}

AgentWorld& AgentWorld::localVtep(std::string const& addr) {
  bool const v6 = addr.find(':') != std::string::npos;
  if (v6 || addr.empty()) wish_.localVtep6 = addr;
  if (!v6) wish_.localVtep = addr;
  return changed();
}

TunnelStory AgentWorld::tunnel(Vane::TunnelType type, std::string const& vtep) { return {*this, type, vtep}; }

std::uint32_t AgentWorld::adjacencyOf(Hops const& hops) {
  auto const id = firstAdjacency + static_cast<std::uint32_t>(adjacencies_.size());
  auto const found = adjacencies_.emplace(hops, id).first->second;
  wish_.adjacencies[found] = hops;
  return found;
}

AgentWorld& AgentWorld::changed() {
  if (depth_ > 0) return *this;
  writeGroups();
  agent_->apply(wish_.document());
  return *this;
}

// A document would have to name a tunnel for each member.
void AgentWorld::writeGroups() {
  auto const dir = agent_->state<Vane::VXLAN::VaneVtepGroupConfigDir>(Host::kVtepGroupConfigPath);
  for (auto const& key : Kiln::keysOf(dir->vaneVtepGroupConfigColl())) {
    if (!wish_.groups.contains(key.value())) dir->vaneVtepGroupConfigDel(key);
  }
  for (auto const& [n, members] : wish_.groups) {
    auto const config = dir->vaneVtepGroupConfigIs(Vane::VXLAN::VaneVtepGroupKey(n));
    std::set<Meshal::IpGenAddr> wanted;
    for (auto const at : members) wanted.insert(Meshal::IpGenAddr(vtep(at)));
    for (auto const& addr : Kiln::keysOf(config->vtepListColl())) {
      if (!wanted.contains(addr)) config->vtepListDel(addr);
    }
    for (auto const& addr : wanted) config->vtepListIs(addr, true);
  }
}

AgentWorld& AgentWorld::release() {
  agent_->chip().release();
  return settle();
}

AgentWorld& AgentWorld::restart() {
  auto const rows = chip();
  agent_->stopFeature();
  EXPECT_EQ(chip(), rows) << "a stop of the feature leaves its rows";
  agent_->startFeature();
  return *this;
}

AgentWorld& AgentWorld::settle() {
  agent_->settle();
  return *this;
}

std::string AgentWorld::status(Vane::TunnelType type) {
  std::string text;
  for (auto const& entry : statuses(*agent_, type)) {
    auto const& list = entry->hwNextHopStatusEntry().nextHopEntryList();
    auto const nhId = entry->hwNextHopStatusEntry().hwNextHopId().value();
    text += fmt::format(
        "{} gen={} tnl={} {}{}\n", Kiln::toText(entry->tunnelKey().dst()), entry->tunnelKey().genId(),
        idText('t', entry->hwTunnelId().value()),
        hasVersion(type) ? fmt::format("version={}", nhId) : "nh=" + idText(type == unicast ? 'n' : 't', nhId),
        list && !hasVersion(type) ? fmt::format(" adj={}", list->adjId()) : "");
  }
  return text;
}

std::string AgentWorld::statusByKey() const { return statusText(*agent_); }

std::string AgentWorld::whole() const { return chip() + stateText(*agent_); }

std::string AgentWorld::chip() const { return chipText(agent_->chip(), agent_->driver()); }

std::string AgentWorld::table(std::string_view table) const { return tableOf(chip(), table); }

std::string AgentWorld::row(std::string_view table, std::string_view key) const {
  auto const lines = '\n' + this->table(table);
  auto const start = '\n' + std::string(key) + ':';
  auto const at = lines.find(start);
  if (at == std::string::npos) return "absent";
  auto const from = std::min(at + start.size() + 1, lines.find('\n', at + 1));
  return lines.substr(from, lines.find('\n', from) - from);
}

std::string AgentWorld::writes() {
  std::string text;
  for (auto const& report : agent_->chip().tables()) {
    auto& seen = writesSeen_[report.name];
    if (report.writes != seen) {
      text += fmt::format("{}{} {}", text.empty() ? "" : ", ", report.name, report.writes - seen);
    }
    seen = report.writes;
  }
  return text;
}

std::string AgentWorld::messages() {
  std::string text;
  for (auto const& record : agent_->logs().records()) text += record.name + ' ' + record.text + '\n';
  agent_->logs().clear();
  return text;
}

std::string AgentWorld::idText(char kind, std::uint32_t id) {
  if (id == Vane::VaneTunnelId::unprogrammed().value()) return "unprogrammed";
  if (id == Vane::VaneTunnelId().value()) return "none";
  auto const next = static_cast<unsigned>(std::count_if(ids_.begin(), ids_.end(),
                                                        [&](auto const& known) { return known.first.first == kind; })) +
                    1;
  return fmt::format("#{}", ids_.emplace(std::pair(kind, id), next).first->second);
}

}  // namespace AgentTest
