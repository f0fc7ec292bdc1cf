#include "platform/anvil/IoctlDrv.h"

#include "platform/kiln/Json.h"

namespace Anvil {

void IoctlDrv::vniToVlanMap(std::uint32_t vni, std::uint16_t vlan) {
  if (!fab_) return;
  auto const number = fab_->requests() + 1;
  fab_->requestsIs(number);
  fab_->requestIs(static_cast<std::uint32_t>(number % IoctlDrvFab::kept), IoctlRequest{number, vni, vlan});
  if (vlan == 0) {
    fab_->vniToVlanDel(vni);
  } else {
    fab_->vniToVlanIs(vni, vlan);
  }
}

}  // namespace Anvil

KILN_VALUE_CODEC(Anvil::IoctlRequest, "Anvil::IoctlRequest")
