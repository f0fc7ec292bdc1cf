#include "host/import/VlanChoices.h"

#include "platform/bridging/VlanId.h"
#include "platform/kiln/Exceptions.h"
#include "platform/kiln/Text.h"
#include "platform/vxlan/Vni.h"

namespace Host {

namespace {

[[noreturn]] void refuse(std::string const& text, std::string const& problem) {
  throw Kiln::InputError("--vlan", "", "'" + text + "'", problem);
}

template <class Id>
std::uint32_t numberOf(std::string const& text, std::string_view number) {
  std::uint32_t value = 0;
  if (!Kiln::readText(number, value) || value < Id::min || value > Id::max) {
    refuse(text, "expected VNI=VLAN, a VNI from 1 to 16777215 and a VLAN from 1 to 4094, such as 10010=10");
  }
  return value;
}

}  // namespace

void VlanChoices::add(std::string const& text) {
  auto const parts = Kiln::splitAt(text, "=");
  auto const vni = numberOf<Vxlan::VniExt>(text, parts ? parts->first : "");
  auto const vlan = numberOf<Bridging::VlanId>(text, parts ? parts->second : "");
  if (!byVni_.try_emplace(vni, Choice{vlan, text}).second) refuse(text, "expected each VNI once");
  if (!vlans_.insert(vlan).second) refuse(text, "expected each VLAN once");
}

std::optional<std::uint32_t> VlanChoices::take(std::uint32_t vni) {
  auto const found = byVni_.find(vni);
  if (found == byVni_.end()) return std::nullopt;
  found->second.taken = true;
  return found->second.vlan;
}

void VlanChoices::fail(std::uint32_t vni, std::string const& problem) const { refuse(byVni_.at(vni).text, problem); }

void VlanChoices::checkTaken() const {
  for (auto const& [vni, choice] : byVni_) {
    if (!choice.taken) refuse(choice.text, "expected a VNI that the captures have");
  }
}

}  // namespace Host
