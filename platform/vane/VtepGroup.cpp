#include "platform/vane/VtepGroup.h"

#include "platform/kiln/Json.h"

namespace Vxlan {

SwTunnelGroupId& SwTunnelGroupId::operator=(SwTunnelGroupId const& other) {
  other.refInc();
  refDec();
  StrongId::operator=(other);
  return *this;
}

// Lives until the process ends: values with static lifetime are released after main().
Kiln::HashMap<std::uint32_t, std::uint32_t>& SwTunnelGroupId::counts() {
  static auto& counts = *new Kiln::HashMap<std::uint32_t, std::uint32_t>;
  return counts;
}

void SwTunnelGroupId::refInc() const { ++counts()[value()]; }

void SwTunnelGroupId::refDec() const {
  auto const found = counts().find(value());
  if (--found->second == 0) counts().erase(found);
}

}  // namespace Vxlan

KILN_VALUE_CODEC(Vxlan::SwTunnelGroupId, "Vxlan::SwTunnelGroupId")
KILN_VALUE_CODEC(Vane::VXLAN::VaneVtepGroupKey, "Vane::VXLAN::VaneVtepGroupKey")
