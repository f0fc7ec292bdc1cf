#include "host/check/Fabric.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "platform/kiln/Text.h"

namespace Host {

namespace {

using Meshal::IpGenAddr;
using Weight = Risk::Weight;
using Names = std::vector<std::string>;

/// Hosts by a value that they have.
using ByValue = std::map<unsigned, Names>;

Names namesOf(ByValue const& values) {
  Names names;
  for (auto const& [value, some] : values) names.insert(names.end(), some.begin(), some.end());
  std::sort(names.begin(), names.end());
  return names;
}

/// "9000 on leaf1; 1500 on leaf2 leaf3"
std::string listOf(ByValue const& values) {
  std::string text;
  for (auto const& [value, names] : values) {
    text += fmt::format("{}{} on {}", text.empty() ? "" : "; ", value, fmt::join(names, " "));
  }
  return text;
}

class Fabric {
 public:
  explicit Fabric(std::vector<HostFacts> const& hosts) : hosts_(hosts) {
    for (auto const& host : hosts) {
      for (auto const& vtep : host.localVteps) byVtep_[vtep].push_back(&host);
      if (host.sharedVtep) byVtep_[*host.sharedVtep].push_back(&host);
    }
  }

  std::vector<Risk> risks() {
    addVteps();
    addPorts();
    addVnis();
    for (auto const& host : hosts_) {
      risks_.insert(risks_.end(), host.risks.begin(), host.risks.end());
      for (auto const& [number, vni] : host.vnis) addFloods(host, number, vni);
    }
    std::sort(risks_.begin(), risks_.end());
    risks_.erase(std::unique(risks_.begin(), risks_.end()), risks_.end());
    return std::move(risks_);
  }

 private:
  void addVteps() {
    for (auto const& [vtep, hosts] : byVtep_) {
      Names names;
      for (auto const* host : hosts) {
        if (host->sharedVtep != vtep) names.push_back(host->name);
      }
      std::sort(names.begin(), names.end());
      if (names.size() < 2) continue;
      risks_.push_back(
          {Weight::serious, names, Kiln::toText(vtep), "local-vtep", "is the local VTEP of several hosts"});
    }
  }

  void addPorts() {
    ByValue ports;
    for (auto const& host : hosts_) {
      if (host.udpPort != 0) ports[host.udpPort].push_back(host.name);
    }
    if (ports.size() < 2) return;
    risks_.push_back({Weight::serious, namesOf(ports), "UDP port", "udp-port", "differs: " + listOf(ports)});
  }

  void addVnis() {
    std::map<unsigned, ByValue> mtus, vlans;
    for (auto const& host : hosts_) {
      for (auto const& [number, vni] : host.vnis) {
        if (vni.mtu) mtus[number][*vni.mtu].push_back(host.name);
        if (vni.vlan) vlans[number][*vni.vlan].push_back(host.name);
      }
    }
    addDifferent(mtus, Weight::warning, "vni-mtu", "MTU");
    addDifferent(vlans, Weight::hint, "vni-vlan", "VLAN");
  }

  void addDifferent(std::map<unsigned, ByValue> const& values, Weight weight, char const* kind, char const* word) {
    for (auto const& [number, byValue] : values) {
      if (byValue.size() < 2) continue;
      risks_.push_back({weight, namesOf(byValue), fmt::format("VNI {}", number), kind,
                        fmt::format("its {} differs: {}", word, listOf(byValue))});
    }
  }

  void addFloods(HostFacts const& host, unsigned number, HostFacts::Vni const& vni) {
    for (auto const& vtep : vni.floods) {
      auto const others = byVtep_.find(vtep);
      if (others == byVtep_.end()) continue;
      for (auto const* other : others->second) {
        if (other != &host) addFlood(host, *other, number, vtep);
      }
    }
  }

  void addFlood(HostFacts const& from, HostFacts const& to, unsigned number, IpGenAddr const& vtep) {
    auto const vni = to.vnis.find(number);
    if (vni != to.vnis.end() && floodsTo(vni->second, from)) return;
    risks_.push_back({Weight::serious,
                      {from.name, to.name},
                      fmt::format("VNI {}", number),
                      "flood-one-way",
                      fmt::format("{} floods to {} ({}), which {}", from.name, to.name, Kiln::toText(vtep),
                                  vni == to.vnis.end() ? "does not have the VNI" : "does not flood back")});
  }

  static bool floodsTo(HostFacts::Vni const& vni, HostFacts const& host) {
    if (host.sharedVtep && vni.floods.contains(*host.sharedVtep)) return true;
    return std::any_of(host.localVteps.begin(), host.localVteps.end(),
                       [&](auto const& vtep) { return vni.floods.contains(vtep); });
  }

  std::vector<HostFacts> const& hosts_;
  std::map<IpGenAddr, std::vector<HostFacts const*>> byVtep_;
  std::vector<Risk> risks_;
};

}  // namespace

std::vector<Risk> risksOf(std::vector<HostFacts> const& hosts) { return Fabric(hosts).risks(); }

}  // namespace Host
