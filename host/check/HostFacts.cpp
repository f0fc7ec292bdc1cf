#include "host/check/HostFacts.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <filesystem>

#include "host/show/Report.h"
#include "platform/tessel/l3common/TesselVxlanState.h"

namespace Host {

namespace {

using Weight = Risk::Weight;

void add(HostFacts& facts, Weight weight, std::string kind, std::string subject, std::string text) {
  facts.risks.push_back({weight, {facts.name}, std::move(subject), std::move(kind), std::move(text)});
}

void readLocal(Agent const& agent, HostFacts& facts) {
  auto const state = agent.local<TesselL3Common::TesselVxlanState>(kVxlanStatePath);
  if (!state) return;
  facts.udpPort = state->udpPort();
  if (!state->mlagVtepAddr().isUnspecified()) facts.sharedVtep = state->mlagVtepAddr();
  for (auto const family : {Meshal::AddressFamily::ipv4, Meshal::AddressFamily::ipv6}) {
    auto const& local = state->getLocalVtep(family);
    if (!local.isUnspecified()) facts.localVteps.insert(local);
  }
}

void readVnis(Agent const& agent, Report const& report, HostFacts& facts) {
  std::map<unsigned, unsigned> vniOf;
  for (auto const& mapping : report.mappings) {
    if (mapping.kind != MappingReport::Kind::local) continue;
    vniOf[mapping.vlan] = mapping.vni.value();
    facts.vnis[mapping.vni.value()];
  }
  for (auto const& tunnel : report.tunnels) {
    for (auto const& vlan : tunnel.vlans) {
      if (auto const vni = vniOf.find(vlan); vni != vniOf.end()) facts.vnis[vni->second].floods.insert(tunnel.vtep);
    }
  }
  for (auto const& [number, noted] : agent.notes().vnis) {
    auto const vni = facts.vnis.find(number);
    if (vni == facts.vnis.end()) continue;
    vni->second.vlan = noted.vlan;
    vni->second.mtu = noted.mtu;
    for (auto const& [router, why] : noted.missingRouters) {
      add(facts, Weight::serious, "router-mac", fmt::format("VNI {}", number),
          fmt::format("routes lead to the router {}, whose MAC address is missing: {}", Kiln::toText(router), why));
    }
  }
}

/// The tunnels to a VTEP that lack the same are one risk.
void addTunnels(std::vector<TunnelReport> const& tunnels, HostFacts& facts) {
  std::set<std::pair<Meshal::IpGenAddr, std::string>> seen;
  for (auto const& tunnel : tunnels) {
    if (!tunnel.programmed()) {
      if (!seen.emplace(tunnel.vtep, *tunnel.reason).second) continue;
      add(facts, Weight::serious, "tunnel", Kiln::toText(tunnel.vtep), "not programmed: " + *tunnel.reason);
      continue;
    }
    if (!tunnel.remark || !seen.emplace(tunnel.vtep, *tunnel.remark).second) continue;
    add(facts, Weight::warning, "half-resolved", Kiln::toText(tunnel.vtep), *tunnel.remark);
  }
}

void addMappings(std::vector<MappingReport> const& mappings, HostFacts& facts) {
  for (auto const& mapping : mappings) {
    if (mapping.isAsWanted()) continue;
    add(facts, Weight::serious, "mapping", fmt::format("VNI {}", mapping.vni.value()),
        fmt::format("its {} mapping is not programmed: {}", kindText(mapping.kind), mapping.reason.value_or("")));
  }
}

void addGroups(std::vector<GroupReport> const& groups, HostFacts& facts) {
  for (auto const& group : groups) {
    if (group.programmed()) continue;
    auto const forwarding =
        std::count_if(group.members.begin(), group.members.end(), [](auto const& member) { return member.forwards(); });
    add(facts, forwarding == 0 ? Weight::serious : Weight::warning, forwarding == 0 ? "group" : "half-resolved",
        "group " + Kiln::toText(group.key),
        fmt::format("{} of {} members forward: {}", forwarding, group.members.size(), *group.reason));
  }
}

/// What an import has passed over; its unreachable VTEPs are known from the tunnels.
void addWarnings(std::vector<Warning> const& warnings, HostFacts& facts) {
  for (auto const& warning : warnings) {
    if (warning.kind == "no-route") continue;
    auto const weight = warning.kind == "port-number" ? Weight::hint : Weight::warning;
    auto const file = std::filesystem::path(warning.file).filename().string();
    add(facts, weight, "import-" + warning.kind, file, warning.text().substr(warning.file.size() + 2));
  }
}

}  // namespace

std::string_view weightText(Weight weight) {
  constexpr std::array<std::string_view, 3> words{"serious", "warning", "hint"};
  return words[static_cast<std::size_t>(weight)];
}

TableUse::TableUse(Asic::Chip const& chip) {
  for (auto const* store : chip.stores()) used_[store] = store->used();
}

void TableUse::addRisks(Asic::Chip const& chip, HostFacts& facts) const {
  for (auto const* store : chip.stores()) {
    std::uint64_t const used = store->used();
    std::uint64_t const rows = store->capacity();
    auto const before = used_.find(store);
    bool const grew = before == used_.end() || used > before->second;
    if (store->waiting() != 0) {
      add(facts, Weight::serious, "table-full", std::string(store->name()),
          fmt::format("{} of {} rows used, {} entries wait for a row", used, rows, store->waiting()));
    } else if (grew && used * 100 > rows * 80) {
      add(facts, Weight::warning, "table-use", std::string(store->name()),
          fmt::format("{} of {} rows used, {} %", used, rows, used * 100 / rows));
    }
  }
}

HostFacts factsOf(Agent const& agent, TableUse const& before, std::string name) {
  HostFacts facts;
  facts.name = std::move(name);
  auto const report = reportOf(agent);
  readLocal(agent, facts);
  readVnis(agent, report, facts);
  addTunnels(report.tunnels, facts);
  addMappings(report.mappings, facts);
  addGroups(report.groups, facts);
  addWarnings(agent.notes().warnings, facts);
  before.addRisks(agent.chip(), facts);
  return facts;
}

}  // namespace Host
